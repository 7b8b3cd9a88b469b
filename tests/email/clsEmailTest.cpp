// clsEmail: the choice of the send method over pinned registry values, Outlook and Lotus
// Notes step by step against recording fakes, the MAPI description file and helper start,
// SMTP against a local sink, the staging of the attachment and the refusal of line breaks.
#include "korvex/email/clsEmail.h"
#include "korvex/platform/automation/Automation.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/system/Registry.h"
#include "tests/email/MailSystemFakes.h"
#include "tests/support/Printers.h"
#include "tests/support/SmtpSink.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QSettings>

#include <gtest/gtest.h>

namespace korvex {
namespace {

using test::FakeNotesSession;
using test::FakeOutlook;
using test::Journal;

const QString CRLF = QStringLiteral("\r\n");

class EmailTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        RegistryKey::SetLocations(mFolder.Path(QStringLiteral("user.ini")), MachineFile());
        mOldTmp = qgetenv("TMPDIR");
        QDir().mkpath(TempFolder());
        qputenv("TMPDIR", TempFolder().toLocal8Bit());
    }
    void TearDown() override
    {
        RegistryKey::SetLocations({}, {});
        qputenv("TMPDIR", mOldTmp);
        clsEmail::SetMapiHelperProgram({});
    }

    QString MachineFile() const { return mFolder.Path(QStringLiteral("machine.ini")); }
    QString TempFolder() const { return mFolder.Path(QStringLiteral("tmp")); }
    // What the sender left in the temporary folder (its names start with "ff").
    QStringList TempEntries() const { return QDir(TempFolder()).entryList({QStringLiteral("ff*")}, QDir::AllEntries | QDir::Hidden); }
    void SetUserMethod(const QString& value)
    {
        RegistryKey::Create(QStringLiteral("Software\\Zq Systems\\Email Send Method")).SetValue(QString(), Variant(value));
    }
    void SetMailClient(const QString& key, const QString& name)
    {
        QSettings machine(MachineFile(), QSettings::IniFormat);
        machine.setValue(QStringLiteral("SOFTWARE/Clients/Mail/@"), key);
        machine.setValue(QStringLiteral("SOFTWARE/Clients/Mail/") + key + QStringLiteral("/@"), name);
    }
    QStringList Prompts() const
    {
        QStringList prompts;
        for (const auto& shown : mBoxes.shown())
            prompts << shown.prompt;
        return prompts;
    }
    // An attachment in a folder of its own, to watch it leave and come back.
    QString Attachment(const QByteArray& bytes = "attached bytes")
    {
        QDir().mkpath(mFolder.Path(QStringLiteral("docs")));
        return mFolder.Write(QStringLiteral("docs/report-2026.pdf"), bytes);
    }
    std::shared_ptr<FakeOutlook> RegisterOutlook(const QString& version, bool running)
    {
        auto outlook = std::make_shared<FakeOutlook>(mJournal, version);
        AutomationFactory give = [outlook] { return std::static_pointer_cast<QObject>(outlook); };
        mOutlookRegistration = std::make_unique<ScopedAutomationRegistration>(
            QStringLiteral("Outlook.Application"), running ? AutomationFactory() : give,
            running ? give : AutomationFactory());
        return outlook;
    }
    std::shared_ptr<FakeNotesSession> RegisterNotes()
    {
        auto notes = std::make_shared<FakeNotesSession>(mJournal);
        mNotesRegistration = std::make_unique<ScopedAutomationRegistration>(
            QStringLiteral("Notes.NotesSession"), [notes] { return std::static_pointer_cast<QObject>(notes); });
        return notes;
    }

    test::TestFolder mFolder;
    ScopedMessageBoxRecorder mBoxes;
    Journal mJournal;
    QByteArray mOldTmp;
    std::unique_ptr<ScopedAutomationRegistration> mOutlookRegistration;
    std::unique_ptr<ScopedAutomationRegistration> mNotesRegistration;
};

