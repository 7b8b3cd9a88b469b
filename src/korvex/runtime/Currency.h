// Currency: a 64-bit integer counting ten-thousandths, so that money and the numeric bounds of
// the input controls are kept exactly, as the database's money types keep them.
#pragma once

#include <QString>
#include <QStringView>

#include <compare>
#include <cstdint>
#include <optional>

namespace korvex {

class Currency {
public:
    static constexpr std::int64_t Scale = 10000;

    constexpr Currency() noexcept = default;
    static constexpr Currency FromScaled(std::int64_t scaled) noexcept
    {
        Currency c;
        c.mScaled = scaled;
        return c;
    }
    // Rounds to four decimals, halves to even; raises Overflow (6) outside the currency range
    // and for NaN or infinities.
    static Currency FromDouble(double value);
    static Currency FromInt(std::int64_t whole);

    constexpr std::int64_t Scaled() const noexcept { return mScaled; }
    double ToDouble() const noexcept { return static_cast<double>(mScaled) / Scale; }
    // Plain decimal text with "." and no trailing zeros: "1234.5", "-0.0001", "0".
    QString ToInvariantString() const;
    // The inverse, whatever the regional settings: an optional "-", digits and at most one
    // "."; more than four decimals round half to even. nullopt for any other text and for
    // amounts beyond the currency range.
    static std::optional<Currency> FromInvariantString(QStringView text);

    friend constexpr auto operator<=>(Currency, Currency) noexcept = default;

private:
    std::int64_t mScaled = 0;
};

}  // namespace korvex
