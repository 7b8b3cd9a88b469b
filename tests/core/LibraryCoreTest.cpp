// The library core: initialisation slots, Trace, GetParentForm through nested user controls,
// EnableControl by type name, and the composed LibMsgBox.
#include "korvex/core/ControlRoutines.h"
#include "korvex/core/DevelopmentEnvironment.h"
#include "korvex/core/LibMsgBox.h"
#include "korvex/core/SharedContext.h"
#include "korvex/core/Trace.h"
#include "korvex/core/clsPublic.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/ListView.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Error.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

class TracingMDIForm : public MDIForm {
    Q_OBJECT
public:
    Q_INVOKABLE void TraceFromKorvex(korvex::Variant& message, korvex::Variant& value)
    {
        lines << QStringLiteral("%1|%2").arg(message.As<QString>() ? *message.As<QString>() : QString()).arg(value.As<float>() ? *value.As<float>() : -1);
    }
    QStringList lines;
};

// Controls of outside kinds, known to EnableControl by type name.
class FakeNumber : public Control {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "ZqNumber")
    Q_PROPERTY(bool ReadOnly MEMBER readOnly)
    Q_PROPERTY(uint BackColor MEMBER backColor)
public:
    using Control::Control;
    bool readOnly = false;
    uint backColor = 0x12345;
};

class FakeGrid : public Control {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "VSFlexGrid")
    Q_PROPERTY(int Editable MEMBER editable)
    Q_PROPERTY(uint BackColor MEMBER backColor)
public:
    using Control::Control;
    int editable = -1;
    uint backColor = 0x12345;
};

class Panel : public UserControl {
    Q_OBJECT
public:
    using UserControl::UserControl;
};

struct CoreTest : ::testing::Test {
    void SetUp() override
    {
        clsPublic::Global().UninitVyrInvControls();
        SharedContext::ForThisThread().DevelopmentEnvironment = 1;
    }
    void TearDown() override
    {
        clsPublic::Global().UninitVyrInvControls();
        Screen::SetActiveFormOverride(nullptr);
    }
};

TEST_F(CoreTest, InitialisationFillsOnlyTheSlotsGivenAndRefusesWrongKinds)
{
    clsZqUser user;
    TracingMDIForm mdi;
    clsPublic::Global().InitZqControls(&user, Screen::Instance(), &mdi);
    clsZqUser otherUser;
    clsPublic::Global().InitZqControls(&otherUser);
    SharedContext& context = SharedContext::ForThisThread();
    EXPECT_EQ(context.User, &otherUser);
    EXPECT_EQ(context.ParentScreen, Screen::Instance()) << "a second call with only a user keeps the screen";
    EXPECT_EQ(context.ParentMDIForm, &mdi);

    Form notMdi;
    EXPECT_THROW(clsPublic::Global().InitZqControls(&user, nullptr, &notMdi), Error);
    EXPECT_EQ(context.User, &otherUser) << "a refused call changes no slot";
    EXPECT_THROW(clsPublic::Global().InitZqControls(nullptr, &notMdi), Error) << "a form is no Screen";

    auto created = clsPublic::Create();
    EXPECT_EQ(clsPublic::Current(), created) << "the last instance created is the current one";
    clsPublic::Global().UninitVyrInvControls();
    EXPECT_EQ(context.User, nullptr);
    EXPECT_EQ(clsPublic::Current(), created) << "uninitialising leaves the current instances";
}

TEST_F(CoreTest, TheDevelopmentEnvironmentIsThePreviewToolByModuleName)
{
    struct Row {
        const char* module;
        short expected;
    };
    const Row rows[] = {
        {"/opt/korvex/bin/KORVEX-PREVIEW", 2},  // case is ignored
        {"/opt/korvex/bin/korvex_demo", 1},
        {"korvex-preview", 1},  // no folder separator: the name counts as empty
        {"/opt/korvex-preview/bin/app", 1},
    };
    for (const Row& r : rows) {
        SharedContext::ForThisThread().DevelopmentEnvironment = 0;
        EXPECT_EQ(InDevelopmentEnvironment(QString::fromLatin1(r.module)), r.expected) << r.module;
        EXPECT_EQ(InDevelopmentEnvironment(QStringLiteral("/x/korvex-preview")), r.expected)
            << "worked out once; later arguments are ignored";
    }
    SharedContext::ForThisThread().DevelopmentEnvironment = 0;
    EXPECT_EQ(InDevelopmentEnvironment(), 1) << "the test program is not the preview tool";
}