TEST_F(EmailTest, MethodChoiceOverRegistryValues)
{
    const QString notInstalled = QStringLiteral("Outlook failed, error 429") + CRLF + StandardErrorDescription(429);
    const QString nothingStarted = QStringLiteral("Failed to initialise either Lotus Notes or Microsoft Outlook.");
    {
        SCOPED_TRACE("a setting that is no number leaves the choice open; nothing is installed");
        SetUserMethod(QStringLiteral("abc"));
        clsEmail email;
        EXPECT_FALSE(email.Email(QStringLiteral("S"), QStringLiteral("M"), {}, {}));
        EXPECT_EQ(email.SendMethod(), clsEmail::ESM_Auto);
        EXPECT_EQ(Prompts(), (QStringList{notInstalled, nothingStarted}));
        EXPECT_EQ(mBoxes.shown().at(1).buttons, vbExclamation);
        EXPECT_EQ(email.GetEmailLog(), "") << "the send was not called";
    }
    mBoxes.recorder().shown.clear();
    {
        SCOPED_TRACE("the default mail client Affixa, in any case, means MAPI");
        SetUserMethod(QString());
        SetMailClient(QStringLiteral("Affixa"), QStringLiteral("aFFiXA"));
        RegisterOutlook(QStringLiteral("16.0.1"), true);
        clsEmail email;
        EXPECT_TRUE(email.Email_Batch_Start());
        EXPECT_EQ(email.SendMethod(), clsEmail::ESM_MAPI);
        EXPECT_TRUE(Prompts().isEmpty());
        EXPECT_TRUE(mJournal.lines.isEmpty()) << "Outlook is not touched";
        EXPECT_TRUE(email.Email_Batch_Complete());
        EXPECT_EQ(email.SendMethod(), clsEmail::ESM_MAPI) << "the chosen method stays for the next batch";
    }
    {
        SCOPED_TRACE("MAPI asked for while another client is the default: no start, no message");
        SetMailClient(QStringLiteral("Mozilla Thunderbird"), QStringLiteral("Mozilla Thunderbird"));
        clsEmail email;
        email.Email_SetSendMethod(clsEmail::ESM_MAPI);
        EXPECT_FALSE(email.Email_Batch_Start());
        EXPECT_TRUE(Prompts().isEmpty());
    }
    {
        SCOPED_TRACE("Notes comes before Outlook; once created it stays even when its mail does not open");
        auto notes = RegisterNotes();
        notes->database->opens = false;
        clsEmail email;
        EXPECT_FALSE(email.Email_Batch_Start());
        EXPECT_EQ(email.SendMethod(), clsEmail::ESM_LotusNotes);
        EXPECT_EQ(Prompts(), QStringList{QStringLiteral("Unable to create e-mail.") + CRLF + CRLF
                                          + QStringLiteral("Unable to open a Lotus Notes e-mail database.")});
        EXPECT_EQ(mJournal.lines, (QStringList{QStringLiteral("GetDatabase(,)"), QStringLiteral("OpenMail")}))
            << "Outlook is not tried";
        email.Email_Batch_Complete();
    }
    mBoxes.recorder().shown.clear();
    {
        SCOPED_TRACE("the setting 4 means SMTP even though Outlook is there");
        SetUserMethod(QStringLiteral("4"));
        clsEmail email;
        email.Email_SetSmtpConfig(QStringLiteral("127.0.0.1:1"), QStringLiteral("a@example.com"));
        SmtpOptions quick;
        quick.connectTimeoutMs = 2000;
        email.SetSmtpOptions(quick);
        EXPECT_FALSE(email.Email_Batch_Start());
        EXPECT_EQ(email.SendMethod(), clsEmail::ESM_SMTP);
        EXPECT_EQ(Prompts(), QStringList{QStringLiteral("Error '-2147221504' occurred when attempting to use SMTP to send e-mail.")
                                          + CRLF + CRLF + QStringLiteral("Unable to connect to SMTP Server '127.0.0.1:1'.")});
        EXPECT_EQ(email.Email_Batch_Complete(), true);
    }
}

