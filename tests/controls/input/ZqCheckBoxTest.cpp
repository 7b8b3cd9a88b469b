// ZqCheckBox as a host uses it: the click cycle driven by the mouse and the space bar with and
// without ThreeState, one Click per change with its reason, loading without a Click, the
// caption-less square with its focus rectangle three pixels around the box, and persistence.
#include "korvex/controls/input/ZqCheckBox.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/controls/input/InputTestSupport.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include <QCheckBox>
#include <QSignalSpy>
#include <QStyleOptionButton>
#include <QTemporaryDir>

namespace korvex {
namespace {

using ZqCheckBoxTest = test::InputControlTest;

void ClickTheBox(ZqCheckBox& box)
{
    QCheckBox* inner = box.InnerBox()->Box();
    QStyleOptionButton option;
    option.initFrom(inner);
    const QRect indicator = inner->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, inner);
    QTest::mouseClick(inner, Qt::LeftButton, {}, indicator.center());
}

void PressSpace(ZqCheckBox& box)
{
    QTest::keyClick(box.InnerBox()->Box(), Qt::Key_Space);
}

// The values after each click and the reasons of every Click raised.
struct Cycle {
    QList<short> values;
    QList<int> reasons;
};

Cycle RunClicks(ZqCheckBox& box, int clicks, void (*click)(ZqCheckBox&))
{
    QSignalSpy spy(&box, &ZqCheckBox::Click);
    Cycle cycle;
    for (int i = 0; i < clicks; ++i) {
        click(box);
        cycle.values << box.Value();
    }
    for (const QList<QVariant>& args : spy)
        cycle.reasons << args.at(0).value<ZqCheckBoxClickReasons>();
    return cycle;
}

TEST_F(ZqCheckBoxTest, ClicksFollowTheControlsCycleByMouseAndKeyboard)
{
    struct Row {
        bool threeState;
        short start;
        QList<short> values;
        const char* why;
    };
    const Row rows[] = {
        {true, 0, {2, 1, 0, 2}, "three-state: Off, Mixed, Yes, Off"},
        {false, 0, {1, 0, 1}, "two-state alternates Off and Yes"},
        {false, 2, {1, 0}, "two-state set to Mixed by code goes to Yes"},
        {true, 1, {0, 2}, "Yes goes to Off whatever the setting"},
    };
    const QList<int> byUser{zqchkChangedByUser, zqchkChangedByUser, zqchkChangedByUser, zqchkChangedByUser};
    ShowActive();
    for (auto click : {&ClickTheBox, &PressSpace}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.why);
            auto* box = new ZqCheckBox(form.Client());
            box->show();
            box->SetThreeState(row.threeState);
            box->SetValue(row.start);
            const Cycle cycle = RunClicks(*box, static_cast<int>(row.values.size()), click);
            EXPECT_EQ(cycle.values, row.values);
            EXPECT_EQ(cycle.reasons, byUser.mid(0, row.values.size())) << "one Click by the user per click";
            delete box;
        }
    }
}

TEST_F(ZqCheckBoxTest, KeyAndMouseEventsArePassedOnAndTheInnerClickIsNot)
{
    auto* box = new ZqCheckBox(form.Client());
    ShowActive();
    QStringList events;
    QObject::connect(box, &Control::KeyDown, [&](short& code, short&) { events << QStringLiteral("KeyDown %1").arg(code); });
    QObject::connect(box, &Control::KeyPress, [&](short& ascii) { events << QStringLiteral("KeyPress %1").arg(ascii); });
    QObject::connect(box, &Control::KeyUp, [&](short& code, short&) { events << QStringLiteral("KeyUp %1").arg(code); });
    QObject::connect(box, &Control::MouseDown, [&](short& b, short&, float&, float&) { events << QStringLiteral("MouseDown %1").arg(b); });
    QObject::connect(box, &Control::MouseUp, [&](short& b, short&, float&, float&) { events << QStringLiteral("MouseUp %1").arg(b); });
    QObject::connect(box, &ZqCheckBox::Click, [&](ZqCheckBoxClickReasons r) { events << QStringLiteral("Click %1").arg(r); });
    QObject::connect(box, qOverload<>(&Control::Click), [&] { events << QStringLiteral("inner click leaked"); });
    PressSpace(*box);
    ClickTheBox(*box);
    EXPECT_EQ(events, (QStringList{"KeyDown 32", "KeyPress 32", "KeyUp 32", "Click 2", "MouseDown 1", "MouseUp 1", "Click 2"}));

    events.clear();
    QObject::connect(box, &Control::KeyPress, [](short& ascii) { ascii = 0; });
    ASSERT_EQ(box->Value(), 1);
    PressSpace(*box);
    EXPECT_EQ(box->Value(), 1) << "a space swallowed by the host never reaches the box";
    EXPECT_EQ(events, (QStringList{"KeyDown 32", "KeyPress 32", "KeyUp 32"}));
}

