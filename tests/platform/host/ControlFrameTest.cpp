// The frame every control of the library shares: properties declared once and the three
// lifecycle steps derived from them, the setter shape that tells the container of every write,
// the guard where Qt calls in, size hints that Qt layouts keep, and controls that show nothing at
// run time.
#include "korvex/controls/display/ZqLabel.h"
#include "korvex/controls/input/ZqCheckBox.h"
#include "korvex/controls/input/ZqNumber.h"
#include "korvex/controls/input/ZqText.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/system/Timers.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

// A small control written the way the library's controls are: a declaration and a setter each.
class Gauge : public UserControl {
public:
    explicit Gauge(QWidget* parent = nullptr) : UserControl(parent) {}

    short Level() const noexcept { return mLevel; }
    void SetLevel(short level)
    {
        RequireValid(level >= 0 && level <= 100, "Level");
        Assign("Level", mLevel, level, [this] { ++applied; });
    }
    const QString& Caption() const noexcept { return mCaption; }
    void SetCaption(const QString& caption) { Assign("Caption", mCaption, caption); }
    bool Lit() const noexcept { return mLit; }
    void SetLit(bool lit) { Assign("Lit", mLit, lit); }
    OleColor Colour() const noexcept { return mColour; }

    int applied = 0;

protected:
    const PropertyList& PersistedProperties() const override
    {
        static const PropertyList list =
            Declare<Gauge>()
                .Property("Level", &Gauge::Level, &Gauge::SetLevel, std::int16_t{50})
                .Property("Caption", &Gauge::Caption, &Gauge::SetCaption, QString())
                .Initially([](const Gauge& g) { return g.Ambient()->DisplayName(); })
                .Property("Lit", &Gauge::Lit, &Gauge::SetLit, false)
                // The default follows Lit, read just before.
                .Stored("Colour", &Gauge::Colour, [](Gauge& g, OleColor c) { g.mColour = c; },
                        [](const Gauge& g) { return g.Lit() ? vbHighlight : vbButtonFace; });
        return list;
    }

private:
    short mLevel = 50;
    QString mCaption;
    bool mLit = false;
    OleColor mColour = vbButtonFace;
};

QStringList Notices(const QSignalSpy& spy)
{
    QStringList names;
    for (const QList<QVariant>& n : spy)
        names << n.at(0).toString();
    return names;
}