TEST_F(EmailTest, NotesSavesOrSendsTheMemo)
{
    auto notes = RegisterNotes();
    const QString attachment = Attachment();
    clsEmail email;
    email.Email_SetSendMethod(clsEmail::ESM_LotusNotes);
    ASSERT_TRUE(email.Email_Batch_Start());
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Invoice"), {}, QStringLiteral("invoice.pdf"), attachment,
                                       QStringLiteral("Saved in your drafts"), {}, true));
    const QString staged = mJournal.lines.value(7).section(QLatin1Char(','), 2).section(QLatin1Char(')'), 0, 0);
    EXPECT_EQ(mJournal.lines,
              (QStringList{QStringLiteral("GetDatabase(,)"), QStringLiteral("OpenMail"), QStringLiteral("CreateDocument"),
                           QStringLiteral("Form=Memo"), QStringLiteral("Subject=Invoice"),
                           QStringLiteral("CreateRichTextItem(Body)"), QStringLiteral("AppendText( )"),
                           QStringLiteral("EmbedObject(1454,,%1) file there: 1, private: 1").arg(staged), QStringLiteral("Save")}))
        << "without an address the memo is saved, not sent, and an empty text is one space";
    EXPECT_TRUE(staged.endsWith(QStringLiteral("/invoice.pdf"))) << qPrintable(staged);
    EXPECT_TRUE(QFileInfo::exists(attachment)) << "the attachment is back";
    EXPECT_TRUE(TempEntries().isEmpty()) << "the staging folder is gone: " << qPrintable(TempEntries().join(' '));
    ASSERT_EQ(mBoxes.shown().size(), 1);
    EXPECT_EQ(mBoxes.shown().at(0).prompt, "Saved in your drafts");
    EXPECT_EQ(mBoxes.shown().at(0).buttons, vbInformation);

    mJournal.lines.clear();
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Hello"), QStringLiteral("Text"), {}, {}, QStringLiteral("unused"),
                                       QStringLiteral("a@example.com"), true));
    EXPECT_EQ(mJournal.lines,
              (QStringList{QStringLiteral("CreateDocument"), QStringLiteral("Form=Memo"), QStringLiteral("Subject=Hello"),
                           QStringLiteral("CreateRichTextItem(Body)"), QStringLiteral("AppendText(Text)"),
                           QStringLiteral("SendTo=a@example.com"), QStringLiteral("SaveMessageOnSend=1"),
                           QStringLiteral("Send")}));
    EXPECT_EQ(mBoxes.shown().size(), 1) << "nothing more is shown after a send";
    EXPECT_TRUE(email.Email_Batch_Complete());
}

TEST_F(EmailTest, OutlookRunningSendsAtOnceWithTheWholeLog)
{
    auto outlook = RegisterOutlook(QStringLiteral("15.0.4569.1506"), true);
    const QString attachment = Attachment();
    clsEmail email;
    ASSERT_TRUE(email.Email_Batch_Start());
    EXPECT_EQ(email.SendMethod(), clsEmail::ESM_Outlook);
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Q3"), QStringLiteral("Figures"), QStringLiteral("q3.pdf"),
                                       attachment, {}, QStringLiteral("boss@example.com"), true));
    const QStringList log{QStringLiteral("Email_Batch_Start"),
                          QStringLiteral("Begin Outlook Email"),
                          QStringLiteral("Email_Batch_Start Obtained a reference to the running Outlook"),
                          QStringLiteral("Outlook application created"),
                          QStringLiteral("Zq Outlook Addin not in use."),
                          QStringLiteral("Outlook version - 15.0.4569.1506"),
                          QStringLiteral("Drafts folder opened"),
                          QStringLiteral("Email_Batch_Send"),
                          QStringLiteral("Draft item added"),
                          QStringLiteral("Subject 'Q3' created"),
                          QStringLiteral("Save Message"),
                          QStringLiteral("Attach file"),
                          QStringLiteral("Set To Address"),
                          QStringLiteral("Save"),
                          QStringLiteral("Auto Send")};
    EXPECT_EQ(email.GetEmailLog().split(CRLF), log);
    ASSERT_EQ(mJournal.lines.size(), 10) << qPrintable(mJournal.lines.join('\n'));
    EXPECT_EQ(mJournal.lines.at(5), QStringLiteral("Save"));
    EXPECT_TRUE(mJournal.lines.at(6).startsWith(QStringLiteral("Attachments.Add(")));
    EXPECT_TRUE(mJournal.lines.at(6).endsWith(QStringLiteral("/q3.pdf,1,9,q3.pdf) file there: 1")))
        << qPrintable(mJournal.lines.at(6)) << ": placed after the body and its CR LF";
    EXPECT_EQ(mJournal.lines.mid(7), (QStringList{QStringLiteral("To=boss@example.com"), QStringLiteral("Save"),
                                                  QStringLiteral("Send Q3")}));
    EXPECT_TRUE(Prompts().isEmpty());

    // A second send replaces the first one's entries; a failed send shows the draft.
    outlook->switches.failSend = true;
    mJournal.lines.clear();
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Q4"), {}, {}, {}, {}, QStringLiteral("boss@example.com"), true));
    EXPECT_EQ(email.GetEmailLog().split(CRLF).mid(7),
              (QStringList{QStringLiteral("Email_Batch_Send"), QStringLiteral("Draft item added"),
                           QStringLiteral("Subject 'Q4' created"), QStringLiteral("Set To Address"), QStringLiteral("Save"),
                           QStringLiteral("Auto Send"), QStringLiteral("Error sending so display draft")}));
    EXPECT_EQ(mJournal.lines.mid(2), (QStringList{QStringLiteral("Body=\r\n"), QStringLiteral("To=boss@example.com"),
                                                  QStringLiteral("Save"), QStringLiteral("Send Q4"), QStringLiteral("Display")}));
    EXPECT_TRUE(Prompts().isEmpty()) << "the failure was cleared";
    EXPECT_TRUE(email.Email_Batch_Complete());
}

