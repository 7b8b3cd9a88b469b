// One curl multi handle per session keeps the connection between the messages of a batch;
// the waits poll it in short slices and let the host's events run in between.
#include "korvex/platform/smtp/SmtpMail.h"

#include "korvex/platform/smtp/MimeMessage.h"
#include "korvex/runtime/Error.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QUrl>

#include <curl/curl.h>

#include <cstring>
#include <mutex>

namespace korvex {
namespace {

void InitCurl()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

struct Upload {
    QByteArray data;
    qsizetype at = 0;
};

size_t ReadUpload(char* buffer, size_t size, size_t count, void* user)
{
    auto* upload = static_cast<Upload*>(user);
    const size_t left = static_cast<size_t>(upload->data.size() - upload->at);
    const size_t n = std::min(left, size * count);
    std::memcpy(buffer, upload->data.constData() + upload->at, n);
    upload->at += static_cast<qsizetype>(n);
    return n;
}

// The explanation of a failed transfer: curl's detailed message when it gave one.
QString Explain(CURLcode code, const char* detail)
{
    const QString text = QString::fromUtf8(detail).trimmed();
    return text.isEmpty() ? QString::fromUtf8(curl_easy_strerror(code)) : text;
}

}  // namespace

struct SmtpMail::Session {
    CURLM* multi = curl_multi_init();
    CURL* easy = curl_easy_init();
    ~Session()
    {
        curl_multi_cleanup(multi);  // closes the cached connection
        curl_easy_cleanup(easy);
    }

    // Runs one transfer on the session's connection cache, letting events run meanwhile.
    CURLcode Perform(CURL* handle)
    {
        curl_multi_add_handle(multi, handle);
        int running = 1;
        while (running) {
            if (curl_multi_perform(multi, &running) != CURLM_OK)
                break;
            if (running)
                curl_multi_poll(multi, nullptr, 0, 50, nullptr);
            if (QCoreApplication::instance())
                QCoreApplication::processEvents();
        }
        CURLcode result = CURLE_OK;
        int left = 0;
        while (CURLMsg* message = curl_multi_info_read(multi, &left))
            if (message->msg == CURLMSG_DONE && message->easy_handle == handle)
                result = message->data.result;
        curl_multi_remove_handle(multi, handle);
        return result;
    }
};

SmtpMail::SmtpMail(QObject* parent) : QObject(parent) {}

SmtpMail::~SmtpMail() = default;

QString SmtpMail::Url() const
{
    const bool implicitTls = mOptions.security == SmtpSecurity::ImplicitTls;
    QString host = mHost.trimmed();
    int port = mOptions.port ? mOptions.port : (implicitTls ? 465 : 25);
    const qsizetype colon = host.lastIndexOf(QLatin1Char(':'));
    if (colon > 0 && !host.contains(QLatin1Char(']'), Qt::CaseSensitive)) {
        bool ok = false;
        const int given = host.mid(colon + 1).toInt(&ok);
        if (ok) {
            port = given;
            host.truncate(colon);
        }
    }
    return QStringLiteral("%1://%2:%3").arg(implicitTls ? QStringLiteral("smtps") : QStringLiteral("smtp"), host).arg(port);
}

bool SmtpMail::RequiresStartTlsForLogin() const
{
    // A password never crosses the network in clear: a plain session that logs in to another
    // machine must upgrade with STARTTLS or fail. Only this machine's own server is exempt.
    if (mOptions.userName.isEmpty() || mOptions.security != SmtpSecurity::None)
        return false;
    const QString host = QUrl(Url()).host();
    return host != QLatin1String("localhost") && !host.startsWith(QLatin1String("127.")) && host != QLatin1String("::1");
}

void SmtpMail::ApplySessionOptions(void* handle) const
{
    CURL* easy = static_cast<CURL*>(handle);
    curl_easy_setopt(easy, CURLOPT_URL, Url().toUtf8().constData());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(mOptions.connectTimeoutMs));
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(mOptions.transferTimeoutMs));
    if (mOptions.security == SmtpSecurity::StartTls || RequiresStartTlsForLogin())
        curl_easy_setopt(easy, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    if (!mOptions.caFile.isEmpty())
        curl_easy_setopt(easy, CURLOPT_CAINFO, mOptions.caFile.toUtf8().constData());
    if (!mOptions.userName.isEmpty()) {
        curl_easy_setopt(easy, CURLOPT_USERNAME, mOptions.userName.toUtf8().constData());
        curl_easy_setopt(easy, CURLOPT_PASSWORD, mOptions.password.toUtf8().constData());
    }
}

