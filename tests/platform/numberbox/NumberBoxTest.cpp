// The numeric box driven as a user drives it: typing within the edit format, the regional
// decimal symbol, pasting, the sign key, arrow keys and spin buttons within the range, display
// text against edit text, refused values, negative colour and persistence.
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/numberbox/NumberBox.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QApplication>
#include <QClipboard>
#include <QJsonDocument>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace korvex {
namespace {

Variant Cur(double value)
{
    return Currency::FromDouble(value);
}

// A shown form with a numeric box and a text box to move the focus to.
struct BoxOnForm {
    explicit BoxOnForm(const RegionalSettings& settings = RegionalSettings::EnglishUS()) : pin(settings)
    {
        // The text box comes first, so that it holds the focus when the form is shown.
        other = new TextBox(form.Client());
        box = new NumberBox(form.Client());
        box->move(0, 40);
        form.show();
        QApplication::setActiveWindow(&form);
    }
    bool Focus()
    {
        box->SetFocus();
        return QTest::qWaitFor([&] { return box->LineEdit()->hasFocus(); }, 1000);
    }
    bool Leave()
    {
        other->SetFocus();
        return QTest::qWaitFor([&] { return other->LineEdit()->hasFocus(); }, 1000);
    }
    void SelectAll() { box->LineEdit()->selectAll(); }

    test::PinnedSettings pin;
    Form form;
    NumberBox* box;
    TextBox* other;
};

TEST(NumberBox, TypingTakesOnlyWhatTheEditFormatAllows)
{
    BoxOnForm f;
    QSignalSpy changes(f.box, &NumberBox::Change);
    ASSERT_TRUE(f.Focus());
    QTest::keyClicks(f.box->LineEdit(), QStringLiteral("12345678"));
    EXPECT_EQ(f.box->DisplayText(), "1234567") << "an eighth integer digit is refused";
    QTest::keyClicks(f.box->LineEdit(), QStringLiteral(".5x.67"));
    EXPECT_EQ(f.box->DisplayText(), "1234567.56") << "letters, a second point and a third decimal are refused";
    EXPECT_EQ(f.box->Value(), Variant(Currency::FromScaled(12345675600)));
    EXPECT_EQ(changes.count(), 10) << "one Change per character taken";

    QTest::keyClick(f.box->LineEdit(), Qt::Key_Minus);
    EXPECT_EQ(f.box->DisplayText(), "-1234567.56") << "the sign key turns the sign wherever the caret is";
    EXPECT_EQ(f.box->Value(), Variant(Currency::FromScaled(-12345675600)));
    ASSERT_TRUE(f.Leave());
    EXPECT_EQ(f.box->DisplayText(), "-1,234,567.56") << "display format without the focus";

    f.box->SetFormat(QStringLiteral("##0"));
    f.box->SetValue(std::int32_t{7});
    ASSERT_TRUE(f.Focus());
    f.SelectAll();
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Minus);
    EXPECT_EQ(f.box->DisplayText(), "7") << "no negative section: no minus";
    f.SelectAll();
    QTest::keyClicks(f.box->LineEdit(), QStringLiteral("5.5"));
    EXPECT_EQ(f.box->DisplayText(), "55") << "no decimals: no point";
    EXPECT_EQ(f.box->Value(), Variant(Currency::FromInt(55)));
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Backspace);
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Backspace);
    EXPECT_TRUE(f.box->ValueIsNull()) << "an emptied box is Null";
}

TEST(NumberBox, TheDecimalSymbolIsTheRegionalOne)
{
    BoxOnForm f(RegionalSettings::German());
    EXPECT_EQ(f.box->DecimalSeparator(), ",");
    EXPECT_EQ(f.box->ThousandSeparator(), ".");
    ASSERT_TRUE(f.Focus());
    QTest::keyClicks(f.box->LineEdit(), QStringLiteral("1234.5"));
    EXPECT_EQ(f.box->DisplayText(), "12345") << "'.' is no decimal symbol here";
    QTest::keyClicks(f.box->LineEdit(), QStringLiteral(",25"));
    EXPECT_EQ(f.box->Value(), Variant(Currency::FromScaled(123452500)));
    f.box->LineEdit()->setCursorPosition(0);
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Period, Qt::KeypadModifier);
    EXPECT_EQ(f.box->DisplayText(), "12345,25") << "a second decimal symbol from the keypad is refused";
    ASSERT_TRUE(f.Leave());
    EXPECT_EQ(f.box->DisplayText(), "12.345,25");
}

