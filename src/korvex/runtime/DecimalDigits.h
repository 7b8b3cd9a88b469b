// A finite decimal number held as its digit string: the exact form that Currency, the text
// conversions and Format round on, so that 1.005 rounds the way the user reads it rather than
// the way its binary double happens to lie.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace korvex {

class Currency;

enum class Rounding { HalfEven, HalfAwayFromZero };

struct DecimalDigits {
    // value = (Negative ? -1 : 1) * Digits * 10^Exponent; Digits has no leading or trailing
    // zeros and is empty for zero.
    bool Negative = false;
    std::string Digits;
    int Exponent = 0;

    // The double rounded to the given number of significant digits (15 keeps every digit a
    // double can promise). NaN and infinities are not representable: check before calling.
    static DecimalDigits FromDouble(double value, int significantDigits = 15);
    static DecimalDigits FromCurrency(const Currency& value);
    static DecimalDigits FromInteger(std::int64_t value);
    // From a plain digit string (leading and trailing zeros allowed) and a power of ten.
    static DecimalDigits FromParts(bool negative, std::string digits, int exponent);

    bool IsZero() const noexcept { return Digits.empty(); }
    // Digits before the decimal point (can be zero or negative for values below 1).
    int IntegerDigitCount() const noexcept { return static_cast<int>(Digits.size()) + Exponent; }

    // Keeps `decimals` places after the point (a negative count rounds to tens, hundreds...).
    void RoundToDecimals(int decimals, Rounding mode);
    // Keeps `count` significant digits.

    // value * 10^decimals as an exact integer after rounding half to even; nullopt on overflow.
    std::optional<std::int64_t> ToScaledInteger(int decimals) const;
    double ToDouble() const;

    // The digit at a decimal position: 0 is the units, 1 the tens, -1 the tenths.
    int DigitAt(int position) const noexcept;

private:
    void Normalise();
};

}  // namespace korvex
