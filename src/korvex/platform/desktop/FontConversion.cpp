// StdFont and QFont: weights map between the 0..1000 scale and Qt's, sizes stay in points.
#include "korvex/platform/desktop/FontConversion.h"

#include <cmath>

namespace korvex {

QFont ToQFont(const StdFont& font)
{
    QFont q(font.Name());
    q.setPointSizeF(font.Size());
    q.setWeight(static_cast<QFont::Weight>(std::clamp(static_cast<int>(font.Weight()), 1, 1000)));
    q.setItalic(font.Italic());
    q.setUnderline(font.Underline());
    q.setStrikeOut(font.Strikethrough());
    return q;
}

}  // namespace korvex
