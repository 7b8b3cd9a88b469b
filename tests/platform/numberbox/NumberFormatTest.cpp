// The numeric box's format strings and typing rules as tables: rendered text for each section
// rule, edit text, the rules an edit format implies, typed and pasted texts judged and read.
#include "korvex/platform/numberbox/NumberEditValidator.h"
#include "korvex/platform/numberbox/NumberFormat.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace korvex {
namespace {

const NumberSeparators English{QStringLiteral("."), QStringLiteral(",")};
const NumberSeparators German{QStringLiteral(","), QStringLiteral(".")};
const QString Default = QStringLiteral("#,###,##0.00;(#,###,##0.00)");

Variant Cur(double value)
{
    return Currency::FromDouble(value);
}

TEST(NumberFormat, RenderedTextFollowsTheSectionRules)
{
    struct Row {
        QString format;
        Variant value;
        NumberSeparators separators;
        QString expected;
        const char* why;
    };
    const Row rows[] = {
        {Default, Cur(-1234.5), English, "(1,234.50)", "negative section, no sign of its own"},
        {Default, Cur(1234.5), English, "1,234.50", "positive section"},
        {Default, Cur(-1234.5), German, "(1.234,50)", "separators of the box"},
        {Default, 1234567.891, English, "1,234,567.89", "grouping in threes beyond the pattern's length"},
        {Default, 0.0, English, "0.00", "no zero section: the positive one"},
        {Default, Null, English, "", "Null is empty"},
        {Default, Empty, English, "", "Empty is empty"},
        {QStringLiteral("##0"), std::int32_t{5}, English, "5", "# shows only significant digits"},
        {QStringLiteral("000"), std::int32_t{5}, English, "005", "0 always shows"},
        {QStringLiteral("##0"), std::int32_t{0}, English, "0", "the last 0 shows zero"},
        {QStringLiteral("##0"), std::int32_t{12345}, English, "12345", "surplus digits go to the first position"},
        {QStringLiteral("0.0;-0.0;;{}"), -2.25, English, "-2.3", "the '-' of the negative section; halves away from zero"},
        {QStringLiteral("0.0;-0.0;;{}"), 0.0, English, "", "an empty zero section blanks zero"},
        {QStringLiteral("0.0;-0.0;;{}"), 0.04, English, "", "what shows as zero takes the zero section"},
        {QStringLiteral("0.0;-0.0;;{}"), Null, English, "", "the {} section: Null is empty"},
        {QStringLiteral("#,##0.00;;;{}"), std::int16_t{-5}, English, "-5.00", "an empty negative section: positive with '-'"},
        {QStringLiteral("#,##0.00;;;{}"), Cur(0), English, "", "zero section"},
        {QStringLiteral("#,##0.00"), -0.001, English, "0.00", "rounds to zero: no sign"},
        {QStringLiteral("#,##0.00;(#,##0.00)"), -0.004, English, "0.00", "rounds to zero: not bracketed either"},
        {QStringLiteral("0.00;(0.0)"), -1.25, English, "(1.3)", "rounded with the decimals of the section used"},
        {QStringLiteral("0.00"), 1.005, English, "1.01", "the decimal digits the user reads, not the binary double"},
        {QStringLiteral("0.00"), Cur(2.675), English, "2.68", "currency rounds exactly"},
        {QStringLiteral("0.00"), 1.1f, English, "1.10", "a Single's seven digits"},
        {QStringLiteral("#,##0"), std::int32_t{999}, English, "999", "no group marker under four digits"},
        {QStringLiteral("#,##0"), std::int32_t{1000}, English, "1,000", ""},
        {QStringLiteral("#,##0.00"), Variant(Currency::FromScaled(std::numeric_limits<std::int64_t>::max())), English,
         "922,337,203,685,477.58", "the largest currency"},
        {QStringLiteral("USD #,##0.00 net"), Cur(1234.5), English, "USD 1,234.50 net", "other text stands as it is"},
        {QStringLiteral(".00"), 12.5, English, "12.50", "no integer position still shows the integer digits"},
        {QStringLiteral("0.##"), std::int32_t{5}, English, "5.", "optional decimals drop their zeros"},
        {QStringLiteral("0.##"), 5.1, English, "5.1", ""},
        {QStringLiteral("0.0"), 5.0, German, "5,0", "decimal point with the box's symbol"},
        {QStringLiteral("0"), true, English, "-1", "True is -1"},
        {QString(), 5.0, English, "", "no digit positions show no digits"},
        {Default, std::numeric_limits<double>::infinity(), English, "", "infinity is no number"},
        {Default, std::nan(""), English, "", "NaN is no number"},
        {Default, "12", English, "", "a text is no number"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(RenderNumberFormat(r.format, r.value, r.separators), r.expected) << r.format.toStdString() << " | " << r.why;
}

TEST(NumberFormat, EditTextIsThePlainNumberOfThePositiveSection)
{
    struct Row {
        QString format;
        Variant value;
        NumberSeparators separators;
        QString expected;
    };
    const Row rows[] = {
        {Default, Cur(-1234.5), English, "-1234.50"},
        {Default, Cur(-1234.5), German, "-1234,50"},
        {QStringLiteral("#,##0.00;;;{}"), Cur(0), English, "0.00"},  // the edit text never blanks zero
        {QStringLiteral("000"), std::int16_t{5}, English, "005"},
        {QStringLiteral("0.0;-0.0"), -0.01, English, "0.0"},
        {QStringLiteral("USD #,##0.0"), 3.0, English, "3.0"},
        {Default, Null, English, ""},
    };
    for (const Row& r : rows)
        EXPECT_EQ(RenderEditText(r.format, r.value, r.separators), r.expected) << r.format.toStdString();
}

TEST(NumberFormat, EditRulesComeFromTheEditFormat)
{
    struct Row {
        QString format;
        int integers;
        int decimals;
        bool negative;
    };
    const Row rows[] = {
        {Default, 7, 2, true},
        {QStringLiteral("##0"), 3, 0, false},
        {QStringLiteral("0.0;-0.0"), 1, 1, true},
        {QStringLiteral("#,##0.00;;;{}"), 4, 2, false},  // an empty negative section is none
        {QString(), 0, 0, false},
    };
    for (const Row& r : rows) {
        const NumberEditRules rules = EditRulesOf(r.format);
        EXPECT_EQ(rules.IntegerPositions, r.integers) << r.format.toStdString();
        EXPECT_EQ(rules.Decimals, r.decimals) << r.format.toStdString();
        EXPECT_EQ(rules.NegativeAllowed, r.negative) << r.format.toStdString();
    }
}

TEST(NumberFormat, TypedAndPastedTextsAreJudgedByTheRules)
{
    struct Row {
        QString format;
        NumberSeparators separators;
        QString previous;
        QString input;
        QValidator::State state;
        QString normalised;
        const char* why;
    };
    const QValidator::State ok = QValidator::Acceptable, partial = QValidator::Intermediate, refused = QValidator::Invalid;
    const Row rows[] = {
        {Default, English, "", "1234567", ok, "1234567", "seven integer positions"},
        {Default, English, "1234567", "12345678", refused, "", "an eighth digit"},
        {Default, English, "", "1.234", refused, "", "a third decimal"},
        {Default, English, "", "1,234.50", ok, "1234.50", "a pasted grouped number"},
        {Default, English, "", " (12) ", ok, "-12", "brackets read as minus"},
        {Default, English, "", "+12", ok, "12", ""},
        {Default, English, "", "1.2.3", refused, "", "one decimal symbol"},
        {Default, English, "", "12a", refused, "", "not a number"},
        {Default, English, "", "-", partial, "-", "a sign on its way to a number"},
        {Default, English, "5", "", ok, "", "an empty text is Null"},
        {QStringLiteral("##0"), English, "", "-5", refused, "", "no negative section, no sign"},
        {QStringLiteral("##0"), English, "-5", "-50", ok, "-50", "a sign set by code stays while digits are typed"},
        {QStringLiteral("##0"), English, "", "1234", refused, "", "more digits than positions"},
        {QStringLiteral("##0"), English, "-5", "-", partial, "-", "a sign set by code may stay"},
        {QStringLiteral("##0"), English, "", "1.5", refused, "", "no decimals, no point"},
        {QStringLiteral("##0"), English, "12345", "1234", ok, "1234", "deleting from a long value set by code"},
        {QStringLiteral("##0"), English, "12345", "123456", refused, "", "but not adding to it"},
        {Default, German, "", "12,5", ok, "12,5", "the regional decimal symbol"},
        {Default, German, "", "1.234,5", ok, "1234,5", "the regional thousands separator is dropped"},
    };
    for (const Row& r : rows) {
        NumberEditValidator validator;
        validator.SetRules(EditRulesOf(r.format));
        validator.SetSeparators(r.separators);
        validator.SetPrevious(r.previous);
        QString text = r.input;
        int pos = static_cast<int>(text.size());
        EXPECT_EQ(validator.validate(text, pos), r.state) << r.input.toStdString() << " | " << r.why;
        if (r.state != refused) {
            EXPECT_EQ(text, r.normalised) << r.input.toStdString();
            EXPECT_EQ(pos, text.size()) << "the caret stays at the end: " << r.input.toStdString();
        }
    }
}

TEST(NumberFormat, EditTextsReadAsExactValues)
{
    EXPECT_EQ(*NumberEditValidator::ValueOf(QString(), "."), Null);
    EXPECT_EQ(*NumberEditValidator::ValueOf("-", "."), Variant(Currency()));
    EXPECT_EQ(*NumberEditValidator::ValueOf("1234.56", "."), Variant(Currency::FromScaled(12345600)));
    EXPECT_EQ(*NumberEditValidator::ValueOf("-0,0001", ","), Variant(Currency::FromScaled(-1)));
    EXPECT_EQ(*NumberEditValidator::ValueOf("1.23456", "."), Variant(1.23456)) << "more than four decimals: Double";
    EXPECT_EQ(*NumberEditValidator::ValueOf("922337203685477.58070000", "."), Variant(Currency::FromScaled(std::numeric_limits<std::int64_t>::max())))
        << "zeros beyond the fourth decimal keep the amount exact";
    EXPECT_EQ(*NumberEditValidator::ValueOf("99999999999999999999", "."), Variant(1e20)) << "beyond currency: Double";
    EXPECT_FALSE(NumberEditValidator::ValueOf("1,5", ".")) << "the other symbol is no decimal point";
    EXPECT_FALSE(NumberEditValidator::ValueOf(QString(400, QLatin1Char('9')), ".")) << "beyond a Double";
}

}  // namespace
}  // namespace korvex
