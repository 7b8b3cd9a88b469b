// Currency conversions through exact decimal digits.
#include "korvex/runtime/Currency.h"

#include "korvex/runtime/DecimalDigits.h"
#include "korvex/runtime/Error.h"

#include <cmath>
#include <limits>

namespace korvex {

Currency Currency::FromDouble(double value)
{
    if (!std::isfinite(value))
        Raise(vbErrOverflow);
    auto scaled = DecimalDigits::FromDouble(value).ToScaledInteger(4);
    if (!scaled)
        Raise(vbErrOverflow);
    return FromScaled(*scaled);
}

Currency Currency::FromInt(std::int64_t whole)
{
    constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / Scale;
    if (whole > limit || whole < -limit)
        Raise(vbErrOverflow);
    return FromScaled(whole * Scale);
}

QString Currency::ToInvariantString() const
{
    DecimalDigits d = DecimalDigits::FromCurrency(*this);
    if (d.IsZero())
        return QStringLiteral("0");
    QString text = QString::fromStdString(d.Digits);
    if (d.Exponent < 0) {
        int fraction = -d.Exponent;
        if (text.size() <= fraction)
            text.prepend(QString(fraction - text.size() + 1, QLatin1Char('0')));
        text.insert(text.size() - fraction, QLatin1Char('.'));
    } else {
        text.append(QString(d.Exponent, QLatin1Char('0')));
    }
    return d.Negative ? QLatin1Char('-') + text : text;
}

std::optional<Currency> Currency::FromInvariantString(QStringView text)
{
    const bool negative = text.startsWith(QLatin1Char('-'));
    if (negative)
        text = text.mid(1);
    std::string digits;
    int fraction = 0;
    bool point = false;
    for (QChar c : text) {
        if (c >= QLatin1Char('0') && c <= QLatin1Char('9')) {
            digits += static_cast<char>(c.unicode());
            fraction += point ? 1 : 0;
        } else if (c == QLatin1Char('.') && !point) {
            point = true;
        } else {
            return std::nullopt;
        }
    }
    if (digits.empty())
        return std::nullopt;
    const auto scaled = DecimalDigits::FromParts(negative, std::move(digits), -fraction).ToScaledInteger(4);
    if (!scaled)
        return std::nullopt;
    return FromScaled(*scaled);
}

}  // namespace korvex
