// The e-mail sender. Every automation step runs the way the mail systems expect to be
// driven: a failing step leaves its error pending and the next step still runs; the error is
// looked at where the sequence says, and shown to the user at the end of the stage.
#include "korvex/email/clsEmail.h"

#include "korvex/core/Environment.h"
#include "korvex/email/MapiDescription.h"
#include "korvex/platform/automation/Automation.h"
#include "korvex/platform/smtp/MimeMessage.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"
#include "korvex/runtime/Windows1252.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QTimer>

#include <cstdlib>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcEmail, "korvex.email")

namespace korvex {

namespace {

const QString CRLF = QStringLiteral("\r\n");
constexpr int kOutlookFolderDrafts = 16;
constexpr int kOutlookHtmlFormat = 2;
constexpr int kNotesEmbedAttachment = 1454;
constexpr int kAddinAlreadyConnected = static_cast<int>(0x80004005u);  // E_FAIL from Connect
const QString kAddinName = QStringLiteral("ZqSystemsOutlookEmailAddin.Connect");

QString& HelperProgramOverride()
{
    thread_local QString path;
    return path;
}

void Log(QString& log, const QString& entry)
{
    log += CRLF + entry;
}

void Exclaim(const QString& prompt)
{
    MsgBox(prompt, vbExclamation);
}

// Late-bound member access on a held object.
Variant Call(const Variant& object, const QString& name, QList<Variant> args = {})
{
    return CallByName(object.IsObject() ? object.Object() : nullptr, name, VbMethod, args);
}

Variant Get(const Variant& object, const QString& name)
{
    return CallByName(object.IsObject() ? object.Object() : nullptr, name, VbGet);
}

void Let(const Variant& object, const QString& name, const Variant& value)
{
    CallByName(object.IsObject() ? object.Object() : nullptr, name, VbLet, value);
}

bool IsSomething(const Variant& object)
{
    return object.IsObject() && object.Object() != nullptr;
}

// Waits on the user-interface thread, letting the host's events run.
void WaitLettingEventsRun(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

// A unique name in the temporary folder with the given prefix; `makeFolder` creates it as a
// folder private to the user, otherwise as a file private to the user (opened in `fd`).
QString MakeTemporary(bool makeFolder, int* fd = nullptr)
{
    QByteArray pattern = QFile::encodeName(AddBackslash(GetTempFolder()) + QStringLiteral("ffXXXXXX"));
    if (makeFolder)
        return mkdtemp(pattern.data()) ? QFile::decodeName(pattern) : QString();
    const int handle = mkstemp(pattern.data());
    if (handle < 0)
        return {};
    *fd = handle;
    return QFile::decodeName(pattern);
}

// The user's signature for Outlook before version 12, from the mail profile's account and
// the signature folder.
QString UserSignature(QString account, int majorVersion, bool html)
{
    if (account.trimmed().isEmpty())
        account = QStringLiteral("Microsoft Exchange");
    const QString profiles =
        QStringLiteral("Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles\\");
    QString signatureName;
    if (auto key = RegistryKey::Open(HKEY_CURRENT_USER, profiles)) {
        const QString accounts = profiles + RegQueryString(*key, QStringLiteral("DefaultProfile"))
                                 + QStringLiteral("\\9375CFF0413111d3B88A00104B2A6676");
        if (auto accountsKey = RegistryKey::Open(HKEY_CURRENT_USER, accounts)) {
            for (const QString& sub : accountsKey->SubKeyNames()) {
                auto subKey = RegistryKey::Open(HKEY_CURRENT_USER, accounts + QLatin1Char('\\') + sub);
                if (subKey && RegQueryString(*subKey, QStringLiteral("Account Name")) == account) {
                    signatureName = RegQueryString(*subKey, QStringLiteral("New Signature"));
                    break;
                }
            }
        }
    }
    if (signatureName.isEmpty() || signatureName.compare(QLatin1String("(none)"), Qt::CaseInsensitive) == 0)
        return {};
    // The signature name comes from the registry: it must stay a plain file name.
    if (signatureName.contains(QLatin1Char('/')) || signatureName.contains(QLatin1Char('\\'))
        || signatureName.startsWith(QLatin1Char('.')))
        return {};

    const QString appData = GetSpecialFolder(150);
    QString folder = appData + QStringLiteral("Microsoft/Signatures/");
    if (auto general = RegistryKey::Open(
            HKEY_CURRENT_USER, QStringLiteral("Software\\Microsoft\\Office\\%1.0\\Common\\General").arg(majorVersion))) {
        const QString custom = RegQueryString(*general, QStringLiteral("Signatures"));
        if (!custom.isEmpty())
            folder = appData + QStringLiteral("Microsoft/") + custom + QLatin1Char('/');
    }
    QFile file(folder + signatureName + (html ? QStringLiteral(".htm") : QStringLiteral(".txt")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    // Plain-text signatures are often saved as Unicode with a byte-order mark; the rest are
    // in the ANSI code page.
    QString text;
    if (bytes.startsWith("\xFF\xFE"))
        text = QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData() + 2), (bytes.size() - 2) / 2);
    else if (bytes.startsWith("\xEF\xBB\xBF"))
        text = QString::fromUtf8(bytes.mid(3));
    else
        text = FromWindows1252(bytes);
    text.replace(CRLF, QStringLiteral("\n"));
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    QString signature;
    for (const QString& line : text.split(QLatin1Char('\n')))
        signature += line + CRLF;
    return text.isEmpty() && bytes.isEmpty() ? QString() : signature;
}

// The place in an HTML signature after which the message text goes: behind the first
// "<BODY", then the first "<P", then (Outlook 12 on) the first "<o:p>", each overriding the
// one before. -1 when none is found.
qsizetype HtmlInsertionPoint(const QString& html, int majorVersion)
{
    auto closeOf = [&](const QString& tag) -> qsizetype {
        const qsizetype at = html.indexOf(tag, 0, Qt::CaseInsensitive);
        return at < 0 ? -1 : html.indexOf(QLatin1Char('>'), at);
    };
    qsizetype point = closeOf(QStringLiteral("<BODY"));
    if (const qsizetype p = closeOf(QStringLiteral("<P")); p >= 0)
        point = p;
    if (majorVersion >= 12)
        if (const qsizetype p = closeOf(QStringLiteral("<o:p>")); p >= 0)
            point = p;
    return point;
}

}  // namespace

// The pending error of a sequence of steps: the last one that failed, until cleared.
struct clsEmail::Err {
    int Number = 0;
    QString Description;

