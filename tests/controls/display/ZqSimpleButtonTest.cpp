// ZqSimpleButton: the mouse cycle (pressed feedback, Click only on a release inside, moves only
// while pressed); the pictures of each style at two device pixel ratios; disabled and pushed
// looks; the corner caption; the saved form.
#include "DisplayTestSupport.h"

#include "korvex/controls/display/ZqSimpleButton.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

struct ButtonTest : ::testing::Test {
    void SetUp() override
    {
        form.Font()->SetName(QStringLiteral("DejaVu Sans"));
        form.Font()->SetSize(10);
        button = static_cast<ZqSimpleButton*>(FormFile::AddNewControl(form, QStringLiteral("ZqSimpleButton"), QStringLiteral("zqsbTest")));
        button->resize(40, 40);
    }
    void Send(QEvent::Type type, QPointF p, Qt::MouseButton changed, Qt::MouseButtons held)
    {
        QMouseEvent e(type, p, button->mapToGlobal(p), changed, held, {});
        QApplication::sendEvent(button, &e);
    }
    // Pixels of the glyph's ink colour in the middle half of the button.
    static int Ink(const QImage& image, QRgb ink)
    {
        int n = 0;
        for (int y = image.height() / 4; y < image.height() * 3 / 4; ++y)
            for (int x = image.width() / 4; x < image.width() * 3 / 4; ++x)
                n += test::Rgb(image, x, y) == ink;
        return n;
    }

    test::PinnedSettings pin;
    Form form;
    ZqSimpleButton* button = nullptr;
};