TEST_F(EmailTest, OutlookStartedHerePostponesUntilComplete)
{
    auto outlook = RegisterOutlook(QStringLiteral("16.0"), false);
    FakeOutlook* trusted = outlook->UseAddin(true);
    outlook->draftsFailures = 2;
    trusted->draftsFailures = 2;
    clsEmail email;
    email.Email_SetSendMethod(clsEmail::ESM_Outlook);
    ASSERT_TRUE(email.Email_Batch_Start());
    trusted->switches.failSend = true;
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("One"), {}, {}, {}, {}, QStringLiteral("x@example.com"), true));
    QStringList start = email.GetEmailLog().split(CRLF);
    start = start.mid(0, start.indexOf(QStringLiteral("Email_Batch_Send")));
    EXPECT_EQ(start.mid(2, 4), (QStringList{QStringLiteral("Email_Batch_Start Created a new Outlook object"),
                                            QStringLiteral("Outlook application created"),
                                            QStringLiteral("Outlook Addin created"),
                                            QStringLiteral("Trusted Outlook application created (Error 0)")}))
        << "the add-in's refusal to connect again is ignored";
    EXPECT_EQ(start.count(QStringLiteral("Error -2147221233 (The attempted operation failed.) opening Drafts folder")), 2);
    EXPECT_EQ(start.constLast(), QStringLiteral("Drafts folder opened"));
    EXPECT_TRUE(mJournal.lines.contains(QStringLiteral("trusted.GetNamespace(MAPI)")));
    EXPECT_FALSE(mJournal.lines.contains(QStringLiteral("app.GetNamespace(MAPI)"))) << "folders come from the trusted object";

    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Two"), {}, {}, {}, {}, QStringLiteral("x@example.com"), true));
    EXPECT_TRUE(email.GetEmailLog().endsWith(QStringLiteral("Auto Send (Postponed)")));
    EXPECT_FALSE(mJournal.lines.join('\n').contains(QStringLiteral("Send "))) << "nothing sent before completion";
    EXPECT_FALSE(email.Email_Batch_Complete());
    EXPECT_EQ(mJournal.lines.filter(QStringLiteral("Send ")), (QStringList{QStringLiteral("Send One"), QStringLiteral("Send Two")}));
    const QString errors = QStringLiteral("Error '440' (Automation error)") + CRLF;
    ASSERT_EQ(Prompts().size(), 1);
    EXPECT_EQ(Prompts().at(0), errors + errors + CRLF
                                   + QStringLiteral("One or more errors occurred while sending e-mails.  Check your Drafts "
                                                    "folder for any e-mails which failed to send."));
    EXPECT_TRUE(email.GetEmailLog().endsWith(QStringLiteral("Auto Send (Postponed)") + errors + errors));
}