TEST(NumberBox, PasteTakesOnlyANumberThatFits)
{
    BoxOnForm f;
    f.box->SetValue(Cur(1));
    ASSERT_TRUE(f.Focus());
    QClipboard* clipboard = QApplication::clipboard();
    clipboard->setText(QStringLiteral("1,234.50"));
    f.SelectAll();
    f.box->LineEdit()->paste();
    EXPECT_EQ(f.box->Value(), Cur(1234.5)) << "a grouped number is taken";
    const struct {
        const char* text;
        const char* why;
    } refused[] = {{"twelve", "no number"}, {"1.234", "three decimals"}, {"123456789", "too many digits"}};
    for (const auto& r : refused) {
        clipboard->setText(QString::fromUtf8(r.text));
        f.SelectAll();
        f.box->LineEdit()->paste();
        EXPECT_EQ(f.box->Value(), Cur(1234.5)) << r.why;
        EXPECT_EQ(f.box->DisplayText(), "1234.50") << r.why;
    }
    clipboard->setText(QStringLiteral("(7)"));
    f.SelectAll();
    f.box->LineEdit()->paste();
    EXPECT_EQ(f.box->Value(), Cur(-7)) << "an accountant's negative";

    ASSERT_TRUE(f.Leave());
    f.box->SetSelStart(0);
    f.box->SetSelLength(static_cast<int>(f.box->DisplayText().size()));
    f.box->SetSelText(QStringLiteral("42"));
    EXPECT_EQ(f.box->Value(), Cur(42)) << "a code write of the selection, unfocused";
    f.box->SetSelStart(0);
    f.box->SetSelText(QStringLiteral("x"));
    EXPECT_EQ(f.box->Value(), Cur(42)) << "ignored when it makes no number";
}

TEST(NumberBox, ArrowsAndSpinButtonsStepWithinTheRange)
{
    BoxOnForm f;
    f.box->SetMinValue(std::int32_t{-1});
    f.box->SetMaxValue(Cur(3));
    f.box->SetSpinVisible(NumberBox::SpinShown);
    QApplication::processEvents();
    QList<QString> events;
    QObject::connect(f.box, &NumberBox::SpinUp, [&] { events << "SpinUp"; });
    QObject::connect(f.box, &NumberBox::SpinDown, [&] { events << "SpinDown"; });
    QObject::connect(f.box, &NumberBox::Change, [&] { events << "Change"; });
    ASSERT_TRUE(f.Focus());
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Up);
    EXPECT_EQ(f.box->Value(), Variant(Currency())) << "Null steps to 0";
    f.box->SetValue(Cur(2.5));
    events.clear();
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Up);
    EXPECT_EQ(f.box->Value(), Cur(3)) << "clamped at the maximum";
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Up);
    EXPECT_EQ(events, (QList<QString>{"SpinUp", "Change", "SpinUp"})) << "no Change where the value stays";
    EXPECT_EQ(f.box->DisplayText(), "3.00");
    EXPECT_EQ(f.box->SelText(), "3.00") << "a stepped value is selected, so typing replaces it";

    ASSERT_TRUE(f.box->SpinDownButton()->isVisible());
    for (int i = 0; i < 6; ++i)
        QTest::mouseClick(f.box->SpinDownButton(), Qt::LeftButton);
    EXPECT_EQ(f.box->Value(), Variant(std::int32_t{-1})) << "the minimum, as written";
    EXPECT_TRUE(f.box->LineEdit()->hasFocus()) << "the buttons do not take the focus";

    f.box->SetSpinEnabled(false);
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Up);
    EXPECT_EQ(f.box->Value(), Variant(std::int32_t{-1})) << "a disabled spin steps nothing";
    f.box->SetSpinEnabled(true);
    f.box->SetReadOnly(true);
    QTest::keyClick(f.box->LineEdit(), Qt::Key_Up);
    QTest::keyClicks(f.box->LineEdit(), QStringLiteral("9"));
    EXPECT_EQ(f.box->Value(), Variant(std::int32_t{-1})) << "a read-only box takes nothing";
}

TEST(NumberBox, DisplayAndEditTextSwapWithTheFocus)
{
    BoxOnForm f;
    f.box->SetDisplayFormat(QStringLiteral("#,##0.00;;;{}"));
    f.box->SetFormat(QStringLiteral("#,##0.00"));
    f.box->SetValue(std::int16_t{0});
    EXPECT_EQ(f.box->DisplayText(), "") << "zero blank without the focus";
    ASSERT_TRUE(f.Focus());
    EXPECT_TRUE(f.box->Editing());
    EXPECT_EQ(f.box->DisplayText(), "0.00") << "and shown while editing";
    f.box->SetValue(Cur(-5));
    EXPECT_EQ(f.box->SelText(), "-5.00") << "a value set by code while editing is selected";
    ASSERT_TRUE(f.Leave());
    EXPECT_EQ(f.box->DisplayText(), "-5.00");
}

