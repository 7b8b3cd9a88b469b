// Exact decimal digit strings: rounding and conversion.
#include "korvex/runtime/DecimalDigits.h"

#include "korvex/runtime/Currency.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace korvex {

DecimalDigits DecimalDigits::FromDouble(double value, int significantDigits)
{
    DecimalDigits d;
    if (value == 0 || !std::isfinite(value))
        return d;
    char buffer[64];
    // Scientific form with the requested significant digits: "d.ddde+XX".
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific,
                                significantDigits - 1);
    std::string text(buffer, result.ptr);
    std::size_t e = text.find('e');
    std::string mantissa = text.substr(0, e);
    int exponent = std::stoi(text.substr(e + 1));
    if (!mantissa.empty() && mantissa[0] == '-') {
        d.Negative = true;
        mantissa.erase(0, 1);
    }
    std::size_t point = mantissa.find('.');
    int fractionDigits = 0;
    if (point != std::string::npos) {
        fractionDigits = static_cast<int>(mantissa.size() - point - 1);
        mantissa.erase(point, 1);
    }
    d.Digits = mantissa;
    d.Exponent = exponent - fractionDigits;
    d.Normalise();
    return d;
}

DecimalDigits DecimalDigits::FromInteger(std::int64_t value)
{
    DecimalDigits d;
    if (value == 0)
        return d;
    d.Negative = value < 0;
    // Through unsigned so that the most negative value does not overflow.
    std::uint64_t magnitude = d.Negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    d.Digits = std::to_string(magnitude);
    d.Normalise();
    return d;
}

DecimalDigits DecimalDigits::FromParts(bool negative, std::string digits, int exponent)
{
    DecimalDigits d;
    d.Negative = negative;
    d.Digits = std::move(digits);
    d.Exponent = exponent;
    d.Normalise();
    return d;
}

DecimalDigits DecimalDigits::FromCurrency(const Currency& value)
{
    DecimalDigits d = FromInteger(value.Scaled());
    if (!d.IsZero())
        d.Exponent -= 4;
    return d;
}

void DecimalDigits::Normalise()
{
    std::size_t lead = Digits.find_first_not_of('0');
    if (lead == std::string::npos) {
        Digits.clear();
        Exponent = 0;
        Negative = false;
        return;
    }
    Digits.erase(0, lead);
    std::size_t last = Digits.find_last_not_of('0');
    Exponent += static_cast<int>(Digits.size() - last - 1);
    Digits.erase(last + 1);
}

void DecimalDigits::RoundToDecimals(int decimals, Rounding mode)
{
    if (IsZero())
        return;
    // Digits below position -decimals go; how many of our digits is that?
    int drop = -decimals - Exponent;
    if (drop <= 0)
        return;
    if (drop > static_cast<int>(Digits.size())) {
        // Everything lies below the half-way digit: rounds to zero.
        Digits.clear();
        Normalise();
        return;
    }
    std::size_t keep = Digits.size() - static_cast<std::size_t>(drop);
    char first = Digits[keep];
    bool restNonZero = Digits.find_first_not_of('0', keep + 1) != std::string::npos;
    bool roundUp = false;
    if (first > '5' || (first == '5' && restNonZero)) {
        roundUp = true;
    } else if (first == '5') {
        if (mode == Rounding::HalfAwayFromZero)
            roundUp = true;
        else
            roundUp = keep > 0 && (Digits[keep - 1] - '0') % 2 == 1;
    }
    Digits.erase(keep);
    Exponent += drop;
    if (roundUp) {
        int i = static_cast<int>(Digits.size()) - 1;
        while (i >= 0 && Digits[static_cast<std::size_t>(i)] == '9') {
            Digits[static_cast<std::size_t>(i)] = '0';
            --i;
        }
        if (i < 0)
            Digits.insert(Digits.begin(), '1');
        else
            ++Digits[static_cast<std::size_t>(i)];
    }
    Normalise();
}

std::optional<std::int64_t> DecimalDigits::ToScaledInteger(int decimals) const
{
    DecimalDigits rounded = *this;
    rounded.RoundToDecimals(decimals, Rounding::HalfEven);
    if (rounded.IsZero())
        return 0;
    int zeros = rounded.Exponent + decimals;  // never negative after rounding
    if (static_cast<int>(rounded.Digits.size()) + zeros > 19)
        return std::nullopt;
    std::uint64_t magnitude = 0;
    for (char c : rounded.Digits)
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(c - '0');
    for (int i = 0; i < zeros; ++i) {
        if (magnitude > std::numeric_limits<std::uint64_t>::max() / 10)
            return std::nullopt;
        magnitude *= 10;
    }
    constexpr auto max = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (rounded.Negative) {
        if (magnitude > max + 1)
            return std::nullopt;
        return static_cast<std::int64_t>(0 - magnitude);
    }
    if (magnitude > max)
        return std::nullopt;
    return static_cast<std::int64_t>(magnitude);
}

double DecimalDigits::ToDouble() const
{
    if (IsZero())
        return 0;
    std::string text = (Negative ? "-" : "") + Digits + "e" + std::to_string(Exponent);
    double value = 0;
    auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        return IntegerDigitCount() > 0 ? (Negative ? -HUGE_VAL : HUGE_VAL) : (Negative ? -0.0 : 0.0);
    return value;
}

int DecimalDigits::DigitAt(int position) const noexcept
{
    int index = static_cast<int>(Digits.size()) - 1 - (position - Exponent);
    if (index < 0 || index >= static_cast<int>(Digits.size()))
        return 0;
    return Digits[static_cast<std::size_t>(index)] - '0';
}

}  // namespace korvex
