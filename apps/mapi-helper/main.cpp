// ZqMAPIEmail: hands the e-mail described by a description file to the desktop's mail
// system. With "<AutoSend>True" (and a recipient) it goes out at once through sendmail;
// otherwise the desktop's mail client shows it to the user through xdg-email, or sendmail
// sends it when there is no such client. Every run appends to a log in the user's data
// folder; the description file is removed once read, since it holds the message.
#include "korvex/email/MapiDescription.h"
#include "korvex/platform/smtp/MimeMessage.h"
#include "korvex/runtime/Error.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QSysInfo>
#include <QTemporaryDir>

#include <unistd.h>

namespace {

enum ExitCode { Sent = 0, BadArguments = 2, BadDescription = 3, NoMailProgram = 4, MailProgramFailed = 5 };

constexpr qint64 kLargestDescription = 16 * 1024 * 1024;

QString DataFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return folder;
}

class HelperLog {
public:
    HelperLog() : mFile(DataFolder() + QStringLiteral("/ZqMAPIEmail.log"))
    {
        if (mFile.open(QIODevice::Append | QIODevice::Text))
            mFile.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    void Write(const QString& line)
    {
        mFile.write((QDateTime::currentDateTime().toString(Qt::ISODate) + QLatin1Char(' ') + line + QLatin1Char('\n')).toUtf8());
        mFile.flush();
    }

private:
    QFile mFile;
};

QString FindProgram(const QString& name, const QStringList& extraFolders = {})
{
    QString path = QStandardPaths::findExecutable(name);
    if (path.isEmpty() && !extraFolders.isEmpty())
        path = QStandardPaths::findExecutable(name, extraFolders);
    return path;
}

QString SenderAddress()
{
    const QString configured = qEnvironmentVariable("EMAIL").trimmed();
    if (!configured.isEmpty())
        return configured;
    QString user = qEnvironmentVariable("USER");
    if (user.isEmpty())
        user = QStringLiteral("user");
    return user + QLatin1Char('@') + QSysInfo::machineHostName();
}

// The mail client may read the attachment after this program has ended, when clsEmail has
// already put the file back: it gets a copy in a private folder of its own, which a later
// run clears once it is a day old.
QString CopyForMailClient(const QString& path, const QString& name, HelperLog& log)
{
    const QString outbox = DataFolder() + QStringLiteral("/outbox");
    QDir().mkpath(outbox);
    QFile::setPermissions(outbox, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    const QDateTime dayAgo = QDateTime::currentDateTime().addDays(-1);
    for (const QFileInfo& old : QDir(outbox).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
        if (old.lastModified() < dayAgo)
            QDir(old.filePath()).removeRecursively();
    QTemporaryDir folder(outbox + QStringLiteral("/XXXXXX"));
    folder.setAutoRemove(false);
    const QString copy = folder.filePath(name);
    if (!folder.isValid() || !QFile::copy(path, copy)) {
        log.Write(QStringLiteral("Could not copy the attachment for the mail client: ") + path);
        return {};
    }
    return copy;
}

int RunMailProgram(const QString& program, const QStringList& args, const QByteArray& input, HelperLog& log)
{
    log.Write(QStringLiteral("Starting ") + program + QLatin1Char(' ') + args.join(QLatin1Char(' ')));
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, args);
    if (!process.waitForStarted()) {
        log.Write(QStringLiteral("Could not start ") + program);
        return MailProgramFailed;
    }
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(-1);
    const QByteArray output = process.readAll().trimmed();
    if (!output.isEmpty())
        log.Write(QString::fromLocal8Bit(output));
    const bool ok = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    log.Write(QStringLiteral("%1 ended with exit code %2").arg(QFileInfo(program).fileName()).arg(process.exitCode()));
    return ok ? Sent : MailProgramFailed;
}

int SendWithSendmail(const korvex::MapiDescription& mail, const QString& sendmail, HelperLog& log)
{
    korvex::MailMessage message;
    message.from = SenderAddress();
    message.to = korvex::SplitAddresses(mail.to.join(QLatin1Char(';')), QStringLiteral(";"));
    message.subject = mail.subject;
    message.body = mail.messageLines.join(QStringLiteral("\r\n"));
    if (!mail.attachmentPath.isEmpty())
        message.attachments << korvex::MailAttachment{mail.attachmentPath, mail.attachmentName};
    QByteArray text;
    try {
        text = korvex::BuildMime(message, QDateTime::currentDateTime(), korvex::NewMessageId(message.from));
    } catch (const korvex::Error& error) {
        log.Write(QStringLiteral("The message cannot be built: ") + error.Description());
        return BadDescription;
    }
    // Recipients come from the headers just built (-t); a lone "." line is not the end (-i).
    return RunMailProgram(sendmail, {QStringLiteral("-t"), QStringLiteral("-i")}, text, log);
}

int ShowInMailClient(const korvex::MapiDescription& mail, const QString& xdgEmail, HelperLog& log)
{
    QStringList args{QStringLiteral("--utf8")};
    if (!mail.subject.isEmpty())
        args << QStringLiteral("--subject") << mail.subject;
    if (!mail.messageLines.isEmpty())
        args << QStringLiteral("--body") << mail.messageLines.join(QLatin1Char('\n'));
    if (!mail.attachmentPath.isEmpty()) {
        const QString copy = CopyForMailClient(mail.attachmentPath, mail.attachmentName, log);
        if (copy.isEmpty())
            return BadDescription;
        args << QStringLiteral("--attach") << copy;
    }
    // xdg-email reads an argument as a mailto: address, whose query can attach any file: a
    // recipient is a plain address or nothing.
    static const QRegularExpression plainAddress(QStringLiteral("^[^\\s:?&=<>\"'-][^\\s:?&=<>\"']*@[^\\s:?&=<>\"']+$"));
    for (const QString& address : korvex::SplitAddresses(mail.to.join(QLatin1Char(';')), QStringLiteral(";"))) {
        if (!plainAddress.match(address).hasMatch()) {
            log.Write(QStringLiteral("The address ") + address + QStringLiteral(" is not a plain e-mail address; the mail is not shown."));
            return BadDescription;
        }
        args << address;
    }
    return RunMailProgram(xdgEmail, args, {}, log);
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ZqMAPIEmail"));
    HelperLog log;
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 2) {
        log.Write(QStringLiteral("Usage: ZqMAPIEmail <description file>"));
        return BadArguments;
    }
    const QString path = args.at(1);
    log.Write(QStringLiteral("Description file ") + path);
    const QFileInfo info(path);
    QFile file(path);
    if (!info.isFile() || info.isSymLink() || info.ownerId() != ::getuid() || info.size() > kLargestDescription
        || !file.open(QIODevice::ReadOnly)) {
        log.Write(QStringLiteral("The description file cannot be read"));
        return BadDescription;
    }
    const korvex::MapiDescription mail = korvex::ParseMapiDescription(file.readAll());
    file.close();
    QFile::remove(path);
    for (const QString& line : mail.unknownLines)
        log.Write(QStringLiteral("Line ignored: ") + line);
    log.Write(QStringLiteral("Subject '%1', %2 recipient(s), %3 line(s)%4%5")
                  .arg(mail.subject)
                  .arg(mail.to.size())
                  .arg(mail.messageLines.size())
                  .arg(mail.attachmentPath.isEmpty() ? QString() : QStringLiteral(", attachment ") + mail.attachmentPath)
                  .arg(mail.autoSend ? QStringLiteral(", sent at once") : QString()));
    if (!mail.attachmentPath.isEmpty()) {
        const QFileInfo attachment(mail.attachmentPath);
        if (!attachment.isAbsolute() || !attachment.isFile() || attachment.isSymLink() || mail.attachmentName.isEmpty()
            || mail.attachmentName.contains(QLatin1Char('/'))) {
            log.Write(QStringLiteral("The attachment is not a file: ") + mail.attachmentPath);
            return BadDescription;
        }
    }

    const QStringList systemFolders{QStringLiteral("/usr/sbin"), QStringLiteral("/usr/lib"), QStringLiteral("/sbin")};
    const bool hasRecipient = !korvex::SplitAddresses(mail.to.join(QLatin1Char(';')), QStringLiteral(";")).isEmpty();
    const QString sendmail = FindProgram(QStringLiteral("sendmail"), systemFolders);
    if (mail.autoSend && hasRecipient) {
        if (sendmail.isEmpty()) {
            log.Write(QStringLiteral("No sendmail program found"));
            return NoMailProgram;
        }
        return SendWithSendmail(mail, sendmail, log);
    }
    const QString xdgEmail = FindProgram(QStringLiteral("xdg-email"));
    if (!xdgEmail.isEmpty())
        return ShowInMailClient(mail, xdgEmail, log);
    if (sendmail.isEmpty() || !hasRecipient) {
        log.Write(QStringLiteral("No mail client and no sendmail program found, or no recipient"));
        return NoMailProgram;
    }
    return SendWithSendmail(mail, sendmail, log);
}
