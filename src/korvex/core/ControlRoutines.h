// Library-wide routines on controls: finding a control's form by walking Parent upward, and
// switching standard and outside controls between editable and locked looks by type name.
#pragma once

#include <QObject>

namespace korvex {

class Form;

// The form that holds `ctl`, reached through each container's Parent (read by name, so user
// controls must answer Parent); nullptr when the walk ends without one. Never raises: inside
// the development environment a failed walk tells the developer why.
Form* GetParentForm(QObject* ctl);

// Editable colours, tab stop and lock (Enable True) or locked ones (Enable False) for a control
// known by its type name; ForceDisable also disables it and greys its text. The control's own
// errors reach the caller.
void EnableControl(QObject* ctl, bool Enable, bool ForceDisable);

}  // namespace korvex
