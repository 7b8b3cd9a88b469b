// What every control of the library shares beyond the host's frame: changing a border style
// (clear the old style's bits, then set the new one's) and placing a line by its end points.
#pragma once

#include <QWidget>

namespace korvex {

class Line;

// Clears the old style's bits (unless it is none), sets the new style's (unless none).
void ChangeBorderStyle(QWidget* window, int oldStyle, int newStyle);
// Sets the four end-point coordinates of a line, in twips.
void SetLinePosition(Line& line, int X1, int Y1, int X2, int Y2);

}  // namespace korvex
