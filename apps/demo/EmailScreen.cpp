// EmailScreen: the attachment is a small CSV file the screen writes itself, so the demo needs
// nothing but a running SMTP sink.
#include "EmailScreen.h"

#include "MainForm.h"

#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/host/TextBox.h"

#include <QFile>

namespace demo {

using namespace korvex;

EmailScreen::EmailScreen(Form& form) : QObject(&form), mForm(form)
{
    const QString attachment = mFiles.filePath(QStringLiteral("customers.csv"));
    QFile file(attachment);
    if (file.open(QIODevice::WriteOnly))
        file.write("CustomerId,Name,Country\r\n1,Ada Lovelace,United Kingdom\r\n2,Grace Hopper,United States\r\n");
    static_cast<TextBox*>(form.FindControl(QStringLiteral("txtAttachment")))->SetText(attachment);
    connect(form.FindControl(QStringLiteral("cmdSend")), &Control::Click, this, [this] { Send(); });
}

QString EmailScreen::Text(const char* control) const
{
    return static_cast<TextBox*>(mForm.FindControl(QString::fromLatin1(control)))->Text();
}

bool EmailScreen::Send()
{
    SmtpOptions options;
    options.connectTimeoutMs = 5000;
    options.transferTimeoutMs = 20000;
    mEmail.SetSmtpOptions(options);
    mEmail.Email_SetSendMethod(clsEmail::ESM_SMTP);
    mEmail.Email_SetSmtpConfig(Text("txtServer"), Text("txtFrom"));
    const QString attachment = Text("txtAttachment");
    const bool sent = mEmail.Email(Text("txtSubject"), Text("txtMessage"), QStringLiteral("customers.csv"), attachment, {},
                                   Text("txtTo"));
    static_cast<Label*>(mForm.FindControl(QStringLiteral("lblResult")))
        ->SetCaption(sent ? QStringLiteral("Sent.") : QStringLiteral("Not sent."));
    static_cast<TextBox*>(mForm.FindControl(QStringLiteral("txtLog")))->SetText(mEmail.GetEmailLog());
    // A failure has been told already by the sender itself.
    if (sent)
        FormService(mForm).MsgBoxZq(QStringLiteral("The message was sent to %1.").arg(Text("txtTo")), vbInformation);
    return sent;
}

}  // namespace demo
