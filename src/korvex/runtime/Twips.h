// Twips (1440 to the inch) against pixels, with the horizontal and vertical ratios kept apart
// as the screen reports them. Whole-number results round to nearest, halves to even.
#pragma once

namespace korvex {

// The screen's twips per pixel; 15 at 96 dots per inch. The system service sets them from the
// screen, tests pin them.
double TwipsPerPixelX() noexcept;
double TwipsPerPixelY() noexcept;
void SetTwipsPerPixel(double x, double y) noexcept;

int PixelsToTwipsX(double pixels) noexcept;
int PixelsToTwipsY(double pixels) noexcept;
int TwipsToPixelsX(double twips) noexcept;
int TwipsToPixelsY(double twips) noexcept;

// Rounds to the nearest whole number, halves to even, as every twips conversion does.
int RoundHalfEven(double value) noexcept;

}  // namespace korvex
