// NumberEditValidator: the shape of an edit text (sign, integer digits, point, decimals) against
// the edit rules, with what the previous text already held allowed to stay.
#include "korvex/platform/numberbox/NumberEditValidator.h"

#include "korvex/runtime/Currency.h"
#include "korvex/runtime/DecimalDigits.h"

#include <algorithm>
#include <cmath>

namespace korvex {
namespace {

struct Shape {
    bool negative = false;
    bool point = false;
    QString integerDigits;
    QString fractionDigits;
};

bool IsDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

// Sign, digits, one decimal symbol, digits; nullopt for anything else.
std::optional<Shape> ShapeOf(const QString& text, const QString& decimalSymbol)
{
    Shape shape;
    qsizetype i = 0;
    if (text.startsWith(QLatin1Char('-'))) {
        shape.negative = true;
        ++i;
    }
    while (i < text.size()) {
        const QChar c = text[i];
        if (IsDigit(c)) {
            (shape.point ? shape.fractionDigits : shape.integerDigits) += c;
            ++i;
        } else if (!shape.point && !decimalSymbol.isEmpty() && QStringView(text).mid(i).startsWith(decimalSymbol)) {
            shape.point = true;
            i += decimalSymbol.size();
        } else {
            return std::nullopt;
        }
    }
    return shape;
}

// Blanks and thousands separators go; "(12)" reads as "-12", "+12" as "12". The caret stays on
// the character it was on.
void Normalise(QString& text, int& pos, const NumberSeparators& separators)
{
    const QChar thousands = separators.Thousands.isEmpty() || separators.Thousands == separators.Decimal
                                ? QChar() : separators.Thousands[0];
    QString kept;
    int keptPos = pos;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isSpace() || (!thousands.isNull() && text[i] == thousands)) {
            if (i < pos)
                --keptPos;
        } else {
            kept += text[i];
        }
    }
    if (kept.size() >= 2 && kept.startsWith(QLatin1Char('(')) && kept.endsWith(QLatin1Char(')'))) {
        kept.chop(1);
        kept[0] = QLatin1Char('-');
        keptPos = std::min<int>(keptPos, static_cast<int>(kept.size()));
    }
    if (kept.startsWith(QLatin1Char('+'))) {
        kept.remove(0, 1);
        keptPos = std::max(0, keptPos - 1);
    }
    text = kept;
    pos = keptPos;
}

}  // namespace

QValidator::State NumberEditValidator::validate(QString& input, int& pos) const
{
    Normalise(input, pos, mSeparators);
    const std::optional<Shape> shape = ShapeOf(input, mSeparators.Decimal);
    if (!shape || !ValueOf(input, mSeparators.Decimal))
        return Invalid;
    const Shape before = ShapeOf(mPrevious, mSeparators.Decimal).value_or(Shape{});
    if (shape->negative && !mRules.NegativeAllowed && !before.negative)
        return Invalid;
    if (shape->point && mRules.Decimals == 0 && !before.point)
        return Invalid;
    if (shape->integerDigits.size() > std::max<qsizetype>(mRules.IntegerPositions, before.integerDigits.size()))
        return Invalid;
    if (shape->fractionDigits.size() > std::max<qsizetype>(mRules.Decimals, before.fractionDigits.size()))
        return Invalid;
    const bool hasDigits = !shape->integerDigits.isEmpty() || !shape->fractionDigits.isEmpty();
    return hasDigits || input.isEmpty() ? Acceptable : Intermediate;
}

std::optional<Variant> NumberEditValidator::ValueOf(const QString& text, const QString& decimalSymbol)
{
    if (text.isEmpty())
        return Variant::Null();
    const std::optional<Shape> shape = ShapeOf(text, decimalSymbol);
    if (!shape)
        return std::nullopt;
    const DecimalDigits digits = DecimalDigits::FromParts(shape->negative, (shape->integerDigits + shape->fractionDigits).toStdString(),
                                                          -static_cast<int>(shape->fractionDigits.size()));
    // Decimals beyond the fourth that are all zeros still make an exact currency amount.
    if (digits.Exponent >= -4) {
        if (const auto scaled = digits.ToScaledInteger(4))
            return Variant(Currency::FromScaled(*scaled));
    }
    const double d = digits.ToDouble();
    if (!std::isfinite(d))
        return std::nullopt;
    return Variant(d);
}

}  // namespace korvex
