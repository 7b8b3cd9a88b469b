// Format for numbers and dates: the named formats ("Currency", "Short Date", ...) and custom
// patterns with positive;negative;zero;null sections, digit placeholders, grouping, scaling,
// percent, exponents, quoted and escaped text, and the date and time tokens. Rendered against a
// RegionalSettings, so tests pin the symbols and names.
#pragma once

#include "korvex/runtime/RegionalSettings.h"
#include "korvex/runtime/Variant.h"

#include <QString>

namespace korvex {

QString Format(const Variant& value, const QString& pattern = {});
QString Format(const Variant& value, const QString& pattern, const RegionalSettings& settings);

// Digits with `separator` between groups of three counted from the right: "1234567" gives
// "1,234,567" with ",".
QString GroupDigits(const QString& digits, const QString& separator);

// FormatNumber's options: -2 means "as the regional settings say".
enum Tristate : int { vbUseDefault = -2, vbTrue = -1, vbFalse = 0 };

// A number in the regional number format: `decimals` -1 takes the regional count.
QString FormatNumber(const Variant& value, int decimals = -1, Tristate leadingDigit = vbUseDefault,
                     Tristate parensForNegative = vbUseDefault, Tristate groupDigits = vbUseDefault);
QString FormatNumber(const Variant& value, const RegionalSettings& settings, int decimals = -1,
                     Tristate leadingDigit = vbUseDefault, Tristate parensForNegative = vbUseDefault,
                     Tristate groupDigits = vbUseDefault);

}  // namespace korvex