TEST_F(EmailTest, OutlookNineWithoutDraftsCreatesItems)
{
    auto outlook = RegisterOutlook(QStringLiteral("9.0.0.2711"), true);
    outlook->draftsFailures = -1;
    clsEmail email;
    ASSERT_TRUE(email.Email_Batch_Start());
    EXPECT_EQ(mJournal.lines.filter(QStringLiteral("GetDefaultFolder")).size(), 1) << "one attempt only";
    // The failed attempt is still pending at the end of the start and is told with the log.
    ASSERT_EQ(Prompts().size(), 1);
    EXPECT_TRUE(Prompts().at(0).startsWith(QStringLiteral("Error '-2147221233' occurred when creating a new Outlook mail item.")
                                           + CRLF + CRLF + QStringLiteral("The attempted operation failed.") + CRLF + CRLF
                                           + QStringLiteral("Email_Batch_Start")));
    mJournal.lines.clear();
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Old"), QStringLiteral("Text"), {}, {}));
    EXPECT_EQ(mJournal.lines, (QStringList{QStringLiteral("app.CreateItem(0)"), QStringLiteral("Subject=Old"),
                                           QStringLiteral("Body=Text\r\n"), QStringLiteral("Save"), QStringLiteral("Display")}));
    EXPECT_TRUE(email.GetEmailLog().contains(QStringLiteral("Outlook version - 9.0.0.2711") + CRLF
                                             + QStringLiteral("Drafts folder not opened") + CRLF
                                             + QStringLiteral("Email_Batch_Send") + CRLF
                                             + QStringLiteral("Mail item created")));
    EXPECT_TRUE(email.Email_Batch_Complete());
}

TEST_F(EmailTest, OutlookSignatures)
{
    auto outlook = RegisterOutlook(QStringLiteral("16.0"), true);
    outlook->switches.bodyFormat = 2;
    outlook->switches.currentHtmlBody = QStringLiteral("<html><BODY lang=EN><p class=MsoNormal>Kind regards<o:p></o:p></p></body></html>");
    {
        clsEmail email;
        ASSERT_TRUE(email.Email_Batch_Start());
        mJournal.lines.clear();
        EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("S"), QStringLiteral("Hi\r\nthere"), {}, {}, {}, {}, false, true));
        EXPECT_TRUE(email.GetEmailLog().contains(
            QStringList{QStringLiteral("Include the signature"),
                        QStringLiteral("Default Account not found, use \"Microsoft Exchange\""),
                        QStringLiteral("Outlook version is >= 12"), QStringLiteral("Outlook version is >= 16"),
                        QStringLiteral("Format is HTML"), QStringLiteral("Save"), QStringLiteral("Display")}
                .join(CRLF)))
            << qPrintable(email.GetEmailLog());
        EXPECT_EQ(mJournal.lines.at(2), QStringLiteral("Display")) << "Outlook 16 shows the item to add the signature";
        EXPECT_EQ(mJournal.lines.at(3),
                  QStringLiteral("HTMLBody=<html><BODY lang=EN><p class=MsoNormal>Kind regards<o:p>Hi<BR>there<BR></o:p></p></body></html>"));
        email.Email_Batch_Complete();
    }
    {
        SCOPED_TRACE("Outlook 11, plain text: the signature file of the profile's account");
        outlook->version = QStringLiteral("11.0");
        outlook->switches.bodyFormat = 1;
        outlook->switches.account = QStringLiteral("Work");
        const QString profiles = QStringLiteral(
            "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles\\");
        RegistryKey::Create(profiles).SetValue(QStringLiteral("DefaultProfile"), Variant(QStringLiteral("Outlook")));
        const QString accounts = profiles + QStringLiteral("Outlook\\9375CFF0413111d3B88A00104B2A6676\\");
        RegistryKey::Create(accounts + QStringLiteral("00000001")).SetValue(QStringLiteral("Account Name"), Variant(QStringLiteral("Home")));
        RegistryKey work = RegistryKey::Create(accounts + QStringLiteral("00000002"));
        work.SetValue(QStringLiteral("Account Name"), Variant(QStringLiteral("Work")));
        work.SetValue(QStringLiteral("New Signature"), Variant(QStringLiteral("Office")));
        RegistryKey::Create(QStringLiteral("Software\\Microsoft\\Office\\11.0\\Common\\General"))
            .SetValue(QStringLiteral("Signatures"), Variant(QStringLiteral("Sigs")));
        const QByteArray oldData = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", mFolder.Path(QStringLiteral("data")).toLocal8Bit());
        QDir().mkpath(mFolder.Path(QStringLiteral("data/Microsoft/Sigs")));
        mFolder.Write(QStringLiteral("data/Microsoft/Sigs/Office.txt"), "--\r\nJ. Smith\r\n");
        clsEmail email;
        ASSERT_TRUE(email.Email_Batch_Start());
        mJournal.lines.clear();
        EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("S"), QStringLiteral("Hi"), {}, {}, {}, {}, false, true));
        qputenv("XDG_DATA_HOME", oldData);
        EXPECT_EQ(mJournal.lines.at(2), QStringLiteral("Body=Hi\r\n\r\n\r\n--\r\nJ. Smith\r\n"));
        EXPECT_TRUE(email.GetEmailLog().contains(
            QStringList{QStringLiteral("Default Account 'Work'"), QStringLiteral("Outlook version is < 12"),
                        QStringLiteral("Format is NOT HTML"), QStringLiteral("Format is NOT HTML")}
                .join(CRLF)));
        email.Email_Batch_Complete();
    }
    {
        SCOPED_TRACE("a format that cannot be read gives the plain body");
        outlook->switches.failBodyFormat = true;
        clsEmail email;
        ASSERT_TRUE(email.Email_Batch_Start());
        mJournal.lines.clear();
        EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("S"), QStringLiteral("Hi"), {}, {}, {}, {}, false, true));
        EXPECT_EQ(mJournal.lines.at(2), QStringLiteral("Body=Hi\r\n"));
        email.Email_Batch_Complete();
    }
}

