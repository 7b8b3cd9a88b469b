// Drawing helpers: colour splitting and blending with halves to even, the four-corner gradient
// and the border styles checked on rendered pixels, text measuring, metrics in twips.
#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/core/ControlFrame.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/platform/desktop/WindowStyles.h"
#include "korvex/runtime/Error.h"
#include "tests/support/PinnedSettings.h"

#include <QImage>

#include <gtest/gtest.h>

namespace korvex {
namespace {

QRgb At(const QImage& image, int x, int y)
{
    return image.pixel(x, y) & 0xFFFFFF;
}

TEST(DrawingHelpers, SplitAndBlendColours)
{
    int r, g, b;
    SplitRGB(0x123456, r, g, b);
    EXPECT_EQ(std::tuple(r, g, b), std::tuple(0x56, 0x34, 0x12));
    const OleColor red = RGB(255, 0, 0), blue = RGB(0, 0, 255);
    EXPECT_EQ(BlendColours(red, 100, blue), red);
    EXPECT_EQ(BlendColours(red, 0, blue), blue);
    EXPECT_EQ(BlendColours(RGB(1, 1, 0), 50, RGB(2, 0, 0)), RGB(2, 0, 0))
        << "1.5 rounds to 2 and 0.5 to 0: halves to even";
    EXPECT_EQ(BlendColours(RGB(200, 0, 0), 25, RGB(0, 0, 0)), RGB(50, 0, 0));

    SystemInfo::PinSysColor(15, RGB(10, 20, 30));
    SetSystemColorLookup([](int index) { return SystemInfo::SysColor(index); });
    EXPECT_EQ(GetRGBColor(vbButtonFace), RGB(10, 20, 30));
    EXPECT_EQ(GetRGBColor(0x00ABCDEF), 0x00ABCDEFu);
    EXPECT_EQ(GetRGBColor(0x12ABCDEF), 0x12ABCDEFu) << "a value with the top bit clear comes back unchanged";
    ScopedMessageBoxRecorder boxes;
    SetSystemColorLookup([](int) -> OleColor { throw Error(5, QStringLiteral("lookup"), QStringLiteral("no colours")); });
    EXPECT_THROW(GetRGBColor(vbButtonFace), Error) << "the error goes on to the caller";
    ASSERT_EQ(boxes.shown().size(), 1);
    EXPECT_EQ(boxes.shown()[0].prompt, "Error occurred in .GetRGBColor.\r\n\r\nno colours");
    SetSystemColorLookup({});
    SystemInfo::ClearPins();
}

TEST(DrawingHelpers, GradientBlendsWithinTwoTrianglesOnTheMainDiagonal)
{
    QImage image(101, 101, QImage::Format_RGB32);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        DrawGradient(painter, 0, 0, 100, 100, RGB(255, 0, 0), RGB(0, 255, 0), RGB(0, 0, 255), RGB(0, 0, 0));
    }
    EXPECT_EQ(At(image, 0, 0), qRgb(255, 0, 0) & 0xFFFFFF);
    // The right and bottom colours are reached at the right and bottom edges (x or y = 100),
    // which are not filled: the last pixel inside is 99/100 of the way there.
    EXPECT_EQ(At(image, 99, 0), qRgb(2, 252, 0) & 0xFFFFFF);
    EXPECT_EQ(At(image, 0, 99), qRgb(2, 0, 252) & 0xFFFFFF);
    EXPECT_EQ(At(image, 99, 99), qRgb(2, 0, 0) & 0xFFFFFF);
    EXPECT_EQ(At(image, 100, 50), qRgb(255, 255, 255) & 0xFFFFFF);
    EXPECT_EQ(At(image, 50, 100), qRgb(255, 255, 255) & 0xFFFFFF);
    // On the shared diagonal only the top-left and bottom-right colours mix; the other two corners
    // do not reach it.
    EXPECT_EQ(At(image, 50, 50), qRgb(127, 0, 0) & 0xFFFFFF);
    // Above the diagonal the top-right colour contributes, the bottom-left does not.
    EXPECT_EQ(qBlue(image.pixel(75, 25)), 0);
    EXPECT_GT(qGreen(image.pixel(75, 25)), 0);

    QImage flat(20, 10, QImage::Format_RGB32);
    {
        QPainter painter(&flat);
        const OleColor c = RGB(12, 34, 56);
        DrawGradient(painter, 0, 0, 20, 10, c, c, c, c);
    }
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x)
            ASSERT_EQ(At(flat, x, y), qRgb(12, 34, 56) & 0xFFFFFF) << "four equal colours fill flat";
}