TEST_F(ButtonTest, ClickOnlyForAReleaseInsideAndPressedWhileHeldInside)
{
    QSignalSpy clicks(button, &Control::Click);
    // Spies cannot record by-reference arguments: the events are counted by hand.
    struct Raised {
        short button;
        float x;
    };
    QList<Raised> downs, moves, ups;
    QObject::connect(button, &Control::MouseDown, [&](short& b, short&, float& x, float&) { downs.append({b, x}); });
    QObject::connect(button, &Control::MouseMove, [&](short& b, short&, float& x, float&) { moves.append({b, x}); });
    QObject::connect(button, &Control::MouseUp, [&](short& b, short&, float& x, float&) { ups.append({b, x}); });

    Send(QEvent::MouseMove, {5, 5}, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(moves.count(), 0) << "no moves while no button is down on the control";

    Send(QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton, Qt::LeftButton);
    EXPECT_TRUE(button->DrawnPressed());
    ASSERT_EQ(downs.count(), 1);
    EXPECT_EQ(downs[0].button, vbLeftButton);
    EXPECT_FLOAT_EQ(downs[0].x, 150.f) << "X in twips";
    Send(QEvent::MouseMove, {60, 10}, Qt::NoButton, Qt::LeftButton);
    EXPECT_FALSE(button->DrawnPressed()) << "dragged outside: drawn raised";
    Send(QEvent::MouseMove, {20, 20}, Qt::NoButton, Qt::LeftButton);
    EXPECT_TRUE(button->DrawnPressed()) << "back inside: pushed again";
    EXPECT_EQ(moves.count(), 2);
    Send(QEvent::MouseButtonRelease, {20, 20}, Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_EQ(ups.count(), 1);
    EXPECT_FALSE(button->DrawnPressed());

    Send(QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton, Qt::LeftButton);
    Send(QEvent::MouseButtonRelease, {60, 10}, Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(clicks.count(), 1) << "released outside: no Click";
    EXPECT_FALSE(button->DrawnPressed());

    Send(QEvent::MouseButtonPress, {10, 10}, Qt::RightButton, Qt::RightButton);
    EXPECT_FALSE(button->DrawnPressed()) << "only the primary button pushes it";
    EXPECT_EQ(downs.count(), 3) << "MouseDown is raised for every button";
    Send(QEvent::MouseButtonRelease, {10, 10}, Qt::RightButton, Qt::NoButton);
    EXPECT_EQ(clicks.count(), 1);

    // The right button let go while the left is still held is no release of the primary one.
    Send(QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton, Qt::LeftButton);
    Send(QEvent::MouseButtonRelease, {10, 10}, Qt::RightButton, Qt::LeftButton);
    EXPECT_EQ(clicks.count(), 1) << "only the primary button's release inside clicks";
    Send(QEvent::MouseButtonRelease, {10, 10}, Qt::LeftButton, Qt::NoButton);

    // The drop-down takes the mouse over when it opens: the release that follows is not ours.
    Send(QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton, Qt::LeftButton);
    button->ReleaseMouseCapture();
    const int upsBefore = static_cast<int>(ups.count());
    Send(QEvent::MouseButtonRelease, {10, 10}, Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_EQ(ups.count(), upsBefore);

    // A double click's second press is a click of its own; its release is not another one.
    Send(QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton, Qt::LeftButton);
    Send(QEvent::MouseButtonRelease, {10, 10}, Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(clicks.count(), 2);
    Send(QEvent::MouseButtonDblClick, {10, 10}, Qt::LeftButton, Qt::LeftButton);
    EXPECT_EQ(clicks.count(), 3);
    EXPECT_FALSE(button->DrawnPressed());
    Send(QEvent::MouseButtonRelease, {10, 10}, Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(clicks.count(), 3);
}

TEST_F(ButtonTest, PicturesOfEachStyleAtTwoDensities)
{
    const QRgb face = test::Rgb(ToQColor(vbButtonFace));
    const QRgb ink = test::Rgb(ToQColor(vbButtonText));
    const QRgb grey = test::Rgb(ToQColor(vbGrayText));
    ASSERT_NE(ink, grey);
    for (qreal ratio : {1.0, 2.0}) {
        const auto at = [ratio](const QImage& image, int x, int y) {
            return test::Rgb(image, static_cast<int>(x * ratio), static_cast<int>(y * ratio));
        };
        button->SetButtonStyle(sbsButton);
        QImage plain = test::RenderAt(button, ratio);
        EXPECT_EQ(at(plain, 20, 20), face) << "a plain face, nothing in the middle";
        EXPECT_EQ(at(plain, 0, 0), test::Rgb(ToQColor(vbButtonShadow))) << "a flat one-pixel frame";
        EXPECT_EQ(Ink(plain, ink), 0);

        button->SetButtonStyle(sbsComboBoxButton);
        QImage combo = test::RenderAt(button, ratio);
        EXPECT_EQ(at(combo, 20, 18), ink) << "the arrow's wide top";
        EXPECT_EQ(at(combo, 17, 17), ink);
        EXPECT_EQ(at(combo, 22, 17), ink);
        EXPECT_EQ(at(combo, 14, 22), face) << "it narrows downwards";
        EXPECT_EQ(at(combo, 20, 14), face) << "nothing above it";

        button->SetButtonStyle(sbsCloseButton);
        QImage close = test::RenderAt(button, ratio);
        EXPECT_EQ(at(close, 20, 20), ink) << "the cross meets in the middle";
        EXPECT_EQ(at(close, 12, 12), ink);
        EXPECT_EQ(at(close, 27, 12), ink);
        EXPECT_EQ(at(close, 20, 12), face) << "and leaves the middle of each side clear";

        button->SetButtonStyle(sbsHelpButton);
        QImage help = test::RenderAt(button, ratio);
        EXPECT_GT(Ink(help, ink), 10 * ratio * ratio) << "a question mark";
        EXPECT_NE(help, close);

        button->SetEnabled(false);
        QImage inactive = test::RenderAt(button, ratio);
        EXPECT_EQ(Ink(inactive, ink), 0) << "disabled: drawn inactive";
        EXPECT_GT(Ink(inactive, grey), 10 * ratio * ratio);
        button->SetEnabled(true);
    }

    // Pushed: the darker frame, and the picture one pixel down and right.
    button->SetButtonStyle(sbsCloseButton);
    const QImage raised = test::RenderAt(button);
    QTest::mousePress(button, Qt::LeftButton, {}, QPoint(5, 5));
    const QImage pushed = test::RenderAt(button);
    QTest::mouseRelease(button, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(test::Rgb(pushed, 0, 0), test::Rgb(ToQColor(vb3DDKShadow)));
    EXPECT_EQ(test::Rgb(pushed, 13, 13), test::Rgb(raised, 12, 12));
    EXPECT_EQ(test::RenderAt(button), raised) << "released: as before";
}

TEST_F(ButtonTest, CaptionInTheMiddleAndTheSmallerCornerCaptionBottomRight)
{
    button->resize(80, 40);
    // Text is smoothed: its extent is where the pixels are dark.
    const auto extent = [](const QImage& image) {
        QRect r;
        for (int y = 2; y < image.height() - 2; ++y)
            for (int x = 2; x < image.width() - 2; ++x)
                if (qGray(image.pixel(x, y)) < 110)
                    r |= QRect(x, y, 1, 1);
        return r;
    };
    button->SetCaption(QStringLiteral("HH"));
    const QImage captioned = test::RenderAt(button);
    const QRect caption = extent(captioned);
    if (caption.isEmpty())
        captioned.save(QStringLiteral("ZqSimpleButton-caption.png"));
    ASSERT_FALSE(caption.isEmpty());
    EXPECT_NEAR(caption.center().x(), 40, 2);
    EXPECT_NEAR(caption.center().y(), 20, 3);

    button->SetCaption(QString());
    button->SetCornerCaption(QStringLiteral("HH"));
    const QRect corner = extent(test::RenderAt(button));
    ASSERT_FALSE(corner.isEmpty());
    EXPECT_TRUE(button->CornerCaptionRect().contains(corner)) << "inside the corner caption's rectangle";
    EXPECT_EQ(button->CornerCaptionRect().bottomRight(), QPoint(79, 39)) << "kept in the bottom-right corner";
    EXPECT_LT(corner.height(), caption.height()) << "two points smaller";
}

TEST_F(ButtonTest, SavedFormKeepsCaptionsStyleAndEnabled)
{
    PropertyBag bag;
    button->WriteProperties(bag);
    EXPECT_TRUE(bag.Values().isEmpty());
    button->SetCaption(QStringLiteral("Go"));
    button->SetCornerCaption(QStringLiteral("F2"));
    button->SetButtonStyle(sbsHelpButton);
    button->SetEnabled(false);
    EXPECT_EQ(test::ErrorOf([&] { button->SetButtonStyle(4); }), vbErrInvalidPropertyValue);
    auto loaded = test::SavedAndLoaded(form);
    auto* back = qobject_cast<ZqSimpleButton*>(loaded->ControlByName(QStringLiteral("zqsbTest")));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->Caption(), "Go");
    EXPECT_EQ(back->CornerCaption(), "F2");
    EXPECT_EQ(back->ButtonStyle(), sbsHelpButton);
    EXPECT_FALSE(back->Enabled());
}

}  // namespace
}  // namespace korvex
