// Sends e-mails, singly or in batches, through whichever mail system the user's machine
// offers: Lotus Notes or Outlook through automation, the MAPI helper program, or SMTP. The
// method is named by the host or chosen here (a per-user setting, the default mail client,
// what can be started). Nothing is ever raised to the caller: failures are shown to the user
// and reflected in the results, and every step leaves a line in the e-mail log.
#pragma once

#include "korvex/platform/smtp/SmtpMail.h"
#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

#include <memory>

namespace korvex {

class clsEmail : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString GetEmailLog READ GetEmailLog)

public:
    enum EMAILSENDMETHODS : int { ESM_Auto = 0, ESM_LotusNotes = 1, ESM_Outlook = 2, ESM_MAPI = 3, ESM_SMTP = 4 };
    Q_ENUM(EMAILSENDMETHODS)
    enum EmailContentType : int { ectPlainText = 0, ectHTML = 1 };
    Q_ENUM(EmailContentType)

    explicit clsEmail(QObject* parent = nullptr);
    ~clsEmail() override;

    Q_INVOKABLE bool Email(const QString& Subject, const QString& MsgText, const QString& AttachName,
                           const QString& AttachPath, const QString& LotusSuccessMessage = QString(),
                           const QString& ToAddr = QString(), bool AutoSend = false, bool IncludeSignature = false);
    Q_INVOKABLE bool Email_Batch_Complete();
    Q_INVOKABLE bool Email_Batch_Send(const QString& Subject, const QString& MsgText, const QString& AttachName,
                                      const QString& AttachPath, const QString& LotusSuccessMessage = QString(),
                                      const QString& ToAddr = QString(), bool AutoSend = false,
                                      bool IncludeSignature = false);
    Q_INVOKABLE bool Email_Batch_Start();
    QString GetEmailLog() const { return mEmailLog; }
    Q_INVOKABLE void Email_SetSendMethod(int Method) { mMethod = Method; }
    Q_INVOKABLE void Email_SetSmtpConfig(const QString& Server, const QString& FromAddress);

    // What this platform adds to the SMTP server's name: port, TLS, credentials, timeouts.
    void SetSmtpOptions(const SmtpOptions& options) { mSmtpOptions = options; }
    // The method in use: the one set, or the one the last start chose.
    int SendMethod() const { return mMethod; }
    // The MAPI helper program; by default "ZqMAPIEmail" in the system folder.
    static void SetMapiHelperProgram(const QString& path);
    static QString MapiHelperProgram();

private:
    struct Err;
    struct Mail;
    bool OpenOutlook(QString& log, Err& err);
    void OpenDraftsFolder(QString& log, Err& err);
    bool SendNotes(const Mail& mail, Err& err);
    bool SendOutlook(const Mail& mail, QString& log, Err& err);
    int PlaceOutlookBody(const Mail& mail, const Variant& item, QString& log, Err& err);
    bool SendMapi(const Mail& mail, QString& log, Err& err);
    bool SendSmtp(const Mail& mail, Err& err);
    void ConnectSmtp();
    bool SmtpSendMail(const QString& from, const QString& fromName, const QString& to, const QString& toName,
                      const QString& subject, const QString& message, const QString& attachment,
                      EmailContentType contentType, const QString& cc, const QString& bcc);
    void ReleaseAll();

    int mMethod = ESM_Auto;
    Variant mNotesSession;
    Variant mNotesDatabase;
    Variant mOutlook;
    Variant mTrustedOutlook;
    Variant mAddinObject;
    Variant mDrafts;
    int mOutlookMajor = 0;
    bool mOutlookStartedHere = false;
    QList<Variant> mPostponed;
    QString mStartLog;
    QString mEmailLog;
    QString mSmtpServer;
    QString mSmtpFrom;
    SmtpOptions mSmtpOptions;
    std::unique_ptr<SmtpMail> mSmtp;
    bool mSmtpFailed = false;
    QString mSmtpFailure;
};

}  // namespace korvex
