// The logging categories of the host runtime: a programmer's mistakes with forms and controls
// (a form-file property that no control has, an error stopped where Qt called in) are told there.
#pragma once

#include <QLoggingCategory>

namespace korvex {

Q_DECLARE_LOGGING_CATEGORY(lcForms)

}  // namespace korvex
