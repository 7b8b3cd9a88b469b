// Style words kept as widget properties; borders drawn in the system's 3-D colours.
#include "korvex/platform/desktop/WindowStyles.h"

#include "korvex/platform/desktop/ColorConversion.h"

#include <QVariant>

namespace korvex {
namespace {

const char* PropertyOf(int index)
{
    return index == GWL_EXSTYLE ? "korvexExStyle" : "korvexStyle";
}

// One line of a 3-D edge: `topLeft` along the top and left sides, `bottomRight` along the others.
void Edge(QPainter& painter, QRect r, OleColor topLeft, OleColor bottomRight)
{
    painter.setPen(ToQColor(topLeft));
    painter.drawLine(r.topLeft(), r.topRight());
    painter.drawLine(r.topLeft(), r.bottomLeft());
    painter.setPen(ToQColor(bottomRight));
    painter.drawLine(r.bottomLeft(), r.bottomRight());
    painter.drawLine(r.topRight(), r.bottomRight());
}

}  // namespace

std::uint32_t GetWindowLong(const QWidget* window, int index)
{
    return window->property(PropertyOf(index)).toUInt();
}

void SetWindowLong(QWidget* window, int index, std::uint32_t value)
{
    window->setProperty(PropertyOf(index), value);
}

int FrameThickness(const QWidget* window)
{
    const std::uint32_t style = GetWindowLong(window, GWL_STYLE);
    const std::uint32_t exStyle = GetWindowLong(window, GWL_EXSTYLE);
    int thickness = 0;
    if (style & WS_DLGFRAME)
        thickness += 3;
    if (style & WS_BORDER)
        thickness += 1;
    if (exStyle & WS_EX_CLIENTEDGE)
        thickness += 2;
    return thickness;
}

void FrameChanged(QWidget* window)
{
    const int t = FrameThickness(window);
    window->setContentsMargins(t, t, t, t);
    window->update();
}

void DrawWindowFrame(QPainter& painter, const QWidget* window)
{
    const std::uint32_t style = GetWindowLong(window, GWL_STYLE);
    const std::uint32_t exStyle = GetWindowLong(window, GWL_EXSTYLE);
    QRect r = window->rect();  // right() and bottom() are the last column and row already
    painter.save();
    if (style & WS_DLGFRAME) {
        Edge(painter, r, vb3DLight, vb3DDKShadow);
        r.adjust(1, 1, -1, -1);
        Edge(painter, r, vb3DHighlight, vbButtonShadow);
        r.adjust(1, 1, -1, -1);
        Edge(painter, r, vbButtonFace, vbButtonFace);
        r.adjust(1, 1, -1, -1);
    }
    if (style & WS_BORDER) {
        Edge(painter, r, vbWindowFrame, vbWindowFrame);
        r.adjust(1, 1, -1, -1);
    }
    if (exStyle & WS_EX_CLIENTEDGE) {
        Edge(painter, r, vbButtonShadow, vb3DHighlight);
        r.adjust(1, 1, -1, -1);
        Edge(painter, r, vb3DDKShadow, vb3DLight);
    }
    painter.restore();
}

}  // namespace korvex
