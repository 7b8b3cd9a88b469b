// GetParentForm and EnableControl: late-bound walks and writes.
#include "korvex/core/ControlRoutines.h"

#include "korvex/core/DevelopmentEnvironment.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"

namespace korvex {

Form* GetParentForm(QObject* ctl)
{
    try {
        // The walk is bounded: a chain of parents longer than any real nesting is a loop.
        for (int depth = 0; ctl && depth < 1000; ++depth) {
            if (auto* form = qobject_cast<Form*>(ctl))
                return form;
            ctl = GetProperty(ctl, QStringLiteral("Parent")).Object();
        }
        return nullptr;
    } catch (const std::exception&) {
        if (InDevelopmentEnvironment() == 2)
            MsgBox(QStringLiteral("An error occurred in GetParentForm.\r\n\r\nHave all UserControls implemented the Parent "
                                  "property?"),
                   vbExclamation);
        return nullptr;
    }
}

void EnableControl(QObject* ctl, bool Enable, bool ForceDisable)
{
    const OleColor back = Enable ? vbWindowBackground : vbButtonFace;
    const OleColor fore = Enable ? vbWindowText : (ForceDisable ? vbGrayText : vbButtonText);
    auto setColours = [&] {
        SetProperty(ctl, QStringLiteral("BackColor"), static_cast<std::int32_t>(back));
        SetProperty(ctl, QStringLiteral("ForeColor"), static_cast<std::int32_t>(fore));
    };
    if (!ForceDisable)
        SetProperty(ctl, QStringLiteral("TabStop"), Enable);

    const QString type = TypeNameOf(ctl);
    bool setEnabled = true;
    if (type == QLatin1String("TextBox") || type == QLatin1String("ComboBox") || type == QLatin1String("TDBCombo") ||
        type == QLatin1String("ZqCombo")) {
        setColours();
        SetProperty(ctl, QStringLiteral("Locked"), !Enable);
    } else if (type == QLatin1String("TDBNumber") || type == QLatin1String("TDBDate")) {
        setColours();
        SetProperty(ctl, QStringLiteral("ReadOnly"), !Enable);
    } else if (type == QLatin1String("ZqNumber")) {
        SetProperty(ctl, QStringLiteral("ReadOnly"), !Enable);
    } else if (type == QLatin1String("ListView")) {
        setColours();
        SetProperty(ctl, QStringLiteral("Enabled"), Enable);
        setEnabled = false;
    } else if (type == QLatin1String("VSFlexGrid")) {
        SetProperty(ctl, QStringLiteral("Editable"), Enable ? 2 : 0);
        setEnabled = false;
    } else if (!ForceDisable && InDevelopmentEnvironment() == 2) {
        MsgBox(QStringLiteral("EnableControl does not support the ") + type +
                   QStringLiteral(" control.\r\n\r\nIf you wish to use EnableControl with this Control, the ForceDisable "
                                  "flag must be set to True."),
               vbCritical, CStr(GetProperty(ctl, QStringLiteral("Name"))));
    }
    if (setEnabled)
        SetProperty(ctl, QStringLiteral("Enabled"), Enable ? true : !ForceDisable);
}

}  // namespace korvex
