// ZqNumber on a shown form: formats built from its settings and range in two locales, the text
// it displays, the minus and delete rules, the range message on leaving, the safe order of
// range changes, its events in order with arguments passed back, read-only looks, persistence
// and refused values.
#include "korvex/controls/input/ZqNumber.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/numberbox/NumberBox.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QApplication>
#include <QClipboard>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace korvex {
namespace {

Variant Cur(double value)
{
    return Currency::FromDouble(value);
}

// A shown form with a text box (which holds the focus first) and a new ZqNumber.
struct NumberOnForm {
    explicit NumberOnForm(const RegionalSettings& settings = RegionalSettings::EnglishUS()) : pin(settings)
    {
        App::Instance()->SetTitle(QStringLiteral("Korvex Tests"));
        form.SetName(QStringLiteral("frmStock"));
        form.SetCaption(QStringLiteral("Stock"));
        other = new TextBox(form.Client());
        number = new ZqNumber(form.Client());
        number->SetName(QStringLiteral("zqnQuantity"));
        number->move(0, 40);
        number->InitProperties();
        form.show();
        QApplication::setActiveWindow(&form);
    }
    QLineEdit* Line() const { return number->c1Number()->LineEdit(); }
    bool Focus()
    {
        number->SetFocus();
        return QTest::qWaitFor([&] { return Line()->hasFocus(); }, 1000);
    }
    void SelectAll() { Line()->selectAll(); }
    void Range(double minValue, double maxValue)
    {
        number->SetMinValue(Cur(minValue));
        number->SetMaxValue(Cur(maxValue));
    }

