// The MAPI helper program run as clsEmail runs it: the description file read and removed, the
// message handed to sendmail (sent at once) or to xdg-email (shown to the user), each run
// written to its log; fake mail programs keep what they were given.
#include "korvex/email/MapiDescription.h"
#include "korvex/email/clsEmail.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/system/Registry.h"
#include "tests/support/Printers.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSettings>

#include <gtest/gtest.h>

namespace korvex {
namespace {

class MapiHelperTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QDir().mkpath(mFolder.Path(QStringLiteral("bin")));
        QDir().mkpath(mFolder.Path(QStringLiteral("data")));
    }

    // A fake mail program that keeps its arguments (one a line) and its standard input.
    void FakeProgram(const QString& name)
    {
        const QString path = mFolder.Write(
            QStringLiteral("bin/") + name,
            QStringLiteral("#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > '%1.args'\n/bin/cat > '%1.stdin'\n")
                .arg(mFolder.Path(name))
                .toUtf8());
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    QByteArray Kept(const QString& name) const
    {
        QFile file(mFolder.Path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QProcessEnvironment Environment() const
    {
        QProcessEnvironment env;
        env.insert(QStringLiteral("PATH"), mFolder.Path(QStringLiteral("bin")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), mFolder.Path(QStringLiteral("data")));
        env.insert(QStringLiteral("EMAIL"), QStringLiteral("clerk@example.com"));
        return env;
    }
    // Runs the helper on a description file and returns its exit code.
    int RunHelper(const QStringList& args)
    {
        QProcess helper;
        helper.setProcessEnvironment(Environment());
        helper.start(QStringLiteral(KORVEX_MAPI_HELPER), args);
        EXPECT_TRUE(helper.waitForFinished(30000));
        return helper.exitCode();
    }
    QString Description(const QStringList& lines)
    {
        return mFolder.Write(QStringLiteral("description"), EncodeMapiDescription(lines));
    }
    QString Log() const
    {
        QFile file(mFolder.Path(QStringLiteral("data/ZqMAPIEmail/ZqMAPIEmail.log")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    test::TestFolder mFolder;
};

// The decoded attachment of a MIME text: the base64 lines after the part's headers.
QByteArray AttachmentOf(const QByteArray& mime, const QByteArray& fileName)
{
    const qsizetype part = mime.indexOf("filename=\"" + fileName + "\"\r\n\r\n");
    if (part < 0)
        return {};
    const qsizetype start = mime.indexOf("\r\n\r\n", part) + 4;
    const qsizetype end = mime.indexOf("--", start);
    return QByteArray::fromBase64(mime.mid(start, end - start).replace("\r\n", ""));
}

TEST_F(MapiHelperTest, AutoSendGoesToSendmail)
{
    FakeProgram(QStringLiteral("sendmail"));
    FakeProgram(QStringLiteral("xdg-email"));
    const QByteArray bytes = QByteArray("%PDF\x00\x01\xFF", 7).repeated(500);
    const QString attachment = mFolder.Write(QStringLiteral("staged.pdf"), bytes);
    const QString description = Description(MapiDescriptionLines(
        QStringLiteral("a@example.com;b@example.com;"), QStringLiteral("Quarter"), QStringLiteral("Line 1\r\nLine 2"),
        attachment, QStringLiteral("q.pdf"), true));
    EXPECT_EQ(RunHelper({description}), 0);
    EXPECT_FALSE(QFile::exists(description)) << "the description is removed once read";
    EXPECT_EQ(Kept(QStringLiteral("sendmail.args")), "-t\n-i\n");
    EXPECT_TRUE(Kept(QStringLiteral("xdg-email.args")).isEmpty()) << "sent at once, not shown";
    const QByteArray mime = Kept(QStringLiteral("sendmail.stdin"));
    EXPECT_TRUE(mime.contains("\r\nFrom: clerk@example.com\r\n")) << mime.left(400).constData();
    EXPECT_TRUE(mime.contains("\r\nTo: a@example.com,\r\n b@example.com\r\n")) << "the empty address is dropped";
    EXPECT_TRUE(mime.contains("\r\nSubject: Quarter\r\n"));
    EXPECT_TRUE(mime.contains("\r\nMessage-ID: <"));
    EXPECT_EQ(AttachmentOf(mime, "q.pdf"), bytes);
    const QString log = Log();
    EXPECT_TRUE(log.contains(QStringLiteral("Subject 'Quarter', 3 recipient(s), 2 line(s), attachment ") + attachment
                             + QStringLiteral(", sent at once")))
        << qPrintable(log);
    EXPECT_TRUE(log.contains(QStringLiteral("sendmail ended with exit code 0")));
}

TEST_F(MapiHelperTest, WithoutAutoSendTheMailClientShowsACopy)
{
    FakeProgram(QStringLiteral("xdg-email"));
    const QString attachment = mFolder.Write(QStringLiteral("staged.txt"), "figures");
    EXPECT_EQ(RunHelper({Description(MapiDescriptionLines(QStringLiteral("a@example.com"), QStringLiteral("Look"),
                                                          QStringLiteral("One\r\nTwo"), attachment,
                                                          QStringLiteral("figures.txt"), false))}),
              0);
    const QStringList args = QString::fromUtf8(Kept(QStringLiteral("xdg-email.args"))).split(QLatin1Char('\n'));
    ASSERT_GE(args.size(), 9) << qPrintable(args.join('|'));
    EXPECT_EQ(args.mid(0, 5), (QStringList{QStringLiteral("--utf8"), QStringLiteral("--subject"), QStringLiteral("Look"),
                                           QStringLiteral("--body"), QStringLiteral("One")}));
    EXPECT_EQ(args.at(5), QStringLiteral("Two"));
    EXPECT_EQ(args.at(6), QStringLiteral("--attach"));
    const QString copy = args.at(7);
    EXPECT_TRUE(copy.startsWith(mFolder.Path(QStringLiteral("data/ZqMAPIEmail/outbox/")))) << qPrintable(copy);
    EXPECT_TRUE(copy.endsWith(QStringLiteral("/figures.txt")));
    QFile copied(copy);
    ASSERT_TRUE(copied.open(QIODevice::ReadOnly));
    EXPECT_EQ(copied.readAll(), "figures") << "the client gets a copy that outlives the staging";
    EXPECT_EQ(QFileInfo(QFileInfo(copy).absolutePath()).permissions() & 0x0077, 0) << "the copy's folder is private";
    EXPECT_EQ(args.at(8), QStringLiteral("a@example.com"));

    // A recipient written as a mailto: link could make the mail client attach any file.
    QFile::remove(mFolder.Path(QStringLiteral("xdg-email.args")));
    EXPECT_EQ(RunHelper({Description(MapiDescriptionLines(QStringLiteral("mailto:x@example.com?attach=/etc/passwd"),
                                                          QStringLiteral("Look"), QStringLiteral("One"), QString(),
                                                          QString(), false))}),
              3);
    EXPECT_TRUE(Kept(QStringLiteral("xdg-email.args")).isEmpty()) << "nothing reached the mail client";
    EXPECT_TRUE(Log().contains(QStringLiteral("is not a plain e-mail address")));
}

TEST_F(MapiHelperTest, RefusesWhatItCannotTrust)
{
    FakeProgram(QStringLiteral("sendmail"));
    EXPECT_EQ(RunHelper({}), 2);
    EXPECT_EQ(RunHelper({mFolder.Path(QStringLiteral("missing"))}), 3);
    const QString relative = Description({QStringLiteral("<AddrTo>a@example.com"),
                                          QStringLiteral("<Attachment>relative.pdf<Name>x.pdf"),
                                          QStringLiteral("<AutoSend>True")});
    EXPECT_EQ(RunHelper({relative}), 3);
    const QString injected = Description({QStringLiteral("<AddrTo>a@example.com\tBcc: x@example.com"),
                                          QStringLiteral("<Subject>S"), QStringLiteral("<AutoSend>True")});
    EXPECT_EQ(RunHelper({injected}), 3) << "an address the message cannot hold";
    EXPECT_TRUE(Kept(QStringLiteral("sendmail.args")).isEmpty()) << "nothing reached sendmail";
    EXPECT_TRUE(Log().contains(QStringLiteral("The attachment is not a file: relative.pdf")));
}

TEST_F(MapiHelperTest, ClsEmailThroughTheHelper)
{
    FakeProgram(QStringLiteral("sendmail"));
    RegistryKey::SetLocations(mFolder.Path(QStringLiteral("user.ini")), mFolder.Path(QStringLiteral("machine.ini")));
    {
        QSettings machine(mFolder.Path(QStringLiteral("machine.ini")), QSettings::IniFormat);
        machine.setValue(QStringLiteral("SOFTWARE/Clients/Mail/@"), QStringLiteral("Affixa"));
        machine.setValue(QStringLiteral("SOFTWARE/Clients/Mail/Affixa/@"), QStringLiteral("Affixa"));
    }
    const QByteArray oldPath = qgetenv("PATH");
    const QByteArray oldData = qgetenv("XDG_DATA_HOME");
    qputenv("PATH", mFolder.Path(QStringLiteral("bin")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", mFolder.Path(QStringLiteral("data")).toLocal8Bit());
    clsEmail::SetMapiHelperProgram(QStringLiteral(KORVEX_MAPI_HELPER));
    ScopedMessageBoxRecorder boxes;
    const QString attachment = mFolder.Write(QStringLiteral("week.csv"), "a;b\r\n1;2\r\n");

    clsEmail email;
    EXPECT_FALSE(email.Email(QStringLiteral("Week"), QStringLiteral("See attached"), QStringLiteral("week 47.csv"),
                             attachment, {}, QStringLiteral("team@example.com"), true));
    qputenv("PATH", oldPath);
    qputenv("XDG_DATA_HOME", oldData);
    clsEmail::SetMapiHelperProgram({});
    RegistryKey::SetLocations({}, {});

    EXPECT_TRUE(boxes.shown().isEmpty());
    const QByteArray mime = Kept(QStringLiteral("sendmail.stdin"));
    EXPECT_TRUE(mime.contains("\r\nTo: team@example.com\r\n")) << mime.left(400).constData();
    EXPECT_EQ(AttachmentOf(mime, "week 47.csv"), "a;b\r\n1;2\r\n");
    QFile back(attachment);
    ASSERT_TRUE(back.open(QIODevice::ReadOnly)) << "the attachment is back in its place";
    EXPECT_EQ(back.readAll(), "a;b\r\n1;2\r\n");
}

}  // namespace
}  // namespace korvex
