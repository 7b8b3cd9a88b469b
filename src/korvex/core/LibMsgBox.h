// The library's message box: the application's title (and the active form's caption) when no
// title is given, an error number and text appended to the prompt, owned by the active form.
#pragma once

#include <QString>

namespace korvex {

// `Prompt` holds the composed text afterwards. Returns the button pressed.
int LibMsgBox(QString& Prompt, int Buttons = 0, QString Title = {}, int ErrNo = 0, const QString& ErrDesc = {});

}  // namespace korvex
