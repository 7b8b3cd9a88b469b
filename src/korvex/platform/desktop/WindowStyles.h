// Window style words for widgets, emulating the two style words a window carries (its style
// and its extended style) so that border styles can be set and cleared bit by bit as the
// library's controls do. The border bits are drawn by DrawWindowFrame and narrow the client
// area by FrameThickness.
#pragma once

#include <QPainter>
#include <QWidget>

#include <cstdint>

namespace korvex {

enum WindowLongIndex : int { GWL_STYLE = -16, GWL_EXSTYLE = -20 };

enum WindowStyleBits : std::uint32_t {
    WS_BORDER = 0x00800000u,     // thin line
    WS_DLGFRAME = 0x00400000u,   // raised dialog frame
    WS_EX_CLIENTEDGE = 0x00000200u,  // sunken client edge
    WS_EX_TOOLWINDOW = 0x00000080u,
};

std::uint32_t GetWindowLong(const QWidget* window, int index);
void SetWindowLong(QWidget* window, int index, std::uint32_t value);
// Recomputes the frame after a style change: the client margins follow the border bits and
// the window repaints (the effect of SetWindowPos with the frame-changed flag).
void FrameChanged(QWidget* window);

// Pixels the border bits take on each side.
int FrameThickness(const QWidget* window);
// Draws the border the style bits ask for, inside the widget's rectangle.
void DrawWindowFrame(QPainter& painter, const QWidget* window);

}  // namespace korvex