    explicit operator bool() const { return Number != 0; }
    void Clear() { *this = {}; }
    void Set(const Error& error)
    {
        Number = error.Number();
        Description = error.Description();
    }
    // Runs one step; a failure becomes the pending error. True when the step succeeded.
    template <class Step>
    bool Do(Step&& step)
    {
        try {
            step();
            return true;
        } catch (const Error& error) {
            Set(error);
            return false;
        }
    }
};

struct clsEmail::Mail {
    QString Subject;
    QString MsgText;
    QString AttachName;
    QString AttachPath;
    QString LotusSuccessMessage;
    QString ToAddr;
    bool AutoSend = false;
    bool IncludeSignature = false;
    QString StagedPath;  // empty without an attachment
};

namespace {

// Refuses what would let a caller reach beyond the e-mail: line breaks in the subject or the
// addresses (a header or a description line of their own), an attachment name that is not a
// plain file name, an attachment path that is not an existing file.
void CheckMail(const QString& subject, const QString& toAddr, const QString& attachName, const QString& attachPath)
{
    const QString source = QStringLiteral("clsEmail.Email_Batch_Send");
    if (HasLineBreak(subject))
        Raise(ObjectErrorBase, source, QStringLiteral("The subject must not contain a line break."));
    if (HasLineBreak(toAddr))
        Raise(ObjectErrorBase, source, QStringLiteral("The address must not contain a line break."));
    if (attachName.isEmpty() || attachPath.isEmpty())
        return;
    if (HasLineBreak(attachName) || attachName.contains(QLatin1Char('/')) || attachName.contains(QLatin1Char('\\'))
        || attachName == QLatin1String(".") || attachName == QLatin1String(".."))
        Raise(ObjectErrorBase, source, QStringLiteral("The attachment name '%1' is not a file name.").arg(attachName));
    const QFileInfo file(attachPath);
    if (HasLineBreak(attachPath) || !file.isAbsolute() || !file.isFile() || file.isSymLink())
        Raise(ObjectErrorBase, source, QStringLiteral("The attachment '%1' is not a file.").arg(attachPath));
}

// The attachment moved into a fresh private folder under its display name for the time of
// one send, and put back afterwards whatever happened.
class StagedAttachment {
public:
    void Stage(const QString& attachName, const QString& attachPath)
    {
        if (attachName.isEmpty() || attachPath.isEmpty())
            return;
        mFolder = MakeTemporary(true);
        if (mFolder.isEmpty())
            Raise(vbErrPathFileAccess, QStringLiteral("clsEmail.Email_Batch_Send"));
        mOriginal = attachPath;
        mStaged = mFolder + QLatin1Char('/') + attachName;
        if (mStaged.compare(mOriginal, Qt::CaseInsensitive) != 0) {
            QFile::remove(mStaged);
            if (!QFile::rename(mOriginal, mStaged))
                qCWarning(lcEmail) << "the attachment" << mOriginal << "could not be moved to" << mStaged;
        }
    }
    ~StagedAttachment()
    {
        if (mFolder.isEmpty())
            return;
        if (mStaged.compare(mOriginal, Qt::CaseInsensitive) != 0 && QFileInfo::exists(mStaged)
            && !QFile::rename(mStaged, mOriginal))
            qCWarning(lcEmail) << "the attachment could not be moved back to" << mOriginal << "and stays at" << mStaged;
        // Only an empty folder goes, so an attachment that could not be moved back survives.
        if (!QDir().rmdir(mFolder))
            qCWarning(lcEmail) << "the staging folder" << mFolder << "could not be removed";
    }
    const QString& Path() const { return mStaged; }

private:
    QString mFolder;
    QString mOriginal;
    QString mStaged;
};

}  // namespace

clsEmail::clsEmail(QObject* parent) : QObject(parent) {}

clsEmail::~clsEmail()
{
    ReleaseAll();
}

void clsEmail::Email_SetSmtpConfig(const QString& Server, const QString& FromAddress)
{
    mSmtpServer = Server;
    mSmtpFrom = FromAddress;
}

void clsEmail::SetMapiHelperProgram(const QString& path)
{
    HelperProgramOverride() = path;
}

QString clsEmail::MapiHelperProgram()
{
    return HelperProgramOverride().isEmpty() ? GetSpecialFolder(1) + QStringLiteral("ZqMAPIEmail")
                                             : HelperProgramOverride();
}

bool clsEmail::Email(const QString& Subject, const QString& MsgText, const QString& AttachName,
                     const QString& AttachPath, const QString& LotusSuccessMessage, const QString& ToAddr,
                     bool AutoSend, bool IncludeSignature)
{
    const bool started = Email_Batch_Start();
    bool sent = false;
    if (started)
        sent = Email_Batch_Send(Subject, MsgText, AttachName, AttachPath, LotusSuccessMessage, ToAddr, AutoSend,
                                IncludeSignature);
    const bool completed = Email_Batch_Complete();
    return started && sent && completed;
}

bool clsEmail::Email_Batch_Start()
{
    QString log = QStringLiteral("Email_Batch_Start");
    Err err;
    bool started = false;

    if (mMethod == ESM_Auto) {
        err.Do([&] {
            if (auto key = RegistryKey::Open(HKEY_CURRENT_USER, QStringLiteral("Software\\Zq Systems\\Email Send Method"))) {
                const QString value = RegQueryString(*key, QString());
                if (!value.isEmpty())
                    mMethod = CInt(Variant(value));
            }
        });
        err.Clear();
    }

    if (mMethod == ESM_SMTP) {
        if (err.Do([&] { ConnectSmtp(); })) {
            started = true;
        } else {
            Exclaim(QStringLiteral("Error '%1' occurred when attempting to use SMTP to send e-mail.").arg(err.Number)
                    + CRLF + CRLF + err.Description);
        }
        err.Clear();
    }

    if (mMethod == ESM_Auto || mMethod == ESM_MAPI) {
        QString client;
        QString clientName;
        if (auto key = RegistryKey::Open(HKEY_LOCAL_MACHINE, QStringLiteral("SOFTWARE\\Clients\\Mail")))
            client = RegQueryString(*key, QString());
        if (auto key = RegistryKey::Open(HKEY_LOCAL_MACHINE, QStringLiteral("SOFTWARE\\Clients\\Mail\\") + client))
            clientName = RegQueryString(*key, QString());
        if (clientName.compare(QLatin1String("Affixa"), Qt::CaseInsensitive) == 0) {
            mMethod = ESM_MAPI;
            started = true;
        }
    }

    if (mMethod == ESM_Auto || mMethod == ESM_LotusNotes) {
        if (err.Do([&] { mNotesSession = Variant(CreateObject(QStringLiteral("Notes.NotesSession"))); })) {
            mMethod = ESM_LotusNotes;
            bool open = false;
            err.Do([&] { mNotesDatabase = Call(mNotesSession, QStringLiteral("GetDatabase"), {QString(), QString()}); });
            err.Do([&] { open = CBool(Get(mNotesDatabase, QStringLiteral("IsOpen"))); });
            if (!open) {
                err.Do([&] { Call(mNotesDatabase, QStringLiteral("OpenMail")); });
                err.Do([&] { open = CBool(Get(mNotesDatabase, QStringLiteral("IsOpen"))); });
            }
            if (open) {
                started = true;
            } else {
                Exclaim(QStringLiteral("Unable to create e-mail.") + CRLF + CRLF
                        + QStringLiteral("Unable to open a Lotus Notes e-mail database."));
            }
        }
        if (mMethod == ESM_LotusNotes && err) {
            Exclaim(QStringLiteral("Error '%1' occurred when attempting to use Lotus Notes to send e-mail.").arg(err.Number)
                    + CRLF + CRLF + err.Description);
            started = false;
        }
        err.Clear();
    }

    if (mMethod != ESM_SMTP)
        Log(log, QStringLiteral("Begin Outlook Email"));

    if ((mMethod == ESM_Auto && !started) || mMethod == ESM_Outlook) {
        if (OpenOutlook(log, err)) {
            mMethod = ESM_Outlook;
            started = true;
        }
    }

    if (mMethod == ESM_Outlook && err) {
        Exclaim(QStringLiteral("Error '%1' occurred when creating a new Outlook mail item.").arg(err.Number) + CRLF + CRLF
                + err.Description + CRLF + CRLF + log);
        err.Clear();
    }

    if (mMethod == ESM_Auto && !started)
        Exclaim(QStringLiteral("Failed to initialise either Lotus Notes or Microsoft Outlook."));

    mStartLog = log;
    return started;
}

bool clsEmail::OpenOutlook(QString& log, Err& err)
{
    const QString progId = QStringLiteral("Outlook.Application");
    if (err.Do([&] { mOutlook = Variant(GetObject(progId)); })) {
        Log(log, QStringLiteral("Email_Batch_Start Obtained a reference to the running Outlook"));
        mOutlookStartedHere = false;
    } else {
        err.Clear();
        if (err.Do([&] { mOutlook = Variant(CreateObject(progId)); })) {
            Log(log, QStringLiteral("Email_Batch_Start Created a new Outlook object"));
            mOutlookStartedHere = true;
        }
    }
    if (err) {
        Exclaim(QStringLiteral("Outlook failed, error %1").arg(err.Number) + CRLF + err.Description);
        // Told once; the later check for a pending error is about the set-up below.
        err.Clear();
        mOutlook = Variant();
        return false;
    }

    Log(log, QStringLiteral("Outlook application created"));
    Variant addin;
    err.Do([&] { addin = Call(Get(mOutlook, QStringLiteral("COMAddIns")), QStringLiteral("Item"), {kAddinName}); });
    err.Do([&] { Let(addin, QStringLiteral("Connect"), Variant(true)); });
    if (err.Number == kAddinAlreadyConnected)
        err.Clear();
    if (!err.Do([&] { mAddinObject = Get(addin, QStringLiteral("object")); }) || err) {
        err.Clear();
        mAddinObject = Variant();
        mTrustedOutlook = mOutlook;
        Log(log, QStringLiteral("Zq Outlook Addin not in use."));
    } else {
        Log(log, QStringLiteral("Outlook Addin created"));
        err.Do([&] { mTrustedOutlook = Call(mAddinObject, QStringLiteral("GetTrustedOutlookAppObject")); });
        Log(log, QStringLiteral("Trusted Outlook application created (Error %1)").arg(err.Number));
    }

    QString version;
    err.Do([&] { version = CStr(Get(mOutlook, QStringLiteral("Version"))); });
    mOutlookMajor = version.section(QLatin1Char('.'), 0, 0).toInt();
    Log(log, QStringLiteral("Outlook version - ") + version);

    OpenDraftsFolder(log, err);
    return true;
}

void clsEmail::OpenDraftsFolder(QString& log, Err& err)
{
    const int attempts = mOutlookStartedHere ? 200 : 20;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        if (err.Do([&] {
                const Variant space = Call(mTrustedOutlook, QStringLiteral("GetNamespace"), {QStringLiteral("MAPI")});
                mDrafts = Call(space, QStringLiteral("GetDefaultFolder"), {kOutlookFolderDrafts});
            })) {
            Log(log, QStringLiteral("Drafts folder opened"));
            return;
        }
        mDrafts = Variant();
        if (mOutlookMajor < 10) {
            Log(log, QStringLiteral("Drafts folder not opened"));
            return;
        }
        Log(log, QStringLiteral("Error %1 (%2) opening Drafts folder").arg(err.Number).arg(err.Description));
        err.Clear();
        // Outlook that was just started needs a moment before its folders answer.
        WaitLettingEventsRun(100);
        QCoreApplication::processEvents();
    }
}

bool clsEmail::Email_Batch_Send(const QString& Subject, const QString& MsgText, const QString& AttachName,
                                const QString& AttachPath, const QString& LotusSuccessMessage, const QString& ToAddr,
                                bool AutoSend, bool IncludeSignature)
{
    QString log = mStartLog + CRLF + QStringLiteral("Email_Batch_Send");
    Err err;
    bool result = false;
    Mail mail{Subject, MsgText, AttachName, AttachPath, LotusSuccessMessage, ToAddr, AutoSend, IncludeSignature, {}};
    {
        StagedAttachment staged;
        if (err.Do([&] { CheckMail(Subject, ToAddr, AttachName, AttachPath); })
            && err.Do([&] { staged.Stage(AttachName, AttachPath); })) {
            mail.StagedPath = staged.Path();
            switch (mMethod) {
            case ESM_LotusNotes: result = SendNotes(mail, err); break;
            case ESM_Outlook: result = SendOutlook(mail, log, err); break;
            case ESM_MAPI: result = SendMapi(mail, log, err); break;
            case ESM_SMTP: result = SendSmtp(mail, err); break;
            default: break;
            }
        }
        mEmailLog = log;
        if (err) {
            const QString message = QStringLiteral("Error '%1' occurred while creating a mail item.").arg(err.Number)
                                    + CRLF + CRLF + err.Description + CRLF + CRLF + log;
            Exclaim(message);
            mEmailLog = message;
        }
    }  // the attachment goes back here
    return result;
}

bool clsEmail::SendNotes(const Mail& mail, Err& err)
{
    Variant document;
    Variant body;
    err.Do([&] { document = Call(mNotesDatabase, QStringLiteral("CreateDocument")); });
    err.Do([&] { Let(document, QStringLiteral("Form"), QStringLiteral("Memo")); });
    err.Do([&] { Let(document, QStringLiteral("Subject"), mail.Subject); });
    err.Do([&] { body = Call(document, QStringLiteral("CreateRichTextItem"), {QStringLiteral("Body")}); });
    err.Do([&] { Call(body, QStringLiteral("AppendText"), {mail.MsgText.isEmpty() ? QStringLiteral(" ") : mail.MsgText}); });
    if (!mail.StagedPath.isEmpty())
        err.Do([&] { Call(body, QStringLiteral("EmbedObject"), {kNotesEmbedAttachment, QString(), mail.StagedPath}); });
    if (!mail.ToAddr.isEmpty())
        err.Do([&] { Let(document, QStringLiteral("SendTo"), mail.ToAddr); });
    if (!mail.AutoSend || mail.ToAddr.isEmpty()) {
        err.Do([&] { Call(document, QStringLiteral("Save")); });
        if (!mail.LotusSuccessMessage.isEmpty())
            MsgBox(mail.LotusSuccessMessage, vbInformation);
    } else {
        err.Do([&] { Let(document, QStringLiteral("SaveMessageOnSend"), Variant(true)); });
        err.Do([&] { Call(document, QStringLiteral("Send")); });
    }
    return true;
}

bool clsEmail::SendOutlook(const Mail& mail, QString& log, Err& err)
{
    Variant item;
    if (IsSomething(mDrafts)) {
        err.Do([&] { item = Call(Get(mDrafts, QStringLiteral("Items")), QStringLiteral("Add")); });
        Log(log, QStringLiteral("Draft item added"));
    } else {
        err.Do([&] { item = Call(mTrustedOutlook, QStringLiteral("CreateItem"), {0}); });
        Log(log, QStringLiteral("Mail item created"));
    }
    err.Do([&] { Let(item, QStringLiteral("Subject"), mail.Subject); });
    Log(log, QStringLiteral("Subject '") + mail.Subject + QStringLiteral("' created"));

    const int placed = PlaceOutlookBody(mail, item, log, err);

    if (!mail.StagedPath.isEmpty()) {
        Log(log, QStringLiteral("Save Message"));
        err.Do([&] { Call(item, QStringLiteral("Save")); });
        Log(log, QStringLiteral("Attach file"));
        err.Do([&] {
            Call(Get(item, QStringLiteral("Attachments")), QStringLiteral("Add"), {mail.StagedPath, 1, placed, mail.AttachName});
        });
    }
    if (!mail.ToAddr.isEmpty()) {
        Log(log, QStringLiteral("Set To Address"));
        err.Do([&] { Let(item, QStringLiteral("To"), mail.ToAddr); });
    }
    Log(log, QStringLiteral("Save"));
    err.Do([&] { Call(item, QStringLiteral("Save")); });
    if (!mail.AutoSend || mail.ToAddr.isEmpty()) {
        Log(log, QStringLiteral("Display"));
        err.Do([&] { Call(item, QStringLiteral("Display")); });
    } else if (!mOutlookStartedHere) {
        Log(log, QStringLiteral("Auto Send"));
        if (!err.Do([&] { Call(item, QStringLiteral("Send")); })) {
            err.Clear();
            Log(log, QStringLiteral("Error sending so display draft"));
            err.Do([&] { Call(item, QStringLiteral("Display")); });
        }
    } else {
        // An Outlook started by this batch may close before a send is through; the items go
        // out when the batch completes.
        Log(log, QStringLiteral("Auto Send (Postponed)"));
        mPostponed.append(item);
    }
    return true;
}

// Places the body (and the signature when asked for) and returns the length of the text
// placed, where the attachment goes.
int clsEmail::PlaceOutlookBody(const Mail& mail, const Variant& item, QString& log, Err& err)
{
    const QString body = QStringLiteral("Body");
    if (!mail.IncludeSignature) {
        const QString text = mail.MsgText + CRLF;
        err.Do([&] { Let(item, body, text); });
        return static_cast<int>(text.size());
    }

    Log(log, QStringLiteral("Include the signature"));
    QString account;
    err.Do([&] {
        const Variant accounts = Get(Get(item, QStringLiteral("Session")), QStringLiteral("Accounts"));
        account = CStr(Get(Call(accounts, QStringLiteral("Item"), {1}), QStringLiteral("DisplayName")));
    });
    if (account.trimmed().isEmpty()) {
        Log(log, QStringLiteral("Default Account not found, use \"Microsoft Exchange\""));
        account = QStringLiteral("Microsoft Exchange");
    } else {
        Log(log, QStringLiteral("Default Account '") + account + QLatin1Char('\''));
    }
    int format = 0;
    if (!err.Do([&] { format = CLng(Get(item, QStringLiteral("BodyFormat"))); })) {
        const QString text = mail.MsgText + CRLF;
        err.Do([&] { Let(item, body, text); });
        return static_cast<int>(text.size());
    }

    const bool html = format == kOutlookHtmlFormat;
    QString text;
    QString signature;
    if (mOutlookMajor < 12) {
        Log(log, QStringLiteral("Outlook version is < 12"));
        if (html) {
            text = mail.MsgText + CRLF + CRLF;
            Log(log, QStringLiteral("Format is HTML"));
        } else {
            text = mail.MsgText + CRLF + CRLF + CRLF;
            Log(log, QStringLiteral("Format is NOT HTML"));
        }
        signature = UserSignature(account, mOutlookMajor, html);
    } else {
        Log(log, QStringLiteral("Outlook version is >= 12"));
        if (mOutlookMajor < 16) {
            // Asking for the editor makes Outlook put the signature into the item.
            err.Do([&] { Get(Get(item, QStringLiteral("GetInspector")), QStringLiteral("EditorType")); });
        } else {
            Log(log, QStringLiteral("Outlook version is >= 16"));
            err.Do([&] { Call(item, QStringLiteral("Display")); });
        }
        text = mail.MsgText + CRLF;
        if (html) {
            Log(log, QStringLiteral("Format is HTML"));
            err.Do([&] { signature = CStr(Get(item, QStringLiteral("HTMLBody"))); });
        } else {
            Log(log, QStringLiteral("Format is NOT HTML"));
            err.Do([&] { signature = CStr(Get(item, body)); });
        }
    }

    if (!html) {
        Log(log, QStringLiteral("Format is NOT HTML"));
        err.Do([&] { Let(item, body, text + signature); });
        return static_cast<int>(text.size());
    }
    if (signature.trimmed().isEmpty()) {
        err.Do([&] { Let(item, body, text); });
        return static_cast<int>(text.size());
    }
    const qsizetype point = HtmlInsertionPoint(signature, mOutlookMajor);
    text.replace(CRLF, QStringLiteral("<BR>"));
    const QString htmlBody = point < 0 ? text + signature : signature.left(point + 1) + text + signature.mid(point + 1);
    err.Do([&] { Let(item, QStringLiteral("HTMLBody"), htmlBody); });
    return static_cast<int>(text.size());
}

bool clsEmail::SendMapi(const Mail& mail, QString& log, Err& err)
{
    Log(log, QStringLiteral("Use MAPI"));
    int fd = -1;
    const QString path = MakeTemporary(false, &fd);
    if (path.isEmpty()) {
        err.Set(Error(vbErrPathFileAccess, QStringLiteral("clsEmail.Email_Batch_Send")));
        return false;
    }
    Log(log, QStringLiteral("MAPI Description file opened:- ") + path);
    QFile file;
    const QByteArray contents = EncodeMapiDescription(
        MapiDescriptionLines(mail.ToAddr, mail.Subject, mail.MsgText, mail.StagedPath, mail.AttachName, mail.AutoSend));
    const bool written = file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)
                         && file.write(contents) == contents.size();
    file.close();
    if (!written) {
        QFile::remove(path);
        err.Set(Error(vbErrDeviceIO, QStringLiteral("clsEmail.Email_Batch_Send")));
        return false;
    }
    Log(log, QStringLiteral("MAPI Description file Closed"));

