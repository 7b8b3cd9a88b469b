// GoogleTest printers for the library's value types, so that a failed comparison shows the
// values rather than their bytes.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QString>

#include <ostream>

QT_BEGIN_NAMESPACE
void PrintTo(const QString& text, std::ostream* out);
QT_END_NAMESPACE

namespace korvex {
void PrintTo(const Variant& value, std::ostream* out);
void PrintTo(const Currency& value, std::ostream* out);
void PrintTo(const Date& value, std::ostream* out);
}  // namespace korvex
