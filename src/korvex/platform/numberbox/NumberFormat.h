// The numeric box's format strings as pure functions of (format, value, separators): the text a
// value shows with a display or edit format, and what an edit format lets the user type. Kept
// apart from the box so that the rules can be tested by table and fuzzed.
#pragma once

#include "korvex/runtime/DecimalDigits.h"
#include "korvex/runtime/Variant.h"

#include <QString>

#include <optional>

namespace korvex {

// The characters "." and "," of a format are rendered with.
struct NumberSeparators {
    QString Decimal = QStringLiteral(".");
    QString Thousands = QStringLiteral(",");
};

// A format has up to four sections, positive;negative;zero;null. In a section "0" is a digit
// always shown, "#" a digit shown only when significant, "," groups the integer digits in
// threes, the first "." is the decimal point; every other character stands as it is.
// - A negative value takes the negative section without a sign of its own; when that section
//   is missing or empty, the positive one with a leading "-".
// - A value that rounds to zero takes the zero section whenever there is one, even an empty
//   one (that is how a field blanks zero); otherwise the positive section, without a sign.
// - Null, Empty and anything that is not a finite number show as an empty text.
// Rounding is half away from zero, on the exact decimal digits of the value.
QString RenderNumberFormat(const QString& format, const Variant& value, const NumberSeparators& separators);

// What an edit format lets the user type: the digit positions before and after the point of its
// positive section, and a minus sign when it has a negative section.
struct NumberEditRules {
    int IntegerPositions = 0;
    int Decimals = 0;
    bool NegativeAllowed = false;
};
NumberEditRules EditRulesOf(const QString& format);

// The text a value is edited in: a leading "-" for a negative value, then the positive
// section's digits and decimal point only (no grouping, no other text), so that what the user
// sees is what the typing rules accept.
QString RenderEditText(const QString& format, const Variant& value, const NumberSeparators& separators);

// The exact digits of a numeric value; nullopt for Null, Empty, texts, dates and for NaN and
// infinities.
std::optional<DecimalDigits> DigitsOfNumber(const Variant& value);

}  // namespace korvex
