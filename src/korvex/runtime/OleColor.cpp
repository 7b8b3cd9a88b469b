// System-colour lookup with the classic defaults as fallback.
#include "korvex/runtime/OleColor.h"

#include <array>

namespace korvex {
namespace {

SystemColorLookup& Lookup()
{
    static SystemColorLookup lookup;
    return lookup;
}

constexpr std::array<OleColor, 25> DefaultSystemColors = {
    RGB(200, 200, 200), RGB(0, 0, 0),       RGB(153, 180, 209), RGB(191, 205, 219), RGB(240, 240, 240),
    RGB(255, 255, 255), RGB(100, 100, 100), RGB(0, 0, 0),       RGB(0, 0, 0),       RGB(0, 0, 0),
    RGB(180, 180, 180), RGB(244, 247, 252), RGB(171, 171, 171), RGB(51, 153, 255),  RGB(255, 255, 255),
    RGB(240, 240, 240), RGB(160, 160, 160), RGB(109, 109, 109), RGB(0, 0, 0),       RGB(67, 78, 84),
    RGB(255, 255, 255), RGB(105, 105, 105), RGB(227, 227, 227), RGB(0, 0, 0),       RGB(255, 255, 225),
};

}  // namespace

void SetSystemColorLookup(SystemColorLookup lookup)
{
    Lookup() = std::move(lookup);
}

OleColor SystemColorRGB(int index)
{
    if (Lookup())
        return Lookup()(index) & 0xFFFFFFu;
    if (index >= 0 && index < static_cast<int>(DefaultSystemColors.size()))
        return DefaultSystemColors[static_cast<std::size_t>(index)];
    return 0;
}

OleColor ResolveColor(OleColor color)
{
    if (IsSystemColor(color))
        return SystemColorRGB(static_cast<int>(color & 0x7FFFFFFFu));
    return color & 0xFFFFFFu;
}

}  // namespace korvex
