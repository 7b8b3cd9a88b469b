// LibMsgBox: title and prompt composition, then the message-box service.
#include "korvex/core/LibMsgBox.h"

#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"

namespace korvex {

void AppendErrorDetails(QString& prompt, int errNo, const QString& errDesc)
{
    const QString description = Trim(errDesc);
    if (description.size() + errNo < 1)
        return;
    prompt += QStringLiteral("\r\n\r\n");
    if (errNo > 0) {
        prompt += QStringLiteral("Error '%1'").arg(errNo);
        if (!description.isEmpty())
            prompt += QStringLiteral(" : ");
    }
    prompt += errDesc;
}

int LibMsgBox(QString& Prompt, int Buttons, QString Title, int ErrNo, const QString& ErrDesc)
{
    Form* active = Screen::Instance()->ActiveForm();
    if (Trim(Title).isEmpty()) {
        Title = App::Instance()->Title();
        static const QStringList plainTitled = {QStringLiteral("frmMDI"), QStringLiteral("frmPrint"),
                                                QStringLiteral("frmPrintForm")};
        if (active && !plainTitled.contains(active->Name()))
            Title += QStringLiteral(" - ") + active->Caption();
    }
    AppendErrorDetails(Prompt, ErrNo, ErrDesc);
    return MessageBoxService::Current().Show(Prompt, Buttons, Title, active);
}

}  // namespace korvex
