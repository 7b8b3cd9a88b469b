// Twips conversions around the screen's two ratios.
#include "korvex/runtime/Twips.h"

#include <climits>
#include <cmath>

namespace korvex {
namespace {

double gTwipsPerPixelX = 15.0;
double gTwipsPerPixelY = 15.0;

}  // namespace

double TwipsPerPixelX() noexcept { return gTwipsPerPixelX; }
double TwipsPerPixelY() noexcept { return gTwipsPerPixelY; }

void SetTwipsPerPixel(double x, double y) noexcept
{
    if (x > 0 && std::isfinite(x))
        gTwipsPerPixelX = x;
    if (y > 0 && std::isfinite(y))
        gTwipsPerPixelY = y;
}

int RoundHalfEven(double value) noexcept
{
    if (!std::isfinite(value))
        return 0;
    const double rounded = std::nearbyint(value);  // the default rounding mode rounds halves to even
    if (rounded >= static_cast<double>(INT_MAX))
        return INT_MAX;
    if (rounded <= static_cast<double>(INT_MIN))
        return INT_MIN;
    return static_cast<int>(rounded);
}

int PixelsToTwipsX(double pixels) noexcept { return RoundHalfEven(pixels * gTwipsPerPixelX); }
int PixelsToTwipsY(double pixels) noexcept { return RoundHalfEven(pixels * gTwipsPerPixelY); }
int TwipsToPixelsX(double twips) noexcept { return RoundHalfEven(twips / gTwipsPerPixelX); }
int TwipsToPixelsY(double twips) noexcept { return RoundHalfEven(twips / gTwipsPerPixelY); }

}  // namespace korvex