TEST(NumberBox, RefusedValuesKeepTheOldOne)
{
    test::PinnedSettings pin;
    NumberBox box;
    box.SetValue(Cur(12.5));
    const struct {
        std::function<void()> call;
        int error;
        const char* why;
    } rows[] = {
        {[&] { box.SetValue("abc"); }, vbErrTypeMismatch, "a text that is no number"},
        {[&] { box.SetValue(Date{45000}); }, vbErrTypeMismatch, "a date"},
        {[&] { box.SetValue(std::nan("")); }, vbErrInvalidPropertyValue, "NaN"},
        {[&] { box.SetValue(-std::numeric_limits<double>::infinity()); }, vbErrInvalidPropertyValue, "infinity"},
        {[&] { box.SetMinValue(Null); }, vbErrInvalidPropertyValue, "a Null bound"},
        {[&] { box.SetMinValue(Cur(10000000)); }, vbErrInvalidPropertyValue, "a minimum above the maximum"},
        {[&] { box.SetMaxValue(Cur(-10000000)); }, vbErrInvalidPropertyValue, "a maximum below the minimum"},
        {[&] { box.SetSpinVisible(2); }, vbErrInvalidPropertyValue, "spin visibility"},
        {[&] { box.SetAlignHorizontal(3); }, vbErrInvalidPropertyValue, "alignment"},
        {[&] { box.SetBorderStyle(2); }, vbErrInvalidPropertyValue, "border style"},
        {[&] { box.SetDecimalSeparator(QString()); }, vbErrInvalidPropertyValue, "no decimal symbol"},
        {[&] { SetProperty(&box, QStringLiteral("Value"), QStringLiteral("12x")); }, vbErrTypeMismatch, "late bound"},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(test::ErrorOf(r.call), r.error) << r.why;
        EXPECT_EQ(box.Value(), Cur(12.5)) << r.why;
    }
    EXPECT_EQ(box.MinValue(), Cur(-9999999.99));
    EXPECT_EQ(box.MaxValue(), Cur(9999999.99));

    box.SetValue(QStringLiteral("1234.5"));
    EXPECT_EQ(box.Value(), Variant(1234.5)) << "a numeric text becomes a number";
    box.SetValue(true);
    EXPECT_EQ(box.Value(), Variant(std::int16_t{-1}));
    box.SetValue(Empty);
    EXPECT_TRUE(box.ValueIsNull());
    box.SetValue(1e300);
    EXPECT_EQ(box.DisplayText(), "1" + QStringLiteral(",000").repeated(100) + ".00")
        << "beyond the format's positions every digit still shows";
}

TEST(NumberBox, NegativeValuesShowInTheirOwnColour)
{
    test::PinnedSettings pin;
    NumberBox box;
    box.SetForeColor(RGB(0, 0, 255));
    box.SetNegativeColor(RGB(255, 0, 0));
    box.SetValue(Cur(5));
    EXPECT_EQ(box.LineEdit()->palette().color(QPalette::Active, QPalette::Text), QColor(0, 0, 255));
    box.SetValue(Cur(-5));
    EXPECT_EQ(box.LineEdit()->palette().color(QPalette::Active, QPalette::Text), QColor(255, 0, 0));
    box.SetBackColor(RGB(1, 2, 3));
    EXPECT_EQ(box.LineEdit()->palette().color(QPalette::Active, QPalette::Text), QColor(255, 0, 0))
        << "a colour change keeps the negative colour";
}

TEST(NumberBox, PersistenceKeepsOnlyWhatDiffersFromTheDefaults)
{
    test::PinnedSettings pin;
    NumberBox box;
    PropertyBag empty;
    box.WriteProperties(empty);
    EXPECT_TRUE(empty.Values().isEmpty()) << QJsonDocument(empty.Values()).toJson().toStdString();

    box.SetFormat(QStringLiteral("##0"));
    box.SetMaxValue(Cur(500));
    box.SetMinValue(Cur(100));
    box.SetValue(Cur(250));
    box.SetSpinVisible(NumberBox::SpinShown);
    box.SetAlignHorizontal(NumberBox::AlignLeft);
    PropertyBag bag;
    box.WriteProperties(bag);
    EXPECT_EQ(bag.Values().keys(), (QStringList{"AlignHorizontal", "Format", "MaxValue", "MinValue", "SpinVisible", "Value"}));

    NumberBox loaded;
    PropertyBag again(bag.Values());
    loaded.ReadProperties(again);
    EXPECT_EQ(loaded.Format(), "##0");
    EXPECT_EQ(loaded.MinValue(), Cur(100));
    EXPECT_EQ(loaded.Value(), Cur(250));
    EXPECT_EQ(loaded.SpinVisible(), NumberBox::SpinShown);
    EXPECT_EQ(loaded.DisplayText(), "250.00");
}

}  // namespace
}  // namespace korvex
