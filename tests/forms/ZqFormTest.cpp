// ZqForm: the trace lines of a form's life in order, the help context, the house-style message
// box answered from a script, the standard messages in two languages of the demo's language
// file, and which controls take the common font.
#include "korvex/forms/ZqForm.h"

#include "korvex/controls/display/ZqLabel.h"
#include "korvex/controls/display/ZqLine.h"
#include "korvex/core/clsPublic.h"
#include "korvex/localisation/clsLanguage.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "tests/support/Printers.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

const QString DemoLanguageFile = QStringLiteral(KORVEX_DEMO_LANGUAGE_FILE);

class TracingMDIForm : public MDIForm {
    Q_OBJECT
public:
    Q_INVOKABLE void TraceFromKorvex(korvex::Variant& message, korvex::Variant& value)
    {
        lines << QStringLiteral("%1|%2").arg(CStr(message), CStr(value));
    }
    QStringList lines;
};

struct FormTest : ::testing::Test {
    FormTest()
    {
        language->LanguageInitialise(langEnglish, DemoLanguageFile);
        clsPublic::Global().InitZqControls(nullptr, nullptr, &mdi);
    }
    ~FormTest() override { clsPublic::Global().UninitVyrInvControls(); }

    // A form as a program loads it, with a ZqForm called zqfForm.
    std::unique_ptr<Form> Load(const QString& zqFormProperties = QStringLiteral("{}"), bool design = false)
    {
        const QString json = QStringLiteral(R"({"Type": "Form", "Name": "frmOrder", "Properties": {"Caption": " Order "},
            "Controls": [{"Type": "ZqForm", "Name": "zqfForm", "Properties": %1}]})")
                                 .arg(zqFormProperties);
        return FormFile::FromJson(json.toUtf8(), QStringLiteral("order"), design);
    }
    static ZqForm* ServiceOf(Form& form) { return static_cast<ZqForm*>(form.FindControl(QStringLiteral("zqfForm"))); }

    std::shared_ptr<clsLanguage> language = clsLanguage::Create();
    TracingMDIForm mdi;
    ScopedMessageBoxRecorder boxes;
};

TEST_F(FormTest, TraceLinesFollowTheFormsLifeInOrder)
{
    auto form = Load(QStringLiteral(R"({"FunctionId": 1})"));
    ZqForm* zq = ServiceOf(*form);
    ASSERT_NE(zq, nullptr) << "the form-file loader knows ZqForm";
    EXPECT_EQ(form->HelpContextID(), 0) << "the help context is written when the form loads";
    form->LoadForm();
    EXPECT_EQ(form->HelpContextID(), hftLogin);
    EXPECT_TRUE(zq->FormLoaded());
    zq->SetFunctionId(7);
    EXPECT_EQ(form->HelpContextID(), 7) << "once loaded, a new function id reaches the form at once";

    boxes.recorder().answers = {vbNo};
    EXPECT_EQ(zq->MsgBoxZq(QStringLiteral("Line one\r\nLine two"), vbYesNo), vbNo);
    EXPECT_TRUE(form->UnloadForm(vbFormCode));
    const QStringList expected = {
        "frmOrder\tControls Initialising|0",
        "frmOrder\tForm_Load|0",
        "frmOrder\tMsgBox\t\"Korvex Demo - [Order]\"\t\"Line one::Line two\"|0",
        "frmOrder\tForm_QueryUnload\t(C=0 UM=1)|0",
        "frmOrder\tForm_Unload     \t(C=0)|0",
    };
    EXPECT_EQ(mdi.lines, expected);

    // A host handler that refuses the unload comes after the service's line, which shows the
    // Cancel it was given.
    mdi.lines.clear();
    auto second = Load();
    second->LoadForm();
    QObject::connect(second.get(), &Form::QueryUnload, second.get(), [](short& cancel, short&) { cancel = 1; });
    EXPECT_FALSE(second->UnloadForm(vbFormControlMenu));
    EXPECT_EQ(mdi.lines.last(), "frmOrder\tForm_QueryUnload\t(C=0 UM=0)|0");
    EXPECT_FALSE(mdi.lines.join('\n').contains("Form_Unload ")) << "no unload after a refusal";

    mdi.lines.clear();
    auto designed = Load(QStringLiteral(R"({"FunctionId": 1})"), true);
    designed->LoadForm();
    EXPECT_TRUE(mdi.lines.isEmpty()) << "in the designer the service only keeps its properties";
    EXPECT_EQ(ServiceOf(*designed)->AttachedForm(), nullptr);
    EXPECT_EQ(designed->HelpContextID(), 0);
}

