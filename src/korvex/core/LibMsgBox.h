// The library's message box: the application's title (and the active form's caption) when no
// title is given, an error number and text appended to the prompt, owned by the active form.
#pragma once

#include <QString>

namespace korvex {

// The error part of a message: two line breaks, then "Error 'n'" (when n > 0), " : " and the
// description. Nothing when the trimmed description's length plus n is not positive, so a
// negative number (an object error) leaves the details out, description or not.
void AppendErrorDetails(QString& prompt, int errNo, const QString& errDesc);

// `Prompt` holds the composed text afterwards. Returns the button pressed.
int LibMsgBox(QString& Prompt, int Buttons = 0, QString Title = {}, int ErrNo = 0, const QString& ErrDesc = {});

}  // namespace korvex
