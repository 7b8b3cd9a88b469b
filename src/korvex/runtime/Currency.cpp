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

}  // namespace korvex
