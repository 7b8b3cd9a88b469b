// Controls as the host sees them: extender properties in twips, Parent and Container, the
// Controls collection in creation order, key events whose by-reference arguments change what
// is typed, Validate keeping the focus, and control arrays.
#include "korvex/platform/host/CheckBox.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/Frame.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/host/TimerControl.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

TEST(HostControls, ExtenderParentContainerAndCollectionOrder)
{
    test::PinnedSettings pin(RegionalSettings::EnglishUS(), 15, 10);
    Form form;
    form.SetName(QStringLiteral("frmTest"));
    auto* frame = new Frame(form.Client());
    frame->SetName(QStringLiteral("fraOuter"));
    auto* first = new TextBox(form.Client());
    first->SetName(QStringLiteral("txtFirst"));
    auto* inFrame = new TextBox(frame->ContainerWidget());
    inFrame->SetName(QStringLiteral("txtInFrame"));

    inFrame->Move(150, 100, 1500, 300);
    EXPECT_EQ(inFrame->geometry(), QRect(10, 10, 100, 30)) << "twips to pixels with separate ratios";
    EXPECT_EQ(inFrame->Left(), 150);
    EXPECT_EQ(GetProperty(inFrame, QStringLiteral("height")), Variant(300)) << "the twips property wins over QWidget's";

    EXPECT_EQ(inFrame->ParentObject(), &form) << "a control in a frame still has the form as Parent";
    EXPECT_EQ(inFrame->ContainerObject(), frame);
    EXPECT_EQ(first->ContainerObject(), &form);
    QStringList names;
    for (Control* c : form.Controls())
        names << c->Name();
    EXPECT_EQ(names, (QStringList{"fraOuter", "txtFirst", "txtInFrame"})) << "creation order, nested included";
    EXPECT_EQ(form.FindControl(QStringLiteral("TXTINFRAME")), inFrame) << "names match ignoring case";
}

TEST(HostControls, KeyAsciiChangedOrZeroedByTheHandlerChangesWhatIsTyped)
{
    Form form;
    auto* box = new TextBox(form.Client());
    form.show();
    QList<short> seen;
    QObject::connect(box, &Control::KeyPress, [&](short& keyAscii) {
        seen << keyAscii;
        if (keyAscii == 'x')
            keyAscii = 0;  // swallow
        else if (keyAscii >= 'a' && keyAscii <= 'z')
            keyAscii = static_cast<short>(keyAscii - 32);  // upper case
    });
    QSignalSpy changes(box, &TextBox::Change);
    QTest::keyClicks(box->LineEdit(), QStringLiteral("axb1"));
    EXPECT_EQ(box->Text(), "AB1");
    EXPECT_EQ(seen, (QList<short>{'a', 'x', 'b', '1'}));
    EXPECT_EQ(changes.count(), 3) << "a swallowed key changes nothing";

    short lastKeyDown = -1, lastShift = -1;
    QObject::connect(box, &Control::KeyDown, [&](short& code, short& shift) {
        lastKeyDown = code;
        lastShift = shift;
    });
    QTest::keyClick(box->LineEdit(), Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_EQ(lastKeyDown, 46);
    EXPECT_EQ(lastShift, vbShiftMask);
    QTest::keyClick(box->LineEdit(), Qt::Key_F2);
    EXPECT_EQ(lastKeyDown, 113);
}

TEST(HostControls, ValidateCancelKeepsTheFocusAndValidateControlsReportsIt)
{
    Form form;
    auto* guarded = new TextBox(form.Client());
    auto* other = new TextBox(form.Client());
    other->move(0, 40);
    form.show();
    QApplication::setActiveWindow(&form);
    bool refuse = true;
    int validations = 0;
    QObject::connect(guarded, &Control::Validate, [&](bool& cancel) {
        ++validations;
        cancel = refuse;
    });
    guarded->SetFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return guarded->LineEdit()->hasFocus(); }, 1000));
    EXPECT_THROW(form.ValidateControls(), Error) << "the active control refuses";
    other->SetFocus();
    EXPECT_TRUE(QTest::qWaitFor([&] { return guarded->LineEdit()->hasFocus(); }, 1000)) << "the focus comes back";
    EXPECT_GE(validations, 2);

    auto* frame = new Frame(form.Client());
    frame->move(0, 80);
    auto* inFrame = new TextBox(frame->ContainerWidget());
    refuse = false;
    inFrame->SetFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return inFrame->LineEdit()->hasFocus(); }, 1000));
    EXPECT_EQ(form.ActiveControl(), inFrame) << "a control in a frame is itself the active control";
    refuse = true;
    guarded->SetFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return guarded->LineEdit()->hasFocus(); }, 1000));

    other->SetCausesValidation(false);
    const int before = validations;
    other->SetFocus();
    QTest::qWait(20);
    EXPECT_EQ(validations, before) << "a control that causes no validation takes the focus freely";
    refuse = false;
    guarded->SetFocus();
    EXPECT_NO_THROW(form.ValidateControls());
}