    test::PinnedSettings pin;
    Form form;
    TextBox* other;
    ZqNumber* number;
};

struct FormatRow {
    Variant min;
    Variant max;
    int decimals;
    bool suppress;
    bool thousands;
    int negativeStyle;
    bool blankWhenZero;
    QString edit;
    QString display;
    const char* why;
};

void Configure(ZqNumber& n, const FormatRow& r)
{
    n.SetDecimalPlaces(static_cast<std::uint8_t>(r.decimals));
    n.SetSuppressLeadingZeroes(r.suppress);
    n.SetThousandsSeparators(r.thousands);
    n.SetNegativeStyle(r.negativeStyle);
    n.SetBlankWhenZero(r.blankWhenZero);
    n.SetMinValue(r.min);
    n.SetMaxValue(r.max);
}

TEST(ZqNumber, FormatsFollowTheSettingsAndTheLargerBoundInEveryLocale)
{
    const Variant lowest = Currency::FromScaled(std::numeric_limits<std::int64_t>::min());
    const Variant highest = Currency::FromScaled(std::numeric_limits<std::int64_t>::max());
    const FormatRow rows[] = {
        {Cur(-9999999.99), Cur(9999999.99), 2, true, true, zqnnsBrackets, false, "#,###,##0.00;(#,###,##0.00)", "", "defaults"},
        {Cur(0), Cur(100), 0, true, false, zqnnsBrackets, false, "##0", "", "no negative values, no negative section"},
        {Cur(0), Cur(100), 0, false, false, zqnnsBrackets, false, "000", "", "leading zeroes kept"},
        {Cur(-5), Cur(3), 1, true, false, zqnnsLeadingMinus, true, "0.0;-0.0", "0.0;-0.0;;{}", "blank when zero: four sections"},
        {Cur(0), Cur(1234), 2, true, true, zqnnsBrackets, true, "#,##0.00", "#,##0.00;;;{}", "no negative section stays empty"},
        {Cur(0), Cur(0), 2, true, true, zqnnsBrackets, false, "0.00", "", "a range of nothing: one digit"},
        {Cur(-12345), Cur(3), 0, true, true, zqnnsLeadingMinus, false, "##,##0;-##,##0", "", "digits from the larger magnitude"},
        {Cur(-0.5), Cur(0.5), 2, true, true, zqnnsBrackets, false, "0.00;(0.00)", "", "below 1: one digit"},
        {Cur(-999.9999), Cur(999.99994), 0, true, true, zqnnsBrackets, false, "##0;(##0)", "", "bounds kept to four decimals"},
        {Cur(-5), Cur(5), 2, true, true, 7, false, "0.00", "", "an unknown style adds no negative section"},
        {lowest, highest, 0, true, true, zqnnsBrackets, false, "###,###,###,###,##0;(###,###,###,###,##0)", "",
         "the whole currency range"},
    };
    for (const RegionalSettings& settings : {RegionalSettings::EnglishUS(), RegionalSettings::German()}) {
        test::PinnedSettings pin(settings);
        for (const FormatRow& r : rows) {
            ZqNumber n;
            n.InitProperties();
            Configure(n, r);
            const QString display = r.display.isEmpty() ? r.edit : r.display;
            EXPECT_EQ(n.c1Number()->Format(), r.edit) << settings.LocaleName.toStdString() << " | " << r.why;
            EXPECT_EQ(n.c1Number()->DisplayFormat(), display) << settings.LocaleName.toStdString() << " | " << r.why;
            EXPECT_EQ(n.MinValue(), Variant(CCur(r.min))) << r.why;
            EXPECT_EQ(n.MaxValue(), Variant(CCur(r.max))) << r.why;
            EXPECT_EQ(n.c1Number()->DecimalSeparator(), settings.DecimalSymbol);
            EXPECT_EQ(n.c1Number()->ThousandSeparator(), settings.ThousandSymbol);
        }
    }
}

TEST(ZqNumber, DisplayedTextForEachFormatCombination)
{
    struct Row {
        RegionalSettings settings;
        FormatRow format;
        Variant value;
        QString expected;
    };
    const FormatRow defaults{Cur(-9999999.99), Cur(9999999.99), 2, true, true, zqnnsBrackets, false, "", "", ""};
    const FormatRow minus{Cur(-5), Cur(3), 1, true, false, zqnnsLeadingMinus, true, "", "", ""};
    const FormatRow padded{Cur(0), Cur(100), 0, false, false, zqnnsBrackets, false, "", "", ""};
    const FormatRow blank{Cur(0), Cur(1234), 2, true, true, zqnnsBrackets, true, "", "", ""};
    const Row rows[] = {
        {RegionalSettings::EnglishUS(), defaults, Cur(-1234.5), "(1,234.50)"},
        {RegionalSettings::German(), defaults, Cur(-1234.5), "(1.234,50)"},
        {RegionalSettings::EnglishUS(), defaults, 1234567.5, "1,234,567.50"},
        {RegionalSettings::EnglishUS(), defaults, Null, ""},
        {RegionalSettings::EnglishUS(), minus, Cur(-4.25), "-4.3"},
        {RegionalSettings::EnglishUS(), minus, Cur(0), ""},
        {RegionalSettings::EnglishUS(), padded, std::int16_t{7}, "007"},
        {RegionalSettings::EnglishUS(), blank, Cur(0), ""},
        {RegionalSettings::German(), blank, Cur(1234), "1.234,00"},
        {RegionalSettings::EnglishUS(), blank, Cur(-3), "-3.00"},
    };
    for (const Row& r : rows) {
        test::PinnedSettings pin(r.settings);
        ZqNumber n;
        n.InitProperties();
        Configure(n, r.format);
        n.SetValue(r.value);
        EXPECT_EQ(n.DisplayText(), r.expected) << r.settings.LocaleName.toStdString();
    }
}

TEST(ZqNumber, BlankWhenZeroShowsZeroOnlyWhileEditing)
{
    NumberOnForm f;
    f.number->SetMinValue(Cur(0));
    f.number->SetBlankWhenZero(true);
    f.number->SetValue(std::int16_t{0});
    EXPECT_EQ(f.number->DisplayText(), "");
    ASSERT_TRUE(f.Focus());
    EXPECT_EQ(f.number->DisplayText(), "0.00");
}

TEST(ZqNumber, MinusIsSwallowedWithoutNegativeValues)
{
    NumberOnForm f;
    QList<short> presses;
    QObject::connect(f.number, &Control::KeyPress, [&](short& KeyAscii) { presses << KeyAscii; });
    f.Range(0, 100);
    f.number->SetValue(Cur(12));
    QSignalSpy changes(f.number, &ZqNumber::Change);
    ASSERT_TRUE(f.Focus());
    QTest::keyClick(f.Line(), Qt::Key_Minus);
    EXPECT_TRUE(presses.isEmpty()) << "no KeyPress for a swallowed minus";
    EXPECT_EQ(f.number->Value(), Cur(12));
    EXPECT_EQ(changes.count(), 0);

    f.number->SetMinValue(Cur(-10));
    QTest::keyClick(f.Line(), Qt::Key_Minus);
    EXPECT_EQ(presses, QList<short>{45});
    EXPECT_EQ(f.number->Value(), Cur(-12));
}

TEST(ZqNumber, TypingUsesTheRegionalDecimalSymbolAndTheIntegerPositions)
{
    NumberOnForm f(RegionalSettings::German());
    f.Range(0, 999.99);
    ASSERT_TRUE(f.Focus());
    f.SelectAll();
    QTest::keyClicks(f.Line(), QStringLiteral("1234,567"));
    EXPECT_EQ(f.number->DisplayText(), "123,56") << "a fourth integer digit and a third decimal are refused";
    EXPECT_EQ(f.number->Value(), Cur(123.56));
}

// The binding layer reads Value late bound on Change, Validate and LostFocus and when it saves
// while the field still has the focus: each time it must get the number the text shows.
TEST(ZqNumber, ValueFollowsTheTypedTextWhileTheFieldHasTheFocus)
{
    NumberOnForm f;
    f.Range(-1000, 1000);
    f.number->SetValue(Cur(5));
    QStringList seen;
    const auto lateBound = [&] { return GetProperty(f.number, QStringLiteral("Value")); };
    QObject::connect(f.number, &ZqNumber::Change, [&] { seen << f.number->DisplayText() + "=" + CStr(lateBound()); });
    ASSERT_TRUE(f.Focus());
    f.SelectAll();
    QTest::keyClicks(f.Line(), QStringLiteral("12.5"));
    EXPECT_EQ(seen, (QStringList{"1=1", "12=12", "12.=12", "12.5=12.5"})) << "read in each Change";
    EXPECT_EQ(lateBound(), Cur(12.5));
    QTest::keyClick(f.Line(), Qt::Key_Minus);
    EXPECT_EQ(lateBound(), Cur(-12.5)) << "the sign key";
    QTest::keyClick(f.Line(), Qt::Key_Backspace);
    EXPECT_EQ(f.number->DisplayText(), "-12.");
    EXPECT_EQ(lateBound(), Cur(-12));
    EXPECT_EQ(f.number->c1Number()->Value(), lateBound()) << "the wrapper and its inner box agree";

    QApplication::clipboard()->setText(QStringLiteral("1,000"));
    f.SelectAll();
    f.Line()->paste();
    EXPECT_EQ(lateBound(), Cur(1000)) << "a pasted number";
    QTest::keyClick(f.Line(), Qt::Key_Backspace);
    EXPECT_EQ(lateBound(), Cur(100));
    f.Line()->undo();
    EXPECT_EQ(f.number->DisplayText(), "1000");
    EXPECT_EQ(lateBound(), Cur(1000)) << "undone";

    Variant atValidate;
    Variant atLostFocus;
    QObject::connect(f.number, &Control::Validate, [&](bool&) { atValidate = lateBound(); });
    QObject::connect(f.number, &Control::LostFocus, [&] { atLostFocus = lateBound(); });
    f.SelectAll();
    QTest::keyClicks(f.Line(), QStringLiteral("750"));
    f.other->SetFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return f.other->LineEdit()->hasFocus(); }, 1000));
    EXPECT_EQ(atValidate, Cur(750));
    EXPECT_EQ(atLostFocus, Cur(750));
    EXPECT_EQ(f.number->DisplayText(), "750.00");
}