bool SmtpMail::Fail(const QString& explanation)
{
    mLastError = explanation;
    emit SendFailed(explanation);
    return false;
}

bool SmtpMail::IsConnected() const
{
    return mSession != nullptr;
}

bool SmtpMail::Connect()
{
    InitCurl();
    Disconnect();
    mLastError.clear();
    if (mHost.trimmed().isEmpty() || HasLineBreak(mHost)) {
        mLastError = QStringLiteral("No SMTP server given.");
        return false;
    }
    auto session = std::make_unique<Session>();
    // A connect-only transfer runs the greeting, STARTTLS and AUTH and stops there, so a
    // server that cannot be used is known before the first message.
    CURL* probe = curl_easy_init();
    char detail[CURL_ERROR_SIZE] = {};
    ApplySessionOptions(probe);
    curl_easy_setopt(probe, CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(probe, CURLOPT_ERRORBUFFER, detail);
    const CURLcode result = session->Perform(probe);
    curl_easy_cleanup(probe);
    if (result != CURLE_OK) {
        mLastError = result == CURLE_USE_SSL_FAILED && RequiresStartTlsForLogin()
                         ? QStringLiteral("The SMTP server offers no STARTTLS, and the user name and password are not "
                                          "sent over an unencrypted connection.")
                         : Explain(result, detail);
        return false;
    }
    mSession = std::move(session);
    return true;
}

void SmtpMail::Disconnect()
{
    mSession.reset();
}

bool SmtpMail::Send()
{
    mLastError.clear();
    if (!mSession)
        return Fail(QStringLiteral("Not connected to an SMTP server."));
    MailMessage message;
    message.from = mFrom.trimmed();
    message.fromName = mFromDisplayName;
    message.to = SplitAddresses(mRecipient, mDelimiter + QLatin1Char(';'));
    message.toName = mRecipientDisplayName;
    message.cc = SplitAddresses(mCc, mDelimiter + QLatin1Char(';'));
    message.bcc = SplitAddresses(mBcc, mDelimiter + QLatin1Char(';'));
    message.subject = mSubject;
    message.body = mMessage;
    message.html = mAsHTML;
    const QStringList attachments = mDelimiter.isEmpty() ? QStringList{mAttachment} : mAttachment.split(mDelimiter);
    for (const QString& path : attachments)
        if (!path.trimmed().isEmpty())
            message.attachments << MailAttachment{path, path.section(QLatin1Char('/'), -1)};

    Upload upload;
    try {
        // Anything refused here is refused before a byte reaches the server.
        upload.data = BuildMime(message, QDateTime::currentDateTime(), NewMessageId(message.from));
    } catch (const Error& error) {
        return Fail(error.Description());
    }

    CURL* easy = mSession->easy;
    curl_easy_reset(easy);
    char detail[CURL_ERROR_SIZE] = {};
    ApplySessionOptions(easy);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, detail);
    const QByteArray from = '<' + message.from.toLatin1() + '>';
    curl_easy_setopt(easy, CURLOPT_MAIL_FROM, from.constData());
    curl_slist* recipients = nullptr;
    for (const QStringList* list : {&message.to, &message.cc, &message.bcc})
        for (const QString& address : *list)
            recipients = curl_slist_append(recipients, ('<' + address.toLatin1() + '>').constData());
    curl_easy_setopt(easy, CURLOPT_MAIL_RCPT, recipients);
    curl_easy_setopt(easy, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(easy, CURLOPT_READFUNCTION, &ReadUpload);
    curl_easy_setopt(easy, CURLOPT_READDATA, &upload);
    curl_easy_setopt(easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(upload.data.size()));
    const CURLcode result = mSession->Perform(easy);
    curl_slist_free_all(recipients);
    if (result != CURLE_OK)
        return Fail(Explain(result, detail));
    emit SendSuccesful();
    return true;
}

}  // namespace korvex