TEST_F(CoreTest, TraceGoesToTheMDIFormOrNowhere)
{
    Trace(QStringLiteral("nobody listens"), 1);  // no MDI form: nothing, no error
    Form plain;
    TracingMDIForm mdi;
    clsPublic::Global().InitZqControls(nullptr, nullptr, &mdi);
    Trace(QStringLiteral("frmOrder\tForm_Load"), 0);
    EXPECT_EQ(mdi.lines, QStringList{"frmOrder\tForm_Load|0"});
    MDIForm silent;  // an MDI form without the method
    clsPublic::Global().InitZqControls(nullptr, nullptr, &silent);
    EXPECT_NO_THROW(Trace(QStringLiteral("lost"), 2));
}

TEST_F(CoreTest, GetParentFormWalksThroughNestedUserControls)
{
    Form form;
    auto* outer = new Panel(form.Client());
    auto* inner = new Panel(outer);
    auto* box = new TextBox(inner);
    EXPECT_EQ(box->ParentObject(), inner);
    EXPECT_EQ(inner->ParentObject(), outer);
    EXPECT_EQ(GetParentForm(box), &form);
    EXPECT_EQ(GetParentForm(&form), &form);
    TextBox loose;
    EXPECT_EQ(GetParentForm(&loose), nullptr);

    ScopedMessageBoxRecorder boxes;
    QObject noParentProperty;
    EXPECT_EQ(GetParentForm(&noParentProperty), nullptr);
    EXPECT_TRUE(boxes.shown().isEmpty()) << "outside the development environment the failure is silent";
    SharedContext::ForThisThread().DevelopmentEnvironment = 2;
    EXPECT_EQ(GetParentForm(&noParentProperty), nullptr);
    ASSERT_EQ(boxes.shown().size(), 1);
    EXPECT_EQ(boxes.shown()[0].prompt,
              "An error occurred in GetParentForm.\r\n\r\nHave all UserControls implemented the Parent property?");
    EXPECT_EQ(boxes.shown()[0].buttons, vbExclamation);
}

TEST_F(CoreTest, EnableControlFollowsItsTableByTypeName)
{
    Form form;
    auto* text = new TextBox(form.Client());
    EnableControl(text, false, false);
    EXPECT_TRUE(text->Locked());
    EXPECT_EQ(text->BackColor(), vbButtonFace);
    EXPECT_EQ(text->ForeColor(), vbButtonText);
    EXPECT_FALSE(text->TabStop());
    EXPECT_TRUE(text->Enabled()) << "locked, not disabled";

    auto* forced = new TextBox(form.Client());
    EnableControl(forced, false, true);
    EXPECT_EQ(forced->ForeColor(), vbGrayText);
    EXPECT_TRUE(forced->TabStop()) << "ForceDisable leaves the tab stop";
    EXPECT_FALSE(forced->Enabled());
    EnableControl(forced, true, true);
    EXPECT_TRUE(forced->Enabled());
    EXPECT_FALSE(forced->Locked());
    EXPECT_EQ(forced->BackColor(), vbWindowBackground);

    auto* number = new FakeNumber(form.Client());
    EnableControl(number, false, false);
    EXPECT_TRUE(number->readOnly);
    EXPECT_EQ(number->backColor, 0x12345u) << "a ZqNumber keeps its colours";

    auto* grid = new FakeGrid(form.Client());
    grid->SetEnabled(true);
    EnableControl(grid, false, true);
    EXPECT_EQ(grid->editable, 0);
    EXPECT_EQ(grid->backColor, 0x12345u) << "a grid's colours are not touched";
    EXPECT_TRUE(grid->Enabled()) << "nor its Enabled, even when forced";

    auto* list = new ListView(form.Client());
    EnableControl(list, false, false);
    EXPECT_FALSE(list->Enabled()) << "a list view is disabled outright";
    EXPECT_EQ(list->BackColor(), vbButtonFace);

    ScopedMessageBoxRecorder boxes;
    auto* other = new Panel(form.Client());
    other->SetName(QStringLiteral("pnlOther"));
    EnableControl(other, false, false);
    EXPECT_TRUE(boxes.shown().isEmpty());
    SharedContext::ForThisThread().DevelopmentEnvironment = 2;
    EnableControl(other, false, false);
    ASSERT_EQ(boxes.shown().size(), 1);
    EXPECT_EQ(boxes.shown()[0].title, "pnlOther");
    EXPECT_EQ(boxes.shown()[0].buttons, vbCritical);
    EXPECT_EQ(boxes.shown()[0].prompt, "EnableControl does not support the Panel control.\r\n\r\nIf you wish to use "
                                       "EnableControl with this Control, the ForceDisable flag must be set to True.");
    EXPECT_TRUE(other->Enabled()) << "unsupported kinds still get the Enabled step";
}