TEST_F(FormTest, MsgBoxZqComposesTitleAndErrorDetails)
{
    auto form = Load();
    ZqForm* zq = ServiceOf(*form);
    struct Row {
        QString title;
        int errNo;
        QString errDesc;
        QString prompt;  // as shown
        QString shownTitle;
        const char* why;
    };
    const Row rows[] = {
        {"", 5, "x", "Go?\r\n\r\nError '5' : x", "Korvex Demo - [Order]", "number and text"},
        {"", 0, "x", "Go?\r\n\r\nx", "Korvex Demo - [Order]", "text alone"},
        {"", 0, "   ", "Go?", "Korvex Demo - [Order]", "a blank text is no detail"},
        {"", 12, "", "Go?\r\n\r\nError '12'", "Korvex Demo - [Order]", "a number alone has no colon"},
        {"", ObjectErrorBase + 3, "Busy", "Go?", "Korvex Demo - [Order]", "a negative number outweighs the text"},
        {"Mine", 0, "", "Go?", "Mine", "a title given is kept"},
        {"   ", 0, "", "Go?", "Korvex Demo - [Order]", "a blank title counts as none"},
    };
    for (const Row& r : rows) {
        boxes.recorder().answers = {vbRetry};
        QString prompt = QStringLiteral("Go?");
        EXPECT_EQ(zq->MsgBoxZq(prompt, vbRetryCancel | vbCritical, r.title, r.errNo, r.errDesc), vbRetry) << r.why;
        EXPECT_EQ(prompt, r.prompt) << "the caller's prompt holds what was shown: " << r.why;
        const auto& shown = boxes.shown().last();
        EXPECT_EQ(shown.prompt, r.prompt) << r.why;
        EXPECT_EQ(shown.title, r.shownTitle) << r.why;
        EXPECT_EQ(shown.buttons, vbRetryCancel | vbCritical) << r.why;
        EXPECT_EQ(shown.owner, form.get()) << "owned by the parent form";
    }

    // Without an application name in the language file, the caption alone, trimmed.
    test::TestFolder folder;
    language->LanguageInitialise(langEnglish, folder.Write(QStringLiteral("bare.lng"), "Key,English\r\nOther,x\r\n"));
    zq->MsgBoxZq(QStringLiteral("Go?"));
    EXPECT_EQ(boxes.shown().last().title, "Order");
    EXPECT_EQ(boxes.shown().last().buttons, vbOKOnly);
}