TEST(ZqNumber, DeletingTheWholeTextGivesNullZeroOrTheMinimum)
{
    struct Row {
        bool allowNull;
        double min;
        double max;
        Qt::Key key;
        Variant expected;
        const char* why;
    };
    const Row rows[] = {
        {true, 10, 20, Qt::Key_Delete, Null, "Null allowed"},
        {false, 10, 20, Qt::Key_Delete, Cur(10), "0 below the range: the minimum"},
        {false, 10, 20, Qt::Key_Backspace, Cur(10), "backspace too"},
        {false, 0, 100, Qt::Key_Delete, std::int16_t{0}, "0 in the range"},
        {false, -20, -10, Qt::Key_Backspace, Cur(-20), "0 above the range: the minimum"},
    };
    for (const Row& r : rows) {
        NumberOnForm f;
        f.number->SetAllowNullSelection(r.allowNull);
        f.Range(r.min, r.max);
        f.number->SetValue(Cur(r.min + 2));
        Variant seenInKeyDown;
        QObject::connect(f.number, &Control::KeyDown, [&](short&, short&) { seenInKeyDown = f.number->Value(); });
        ASSERT_TRUE(f.Focus());
        f.SelectAll();
        QTest::keyClick(f.Line(), r.key);
        EXPECT_EQ(f.number->Value(), r.expected) << r.why;
        EXPECT_EQ(seenInKeyDown, r.expected) << "the rule runs before KeyDown: " << r.why;
    }

    NumberOnForm f;
    f.number->SetValue(Cur(15));
    ASSERT_TRUE(f.Focus());
    f.Line()->setCursorPosition(2);
    QTest::keyClick(f.Line(), Qt::Key_Backspace);
    EXPECT_EQ(f.number->Value(), Cur(1)) << "part of the text: an ordinary backspace";
    f.number->SetReadOnly(true);
    f.SelectAll();
    QTest::keyClick(f.Line(), Qt::Key_Delete);
    EXPECT_EQ(f.number->Value(), Cur(1)) << "read-only: nothing";

    // Emptied one key at a time, the field ends as the whole-text rule says, never Null.
    for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_Delete}) {
        NumberOnForm g;
        g.Range(10, 20);
        g.number->SetValue(Cur(12));
        ASSERT_TRUE(g.Focus());
        g.Line()->setCursorPosition(key == Qt::Key_Backspace ? g.Line()->text().size() : 0);
        for (int i = 0; i < 12 && !g.Line()->text().isEmpty() && !g.number->Value().IsNull() &&
                        g.number->Value() != Cur(10);
             ++i)
            QTest::keyClick(g.Line(), key);
        EXPECT_EQ(g.number->Value(), Cur(10)) << "the minimum, 0 lying below the range";
    }
}

