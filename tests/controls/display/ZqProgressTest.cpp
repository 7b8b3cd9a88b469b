// ZqProgress: the caption split in two colours at the bar's end, a value step drawing only its
// strip, Max 0, clipping at the edges, the saved form. ZqRotatingColour: the sweep of the two
// blend positions and the corner colours it paints, restarting, the timer, the saved form.
#include "DisplayTestSupport.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/controls/display/ZqProgress.h"
#include "korvex/controls/display/ZqRotatingColour.h"
#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/TimerControl.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "tests/support/PinnedSettings.h"

#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

constexpr OleColor kFace = 0xFFFFFF, kText = 0x0000FF /* red */, kHighBack = 0x800000 /* navy */, kHighText = 0x00FFFF /* yellow */;

struct ProgressTest : ::testing::Test {
    void SetUp() override
    {
        form.Font()->SetName(QStringLiteral("DejaVu Sans"));
        form.Font()->SetSize(12);
        bar = static_cast<ZqProgress*>(FormFile::AddNewControl(form, QStringLiteral("ZqProgress"), QStringLiteral("zqprg")));
        bar->SetButtonFace(kFace);
        bar->SetButtonText(kText);
        bar->SetHighlightBackground(kHighBack);
        bar->SetHighlightText(kHighText);
        bar->Move(0, 0, 200 * 15, 24 * 15);
        form.resize(300, 100);
        form.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&form));
    }
    // Pixels whose colour leans to red (the caption on the unfilled part) or to yellow (on the
    // filled part), between columns from and to.
    static std::pair<int, int> RedAndYellow(const QImage& image, int from, int to)
    {
        int red = 0, yellow = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = from; x < to; ++x) {
                const QColor c = image.pixelColor(x, y);
                red += c.red() > 200 && c.green() < 120 && c.blue() < 120;
                yellow += c.red() > 160 && c.green() > 160 && c.blue() < 100;
            }
        return {red, yellow};
    }
    test::PinnedSettings pin;
    Form form;
    ZqProgress* bar = nullptr;
};

TEST_F(ProgressTest, CaptionChangesColourWhereTheBarEnds)
{
    bar->SetAlignment(2);
    bar->SetCaption(QStringLiteral("MMMMMMMMMMMM"));
    bar->SetValue(50);
    const QImage image = bar->grab().toImage();
    EXPECT_EQ(test::Rgb(image, 2, 2), test::Rgb(ToQColor(kHighBack)));
    EXPECT_EQ(test::Rgb(image, 197, 2), 0xFFFFFFu);
    const auto [redLeft, yellowLeft] = RedAndYellow(image, 0, 100);
    const auto [redRight, yellowRight] = RedAndYellow(image, 100, 200);
    EXPECT_GT(yellowLeft, 20) << "the filled part writes the caption in the highlight text colour";
    EXPECT_EQ(redLeft, 0);
    EXPECT_GT(redRight, 20) << "the rest in the button text colour";
    EXPECT_EQ(yellowRight, 0);

    bar->SetMax(0);
    const QImage empty = bar->grab().toImage();
    EXPECT_EQ(test::Rgb(empty, 2, 2), 0xFFFFFFu) << "Max 0: only the unfilled part";
    EXPECT_EQ(RedAndYellow(empty, 0, 200).second, 0);

    // Wider than the bar and right-aligned: starts left of the edge and is cut at both ends.
    bar->SetMax(100);
    bar->SetAlignment(1);
    bar->SetCaption(QStringLiteral("MMMMMMMMMMMMMMMMMMMMMMMMMMMMMMMM"));
    const QImage wide = bar->grab().toImage();
    EXPECT_GT(RedAndYellow(wide, 0, 10).second, 0) << "text reaches the left edge";
    EXPECT_GT(RedAndYellow(wide, 190, 200).first, 0) << "and the right edge";
}

TEST_F(ProgressTest, AValueStepDrawsOnlyTheStripItMovedOver)
{
    bar->SetCaption(QStringLiteral("Loading"));
    bar->SetValue(30);
    const QImage at30 = bar->grab().toImage();
    bar->SetValue(40);
    ASSERT_EQ(bar->LastStrips().size(), 1);
    EXPECT_EQ(bar->LastStrips()[0], QRect(60, 0, 20, 24)) << "pixels 60 to 80 become filled";
    const QImage at40 = bar->grab().toImage();
    EXPECT_EQ(test::Rgb(at40, 70, 1), test::Rgb(ToQColor(kHighBack)));
    bar->SetValue(30);
    ASSERT_EQ(bar->LastStrips().size(), 1);
    EXPECT_EQ(bar->LastStrips()[0], QRect(60, 0, 20, 24)) << "and back again as unfilled";
    EXPECT_EQ(bar->grab().toImage(), at30) << "the same picture as drawn whole";
    bar->SetValue(30);
    EXPECT_TRUE(bar->LastStrips().isEmpty()) << "no step, nothing drawn";

    const qint64 before = bar->PixelsDrawn();
    bar->SetButtonFace(kFace);
    EXPECT_EQ(bar->PixelsDrawn() - before, 200 * 24) << "other properties draw the whole bar";

    // What changes while the bar is hidden shows when it comes back.
    bar->hide();
    bar->SetValue(40);
    bar->show();
    EXPECT_EQ(test::Rgb(bar->grab().toImage(), 70, 1), test::Rgb(ToQColor(kHighBack)));
}