TEST_F(FormTest, StandardMessagesInEnglishAndGermanFromTheDemoFile)
{
    auto form = Load();
    ZqForm* zq = ServiceOf(*form);
    struct Row {
        int style;
        QString english;
        QString german;
        int buttons;
    };
    const QString order = QStringLiteral("the order");
    const Row rows[] = {
        {ZqMsg_SaveChanges, "Do you want to save these changes?", QStringLiteral("M\u00F6chten Sie diese \u00C4nderungen speichern?"), 51},
        {ZqMsg_CancelConfirm, "Are you sure you want to cancel these changes?",
         QStringLiteral("M\u00F6chten Sie diese \u00C4nderungen wirklich verwerfen?"), 52},
        {ZqMsg_DeleteConfirm, "Are you sure you want to delete this item?", QStringLiteral("M\u00F6chten Sie diesen Eintrag wirklich l\u00F6schen?"), 52},
        {ZqMsg_SelectedItemDeletedElsewhere, "Another user has deleted this item!",
         QStringLiteral("Ein anderer Benutzer hat diesen Eintrag gel\u00F6scht!"), 48},
        {ZqMsg_ChangedItemDeletedElsewhere,
         "Another user has deleted this item whilst you were editing it!\r\n\r\nYour changes have been discarded.",
         QStringLiteral("Ein anderer Benutzer hat diesen Eintrag gel\u00F6scht, w\u00E4hrend Sie ihn bearbeitet haben!\r\n\r\n"
         "Ihre \u00C4nderungen wurden verworfen."),
         48},
        {ZqMsg_Fail_Update, "Unable to update the order.", "the order konnte nicht gespeichert werden.", 48},
        {ZqMsg_Fail_Delete, "Unable to delete item.", QStringLiteral("Der Eintrag konnte nicht gel\u00F6scht werden."), 48},
        {ZqMsg_Fail_Refresh, "Unable to refresh item.", "Der Eintrag konnte nicht neu geladen werden.", 48},
        {ZqMsg_Fail_List, "Unable to display the order list.", "Die Liste the order konnte nicht angezeigt werden.", 48},
        {ZqMsg_Fail_Print, "Unable to print the order.", "the order konnte nicht gedruckt werden.", 48},
    };
    for (int lang : {int{langEnglish}, int{langGerman}}) {
        language->LanguageInitialise(lang, DemoLanguageFile);
        for (const Row& r : rows) {
            boxes.recorder().answers = {vbCancel};
            EXPECT_EQ(zq->MsgBoxZqStd(r.style, order), vbCancel) << r.style;
            const auto& shown = boxes.shown().last();
            EXPECT_EQ(shown.prompt, lang == langEnglish ? r.english : r.german) << "style " << r.style << ", language " << lang;
            EXPECT_EQ(shown.buttons, r.buttons) << r.style;
            EXPECT_EQ(shown.title, "Korvex Demo - [Order]");
        }
    }

    // Styles without a text show only what the error adds, with a plain OK.
    for (int style : {int{ZqMsg_NoDataEntered}, int{ZqMsg_NoDataEnteredForWeek}, 42}) {
        zq->MsgBoxZqStd(style, order, QString(), 3, QStringLiteral("Bad"));
        EXPECT_EQ(boxes.shown().last().prompt, "\r\n\r\nError '3' : Bad") << style;
        EXPECT_EQ(boxes.shown().last().buttons, vbOKOnly) << style;
    }
    zq->MsgBoxZqStd(ZqMsg_Fail_Update, QString(), QString(), 0, QStringLiteral("Locked"));
    EXPECT_EQ(boxes.shown().last().prompt, "%1 konnte nicht gespeichert werden.\r\n\r\nLocked")
        << "no substitution value: the lookup leaves the marker";
}

TEST_F(FormTest, FieldMissingAsksThroughTheFormsService)
{
    auto form = Load();
    auto* name = new TextBox(form->Client());
    auto* caption = new Label(form->Client());
    caption->SetCaption(QStringLiteral("Customer name:"));
    EXPECT_TRUE(clsPublic::Global().FieldMissing(name, Variant(static_cast<QObject*>(caption)), ServiceOf(*form)));
    ASSERT_EQ(boxes.shown().size(), 1);
    EXPECT_EQ(boxes.shown()[0].prompt, "Customer name is required");
    EXPECT_EQ(boxes.shown()[0].title, "Korvex Demo - [Order]") << "the house title, not the library's plain one";
    EXPECT_EQ(boxes.shown()[0].buttons, vbExclamation);
    EXPECT_EQ(mdi.lines.last(), "frmOrder\tMsgBox\t\"Korvex Demo - [Order]\"\t\"Customer name is required\"|0");
}

// Fonts ---------------------------------------------------------------------------------------

struct FontCase {
    Label* label;
    QString name;
    double size;
    bool bold;
};