TEST(ZqNumber, LeavingWithAValueOutOfRangeShowsTheMessageAndKeepsTheFocus)
{
    NumberOnForm f;
    ScopedMessageBoxRecorder boxes;
    f.Range(0, 100);
    f.number->SetDecimalPlaces(0);
    ASSERT_TRUE(f.Focus());
    f.SelectAll();
    QTest::keyClicks(f.Line(), QStringLiteral("150"));
    QTest::keyClick(f.Line(), Qt::Key_Tab);
    ASSERT_EQ(boxes.shown().size(), 1);
    EXPECT_EQ(boxes.shown()[0].prompt, "Value beyond acceptable range.");
    EXPECT_EQ(boxes.shown()[0].buttons, vbExclamation);
    EXPECT_EQ(boxes.shown()[0].title, "Korvex Tests - Stock") << "the application's title, with the active form's caption";
    EXPECT_TRUE(QTest::qWaitFor([&] { return f.Line()->hasFocus(); }, 1000)) << "the focus comes back";
    EXPECT_EQ(f.number->Value(), Cur(150)) << "the value is left for the user to correct";

    EXPECT_EQ(test::ErrorOf([&] { f.form.ValidateControls(); }), vbErrInvalidPropertyValue)
        << "the form's own validation checks the range too";
    EXPECT_EQ(boxes.shown().size(), 2);

    f.SelectAll();
    QTest::keyClicks(f.Line(), QStringLiteral("99"));
    f.other->SetFocus();
    EXPECT_TRUE(QTest::qWaitFor([&] { return f.other->LineEdit()->hasFocus(); }, 1000)) << "in range: free to go";

    f.number->SetValue(Cur(150));
    f.number->SetReadOnly(true);
    ASSERT_TRUE(f.Focus());
    EXPECT_NO_THROW(f.form.ValidateControls());
    f.other->SetFocus();
    EXPECT_TRUE(QTest::qWaitFor([&] { return f.other->LineEdit()->hasFocus(); }, 1000));
    f.number->SetReadOnly(false);
    f.number->SetValue(Null);
    ASSERT_TRUE(f.Focus());
    EXPECT_NO_THROW(f.form.ValidateControls());
    f.other->SetFocus();
    EXPECT_TRUE(QTest::qWaitFor([&] { return f.other->LineEdit()->hasFocus(); }, 1000));
    EXPECT_EQ(boxes.shown().size(), 2) << "nothing checked when read-only or Null";
}