TEST(ControlFrame, DeclaredPropertiesDriveInitReadAndWrite)
{
    Form form;
    auto* gauge = new Gauge(form.Client());
    gauge->SetName(QStringLiteral("gauge1"));
    QSignalSpy notices(gauge, &UserControl::PropertyChangedNotification);

    gauge->InitProperties();
    EXPECT_EQ(gauge->Caption(), "gauge1") << "a new control takes its initial value";
    EXPECT_EQ(Notices(notices), (QStringList{"Level", "Caption", "Lit"})) << "initialising writes through the setters";
    EXPECT_EQ(gauge->applied, 0) << "nothing to apply where the value did not change";
    PropertyBag fresh;
    gauge->WriteProperties(fresh);
    EXPECT_EQ(fresh.Values().keys(), QStringList{"Caption"}) << "only what differs from the read default is stored";

    notices.clear();
    PropertyBag bag(QJsonObject{{"Level", 70}, {"Lit", -1}});
    gauge->ReadProperties(bag);
    EXPECT_EQ(gauge->Level(), 70);
    EXPECT_EQ(gauge->applied, 1);
    EXPECT_TRUE(gauge->Lit()) << "a stored -1 is True";
    EXPECT_EQ(gauge->Caption(), "") << "a property never written reads as the read default, not the initial value";
    EXPECT_EQ(gauge->Colour(), vbHighlight) << "a default that depends on a property read before it";
    EXPECT_EQ(Notices(notices), (QStringList{"Level", "Caption", "Lit"})) << "stored properties bypass the setter";

    PropertyBag written;
    gauge->WriteProperties(written);
    EXPECT_EQ(written.Values(), (QJsonObject{{"Level", 70}, {"Lit", true}})) << "the colour equals its default for a lit gauge";

    notices.clear();
    gauge->SetLevel(70);
    EXPECT_EQ(Notices(notices), QStringList{"Level"}) << "an unchanged write is still told to the container";
    EXPECT_EQ(gauge->applied, 1) << "but not applied again";
    EXPECT_EQ(test::ErrorOf([&] { gauge->SetLevel(101); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(gauge->Level(), 70) << "a refused value changes nothing";
    EXPECT_EQ(notices.size(), 1) << "and tells nothing";
    PropertyBag bad(QJsonObject{{"Level", 300}});
    EXPECT_EQ(test::ErrorOf([&] { gauge->ReadProperties(bad); }), vbErrInvalidPropertyValue) << "loading goes through the check";
}

// Each control saved with every property away from its default, loaded into a new one and
// saved again gives the same bag: the declaration reads what it writes.
TEST(ControlFrame, EveryControlReadsBackWhatItWrote)
{
    Form form;
    const auto roundTrip = [&](UserControl& original, UserControl& copy) {
        PropertyBag bag;
        original.WriteProperties(bag);
        PropertyBag reading(bag.Values());
        copy.ReadProperties(reading);
        PropertyBag again;
        copy.WriteProperties(again);
        EXPECT_EQ(again.Values(), bag.Values()) << QJsonDocument(bag.Values()).toJson().toStdString();
        return bag.Values().size();
    };

    ZqLabel label(form.Client());
    label.InitProperties();
    label.SetAlignmentH(2);
    label.SetAlignmentV(vaBottom);
    label.SetAutoSize(true);
    label.SetBackColor(RGB(1, 2, 3));
    label.SetBackStyle(bsOpaque);
    label.SetCaption(QStringLiteral("Customer"));
    label.SetEllipsis(etPath);
    label.SetForeColor(RGB(4, 5, 6));
    label.SetStyle(lsHyperlink);
    label.SetLinkClickForeColor(RGB(7, 8, 9));
    label.SetLinkHoverForeColor(RGB(10, 11, 12));
    label.SetWordWrap(true);
    label.Font()->SetBold(true);
    ZqLabel labelCopy(form.Client());
    EXPECT_EQ(roundTrip(label, labelCopy), 15);

    ZqText text(form.Client());
    text.SetBackColor(RGB(1, 2, 3));
    text.SetBorderStyle(0);
    text.SetAlignment(1);
    text.SetAppearance(0);
    text.SetLocked(true);
    text.SetMaxLength(9);
    text.SetPasswordChar(QStringLiteral("*"));
    text.SetText(QStringLiteral("abc"));
    text.SetRightToLeft(true);
    text.SetDefaultText(QStringLiteral("name"));
    text.Font()->SetItalic(true);
    ZqText textCopy(form.Client());
    EXPECT_EQ(roundTrip(text, textCopy), 11);

    ZqCheckBox check(form.Client());
    check.SetAppearance(0);
    check.SetBackColor(RGB(1, 2, 3));
    check.SetForeColor(RGB(4, 5, 6));
    check.SetAlignment(1);
    check.SetCaption(QStringLiteral("Active"));
    check.SetDataField(QStringLiteral("Active"));
    check.SetMaskColor(RGB(7, 8, 9));
    check.SetUseMaskColor(true);
    check.SetWhatsThisHelpID(12);
    check.SetThreeState(false);
    check.SetValue(1);
    check.SetEnabled(false);
    ZqCheckBox checkCopy(form.Client());
    EXPECT_EQ(roundTrip(check, checkCopy), 12);

    ZqNumber number(form.Client());
    number.SetAllowNullSelection(true);
    number.SetDataField(QStringLiteral("Qty"));
    number.SetBorderStyle(0);
    number.SetSuppressLeadingZeroes(false);
    number.SetThousandsSeparators(false);
    number.SetSpinEnabled(false);
    number.SetAlignHorizontal(0);
    number.SetBackColor(RGB(1, 2, 3));
    number.SetForeColor(RGB(4, 5, 6));
    number.SetValue(12);
    ZqNumber numberCopy(form.Client());
    EXPECT_EQ(roundTrip(number, numberCopy), 10);

    DataBindingSource binding(form.Client());
    binding.SetAutoSaveBatch(false);
    binding.SetAutoOverwriteChanges(false);
    DataBindingSource bindingCopy(form.Client());
    EXPECT_EQ(roundTrip(binding, bindingCopy), 2);
    EXPECT_FALSE(bindingCopy.AutoSaveBatch());
    EXPECT_TRUE(bindingCopy.AutoSetUpdated());
}

TEST(ControlFrame, AnErrorInAHostHandlerStopsAtTheEntryPointAndIsReported)
{
    ScopedMessageBoxRecorder boxes;
    QList<int> reported;
    const UncaughtErrorReporter previous =
        SetUncaughtErrorReporter([&](const QObject*, const Error& e) { reported << e.Number(); });
    Form form;
    auto* box = new TextBox(form.Client());
    form.show();
    bool failKey = true;
    bool failChange = false;
    QObject::connect(box, &Control::KeyPress, [&](short&) {
        if (failKey)
            Raise(vbErrTypeMismatch, QStringLiteral("frmHost.txt_KeyPress"));
    });
    QObject::connect(box, &TextBox::Change, [&] {
        if (failChange)
            throw std::runtime_error("host code failed");
    });
    QTest::keyClick(box->LineEdit(), Qt::Key_A);
    EXPECT_EQ(reported, QList<int>{vbErrTypeMismatch}) << "the event filter stopped the error";
    EXPECT_EQ(box->Text(), "a") << "the key goes on as if no handler had run";
    failKey = false;
    failChange = true;
    QTest::keyClick(box->LineEdit(), Qt::Key_B);
    EXPECT_EQ(reported.size(), 2) << "a slot called by Qt's signal reports, whatever the exception";
    EXPECT_EQ(box->Text(), "ab") << "the control goes on working";

    EXPECT_THROW(box->SetText(QStringLiteral("set by the host")), std::runtime_error)
        << "the host's own write gets its handler's error back";
    EXPECT_EQ(reported.size(), 2);

    SetSingleShotTimer(0, [] { Raise(vbErrOverflow); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return reported.size() == 3; }, 1000)) << "a timer callback";
    EXPECT_EQ(reported.last(), vbErrOverflow);

    SetUncaughtErrorReporter(previous);
    SetSingleShotTimer(0, [] { Raise(vbErrOverflow); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return boxes.recorder().shown.size() == 1; }, 1000))
        << "without a host reporter the library shows the error";
    EXPECT_TRUE(boxes.recorder().shown.value(0).prompt.contains(QStringLiteral("Error '6'")));
    EXPECT_EQ(boxes.recorder().shown.value(0).buttons & vbCritical, vbCritical);
}

TEST(ControlFrame, QtLayoutsKeepEveryControlsSize)
{
    QWidget page;
    auto* grid = new QGridLayout(&page);
    auto* form = new QFormLayout;
    grid->addLayout(form, 0, 0);
    auto* check = new ZqCheckBox;
    check->SetCaption(QString());  // the square without a caption
    auto* captioned = new ZqCheckBox;
    auto* text = new ZqText;
    auto* number = new ZqNumber;
    auto* label = new ZqLabel;
    label->InitProperties();
    label->SetCaption(QStringLiteral("Customer number"));
    form->addRow(QStringLiteral("Active"), check);
    form->addRow(QStringLiteral("Flag"), captioned);
    form->addRow(QStringLiteral("Name"), text);
    grid->addWidget(number, 1, 0);
    grid->addWidget(label, 2, 0);
    page.resize(400, 300);
    page.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
    for (QWidget* w : std::initializer_list<QWidget*>{check, captioned, text, number, label}) {
        EXPECT_TRUE(w->sizeHint().isValid()) << w->metaObject()->className();
        EXPECT_GE(w->height(), 12) << w->metaObject()->className() << " keeps a usable height";
        EXPECT_GE(w->width(), 12) << w->metaObject()->className();
    }
    EXPECT_EQ(check->width(), check->height()) << "a caption-less check box stays a square";
    EXPECT_GE(label->width(), QFontMetrics(label->font()).horizontalAdvance(QStringLiteral("Customer")));
}

TEST(ControlFrame, ABindingSourceShowsNothingAtRunTimeFromTheStart)
{
    Form form;
    auto* built = new DataBindingSource(form.Client());
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    EXPECT_FALSE(built->isVisible()) << "built in code before the form shows, with no lifecycle call";
    built->SetVisible(true);
    EXPECT_FALSE(built->isVisible());
    EXPECT_TRUE(built->Visible()) << "the extender keeps what it was told";
    auto* moved = new DataBindingSource;
    moved->setParent(form.Client());
    moved->SetVisible(true);
    EXPECT_FALSE(moved->isVisible()) << "placed on a form at run time later";

    Form design;
    design.SetDesignMode(true);
    auto* designed = new DataBindingSource(design.Client());
    designed->SetVisible(true);
    design.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&design));
    EXPECT_TRUE(designed->isVisible()) << "at design time it shows as a box";
}

}  // namespace
}  // namespace korvex