TEST_F(ProgressTest, SavedFormKeepsEveryProperty)
{
    PropertyBag bag;
    auto* fresh = static_cast<ZqProgress*>(FormFile::AddNewControl(form, QStringLiteral("ZqProgress"), QStringLiteral("zqprgFresh")));
    fresh->WriteProperties(bag);
    EXPECT_TRUE(bag.Values().isEmpty());
    bar->SetMax(250);
    bar->SetValue(7);
    bar->SetCaption(QStringLiteral("Copying"));
    bar->SetAlignment(2);
    bar->Font()->SetItalic(true);
    auto loaded = test::SavedAndLoaded(form);
    auto* back = qobject_cast<ZqProgress*>(loaded->ControlByName(QStringLiteral("zqprg")));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->Max(), 250);
    EXPECT_EQ(back->Value(), 7);
    EXPECT_EQ(back->Caption(), "Copying");
    EXPECT_EQ(back->Alignment(), 2);
    EXPECT_EQ(back->ButtonFace(), kFace);
    EXPECT_EQ(back->ButtonText(), kText);
    EXPECT_EQ(back->HighlightBackground(), kHighBack);
    EXPECT_EQ(back->HighlightText(), kHighText);
    EXPECT_TRUE(back->Font()->Italic());
}

struct RotatingTest : ::testing::Test {
    void SetUp() override
    {
        rot = static_cast<ZqRotatingColour*>(FormFile::AddNewControl(form, QStringLiteral("ZqRotatingColour"), QStringLiteral("zqrc")));
        rot->SetColour1(RGB(0, 0, 0));
        rot->SetColour2(RGB(200, 100, 0));
    }
    test::PinnedSettings pin;
    Form form;
    ZqRotatingColour* rot = nullptr;
};

TEST_F(RotatingTest, TheSweepAndTheCornersItPaints)
{
    rot->SetEnabled(true);
    rot->Tick();
    ZqFrameEx* frax = rot->Background();
    EXPECT_EQ(frax->BackColor(), RGB(200, 100, 0)) << "A is 0: the top-left corner all Colour2";
    EXPECT_EQ(frax->BackColorTR(), RGB(0, 0, 0));
    EXPECT_EQ(rot->PositionA(), 1);
    while (rot->PositionA() < 15)
        rot->Tick();
    EXPECT_EQ(rot->PositionB(), 0);
    rot->Tick();
    EXPECT_EQ(rot->PositionA(), 16);
    EXPECT_EQ(rot->PositionB(), 1) << "B starts on the tick after A reached 15";
    EXPECT_EQ(frax->BackColor(), BlendColours(RGB(0, 0, 0), 15, RGB(200, 100, 0)));
    EXPECT_EQ(frax->BackColorBR(), BlendColours(RGB(200, 100, 0), 15, RGB(0, 0, 0)));
    EXPECT_EQ(frax->BackColorBL(), RGB(200, 100, 0));
    for (int i = 0; i < 84; ++i)
        rot->Tick();
    EXPECT_EQ(rot->PositionA(), 100);
    rot->Tick();
    EXPECT_EQ(rot->PositionA(), 99) << "and back";
    EXPECT_EQ(rot->PositionB(), 86) << "B follows 15 points behind";

    rot->SetEnabled(false);
    rot->SetEnabled(true);
    rot->Tick();
    EXPECT_EQ(rot->PositionA(), 1) << "stopped and started: the sweep begins again";
    EXPECT_EQ(rot->PositionB(), 0);
    EXPECT_EQ(frax->BackColor(), RGB(200, 100, 0));
}

TEST_F(RotatingTest, TheTimerAnimatesOnlyWhileEnabledAndShown)
{
    rot->SetEnabled(true);
    QTest::qWait(60);
    EXPECT_EQ(rot->PositionA(), 0) << "a hidden indicator does not move";
    form.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return rot->PositionA() >= 3; }, 2000));
    EXPECT_EQ(rot->Timer()->Interval(), 15);
    rot->SetEnabled(false);
    EXPECT_EQ(rot->PositionA(), 0);
    QTest::qWait(60);
    EXPECT_EQ(rot->PositionA(), 0);
}

TEST_F(RotatingTest, SavedFormKeepsEveryPropertyAndNothingIsNotified)
{
    int notified = 0;
    QObject::connect(rot, &UserControl::PropertyChangedNotification, [&] { ++notified; });
    rot->SetCaption(QStringLiteral("Working"));
    rot->SetForeColor(RGB(255, 255, 255));
    rot->SetEnabled(true);
    EXPECT_EQ(notified, 0);
    auto loaded = test::SavedAndLoaded(form);
    auto* back = qobject_cast<ZqRotatingColour*>(loaded->ControlByName(QStringLiteral("zqrc")));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->Caption(), "Working");
    EXPECT_EQ(back->Colour1(), RGB(0, 0, 0));
    EXPECT_EQ(back->Colour2(), RGB(200, 100, 0));
    EXPECT_EQ(back->ForeColor(), RGB(255, 255, 255));
    EXPECT_TRUE(back->Enabled());

    auto* fresh = static_cast<ZqRotatingColour*>(FormFile::AddNewControl(form, QStringLiteral("ZqRotatingColour"), QStringLiteral("zqrcFresh")));
    PropertyBag bag;
    fresh->WriteProperties(bag);
    EXPECT_TRUE(bag.Values().isEmpty());
    EXPECT_EQ(fresh->Colour2(), 65535u);
}

}  // namespace
}  // namespace korvex