class Surface : public UserControl {
public:
    using UserControl::UserControl;
    void Paint(QPainter& painter) override { painter.fillRect(rect(), Qt::white); }
};

TEST(DrawingHelpers, BorderStylesSetAndClearTheirOwnBitsAndShowOnScreen)
{
    Surface surface;
    surface.resize(40, 30);
    ChangeBorderStyle(&surface, bsNone, bsFlat);
    EXPECT_EQ(GetWindowLong(&surface, GWL_STYLE), WS_BORDER);
    ChangeBorderStyle(&surface, bsFlat, bsSunkLikeAPictureBox);
    EXPECT_EQ(GetWindowLong(&surface, GWL_STYLE), 0u) << "the thin border bit is cleared";
    EXPECT_EQ(GetWindowLong(&surface, GWL_EXSTYLE), WS_EX_CLIENTEDGE) << "the client edge is an extended bit";
    EXPECT_EQ(surface.contentsRect(), QRect(2, 2, 36, 26)) << "the edge narrows the client area";

    SystemInfo::PinSysColor(16, RGB(128, 128, 128));
    SystemInfo::PinSysColor(21, RGB(0, 0, 0));
    SetSystemColorLookup([](int index) { return SystemInfo::SysColor(index); });
    const QImage sunk = surface.grab().toImage();
    EXPECT_EQ(At(sunk, 0, 0), qRgb(128, 128, 128) & 0xFFFFFF) << "outer shadow at the top left";
    EXPECT_EQ(At(sunk, 1, 1), 0u) << "inner dark shadow";
    EXPECT_EQ(At(sunk, 20, 15), qRgb(255, 255, 255) & 0xFFFFFF) << "the surface inside";

    ChangeBorderStyle(&surface, bsSunkLikeAPictureBox, bsNone);
    EXPECT_EQ(surface.contentsRect(), surface.rect());
    EXPECT_EQ(At(surface.grab().toImage(), 0, 0), qRgb(255, 255, 255) & 0xFFFFFF);
    SetBorderStyle(&surface, 7, false);
    EXPECT_EQ(GetWindowLong(&surface, GWL_STYLE), 0u) << "an unknown style has no bits";
    SetSystemColorLookup({});
    SystemInfo::ClearPins();
}

TEST(DrawingHelpers, TextSizeAndMetricsInTwips)
{
    test::PinnedSettings pin(RegionalSettings::EnglishUS(), 15, 15);
    const QFont font(QStringLiteral("DejaVu Sans"), 10);
    int width = 1234, height = 99;
    CalcTextSize(QString(), width, height, false, font);
    EXPECT_EQ(std::tuple(width, height), std::tuple(0, 0));

    int oneLineWidth = 0, oneLineHeight = 0;
    CalcTextSize(QStringLiteral("The quick brown fox jumps"), oneLineWidth, oneLineHeight, false, font);
    EXPECT_GT(oneLineWidth, 0);
    EXPECT_EQ(oneLineWidth % 15, 0) << "whole pixels times twips per pixel";
    int wrappedWidth = oneLineWidth / 3, wrappedHeight = 0;
    CalcTextSize(QStringLiteral("The quick brown fox jumps"), wrappedWidth, wrappedHeight, true, font);
    EXPECT_GE(wrappedHeight, 2 * oneLineHeight) << "wrapping to a third of the width takes more lines";
    int wideWidth = oneLineWidth * 3, wideHeight = 0;
    CalcTextSize(QStringLiteral("The quick brown fox jumps"), wideWidth, wideHeight, true, font);
    EXPECT_EQ(wideWidth, oneLineWidth) << "a wide box gives the text's own extent, not the box's";
    EXPECT_EQ(wideHeight, oneLineHeight);

    SetTwipsPerPixel(10, 12);
    EXPECT_EQ(EdgeWidthTwips(), 20);
    EXPECT_EQ(EdgeHeightTwips(), 24);
    EXPECT_EQ(BorderWidthTwips(), 10);
    SystemInfo::PinSwappedButtons(true);
    EXPECT_TRUE(MouseButtonsSwapped());
    SystemInfo::ClearPins();
    EXPECT_FALSE(MouseButtonsSwapped());
}

}  // namespace
}  // namespace korvex