    const QString program = MapiHelperProgram();
    Log(log, QStringLiteral("MAPI:- Start Zq MAPI Email from:-") + program + QLatin1Char(' ') + path);
    auto* process = new QProcess;
    process->setProgram(program);
    process->setArguments({path});
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start();
    if (!process->waitForStarted()) {
        delete process;
        QFile::remove(path);
        err.Set(Error(vbErrFileNotFound, QStringLiteral("clsEmail.Email_Batch_Send")));
        return false;
    }
    // Up to 31 waits of a second, the host's events running in between.
    bool ended = false;
    QObject::connect(process, &QProcess::finished, process, [&ended] { ended = true; });
    for (int wait = 1; wait <= 31 && !ended; ++wait) {
        QEventLoop loop;
        QObject::connect(process, &QProcess::finished, &loop, &QEventLoop::quit);
        QTimer::singleShot(1000, &loop, &QEventLoop::quit);
        if (process->state() != QProcess::NotRunning)
            loop.exec();
        ended = ended || process->state() == QProcess::NotRunning;
        if (!ended)
            QCoreApplication::processEvents();
    }
    if (ended) {
        delete process;
        // The helper has read the file; nothing of the message stays behind.
        QFile::remove(path);
    } else {
        // The helper keeps running and removes the file itself once it has read it.
        qCWarning(lcEmail) << "the MAPI helper did not end in time:" << program;
        QObject::disconnect(process, nullptr, nullptr, nullptr);
        QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    }
    return false;
}