TEST_F(EmailTest, LineBreaksAndBadAttachmentsAreRefusedBeforeSending)
{
    RegisterOutlook(QStringLiteral("16.0"), true);
    const QString attachment = Attachment();
    clsEmail email;
    ASSERT_TRUE(email.Email_Batch_Start());
    ASSERT_TRUE(email.Email_Batch_Send(QStringLiteral("Fine"), {}, {}, {}));
    const QString startLog = email.GetEmailLog().section(CRLF + QStringLiteral("Email_Batch_Send"), 0, 0);
    mJournal.lines.clear();
    const struct {
        QString subject;
        QString to;
        QString name;
        QString path;
        QString description;
    } rows[] = {
        {QStringLiteral("Hi\r\nBcc: x@example.com"), {}, {}, {}, QStringLiteral("The subject must not contain a line break.")},
        {QStringLiteral("Hi"), QStringLiteral("a@example.com\nb@example.com"), {}, {},
         QStringLiteral("The address must not contain a line break.")},
        {QStringLiteral("Hi"), {}, QStringLiteral("../escape.pdf"), attachment,
         QStringLiteral("The attachment name '../escape.pdf' is not a file name.")},
        {QStringLiteral("Hi"), {}, QStringLiteral("a.pdf"), mFolder.Path(QStringLiteral("docs")),
         QStringLiteral("The attachment '%1' is not a file.").arg(mFolder.Path(QStringLiteral("docs")))},
        {QStringLiteral("Hi"), {}, QStringLiteral("a.pdf"), QStringLiteral("relative.pdf"),
         QStringLiteral("The attachment 'relative.pdf' is not a file.")},
    };
    for (const auto& row : rows) {
        mBoxes.recorder().shown.clear();
        EXPECT_FALSE(email.Email_Batch_Send(row.subject, {}, row.name, row.path, {}, row.to, true));
        const QString expected = QStringLiteral("Error '-2147221504' occurred while creating a mail item.") + CRLF + CRLF
                                 + row.description + CRLF + CRLF + startLog + CRLF + QStringLiteral("Email_Batch_Send");
        EXPECT_EQ(Prompts(), QStringList{expected});
        EXPECT_EQ(email.GetEmailLog(), expected);
    }
    EXPECT_TRUE(mJournal.lines.isEmpty()) << "Outlook never saw them: " << qPrintable(mJournal.lines.join('\n'));
    EXPECT_TRUE(QFileInfo::exists(attachment));
    EXPECT_TRUE(TempEntries().isEmpty());
    email.Email_Batch_Complete();
}

