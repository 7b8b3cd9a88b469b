// Timer over QTimer.
#include "korvex/platform/host/TimerControl.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"

namespace korvex {

KORVEX_REGISTER_CONTROL(TimerControl);

TimerControl::TimerControl(QWidget* parent) : Control(parent)
{
    hide();
    connect(&mTimer, &QTimer::timeout, this, GuardedSlot(this, [this] { emit Timer(); }));
}

void TimerControl::SetInterval(int milliseconds)
{
    if (milliseconds < 0)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Timer.Interval"));
    mInterval = milliseconds;
    Restart();
}

void TimerControl::SetEnabled(bool enabled)
{
    // Enabling a timer that runs already leaves its count going, as the host's timer does.
    const bool running = mTimer.isActive();
    Control::SetEnabled(enabled);
    if (!(enabled && running))
        Restart();
}

void TimerControl::Restart()
{
    mTimer.stop();
    Form* form = ParentForm();
    if (Enabled() && mInterval > 0 && !(form && form->DesignMode()))
        mTimer.start(mInterval);
}

void TimerControl::ReadProperties(PropertyBag& bag)
{
    SetInterval(CLng(bag.ReadProperty(QStringLiteral("Interval"), 0)));
}

void TimerControl::WriteProperties(PropertyBag& bag)
{
    bag.WriteProperty(QStringLiteral("Interval"), mInterval, 0);
}

}  // namespace korvex