void clsEmail::ConnectSmtp()
{
    mSmtp = std::make_unique<SmtpMail>();
    QObject::connect(mSmtp.get(), &SmtpMail::SendFailed, this, [this](const QString& explanation) {
        mSmtpFailed = true;
        mSmtpFailure = explanation;
    });
    QObject::connect(mSmtp.get(), &SmtpMail::SendSuccesful, this, [this] {
        mSmtpFailed = false;
        mSmtpFailure.clear();
    });
    mSmtp->SetOptions(mSmtpOptions);
    mSmtp->SetDelimiter(QStringLiteral("|"));
    mSmtp->SetSMTPHost(mSmtpServer);
    if (!mSmtp->Connect()) {
        qCWarning(lcEmail) << "SMTP server" << mSmtpServer << "refused the session:" << mSmtp->LastError();
        mSmtp.reset();
        Raise(ObjectErrorBase, QStringLiteral("clsEmail.Email_Batch_Start"),
              QStringLiteral("Unable to connect to SMTP Server '") + mSmtpServer + QStringLiteral("'."));
    }
}

bool clsEmail::SendSmtp(const Mail& mail, Err& err)
{
    bool sent = false;
    err.Do([&] {
        sent = SmtpSendMail(mSmtpFrom, QString(), mail.ToAddr, QString(), mail.Subject, mail.MsgText, mail.StagedPath,
                            ectPlainText, QString(), QString());
    });
    return sent;
}

