// LibMsgBox: title and prompt composition, then the message-box service.
#include "korvex/core/LibMsgBox.h"

#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"

namespace korvex {

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
    const QString description = Trim(ErrDesc);
    if (description.size() + ErrNo >= 1) {
        Prompt += QStringLiteral("\r\n\r\n");
        if (ErrNo > 0) {
            Prompt += QStringLiteral("Error '%1'").arg(ErrNo);
            if (!description.isEmpty())
                Prompt += QStringLiteral(" : ");
        }
        Prompt += ErrDesc;
    }
    return MessageBoxService::Current().Show(Prompt, Buttons, Title, active);
}

}  // namespace korvex
