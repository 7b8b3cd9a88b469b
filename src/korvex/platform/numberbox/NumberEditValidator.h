// The typing rules of the numeric box as a QValidator: digits up to the edit format's integer
// positions, one decimal symbol, decimals up to its count, a minus sign only when it has a
// negative section. Typing, pasting and code writes to the selection all pass through it.
#pragma once

#include "korvex/platform/numberbox/NumberFormat.h"

#include <QValidator>

#include <optional>

namespace korvex {

class NumberEditValidator : public QValidator {
public:
    explicit NumberEditValidator(QObject* parent = nullptr) : QValidator(parent) {}

    void SetRules(const NumberEditRules& rules) { mRules = rules; }
    void SetSeparators(const NumberSeparators& separators) { mSeparators = separators; }
    // The text before the edit under way. A value written by code may hold more than the rules
    // allow (more digits, a sign): an edit may keep that, but never add to it.
    void SetPrevious(const QString& text) { mPrevious = text; }

    // Drops blanks and thousands separators and reads "(12)" as "-12" and "+12" as "12" first,
    // so that a pasted "1,234.50" is taken as the number it is.
    State validate(QString& input, int& pos) const override;

    // The value of an edit text: Null for an empty text, 0 for a sign or decimal symbol alone,
    // otherwise Currency when it fits with four decimals exactly ("1.50000" does), else Double;
    // nullopt for a text that is no number or does not fit a Double.
    static std::optional<Variant> ValueOf(const QString& text, const QString& decimalSymbol);

private:
    NumberEditRules mRules;
    NumberSeparators mSeparators;
    QString mPrevious;
};

}  // namespace korvex
