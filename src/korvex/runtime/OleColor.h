// OLE colours: 32 bits, either an RGB value (red in the low byte) or, with the top bit set, the
// index of a system colour. System colours are looked up through a hook that the system service
// fills from the palette; until then a fixed table of the classic defaults answers.
#pragma once

#include <cstdint>
#include <functional>

namespace korvex {

using OleColor = std::uint32_t;

enum SystemColor : OleColor {
    vbScrollBars = 0x80000000,
    vbDesktop = 0x80000001,
    vbActiveTitleBar = 0x80000002,
    vbInactiveTitleBar = 0x80000003,
    vbMenuBar = 0x80000004,
    vbWindowBackground = 0x80000005,
    vbWindowFrame = 0x80000006,
    vbMenuText = 0x80000007,
    vbWindowText = 0x80000008,
    vbTitleBarText = 0x80000009,
    vbActiveBorder = 0x8000000A,
    vbInactiveBorder = 0x8000000B,
    vbApplicationWorkspace = 0x8000000C,
    vbHighlight = 0x8000000D,
    vbHighlightText = 0x8000000E,
    vbButtonFace = 0x8000000F,
    vbButtonShadow = 0x80000010,
    vbGrayText = 0x80000011,
    vbButtonText = 0x80000012,
    vbInactiveCaptionText = 0x80000013,
    vb3DHighlight = 0x80000014,
    vb3DDKShadow = 0x80000015,
    vb3DLight = 0x80000016,
    vbInfoText = 0x80000017,
    vbInfoBackground = 0x80000018,
};

// The RGB function: each component is clamped to 0..255.
constexpr OleColor RGB(int red, int green, int blue) noexcept
{
    auto clamp = [](int v) { return static_cast<OleColor>(v < 0 ? 0 : v > 255 ? 255 : v); };
    return clamp(red) | (clamp(green) << 8) | (clamp(blue) << 16);
}

constexpr bool IsSystemColor(OleColor color) noexcept
{
    return (color & 0x80000000u) != 0;
}

constexpr int RedOf(OleColor rgb) noexcept { return static_cast<int>(rgb & 0xFF); }
constexpr int GreenOf(OleColor rgb) noexcept { return static_cast<int>((rgb >> 8) & 0xFF); }
constexpr int BlueOf(OleColor rgb) noexcept { return static_cast<int>((rgb >> 16) & 0xFF); }

// Installs the lookup from system-colour index (the colour less its top bit) to RGB; an empty
// function puts
// the fixed defaults back.
using SystemColorLookup = std::function<OleColor(int index)>;
void SetSystemColorLookup(SystemColorLookup lookup);

// The RGB value of a system-colour index, through the installed lookup; 0 for an index the
// system does not have.
OleColor SystemColorRGB(int index);
// RGB for either kind of colour; an RGB colour comes back with its top byte cleared.
OleColor ResolveColor(OleColor color);

}  // namespace korvex