bool clsEmail::SmtpSendMail(const QString& from, const QString& fromName, const QString& to, const QString& toName,
                            const QString& subject, const QString& message, const QString& attachment,
                            EmailContentType contentType, const QString& cc, const QString& bcc)
{
    if (!mSmtp)
        Raise(vbErrObjectNotSet, QStringLiteral("clsEmail.Email_Batch_Send"));
    mSmtp->SetDelimiter(QStringLiteral("|"));
    mSmtp->SetFrom(from);
    mSmtp->SetFromDisplayName(fromName);
    mSmtp->SetRecipient(to);
    mSmtp->SetRecipientDisplayName(toName);
    mSmtp->SetSubject(subject);
    mSmtp->SetMessage(message);
    mSmtp->SetAttachment(attachment);
    if (contentType == ectPlainText || contentType == ectHTML)
        mSmtp->SetAsHTML(contentType == ectHTML);
    mSmtp->SetCcRecipient(cc);
    mSmtp->SetBccRecipient(bcc);
    mSmtp->Send();
    if (mSmtpFailed) {
        QString explanation = mSmtpFailure;
        if (explanation.endsWith(CRLF))
            explanation.chop(2);
        Raise(ObjectErrorBase, QStringLiteral("clsEmail.Email_Batch_Send"),
              QStringLiteral("Failed to send E-mail: '") + explanation + QLatin1Char('\''));
    }
    return true;
}

bool clsEmail::Email_Batch_Complete()
{
    QString errors;
    if (mMethod != ESM_SMTP) {
        for (Variant& item : mPostponed) {
            Err err;
            if (!err.Do([&] { Call(item, QStringLiteral("Send")); }))
                errors += QStringLiteral("Error '%1' (%2)").arg(err.Number).arg(err.Description) + CRLF;
            item = Variant();
        }
    } else if (mSmtp) {
        mSmtp->Disconnect();
        mSmtp.reset();
    }
    const bool ok = errors.isEmpty();
    if (!ok)
        Exclaim(errors + CRLF
                + QStringLiteral("One or more errors occurred while sending e-mails.  Check your Drafts folder for "
                                 "any e-mails which failed to send."));
    ReleaseAll();
    mEmailLog += errors;
    return ok;
}

void clsEmail::ReleaseAll()
{
    mPostponed.clear();
    mDrafts = Variant();
    mAddinObject = Variant();
    mTrustedOutlook = Variant();
    mOutlook = Variant();
    mNotesDatabase = Variant();
    mNotesSession = Variant();
    mOutlookStartedHere = false;
    mSmtp.reset();
}

}  // namespace korvex
