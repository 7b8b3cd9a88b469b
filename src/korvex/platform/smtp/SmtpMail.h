// The send-mail component: a sender of e-mails over SMTP (plain, STARTTLS or implicit TLS,
// with or without AUTH) built on libcurl. Its members follow the component the library was
// written against: set the server and connect once, set the message's properties and call
// Send for each e-mail, then disconnect. A failed send is told through SendFailed with the
// explanation; a good one through SendSuccesful. Transfers run through libcurl's multi
// interface so that the host's events keep running while the server answers, and every
// stage is bounded by a timeout, so a server that stops answering ends in a failure.
#pragma once

#include <QObject>
#include <QString>

#include <memory>

namespace korvex {

enum class SmtpSecurity { None, StartTls, ImplicitTls };

struct SmtpOptions {
    int port = 0;  // 0: 25, or 465 with implicit TLS
    SmtpSecurity security = SmtpSecurity::None;
    QString userName;  // AUTH is used when given; to another machine only over TLS
    QString password;
    QString caFile;  // certificates to trust beyond the system's
    int connectTimeoutMs = 30000;  // until the session is ready to take mail
    int transferTimeoutMs = 120000;  // the whole of one send
};

class SmtpMail : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString Delimiter READ Delimiter WRITE SetDelimiter)
    Q_PROPERTY(QString SMTPHost READ SMTPHost WRITE SetSMTPHost)
    Q_PROPERTY(QString From READ From WRITE SetFrom)
    Q_PROPERTY(QString FromDisplayName READ FromDisplayName WRITE SetFromDisplayName)
    Q_PROPERTY(QString Recipient READ Recipient WRITE SetRecipient)
    Q_PROPERTY(QString RecipientDisplayName READ RecipientDisplayName WRITE SetRecipientDisplayName)
    Q_PROPERTY(QString Subject READ Subject WRITE SetSubject)
    Q_PROPERTY(QString Message READ Message WRITE SetMessage)
    Q_PROPERTY(QString Attachment READ Attachment WRITE SetAttachment)
    Q_PROPERTY(bool AsHTML READ AsHTML WRITE SetAsHTML)
    Q_PROPERTY(QString CcRecipient READ CcRecipient WRITE SetCcRecipient)
    Q_PROPERTY(QString BccRecipient READ BccRecipient WRITE SetBccRecipient)

public:
    explicit SmtpMail(QObject* parent = nullptr);
    ~SmtpMail() override;

    // The list delimiter separates several recipients or attachments in one property
    // (";" also separates recipients).
    const QString& Delimiter() const { return mDelimiter; }
    void SetDelimiter(const QString& value) { mDelimiter = value; }
    // "host" or "host:port" (the port overrides the options' port).
    const QString& SMTPHost() const { return mHost; }
    void SetSMTPHost(const QString& value) { mHost = value; }
    const QString& From() const { return mFrom; }
    void SetFrom(const QString& value) { mFrom = value; }
    const QString& FromDisplayName() const { return mFromDisplayName; }
    void SetFromDisplayName(const QString& value) { mFromDisplayName = value; }
    const QString& Recipient() const { return mRecipient; }
    void SetRecipient(const QString& value) { mRecipient = value; }
    const QString& RecipientDisplayName() const { return mRecipientDisplayName; }
    void SetRecipientDisplayName(const QString& value) { mRecipientDisplayName = value; }
    const QString& Subject() const { return mSubject; }
    void SetSubject(const QString& value) { mSubject = value; }
    const QString& Message() const { return mMessage; }
    void SetMessage(const QString& value) { mMessage = value; }
    const QString& Attachment() const { return mAttachment; }
    void SetAttachment(const QString& value) { mAttachment = value; }
    bool AsHTML() const { return mAsHTML; }
    void SetAsHTML(bool value) { mAsHTML = value; }
    const QString& CcRecipient() const { return mCc; }
    void SetCcRecipient(const QString& value) { mCc = value; }
    const QString& BccRecipient() const { return mBcc; }
    void SetBccRecipient(const QString& value) { mBcc = value; }

    void SetOptions(const SmtpOptions& options) { mOptions = options; }
    const SmtpOptions& Options() const { return mOptions; }

    // Opens the session: connects, takes the greeting, TLS and AUTH as configured. False, with
    // the reason in LastError, when that fails.
    Q_INVOKABLE bool Connect();
    // Sends the message the properties describe over the session (reconnecting when the
    // server closed it). Emits SendFailed or SendSuccesful; returns whether it was sent.
    Q_INVOKABLE bool Send();
    Q_INVOKABLE void Disconnect();
    bool IsConnected() const;
    const QString& LastError() const { return mLastError; }

signals:
    void SendFailed(const QString& explanation);
    void SendSuccesful();

private:
    struct Session;
    QString Url() const;
    bool RequiresStartTlsForLogin() const;
    void ApplySessionOptions(void* easy) const;
    bool Fail(const QString& explanation);

    QString mDelimiter = QStringLiteral(";");
    QString mHost;
    QString mFrom;
    QString mFromDisplayName;
    QString mRecipient;
    QString mRecipientDisplayName;
    QString mSubject;
    QString mMessage;
    QString mAttachment;
    bool mAsHTML = false;
    QString mCc;
    QString mBcc;
    SmtpOptions mOptions;
    QString mLastError;
    std::unique_ptr<Session> mSession;
};

}  // namespace korvex
