// Drawing helpers over QPainter, the emulated window style words and the system service.
#include "korvex/controls/display/drawing/DrawingHelpers.h"

#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/platform/desktop/WindowStyles.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <QFontMetrics>
#include <QImage>
#include <QList>
#include <QPen>

#include <array>
#include <cmath>

namespace korvex {
namespace {

int MetricTwipsX(int index)
{
    return RoundHalfEven(SystemInfo::SystemMetric(index) * TwipsPerPixelX());
}

int MetricTwipsY(int index)
{
    return RoundHalfEven(SystemInfo::SystemMetric(index) * TwipsPerPixelY());
}

}  // namespace

OleColor GetRGBColor(OleColor color)
{
    // Only a system colour is translated; a plain RGB value comes back as it is, top byte and all.
    if (!IsSystemColor(color))
        return color;
    try {
        return ResolveColor(color);
    } catch (const Error& e) {
        MsgBox(QStringLiteral("Error occurred in .GetRGBColor.\r\n\r\n") + e.Description(), vbExclamation);
        throw;
    }
}

void SplitRGB(std::int32_t color, int& red, int& green, int& blue)
{
    red = color & 0xFF;
    green = (color / 256) & 0xFF;
    blue = (color / 65536) & 0xFF;
}

OleColor BlendColours(OleColor colourA, short percentA, OleColor colourB)
{
    int a[3], b[3];
    SplitRGB(static_cast<std::int32_t>(colourA), a[0], a[1], a[2]);
    SplitRGB(static_cast<std::int32_t>(colourB), b[0], b[1], b[2]);
    int mixed[3];
    for (int i = 0; i < 3; ++i)
        mixed[i] = RoundHalfEven((a[i] * percentA + b[i] * (100 - percentA)) / 100.0);
    return RGB(mixed[0], mixed[1], mixed[2]);
}

void DrawGradient(QPainter& painter, int left, int top, int right, int bottom, OleColor colourTL, OleColor colourTR,
                  OleColor colourBL, OleColor colourBR)
{
    const int w = right - left, h = bottom - top;
    if (w <= 0 || h <= 0)
        return;
    // Channels as 16-bit intensities (the byte in the high byte), interpolated linearly within
    // each triangle and cut back to a byte, as the platform's gradient fill does.
    auto channels = [](OleColor c) {
        int r, g, b;
        SplitRGB(static_cast<std::int32_t>(c), r, g, b);
        return std::array<double, 3>{r * 256.0, g * 256.0, b * 256.0};
    };
    const auto tl = channels(colourTL), tr = channels(colourTR), bl = channels(colourBL), br = channels(colourBR);
    QImage image(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y) {
        // The right and bottom corner colours belong to the right and bottom edges, one pixel
        // beyond the last one filled.
        const double v = static_cast<double>(y) / h;
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const double u = static_cast<double>(x) / w;
            int c[3];
            for (int i = 0; i < 3; ++i) {
                // Above the diagonal: triangle (TL, TR, BR); below it: (TL, BR, BL).
                const double value = u >= v ? tl[i] * (1 - u) + tr[i] * (u - v) + br[i] * v
                                            : tl[i] * (1 - v) + bl[i] * (v - u) + br[i] * u;
                c[i] = static_cast<int>(std::lround(value)) >> 8;
            }
            line[x] = qRgb(c[0], c[1], c[2]);
        }
    }
    painter.drawImage(left, top, image);
}

void CalcTextSize(const QString& text, int& width, int& height, bool wordWrap, const QFont& font)
{
    if (text.isEmpty()) {
        // An empty text has no extent; with word wrap the given width stands.
        if (!wordWrap)
            width = 0;
        height = 0;
        return;
    }
    const QFontMetrics metrics(font);
    const int boxWidth = RoundHalfEven(width / TwipsPerPixelX());
    QString normalised = text;
    normalised.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    const QRect bounds = wordWrap ? metrics.boundingRect(QRect(0, 0, std::max(boxWidth, 1), 0), Qt::TextWordWrap, normalised)
                                  : metrics.boundingRect(QRect(0, 0, 0, 0), 0, normalised);
    width = RoundHalfEven(bounds.width() * TwipsPerPixelX());
    height = RoundHalfEven(bounds.height() * TwipsPerPixelY());
}

void SetBorderStyle(QWidget* window, int style, bool remove)
{
    if (!window)
        return;
    const int index = style >= 1001 ? GWL_EXSTYLE : GWL_STYLE;
    std::uint32_t bits = 0;
    switch (style) {
    case bsRaisedLikeAButton: bits = WS_DLGFRAME; break;
    case bsFlat: bits = WS_BORDER; break;
    case bsSunkLikeAPictureBox: bits = WS_EX_CLIENTEDGE; break;
    default: break;
    }
    std::uint32_t word = GetWindowLong(window, index) | bits;
    if (remove)
        word &= ~bits;
    SetWindowLong(window, index, word);
    FrameChanged(window);
}

void DrawFocusRect(QPainter& painter, int left, int top, int right, int bottom)
{
    if (right <= left || bottom <= top)
        return;
    QList<QPoint> dots;
    auto dot = [&](int x, int y) {
        if (((x + y) & 1) == 0)
            dots.append(QPoint(x, y));
    };
    for (int x = left; x < right; ++x) {
        dot(x, top);
        if (bottom - 1 > top)
            dot(x, bottom - 1);
    }
    for (int y = top + 1; y < bottom - 1; ++y) {
        dot(left, y);
        if (right - 1 > left)
            dot(right - 1, y);
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    // XOR with white inverts what is underneath, as the system's focus rectangle does.
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.setPen(QPen(Qt::white, 0));
    painter.drawPoints(dots.constData(), static_cast<int>(dots.size()));
    painter.restore();
}

int EdgeWidthTwips() { return MetricTwipsX(SM_CXEDGE); }
int EdgeHeightTwips() { return MetricTwipsY(SM_CYEDGE); }
int BorderWidthTwips() { return MetricTwipsX(SM_CXBORDER); }
int BorderHeightTwips() { return MetricTwipsY(SM_CYBORDER); }
int VScrollWidthTwips() { return MetricTwipsX(SM_CXVSCROLL); }

bool MouseButtonsSwapped()
{
    return SystemInfo::SystemMetric(SM_SWAPBUTTON) != 0;
}

}  // namespace korvex