TEST_F(EmailTest, MapiWritesTheDescriptionAndStartsTheHelper)
{
    // A helper that keeps what it was given: its argument, the file's bytes and whether the
    // staged attachment is there while it runs.
    const QString out = mFolder.Path(QStringLiteral("helper-out"));
    const QString helper = mFolder.Write(QStringLiteral("fake-helper.sh"),
                                         QStringLiteral("#!/bin/sh\necho \"$1\" > '%1.arg'\ncp \"$1\" '%1.txt'\n"
                                                        "stat -c %a \"$1\" > '%1.mode'\n"
                                                        "ls \"$(dirname \"$1\")\"/ff*/ > '%1.staged'\n")
                                             .arg(out)
                                             .toUtf8());
    QFile::setPermissions(helper, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    clsEmail::SetMapiHelperProgram(helper);
    SetMailClient(QStringLiteral("Affixa"), QStringLiteral("Affixa"));
    const QString attachment = Attachment();
    clsEmail email;
    EXPECT_FALSE(email.Email(QStringLiteral("Überblick"), QStringLiteral("Line 1\r\nLine 2"), QStringLiteral("report.pdf"),
                             attachment, {}, QStringLiteral("a@example.com;b@example.com;"), true))
        << "MAPI sends report no success";
    EXPECT_TRUE(Prompts().isEmpty()) << qPrintable(Prompts().join('\n'));

    auto read = [&](const QString& suffix) {
        QFile file(out + suffix);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const QString path = QString::fromLocal8Bit(read(QStringLiteral(".arg")).trimmed());
    EXPECT_TRUE(QFileInfo(path).fileName().startsWith(QStringLiteral("ff")));
    EXPECT_EQ(QFileInfo(path).absolutePath(), QFileInfo(TempFolder()).absoluteFilePath());
    EXPECT_EQ(read(QStringLiteral(".mode")).trimmed(), "600");
    EXPECT_EQ(read(QStringLiteral(".staged")).trimmed(), "report.pdf");
    const QByteArray expected = "<AddrTo>a@example.com\r\n<AddrTo>b@example.com\r\n<AddrTo>\r\n<Subject>\xDC" "berblick\r\n"
                                "<Message>Line 1\r\n<Message>Line 2\r\n<Attachment>"
                                + QFile::encodeName(QFileInfo(path).absolutePath()) + "/";
    const QByteArray file = read(QStringLiteral(".txt"));
    EXPECT_TRUE(file.startsWith(expected)) << file.constData();
    EXPECT_TRUE(file.endsWith("/report.pdf<Name>report.pdf\r\n<AutoSend>True\r\n")) << file.constData();

    const QStringList log = email.GetEmailLog().split(CRLF);
    EXPECT_EQ(log.mid(log.indexOf(QStringLiteral("Email_Batch_Send"))),
              (QStringList{QStringLiteral("Email_Batch_Send"), QStringLiteral("Use MAPI"),
                           QStringLiteral("MAPI Description file opened:- ") + path,
                           QStringLiteral("MAPI Description file Closed"),
                           QStringLiteral("MAPI:- Start Zq MAPI Email from:-") + helper + QLatin1Char(' ') + path}));
    EXPECT_TRUE(QFileInfo::exists(attachment));
    EXPECT_TRUE(TempEntries().isEmpty()) << "description file and staging folder removed: " << qPrintable(TempEntries().join(' '));

    // Without a message there is no message line; a missing helper is told.
    clsEmail::SetMapiHelperProgram(mFolder.Path(QStringLiteral("no-such-helper")));
    email.Email_SetSendMethod(clsEmail::ESM_MAPI);
    EXPECT_FALSE(email.Email_Batch_Send(QStringLiteral("S"), {}, {}, {}));
    ASSERT_EQ(Prompts().size(), 1);
    EXPECT_TRUE(Prompts().at(0).startsWith(QStringLiteral("Error '53' occurred while creating a mail item.")));
    EXPECT_TRUE(TempEntries().isEmpty());
}

TEST_F(EmailTest, SmtpSendsABatchAndTellsFailures)
{
    if (!test::SmtpSink::Available())
        GTEST_SKIP() << "skipped: /usr/bin/python3 has no aiosmtpd";
    test::SmtpSink sink(test::SmtpSink::Plain);
    const QByteArray bytes = QByteArray(3000, '\x01') + "\r\n.\r\n" + QByteArray(100, '\xFF');
    const QString attachment = Attachment(bytes);
    clsEmail email;
    email.Email_SetSendMethod(clsEmail::ESM_SMTP);
    email.Email_SetSmtpConfig(sink.Server(), QStringLiteral("office@example.com"));
    EXPECT_TRUE(email.Email(QStringLiteral("Single"), QStringLiteral("Body"), QStringLiteral("figures.bin"), attachment,
                            {}, QStringLiteral("a@example.com")));
    const QJsonObject first = sink.Message(1);
    ASSERT_FALSE(first.isEmpty());
    EXPECT_EQ(first[QStringLiteral("from")].toString(), "office@example.com");
    EXPECT_EQ(first[QStringLiteral("parts")].toArray().at(1).toObject()[QStringLiteral("filename")].toString(), "figures.bin");
    EXPECT_EQ(test::SmtpSink::PartBytes(first, 1), bytes);
    EXPECT_TRUE(QFileInfo::exists(attachment));
    EXPECT_TRUE(TempEntries().isEmpty());
    EXPECT_EQ(email.GetEmailLog(), QStringLiteral("Email_Batch_Start") + CRLF + QStringLiteral("Email_Batch_Send"));

    ASSERT_TRUE(email.Email_Batch_Start());
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Two"), QStringLiteral("2"), {}, {}, {}, QStringLiteral("b@example.com")));
    EXPECT_FALSE(email.Email_Batch_Send(QStringLiteral("Three"), QStringLiteral("3"), {}, {}, {},
                                        QStringLiteral("reject@example.com")));
    ASSERT_EQ(Prompts().size(), 1);
    const QString failure = Prompts().at(0);
    EXPECT_TRUE(failure.startsWith(QStringLiteral("Error '-2147221504' occurred while creating a mail item.") + CRLF + CRLF
                                   + QStringLiteral("Failed to send E-mail: '")))
        << qPrintable(failure);
    EXPECT_TRUE(failure.endsWith(QStringLiteral("'") + CRLF + CRLF + QStringLiteral("Email_Batch_Start") + CRLF
                                 + QStringLiteral("Email_Batch_Send")));
    EXPECT_EQ(email.GetEmailLog(), failure);
    EXPECT_TRUE(email.Email_Batch_Send(QStringLiteral("Four"), QStringLiteral("4"), {}, {}, {}, QStringLiteral("c@example.com")))
        << "the batch goes on after a refused message";
    EXPECT_TRUE(email.Email_Batch_Complete());
    EXPECT_EQ(sink.Message(3)[QStringLiteral("headers")].toObject()[QStringLiteral("Subject")].toString(), "Four");
    EXPECT_EQ(sink.MessageCount(), 3);
}

TEST_F(EmailTest, SmtpServerThatStallsEndsTheStart)
{
    if (!test::SmtpSink::Available())
        GTEST_SKIP() << "skipped: /usr/bin/python3 has no aiosmtpd";
    test::SmtpSink sink(test::SmtpSink::StallAfterGreeting);
    clsEmail email;
    email.Email_SetSendMethod(clsEmail::ESM_SMTP);
    email.Email_SetSmtpConfig(sink.Server(), QStringLiteral("office@example.com"));
    SmtpOptions options;
    options.connectTimeoutMs = 1500;
    email.SetSmtpOptions(options);
    EXPECT_FALSE(email.Email(QStringLiteral("S"), QStringLiteral("M"), {}, {}, {}, QStringLiteral("a@example.com")));
    EXPECT_EQ(Prompts(), QStringList{QStringLiteral("Error '-2147221504' occurred when attempting to use SMTP to send e-mail.")
                                      + CRLF + CRLF + QStringLiteral("Unable to connect to SMTP Server '") + sink.Server()
                                      + QStringLiteral("'.")});
}

}  // namespace
}  // namespace korvex