TEST(HostControls, ControlArraysLoadCopiesAndUnloadOnlyRunTimeElements)
{
    Form form;
    auto* first = new CheckBox(form.Client());
    first->SetName(QStringLiteral("chkOption"));
    first->SetIndex(0);
    first->SetCaption(QStringLiteral("Option"));
    first->Move(120, 240, 1200, 300);

    Control* second = LoadControlArrayElement(first, 1);
    EXPECT_EQ(TypeNameOf(second), "CheckBox");
    EXPECT_EQ(GetProperty(second, QStringLiteral("Caption")), Variant("Option")) << "design properties are copied";
    EXPECT_EQ(second->Top(), 240);
    EXPECT_FALSE(second->Visible()) << "a loaded element starts hidden";
    EXPECT_EQ(form.ControlArray(QStringLiteral("chkOption")).size(), 2);

    EXPECT_EQ(test::ErrorOf([&] { LoadControlArrayElement(first, 1); }), 360) << "index already loaded";
    EXPECT_EQ(test::ErrorOf([&] { UnloadControlArrayElement(first); }), 362) << "design-time elements stay";
    auto* single = new TextBox(form.Client());
    EXPECT_EQ(test::ErrorOf([&] { LoadControlArrayElement(single, 1); }), 343) << "not an array";
    UnloadControlArrayElement(second);
    EXPECT_EQ(form.ControlArray(QStringLiteral("chkOption")).size(), 1);
}

}  // namespace
}  // namespace korvex

namespace korvex {
namespace {

class Probe : public UserControl {
public:
    using UserControl::UserControl;
    void Terminate() override { ++terminated; }
    int terminated = 0;
};

TEST(HostForms, ScreenFollowsTheActiveMDIChildAndSetsTheCursor)
{
    MDIForm mdi;
    Form child;
    child.SetName(QStringLiteral("frmChild"));
    child.SetMDIChild(true);
    mdi.show();
    child.Show();
    EXPECT_EQ(mdi.Children(), QList<Form*>{&child}) << "an MDI child shows inside the MDI form";
    Screen::SetActiveFormOverride(&mdi);
    EXPECT_EQ(Screen::Instance()->ActiveForm(), &child) << "the MDI form stands for its active child";
    Screen::SetActiveFormOverride(nullptr);

    Screen::Instance()->SetMousePointer(vbHourglass);
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    Screen::Instance()->SetMousePointer(vbArrowHourglass);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::BusyCursor);
    Screen::Instance()->SetMousePointer(vbDefault);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "0 restores the default pointer";
}

TEST(HostForms, UnloadAsksQueryUnloadAndUnloadThenTerminatesControls)
{
    Form form;
    auto* probe = new Probe(form.Client());
    form.Show();
    QStringList events;
    short refuse = 1;
    QObject::connect(&form, &Form::QueryUnload, [&](short& cancel, short& mode) {
        events << QStringLiteral("QueryUnload %1").arg(mode);
        cancel = refuse;
    });
    QObject::connect(&form, &Form::Unload, [&](short&) { events << QStringLiteral("Unload"); });
    EXPECT_FALSE(form.UnloadForm());
    EXPECT_EQ(probe->terminated, 0) << "a cancelled unload leaves the controls alone";
    refuse = 0;
    form.close();  // the user closes the window
    EXPECT_EQ(events, (QStringList{"QueryUnload 1", "QueryUnload 0", "Unload"}));
    EXPECT_EQ(probe->terminated, 1);
    EXPECT_FALSE(form.isVisible());
}

// Enabling a running timer again leaves its count going (the side bar enables its redraw timer
// on every change and counts on the first change's 15 ms): a timer kept enabled still fires.
TEST(HostControls, EnablingARunningTimerDoesNotRestartIt)
{
    Form form;
    auto* timer = new TimerControl(form.Client());
    int ticks = 0;
    QObject::connect(timer, &TimerControl::Timer, [&] { ++ticks; });
    timer->SetInterval(50);
    timer->SetEnabled(true);
    for (int i = 0; i < 8 && ticks == 0; ++i) {
        QTest::qWait(20);
        timer->SetEnabled(true);
    }
    EXPECT_GT(ticks, 0);
    timer->SetEnabled(false);
    const int stopped = ticks;
    QTest::qWait(120);
    EXPECT_EQ(ticks, stopped) << "disabled, it stops";
}

}  // namespace
}  // namespace korvex
