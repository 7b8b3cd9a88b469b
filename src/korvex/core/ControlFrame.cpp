// Border changes in the two steps every bordered control takes.
#include "korvex/core/ControlFrame.h"

#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/Line.h"

namespace korvex {

void ChangeBorderStyle(QWidget* window, int oldStyle, int newStyle)
{
    if (oldStyle != bsNone)
        SetBorderStyle(window, oldStyle, true);
    if (newStyle != bsNone)
        SetBorderStyle(window, newStyle, false);
}

void SetLinePosition(Line& line, int X1, int Y1, int X2, int Y2)
{
    line.SetPoints(X1, Y1, X2, Y2);
}

}  // namespace korvex