TEST(ZqNumber, RangeChangesKeepTheMinimumBelowAndPutTheValueBack)
{
    NumberOnForm f;
    f.Range(0, 10);
    f.number->SetValue(Cur(5));
    QSignalSpy changes(f.number, &ZqNumber::Change);

    // Loading sets both bounds at once; the inner box refuses a minimum above its maximum, so
    // only the safe order gets through.
    PropertyBag up(QJsonObject{{"MinValue", PropertyBag::ToJson(Cur(20))}, {"MaxValue", PropertyBag::ToJson(Cur(30))},
                               {"Value", 25}});
    EXPECT_NO_THROW(f.number->ReadProperties(up));
    EXPECT_EQ(f.number->MinValue(), Cur(20));
    EXPECT_EQ(f.number->MaxValue(), Cur(30));
    PropertyBag down(QJsonObject{{"MinValue", PropertyBag::ToJson(Cur(0))}, {"MaxValue", PropertyBag::ToJson(Cur(10))}});
    EXPECT_NO_THROW(f.number->ReadProperties(down));
    EXPECT_EQ(f.number->MinValue(), Cur(0));
    EXPECT_EQ(f.number->MaxValue(), Cur(10));

    f.number->SetValue(Cur(5));
    changes.clear();
    f.number->SetMaxValue(Cur(30));
    f.number->SetMinValue(Cur(20));
    EXPECT_EQ(f.number->Value(), Cur(5)) << "the value is put back, not clamped";
    EXPECT_EQ(changes.count(), 0) << "reformatting raises no Change";

    const QString format = f.number->c1Number()->Format();
    EXPECT_EQ(test::ErrorOf([&] { f.number->SetMinValue(Cur(40)); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(f.number->MinValue(), Cur(20)) << "a minimum above the maximum changes nothing";
    EXPECT_EQ(f.number->c1Number()->Format(), format);
}

TEST(ZqNumber, EventsInOrderWithArgumentsPassedBack)
{
    NumberOnForm f;
    f.Range(0, 100);
    QStringList log;
    ZqNumber* n = f.number;
    QObject::connect(n, &ZqNumber::Change, [&] { log << "Change"; });
    QObject::connect(n, &ZqNumber::SpinUp, [&] { log << "SpinUp"; });
    QObject::connect(n, &ZqNumber::SpinDown, [&] { log << "SpinDown"; });
    QObject::connect(n, &Control::Click, [&] { log << "Click"; });
    QObject::connect(n, &Control::DblClick, [&] { log << "DblClick"; });
    QObject::connect(n, &Control::KeyDown, [&](short& code, short&) {
        log << QStringLiteral("KeyDown %1").arg(code);
        if (code == 40)
            code = 0;  // the host swallows arrow down
    });
    QObject::connect(n, &Control::KeyPress, [&](short& ascii) {
        log << QStringLiteral("KeyPress %1").arg(ascii);
        if (ascii == '1')
            ascii = '2';  // the host types 2 for 1
    });
    QObject::connect(n, &Control::KeyUp, [&](short& code, short&) { log << QStringLiteral("KeyUp %1").arg(code); });
    QObject::connect(n, &Control::MouseDown, [&](short& button, short&, float&, float&) { log << QStringLiteral("MouseDown %1").arg(button); });
    QObject::connect(n, &Control::MouseUp, [&](short& button, short&, float&, float&) { log << QStringLiteral("MouseUp %1").arg(button); });
    ASSERT_TRUE(f.Focus());
    f.SelectAll();

    QTest::keyClick(f.Line(), Qt::Key_1);
    EXPECT_EQ(log, (QStringList{"KeyDown 49", "KeyPress 49", "Change", "KeyUp 49"}));
    EXPECT_EQ(n->Value(), Cur(2)) << "the changed KeyAscii was typed";
    log.clear();
    QTest::keyClick(f.Line(), Qt::Key_Up);
    EXPECT_EQ(log, (QStringList{"KeyDown 38", "SpinUp", "Change", "KeyUp 38"}));
    EXPECT_EQ(n->Value(), Cur(3));
    log.clear();
    QTest::keyClick(f.Line(), Qt::Key_Down);
    EXPECT_EQ(log, (QStringList{"KeyDown 40", "KeyUp 40"})) << "a zeroed KeyCode does not spin";
    EXPECT_EQ(n->Value(), Cur(3));
    log.clear();
    QTest::mouseClick(f.Line(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(log, (QStringList{"MouseDown 1", "MouseUp 1", "Click"}));
    log.clear();
    QTest::mouseDClick(f.Line(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_TRUE(log.contains("DblClick"));
    log.clear();
    n->SetValue(Cur(7));
    EXPECT_EQ(log, QStringList{"Change"}) << "a value set by the host through the control";
}

TEST(ZqNumber, ReadOnlyTakesTheLockedColoursAndNoTabStop)
{
    NumberOnForm f;
    NumberBox* inner = f.number->c1Number();
    f.number->SetReadOnly(true);
    EXPECT_TRUE(f.number->ReadOnly());
    EXPECT_TRUE(inner->ReadOnly());
    EXPECT_EQ(f.number->BackColor(), 0x8000000Fu);
    EXPECT_EQ(f.number->ForeColor(), 0x80000012u);
    EXPECT_EQ(inner->NegativeColor(), 0x80000012u) << "negative numbers in the locked text colour";
    EXPECT_FALSE(f.number->TabStop());
    EXPECT_FALSE(inner->TabStop());
    EXPECT_TRUE(f.number->Enabled()) << "locked, not disabled";
    EXPECT_EQ(f.Line()->focusPolicy(), Qt::ClickFocus);

    f.number->SetReadOnly(false);
    EXPECT_EQ(f.number->BackColor(), 0x80000005u);
    EXPECT_EQ(f.number->ForeColor(), 0x80000008u);
    EXPECT_EQ(inner->NegativeColor(), 0x80000008u);
    EXPECT_TRUE(f.number->TabStop());
    EXPECT_EQ(f.Line()->focusPolicy(), Qt::StrongFocus);

    f.number->SetEnabled(false);
    EXPECT_FALSE(inner->isEnabled());
    EXPECT_EQ(GetProperty(f.number, QStringLiteral("Enabled")), Variant(false)) << "as the binding reads it";
}

// The colours as painted, not only as stored: a locked field in the button face, its negative
// numbers in the button text, and both back to the window colours when editable again.
TEST(ZqNumber, ReadOnlyColoursArePainted)
{
    SystemInfo::Start();
    SystemInfo::PinSysColor(vbButtonFace & 0xFF, RGB(200, 100, 50));
    SystemInfo::PinSysColor(vbButtonText & 0xFF, RGB(0, 160, 0));
    SystemInfo::PinSysColor(vbWindowBackground & 0xFF, RGB(255, 255, 255));
    SystemInfo::PinSysColor(vbWindowText & 0xFF, RGB(0, 0, 200));
    struct Unpin {
        ~Unpin() { SystemInfo::ClearPins(); }
    } unpin;
    NumberOnForm f;
    f.number->SetValue(Cur(-88888.88));
    // Pixels of the rendered control that are exactly the background or clearly the ink of a
    // text colour (glyph edges are blended with the background).
    const auto count = [&](const std::function<bool(QColor)>& is) {
        const QImage image = f.number->grab().toImage();
        int n = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                n += is(image.pixelColor(x, y));
        return n;
    };
    const auto face = [](QColor c) { return c.rgb() == qRgb(200, 100, 50); };
    const auto window = [](QColor c) { return c.rgb() == qRgb(255, 255, 255); };
    const auto greenInk = [](QColor c) { return c.green() > 100 && c.red() < 110 && c.blue() < 90; };
    const auto blueInk = [](QColor c) { return c.blue() > 150 && c.red() < 110 && c.green() < 110; };
    f.number->SetReadOnly(true);
    const int area = f.number->width() * f.number->height();
    EXPECT_GT(count(face), area / 3) << "locked: button face";
    EXPECT_GT(count(greenInk), 20) << "a negative number in the button text";
    EXPECT_EQ(count(blueInk), 0);
    f.number->SetReadOnly(false);
    EXPECT_GT(count(window), area / 3) << "editable: window background";
    EXPECT_GT(count(blueInk), 20) << "a negative number in the window text";
    EXPECT_LT(count(face), 10) << "no button face left but for blended border pixels";
    EXPECT_EQ(count(greenInk), 0);
}

TEST(ZqNumber, PersistenceKeepsOnlyWhatDiffersFromTheDefaults)
{
    test::PinnedSettings pin;
    Form form;
    auto* n = new ZqNumber(form.Client());
    n->InitProperties();
    PropertyBag empty;
    n->WriteProperties(empty);
    EXPECT_TRUE(empty.Values().isEmpty()) << QJsonDocument(empty.Values()).toJson().toStdString();

    n->SetDecimalPlaces(0);
    n->SetMinValue(Cur(0));
    n->SetMaxValue(Cur(500));
    n->SetValue(Cur(42));
    n->SetBlankWhenZero(true);
    n->SetNegativeStyle(zqnnsLeadingMinus);
    n->SetSpinButtonVisible(true);
    n->SetReadOnly(true);
    n->SetDataField(QStringLiteral("Quantity"));
    n->SetEnabled(false);
    PropertyBag bag;
    n->WriteProperties(bag);
    EXPECT_EQ(bag.Values().keys(), (QStringList{"BlankWhenZero", "DataField", "DecimalPlaces", "Enabled", "MaxValue", "MinValue",
                                                "NegativeStyle", "ReadOnly", "SpinButtonVisible", "Value"}))
        << "the read-only colours are the defaults of a read-only field";
    EXPECT_EQ(bag.Values().value("SpinButtonVisible").toInt(), 1) << "stored as the inner visibility";

    auto* loaded = new ZqNumber(form.Client());
    PropertyBag again(bag.Values());
    loaded->ReadProperties(again);
    EXPECT_EQ(loaded->Value(), Cur(42));
    EXPECT_EQ(loaded->MaxValue(), Cur(500));
    EXPECT_TRUE(loaded->ReadOnly());
    EXPECT_EQ(loaded->BackColor(), 0x8000000Fu);
    EXPECT_FALSE(loaded->Enabled());
    EXPECT_TRUE(loaded->SpinButtonVisible());
    EXPECT_EQ(loaded->DataField(), "Quantity");
    EXPECT_EQ(loaded->c1Number()->Format(), "##0");
    EXPECT_EQ(loaded->c1Number()->DisplayFormat(), "##0;;;{}");
    PropertyBag rewritten;
    loaded->WriteProperties(rewritten);
    EXPECT_EQ(rewritten.Values(), bag.Values());

    // The host stores True as -1; every Boolean reads it as True.
    QJsonObject minusOne;
    for (const char* name : {"SpinButtonVisible", "ReadOnly", "AllowNullSelection", "BlankWhenZero", "SpinEnabled"})
        minusOne.insert(QLatin1String(name), -1);
    auto* fromHost = new ZqNumber(form.Client());
    PropertyBag hostBag(minusOne);
    EXPECT_NO_THROW(fromHost->ReadProperties(hostBag));
    EXPECT_TRUE(fromHost->SpinButtonVisible());
    EXPECT_TRUE(fromHost->ReadOnly());
    EXPECT_TRUE(fromHost->AllowNullSelection());
    EXPECT_TRUE(fromHost->BlankWhenZero());
}

TEST(ZqNumber, AGermanFormReadsBackTheAmountsItWrote)
{
    test::PinnedSettings pin(RegionalSettings::German());
    ZqNumber n;
    n.InitProperties();
    n.SetMaxValue(Cur(1234.5));
    n.SetValue(Cur(12.25));
    PropertyBag bag;
    n.WriteProperties(bag);
    ZqNumber loaded;
    PropertyBag again(bag.Values());
    loaded.ReadProperties(again);
    EXPECT_EQ(loaded.MaxValue(), Cur(1234.5)) << "not 12345: stored amounts ignore the regional symbols";
    EXPECT_EQ(loaded.Value(), Cur(12.25));
    EXPECT_EQ(loaded.DisplayText(), "12,25");
}

TEST(ZqNumber, RefusedValuesLeaveTheFieldAsItWas)
{
    test::PinnedSettings pin;
    ZqNumber n;
    n.InitProperties();
    n.SetValue(Cur(12.5));
    const QString format = n.c1Number()->Format();
    const struct {
        std::function<void()> call;
        int error;
        const char* why;
    } rows[] = {
        {[&] { n.SetValue("twelve"); }, vbErrTypeMismatch, "a text that is no number"},
        {[&] { n.SetValue(std::nan("")); }, vbErrInvalidPropertyValue, "NaN"},
        {[&] { n.SetValue(std::numeric_limits<double>::infinity()); }, vbErrInvalidPropertyValue, "infinity"},
        {[&] { n.SetMinValue("low"); }, vbErrTypeMismatch, "a bound that is no number"},
        {[&] { n.SetMaxValue(std::nan("")); }, vbErrOverflow, "a bound beyond currency"},
        {[&] { n.SetMaxValue(1e300); }, vbErrOverflow, "a bound beyond currency"},
        {[&] { n.SetMaxValue(Null); }, vbErrInvalidUseOfNull, "a Null bound"},
        {[&] { n.SetBorderStyle(5); }, vbErrInvalidPropertyValue, "an invalid border style"},
        {[&] { n.SetAlignHorizontal(7); }, vbErrInvalidPropertyValue, "an invalid alignment"},
        {[&] { SetProperty(&n, QStringLiteral("DecimalPlaces"), std::int32_t{256}); }, vbErrOverflow, "more than a Byte"},
        {[&] { SetProperty(&n, QStringLiteral("Value"), QStringLiteral("1x")); }, vbErrTypeMismatch, "late bound"},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(test::ErrorOf(r.call), r.error) << r.why;
        EXPECT_EQ(n.Value(), Cur(12.5)) << r.why;
        EXPECT_EQ(n.c1Number()->Format(), format) << r.why;
    }
    EXPECT_EQ(n.DecimalPlaces(), 2);
    EXPECT_EQ(n.MaxValue(), Cur(9999999.99));
}

TEST(ZqNumber, TheBindingReachesBothKindsByTypeNameAndName)
{
    test::PinnedSettings pin;
    Form form;
    for (const QString& type : {QStringLiteral("ZqNumber"), QStringLiteral("TDBNumber")}) {
        Control* ctl = ControlRegistry::Create(type, form.Client());
        ASSERT_NE(ctl, nullptr) << type.toStdString();
        EXPECT_EQ(TypeNameOf(ctl), type);
        SetProperty(ctl, QStringLiteral("DataField"), QStringLiteral("Price"));
        SetProperty(ctl, QStringLiteral("Value"), Cur(-1234.5));
        EXPECT_EQ(GetProperty(ctl, QStringLiteral("Value")), Cur(-1234.5));
        EXPECT_EQ(GetProperty(ctl, QStringLiteral("DataField")), Variant("Price"));
        EXPECT_EQ(GetProperty(ctl, QStringLiteral("MinValue")), Cur(-9999999.99));
        EXPECT_EQ(GetProperty(ctl, QStringLiteral("MaxValue")), Cur(9999999.99));
        EXPECT_EQ(GetProperty(ctl, QStringLiteral("ReadOnly")), Variant(false));
        EXPECT_EQ(GetProperty(ctl, QStringLiteral("Enabled")), Variant(true));
        EXPECT_FALSE(CStr(GetProperty(ctl, QStringLiteral("DisplayText"))).isEmpty());
        SetProperty(ctl, QStringLiteral("Value"), Null);
        EXPECT_EQ(GetProperty(ctl, QStringLiteral("ValueIsNull")), Variant(true));
    }
}

TEST(ZqNumber, TerminateDisablesTheInnerBoxAndSilencesIt)
{
    test::PinnedSettings pin;
    ZqNumber n;
    n.InitProperties();
    QSignalSpy changes(&n, &ZqNumber::Change);
    n.Terminate();
    EXPECT_FALSE(n.c1Number()->Enabled());
    n.c1Number()->SetValue(Cur(3));
    EXPECT_EQ(changes.count(), 0);
}

}  // namespace
}  // namespace korvex