TEST_F(FormTest, ApplyFontTouchesOnlyTheStandardFaces)
{
    for (bool withSize : {false, true}) {
        auto form = Load(withSize ? QStringLiteral(R"({"AutoApplyFontSize": true})") : QStringLiteral("{}"));
        ZqForm* zq = ServiceOf(*form);
        StdFont wanted(QStringLiteral("Segoe UI"), 9);
        zq->SetFontToApply(&wanted);
        const auto label = [&](const QString& face, double size, bool bold) {
            auto* l = new Label(form->Client());
            StdFont f(face, size);
            f.SetBold(bold);
            l->SetFontObject(&f);
            return l;
        };
        Label* arial = label(QStringLiteral("Arial"), 9, false);
        Label* capitals = label(QStringLiteral("MS SANS SERIF"), 8, true);
        Label* failing = label(QStringLiteral("Tahoma"), 9, false);
        Label* bold = label(QStringLiteral("Tahoma"), 11, true);
        Label* refused = label(QStringLiteral("Tahoma"), 9, false);
        auto* shared = new ZqLabel(form->Client());
        shared->InitProperties();
        shared->SetFont(new StdFont(QStringLiteral("tahoma"), 9, shared));
        new ZqLine(form->Client());  // no font: left out

        int offered = 0;
        QObject::connect(zq, &ZqForm::ApplyFontToObject, zq, [&](QObject*& obj, bool& apply, bool&, bool&) {
            ++offered;
            if (obj == refused)
                apply = false;
            if (obj == failing)
                throw Error(vbErrInvalidPropertyValue, QStringLiteral("handler"));
        });
        zq->ApplyFont();

        EXPECT_EQ(form->Font()->Name(), "Segoe UI");
        EXPECT_EQ(form->Font()->Size(), withSize ? 9 : 8.25) << "the form's size only with AutoApplyFontSize";
        EXPECT_EQ(offered, 6) << "every control with a font, the line and the service itself have none";
        EXPECT_EQ(failing->Font()->Name(), "Tahoma") << "a failing handler skips its control, and the rest go on";
        EXPECT_EQ(arial->Font()->Name(), "Arial") << "a special face is left alone";
        EXPECT_EQ(capitals->Font()->Name(), "Segoe UI") << "faces compare without regard to case";
        EXPECT_TRUE(capitals->Font()->Bold());
        EXPECT_EQ(bold->Font()->Name(), "Segoe UI");
        EXPECT_TRUE(bold->Font()->Bold()) << "a different style keeps its attributes";
        EXPECT_EQ(bold->Font()->Size(), withSize ? 9 : 11);
        EXPECT_EQ(refused->Font()->Name(), "Tahoma") << "the handler kept it";
        EXPECT_EQ(shared->Font(), form->Font()) << "the standard style shares the form's font object";
    }
}

TEST_F(FormTest, AttachingCopiesTheDefaultFontAndAppliesItAtLoadWhenAsked)
{
    auto form = FormFile::FromJson(R"({"Type": "Form", "Name": "frmFonts", "Controls": [
        {"Type": "Label", "Name": "lblName", "Properties": {"Font": {"Font": {"Name": "Tahoma", "Size": 8}}}},
        {"Type": "ZqForm", "Name": "zqfForm", "Properties": {"AutoApplyFont": true}}]})",
                                   QStringLiteral("fonts"));
    auto* zq = static_cast<ZqForm*>(form->FindControl(QStringLiteral("zqfForm")));
    StdFont* library = clsPublic::Global().GetDefaultFont();
    ASSERT_NE(zq->FontToApply(), nullptr);
    EXPECT_NE(zq->FontToApply(), library) << "a copy, not the library's own";
    EXPECT_TRUE(zq->FontToApply()->SameAs(*library));
    auto* label = static_cast<Label*>(form->FindControl(QStringLiteral("lblName")));
    EXPECT_EQ(label->Font()->Name(), "Tahoma");
    form->LoadForm();
    EXPECT_EQ(label->Font()->Name(), library->Name()) << "AutoApplyFont applies at load";
}

// The service inside one of the library's frames still serves the form the frame is on.
TEST_F(FormTest, TheServiceInsideAFrameServesItsForm)
{
    auto form = FormFile::FromJson(R"({"Type": "Form", "Name": "frmFramed", "Controls": [{"Type": "ZqFrame", "Name": "fraAll",
        "Controls": [{"Type": "ZqForm", "Name": "zqfForm", "Properties": {"FunctionId": 5}}]}]})",
                                   QStringLiteral("framed"));
    auto* zq = static_cast<ZqForm*>(form->FindControl(QStringLiteral("zqfForm")));
    ASSERT_NE(zq, nullptr);
    EXPECT_EQ(zq->AttachedForm(), form.get());
    form->LoadForm();
    EXPECT_EQ(form->HelpContextID(), 5);
    zq->SetFontToApply(nullptr);
    EXPECT_EQ(zq->FontToApply(), nullptr) << "Nothing is stored like any reference";
}

}  // namespace
}  // namespace korvex

#include "ZqFormTest.moc"