TEST_F(ZqCheckBoxTest, ValueWritesRaiseClickByCodeEvenWhenUnchangedAndRefuseBadValues)
{
    ZqCheckBox box(form.Client());
    QSignalSpy clicks(&box, &ZqCheckBox::Click);
    QSignalSpy notices(&box, &UserControl::PropertyChangedNotification);
    box.SetValue(1);
    box.SetValue(1);
    SetProperty(&box, QStringLiteral("Value"), Variant(std::int32_t{0}));  // as the binding writes it
    ASSERT_EQ(clicks.count(), 3);
    for (const QList<QVariant>& args : clicks)
        EXPECT_EQ(args.at(0).value<ZqCheckBoxClickReasons>(), zqchkChangedByCode);
    EXPECT_EQ(notices.count(), 3);
    EXPECT_EQ(notices.at(0).at(0).toString(), "Value");

    EXPECT_EQ(test::ErrorOf([&] { box.SetValue(3); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { box.SetValue(-1); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(clicks.count(), 3) << "a refused value raises no Click";
    EXPECT_EQ(box.Value(), 0);
    EXPECT_EQ(box.NextValue(), 2) << "and leaves the cycle where it was";
    box.InnerBox()->SetValue(1);  // the inner box changed behind the control's back is a user change
    EXPECT_EQ(clicks.count(), 4);
}

TEST_F(ZqCheckBoxTest, ThreeStateTurnedOffTakesEffectOnceTheValueChanged)
{
    ZqCheckBox box(form.Client());
    box.show();
    box.SetThreeState(false);
    EXPECT_EQ(box.NextValue(), 2) << "the next value was computed while three-state";
    EXPECT_EQ(RunClicks(box, 4, &ClickTheBox).values, (QList<short>{2, 1, 0, 1}));

    box.SetThreeState(true);
    box.SetValue(0);
    EXPECT_EQ(RunClicks(box, 1, &ClickTheBox).values, QList<short>{2});
}

TEST_F(ZqCheckBoxTest, LoadingAValueRaisesNoClickAndSetsTheCycle)
{
    ZqCheckBox box(form.Client());
    box.show();
    QSignalSpy clicks(&box, &ZqCheckBox::Click);
    PropertyBag bag(QJsonObject{{"Value", 1}, {"ThreeState", false}});
    box.ReadProperties(bag);
    EXPECT_EQ(box.Value(), 1);
    EXPECT_EQ(clicks.count(), 0);
    EXPECT_EQ(RunClicks(box, 2, &ClickTheBox).values, (QList<short>{0, 1}));

    PropertyBag bad(QJsonObject{{"Value", 7}});
    EXPECT_EQ(test::ErrorOf([&] { box.ReadProperties(bad); }), vbErrInvalidPropertyValue);
}

TEST_F(ZqCheckBoxTest, CaptionlessBoxIsASquareWithItsOwnFocusRectangle)
{
    auto* captioned = new ZqCheckBox(form.Client());  // first in the tab order: it takes the first focus
    captioned->Move(150, 1500, 3000, 300);
    auto* bare = new ZqCheckBox(form.Client());
    bare->SetCaption(QStringLiteral("   "));
    bare->Move(150, 150, 3000, 600);
    ShowActive();
    WaitForFocus(captioned->InnerBox()->Box());

    const int h = bare->InnerBox()->height();
    EXPECT_EQ(h, bare->InnerBox()->minimumHeight()) << "the box reports the least height it can have";
    EXPECT_GE(h, 10);
    EXPECT_EQ(bare->size(), QSize(h + 6, h + 6)) << "a square of the box's height plus three pixels each side";
    EXPECT_EQ(bare->InnerBox()->geometry(), QRect(3, 3, h, h));

    const QColor face = ToQColor(test::PinnedButtonFace);
    const QColor inverted(255 - face.red(), 255 - face.green(), 255 - face.blue());
    auto frame = [&](const QImage& image) {
        // The pixels of the frame three pixels outside the box, and one pixel inside it.
        QList<QPoint> ring, inside;
        const int last = h + 5;
        for (int i = 0; i <= last; ++i) {
            ring << QPoint(i, 0) << QPoint(i, last) << QPoint(0, i) << QPoint(last, i);
            if (i >= 1 && i <= last - 1)
                inside << QPoint(i, 1) << QPoint(1, i);
        }
        int dotted = 0, plain = 0, wrong = 0;
        for (const QPoint& p : ring) {
            const QColor c = image.pixelColor(p);
            const bool on = ((p.x() + p.y()) & 1) == 0;
            if (on && c == inverted)
                ++dotted;
            else if (!on && c == face)
                ++plain;
            else
                ++wrong;
        }
        for (const QPoint& p : inside)
            wrong += image.pixelColor(p) != face;
        return std::tuple(dotted, plain, wrong);
    };
    const auto [dotsBefore, plainBefore, wrongBefore] = frame(bare->grab().toImage());
    EXPECT_EQ(dotsBefore, 0) << "no rectangle without the focus";

    bare->SetFocus();
    WaitForFocus(bare->InnerBox()->Box());
    const QImage focused = bare->grab().toImage();
    const auto [dots, plain, wrong] = frame(focused);
    EXPECT_GT(dots, 2 * h) << "every other pixel of the frame is inverted";
    EXPECT_GT(plain, 2 * h) << "and the ones between are left alone";
    EXPECT_EQ(wrong, 0);
    if (wrong != 0)
        focused.save(QStringLiteral("ZqCheckBox-focus-rectangle.png"));

    captioned->SetFocus();
    WaitForFocus(captioned->InnerBox()->Box());
    EXPECT_EQ(std::get<0>(frame(bare->grab().toImage())), 0) << "the rectangle goes with the focus";
    EXPECT_EQ(captioned->InnerBox()->geometry(), QRect(0, 0, 200, 20)) << "a captioned box fills the control";
    const QImage withCaption = captioned->grab().toImage();
    int invertedPixels = 0;
    for (int x = 0; x < withCaption.width(); ++x)
        invertedPixels += withCaption.pixelColor(x, 0) == inverted;
    EXPECT_EQ(invertedPixels, 0) << "a captioned box draws no rectangle of its own";
}

TEST_F(ZqCheckBoxTest, PersistenceKeepsTheOrderAndOnlyWhatDiffers)
{
    QTemporaryDir dir;
    const QString picture = dir.filePath(QStringLiteral("tick.png"));
    QImage(8, 8, QImage::Format_RGB32).save(picture);
    const QString notAPicture = dir.filePath(QStringLiteral("notes.txt"));
    QFile text(notAPicture);
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not a picture");
    text.close();

    ZqCheckBox fresh(form.Client());
    PropertyBag empty;
    fresh.WriteProperties(empty);
    EXPECT_TRUE(empty.Values().isEmpty()) << "a new control equals every default";
    EXPECT_EQ(fresh.Caption(), "ZqCheckBox");

    StdFont font;
    font.SetName(QStringLiteral("DejaVu Serif"));
    const QJsonObject saved{
        {"Appearance", 0}, {"BackColor", 255}, {"ForeColor", 65280}, {"Enabled", false},
        {"Font", PropertyBag::ToJson(Variant(static_cast<QObject*>(&font)))}, {"Alignment", 1}, {"Caption", ""},
        {"CausesValidation", false}, {"DataField", "IsActive"}, {"DisabledPicture", picture}, {"DownPicture", picture},
        {"MaskColor", 0}, {"MouseIcon", picture}, {"MousePointer", 99}, {"OLEDropMode", 1}, {"Picture", picture},
        {"ToolTipText", "Active customer"}, {"UseMaskColor", true}, {"WhatsThisHelpID", 17}, {"ThreeState", false},
        {"Value", 2}};
    ZqCheckBox loaded(form.Client());
    QSignalSpy notices(&loaded, &UserControl::PropertyChangedNotification);
    PropertyBag reading(saved);
    loaded.ReadProperties(reading);
    QStringList order;
    for (const QList<QVariant>& n : notices)
        order << n.at(0).toString();
    EXPECT_EQ(order, (QStringList{"Appearance", "BackColor", "ForeColor", "Enabled", "Font", "Alignment", "Caption",
                                  "CausesValidation", "DataField", "DisabledPicture", "DownPicture", "MaskColor",
                                  "MouseIcon", "MousePointer", "OLEDropMode", "Picture", "ToolTipText", "UseMaskColor",
                                  "WhatsThisHelpID", "ThreeState"}))
        << "read in their order; the value is loaded without a notice";
    EXPECT_EQ(GetProperty(&loaded, QStringLiteral("DataField")), Variant("IsActive"));
    EXPECT_EQ(loaded.Font()->Name(), "DejaVu Serif");
    EXPECT_FALSE(loaded.CausesValidation());
    EXPECT_FALSE(loaded.Control::CausesValidation()) << "the form asks the outer control";
    EXPECT_EQ(loaded.Value(), 2);
    PropertyBag written;
    loaded.WriteProperties(written);
    EXPECT_EQ(written.Values(), saved);

    ZqCheckBox box(form.Client());
    QSignalSpy changed(&box, &UserControl::PropertyChangedNotification);
    const std::pair<std::function<void()>, int> refused[] = {
        {[&] { box.SetAlignment(2); }, vbErrInvalidPropertyValue},
        {[&] { box.SetAppearance(5); }, vbErrInvalidPropertyValue},
        {[&] { box.SetOLEDropMode(2); }, vbErrInvalidPropertyValue},
        {[&] { box.SetMousePointer(100); }, vbErrInvalidPropertyValue},
        {[&] { box.SetFontObject(&box); }, vbErrInvalidPropertyValue},
        {[&] { box.SetPicture(notAPicture); }, 481},
    };
    for (const auto& [call, error] : refused)
        EXPECT_EQ(test::ErrorOf(call), error);
    PropertyBag after;
    box.WriteProperties(after);
    EXPECT_TRUE(after.Values().isEmpty()) << "a refused value changes nothing";
    EXPECT_EQ(changed.count(), 0);

    EXPECT_NE(qobject_cast<ZqCheckBox*>(ControlRegistry::Create(QStringLiteral("ZqCheckBox"), form.Client())), nullptr);
}

}  // namespace
}  // namespace korvex