TEST_F(CoreTest, LibMsgBoxComposesTitleAndPrompt)
{
    App::Instance()->SetTitle(QStringLiteral("Orders"));
    ScopedMessageBoxRecorder boxes;
    QString prompt = QStringLiteral("Could not save.");
    LibMsgBox(prompt, vbCritical, QString(), 3021, QStringLiteral("No current record."));
    EXPECT_EQ(prompt, "Could not save.\r\n\r\nError '3021' : No current record.") << "the composed text comes back";
    EXPECT_EQ(boxes.shown().last().title, "Orders") << "no active form: the application's title";

    MDIForm mdi;
    mdi.SetName(QStringLiteral("frmMDI"));
    Form order;
    order.SetName(QStringLiteral("frmOrder"));
    order.SetCaption(QStringLiteral("Order 17"));
    Screen::SetActiveFormOverride(&mdi);
    QString plain = QStringLiteral("Hello");
    LibMsgBox(plain, vbOKOnly, QStringLiteral("   "));
    EXPECT_EQ(plain, "Hello") << "no error number or text: the prompt stays";
    EXPECT_EQ(boxes.shown().last().title, "Orders") << "frmMDI active: the bare title";

    Screen::SetActiveFormOverride(&order);
    QString onlyText = QStringLiteral("Failed");
    LibMsgBox(onlyText, vbExclamation, QString(), 0, QStringLiteral("disk full"));
    EXPECT_EQ(onlyText, "Failed\r\n\r\ndisk full");
    EXPECT_EQ(boxes.shown().last().title, "Orders - Order 17");
    EXPECT_EQ(boxes.shown().last().owner, &order) << "owned by the active form";
    QString onlyNumber = QStringLiteral("Failed");
    LibMsgBox(onlyNumber, vbExclamation, QStringLiteral("Mine"), 5);
    EXPECT_EQ(onlyNumber, "Failed\r\n\r\nError '5'");
    EXPECT_EQ(boxes.shown().last().title, "Mine");

    // Only spaces are trimmed: a tab or line break is text.
    QString tabbed = QStringLiteral("Failed");
    LibMsgBox(tabbed, vbExclamation, QStringLiteral("\t"), 5, QStringLiteral("\r\n"));
    EXPECT_EQ(tabbed, "Failed\r\n\r\nError '5' : \r\n");
    EXPECT_EQ(boxes.shown().last().title, "\t");
    QString spaced = QStringLiteral("Failed");
    LibMsgBox(spaced, vbExclamation, QString(), 0, QStringLiteral("  "));
    EXPECT_EQ(spaced, "Failed") << "a description of spaces only is no description";
}

}  // namespace
}  // namespace korvex

#include "LibraryCoreTest.moc"
