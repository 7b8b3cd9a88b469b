// ZqFrame and ZqFrameEx: the gradient's exact corners and when it is drawn again; corners that
// follow the back colour; scroll bars, the corner square and the offsets of contained
// controls; inner sizes and borders; the saved form with a contained control.
#include "DisplayTestSupport.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/WindowStyles.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"

#include <QScrollBar>
#include <QSignalSpy>

#include <cstdlib>

#include <gtest/gtest.h>

namespace korvex {
namespace {

struct FrameTest : ::testing::Test {
    template <class T>
    T* Add(const char* type, const char* name, QWidget* container = nullptr)
    {
        return static_cast<T*>(FormFile::AddNewControl(form, QLatin1String(type), QLatin1String(name), container));
    }
    test::PinnedSettings pin;
    Form form;
};

TEST_F(FrameTest, GradientCornersAreExactAndDrawnOnlyForASizeOrBackColour)
{
    auto* frax = Add<ZqFrameEx>("ZqFrameEx", "zqfrax");
    frax->SetBorderStyle(bsNone);
    frax->Move(0, 0, 60 * 15, 40 * 15);
    frax->SetBackColorTR(RGB(0, 255, 0));
    frax->SetBackColorBL(RGB(0, 0, 255));
    frax->SetBackColorBR(RGB(255, 255, 255));
    const int before = frax->BackgroundPaints();
    EXPECT_EQ(test::Rgb(test::RenderAt(frax), 59, 0), test::Rgb(ToQColor(vbButtonFace))) << "corners wait for the next paint";
    frax->SetBackColor(RGB(255, 0, 0));
    EXPECT_EQ(frax->BackgroundPaints(), before + 1);

    QImage image = test::RenderAt(frax);
    // The right and bottom corner colours sit on the right and bottom edges, just past the last
    // pixel filled: the last pixel is one step (1/60 or 1/40 of the way) short of them.
    const auto near = [&](int x, int y, QColor corner) {
        const QColor c = image.pixelColor(x, y);
        return std::abs(c.red() - corner.red()) <= 8 && std::abs(c.green() - corner.green()) <= 8 &&
               std::abs(c.blue() - corner.blue()) <= 8;
    };
    EXPECT_EQ(test::Rgb(image, 0, 0), 0xFF0000u) << "the top-left corner is exact";
    EXPECT_TRUE(near(59, 0, QColor(0, 255, 0)));
    EXPECT_NE(test::Rgb(image, 59, 0), 0x00FF00u) << "not reached one pixel early";
    EXPECT_TRUE(near(0, 39, QColor(0, 0, 255)));
    EXPECT_TRUE(near(59, 39, QColor(255, 255, 255)));
    const QColor middle = image.pixelColor(30, 20);
    EXPECT_NEAR(middle.red(), 255, 3) << "on the diagonal: half the top-left, half the bottom-right";
    EXPECT_NEAR(middle.green(), 128, 6);

    test::RenderAt(frax);
    frax->update();
    EXPECT_EQ(frax->BackgroundPaints(), before + 1) << "painting shows what is kept";
    frax->Move(0, 0, 80 * 15, 40 * 15);
    EXPECT_EQ(frax->BackgroundPaints(), before + 2) << "a new size draws it again";
    image = test::RenderAt(frax);
    EXPECT_TRUE(near(79, 0, QColor(0, 255, 0)));

    // With a border the gradient fills the inside: its top-left corner is exact there.
    frax->SetBorderStyle(bsSunkLikeAPictureBox);
    frax->Move(0, 0, 60 * 15, 40 * 15);
    image = test::RenderAt(frax);
    EXPECT_EQ(test::Rgb(image, 2, 2), 0xFF0000u);
    EXPECT_NE(test::Rgb(image, 1, 1), 0xFF0000u) << "the border is not painted over";

    // Four equal colours fill flat.
    for (auto set : {&ZqFrameEx::SetBackColorTR, &ZqFrameEx::SetBackColorBL, &ZqFrameEx::SetBackColorBR})
        (frax->*set)(RGB(10, 20, 30));
    frax->SetBackColor(RGB(10, 20, 30));
    image = test::RenderAt(frax);
    EXPECT_EQ(test::Rgb(image, 2, 2), 0x0A141Eu);
    EXPECT_EQ(test::Rgb(image, 55, 35), 0x0A141Eu);
    EXPECT_EQ(test::Rgb(image, 30, 20), 0x0A141Eu);
}

TEST_F(FrameTest, CornersThatFollowTheBackColourKeepFollowing)
{
    auto* frax = Add<ZqFrameEx>("ZqFrameEx", "zqfrax");
    frax->SetBackColor(RGB(1, 2, 3));
    EXPECT_EQ(frax->BackColorTR(), RGB(1, 2, 3));
    EXPECT_EQ(frax->BackColorBL(), RGB(1, 2, 3));
    EXPECT_EQ(frax->BackColorBR(), RGB(1, 2, 3));
    frax->SetBackColorTR(RGB(9, 9, 9));
    frax->SetBackColor(RGB(4, 5, 6));
    EXPECT_EQ(frax->BackColorTR(), RGB(9, 9, 9)) << "set on its own, it stays";
    EXPECT_EQ(frax->BackColorBL(), RGB(4, 5, 6));
    EXPECT_EQ(frax->BackColorBR(), RGB(4, 5, 6));
}

TEST_F(FrameTest, ScrollBarsCornerAndOffsetsOfContainedControls)
{
    auto* frax = Add<ZqFrameEx>("ZqFrameEx", "zqfrax");
    frax->SetBorderStyle(bsNone);
    auto* wide = Add<Control>("Label", "lblWide", frax->ContainerWidget());
    auto* small = Add<Control>("Label", "lblSmall", frax->ContainerWidget());
    // Just wider than the panel, and low enough to fit only while there is no horizontal bar.
    wide->Move(0, 0, 110 * 15, 90 * 15);
    small->Move(20 * 15, 30 * 15, 10 * 15, 10 * 15);
    const int bar = frax->HorizontalBar()->height();
    ASSERT_GT(bar, 10);
    ASSERT_LT(bar, 90);

    frax->Move(0, 0, 100 * 15, 100 * 15);
    EXPECT_TRUE(frax->HorizontalBar()->isHidden()) << "no scrolling allowed: no bars, whatever the contents";
    EXPECT_TRUE(frax->VerticalBar()->isHidden());

    frax->SetAllowScrollHoriz(true);
    frax->SetAllowScrollVert(true);
    frax->Move(0, 0, 100 * 15, 101 * 15);
    ASSERT_FALSE(frax->HorizontalBar()->isHidden());
    ASSERT_FALSE(frax->VerticalBar()->isHidden()) << "the horizontal bar took the room the contents needed";
    ASSERT_FALSE(frax->Corner()->isHidden());
    const int vbar = frax->VerticalBar()->width();
    EXPECT_EQ(frax->HorizontalBar()->geometry(), QRect(0, 101 - bar, 100 - vbar, bar));
    EXPECT_EQ(frax->VerticalBar()->geometry(), QRect(100 - vbar, 0, vbar, 101 - bar));
    EXPECT_EQ(frax->Corner()->geometry(), QRect(100 - vbar, 101 - bar, vbar, bar));
    EXPECT_EQ(frax->HorizontalBar()->maximum(), 110 - (100 - vbar));
    EXPECT_EQ(frax->HorizontalBar()->pageStep(), 100 - vbar);
    EXPECT_EQ(frax->VerticalBar()->maximum(), 90 - (101 - bar));

    frax->HorizontalBar()->setValue(10);
    EXPECT_EQ(frax->OffSetX(), 150);
    EXPECT_EQ(wide->Left(), -150);
    EXPECT_EQ(small->Left(), 20 * 15 - 150) << "every contained control moves";
    frax->VerticalBar()->setValue(3);
    EXPECT_EQ(frax->OffSetY(), 45);
    EXPECT_EQ(small->Top(), 30 * 15 - 45);
    frax->HorizontalBar()->setValue(0);
    frax->VerticalBar()->setValue(0);
    EXPECT_EQ(small->Left(), 20 * 15) << "back exactly where they were";
    EXPECT_EQ(small->Top(), 30 * 15);
    EXPECT_EQ(wide->Left(), 0);

    // Room enough again: the bars go and the corner with them.
    QSignalSpy resized(frax, &ZqFrameEx::Resized);
    frax->Move(0, 0, 200 * 15, 200 * 15);
    EXPECT_TRUE(frax->HorizontalBar()->isHidden());
    EXPECT_TRUE(frax->VerticalBar()->isHidden());
    EXPECT_TRUE(frax->Corner()->isHidden());
    EXPECT_EQ(resized.count(), 1);
}

TEST_F(FrameTest, FrameInnerSizeAndBorders)
{
    auto* fra = Add<ZqFrame>("ZqFrame", "zqfra");
    fra->Move(0, 0, 3000, 1500);
    EXPECT_EQ(fra->BorderStyle(), bsRaisedLikeAButton);
    EXPECT_FLOAT_EQ(fra->ScaleWidth(), 3000 - 2 * 30 - 2 * 15);
    fra->SetBorderStyle(bsNone);
    EXPECT_FLOAT_EQ(fra->ScaleWidth(), 3000);
    EXPECT_FLOAT_EQ(fra->ScaleHeight(), 1500);
    fra->SetBorderStyle(bsFlat);
    EXPECT_FLOAT_EQ(fra->ScaleHeight(), 1500 - 2 * 15);
    EXPECT_TRUE(GetWindowLong(fra, GWL_STYLE) & WS_BORDER);
    fra->SetBorderStyle(bsSunkLikeAPictureBox);
    EXPECT_FALSE(GetWindowLong(fra, GWL_STYLE) & WS_BORDER) << "the thin border is cleared";
    EXPECT_TRUE(GetWindowLong(fra, GWL_EXSTYLE) & WS_EX_CLIENTEDGE) << "and the sunken edge set";
    EXPECT_FLOAT_EQ(fra->ScaleWidth(), 3000 - 2 * 30);
    EXPECT_EQ(fra->ContainerWidget()->geometry(), QRect(2, 2, 196, 96)) << "contained controls count from inside the border";
    EXPECT_EQ(test::ErrorOf([&] { fra->SetBorderStyle(3); }), vbErrInvalidPropertyValue);

    fra->SetBackColor(RGB(200, 0, 0));
    EXPECT_EQ(test::Rgb(test::RenderAt(fra), 50, 50), 0xC80000u);
    fra->SetBackStyle(bsTransparent);
    EXPECT_EQ(test::Rgb(test::RenderAt(fra), 50, 50), 0xFFFFFFu) << "transparent: what is behind shows";
}

TEST_F(FrameTest, SavedFormKeepsEveryPropertyAndTheContainedControls)
{
    auto* fresh = Add<ZqFrameEx>("ZqFrameEx", "zqfraxFresh");
    auto* freshPlain = Add<ZqFrame>("ZqFrame", "zqfraFresh");
    PropertyBag bag;
    fresh->WriteProperties(bag);
    freshPlain->WriteProperties(bag);
    EXPECT_TRUE(bag.Values().isEmpty()) << "new panels store nothing";

    auto* frax = Add<ZqFrameEx>("ZqFrameEx", "zqfrax");
    frax->SetAllowScrollHoriz(true);
    frax->SetAllowScrollVert(true);
    frax->SetBackColor(RGB(1, 2, 3));
    frax->SetBackColorBR(RGB(7, 8, 9));
    frax->SetBorderStyle(bsFlat);
    frax->Font()->SetBold(true);
    auto* inner = Add<Control>("Label", "lblInner", frax->ContainerWidget());
    inner->Move(150, 300, 600, 300);
    auto* fra = Add<ZqFrame>("ZqFrame", "zqfra");
    fra->SetBackColor(RGB(4, 5, 6));
    fra->SetBackStyle(bsTransparent);
    fra->SetBorderStyle(bsNone);

    auto loaded = test::SavedAndLoaded(form);
    auto* fraxBack = qobject_cast<ZqFrameEx*>(loaded->ControlByName(QStringLiteral("zqfrax")));
    auto* fraBack = qobject_cast<ZqFrame*>(loaded->ControlByName(QStringLiteral("zqfra")));
    ASSERT_TRUE(fraxBack && fraBack);
    EXPECT_TRUE(fraxBack->AllowScrollHoriz());
    EXPECT_TRUE(fraxBack->AllowScrollVert());
    EXPECT_EQ(fraxBack->BackColor(), RGB(1, 2, 3));
    EXPECT_EQ(fraxBack->BackColorTR(), RGB(1, 2, 3));
    EXPECT_EQ(fraxBack->BackColorBL(), RGB(1, 2, 3));
    EXPECT_EQ(fraxBack->BackColorBR(), RGB(7, 8, 9));
    EXPECT_EQ(fraxBack->BorderStyle(), bsFlat);
    EXPECT_TRUE(fraxBack->Font()->Bold());
    ASSERT_EQ(fraxBack->ContainedControls().size(), 1);
    EXPECT_EQ(fraxBack->ContainedControls()[0]->Name(), "lblInner");
    EXPECT_EQ(fraxBack->ContainedControls()[0]->Top(), 300);
    EXPECT_EQ(fraBack->BackColor(), RGB(4, 5, 6));
    EXPECT_EQ(fraBack->BackStyle(), bsTransparent);
    EXPECT_EQ(fraBack->BorderStyle(), bsNone);
}

}  // namespace
}  // namespace korvex
