// Format as a table of value, pattern and expected text, each with the reason the row exists:
// sections, placeholders, rounding, grouping and scaling, exponents, literals, named formats and
// the date tokens, in a pinned US and German locale.
#include "korvex/runtime/Format.h"
#include "korvex/runtime/Error.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace korvex {
namespace {

struct Row {
    Variant value;
    const char* pattern;
    const char* expected;
    const char* why;
};

void CheckRows(const std::vector<Row>& rows, const RegionalSettings& settings)
{
    for (const Row& r : rows) {
        EXPECT_EQ(Format(r.value, QString::fromUtf8(r.pattern), settings), QString::fromUtf8(r.expected))
            << "Format(" << ::testing::PrintToString(r.value) << ", \"" << r.pattern << "\"): " << r.why;
    }
}

TEST(Format, NumberPatterns)
{
    const Date jan5{39818.75};
    CheckRows(
        {
            {1234.5, "#,##0.00", "1,234.50", "grouping and fixed decimals"},
            {-1234.5, "#,##0.00;(#,##0.00)", "(1,234.50)", "negative section carries its own sign"},
            {-1234.5, "#,##0.00", "-1,234.50", "one section: a minus in front"},
            {-5, "0;;\\Z\\e\\r\\o", "-5", "an empty negative section falls back to the positive one"},
            {0, "0;;\\Z\\e\\r\\o", "Zero", "the zero section, escaped letters"},
            {0, "#,##0.00;(#,##0.00);\"nil\";\"none\"", "nil", "quoted zero section"},
            {Null, "#,##0.00;(#,##0.00);\"nil\";\"none\"", "none", "the fourth section is for Null"},
            {Null, "0.00", "", "Null without a fourth section"},
            {2.5, "0", "3", "Format rounds halves away from zero, unlike CInt"},
            {-2.5, "0", "-3", ""},
            {1.005, "0.00", "1.01", "rounding on the decimal digits, not the binary double"},
            {0.125, "0.00", "0.13", ""},
            {0.5, "#.##", ".5", "no integer placeholder shown for a value below 1"},
            {5, "#.##", "5.", "the decimal point stays even with no decimals to show"},
            {1.5, "0.0#", "1.5", "trailing zero on # is dropped"},
            {1.25, "0.0#", "1.25", ""},
            {5, "000", "005", "zero padding"},
            {12345, "00", "12345", "surplus digits go to the first placeholder"},
            {0, "#", "", "zero with # only shows nothing"},
            {1234567, "#,##0,", "1,235", "a comma before the point scales by a thousand"},
            {1234567890, "#,##0,,", "1,235", "two commas scale by a million"},
            {0.256, "0.0%", "25.6%", "percent multiplies by 100"},
            {1234.5, "0.00E+00", "1.23E+03", ""},
            {0.000125, "0.0E-0", "1.3E-4", "E- shows only negative signs"},
            {1234.5, "0.0e+00", "1.2e+03", "lower-case e"},
            {9.99, "0.0E+00", "1.0E+01", "a mantissa that rounds to 10 moves the exponent"},
            {5551234, "(###) ###-####", "() 555-1234", "literals between placeholders, digits from the right"},
            {42, "$#,##0.00", "$42.00", "currency sign as literal"},
            {Variant("12.5"), "0.00", "12.50", "numeric text is formatted as a number"},
            {Variant("abc"), "0.00", "abc", "other text comes back unchanged"},
            {Currency::FromScaled(-5), "0.0000", "-0.0005", "currency keeps its four decimals"},
            {Variant(), "0.00", "0.00", "Empty formats as zero"},
            {true, "0", "-1", "True is -1"},
            {jan5, "0.00", "39818.75", "a date formatted as a number shows its serial"},
            {-0.001, "0.00", "-0.00", "the sign follows the value, not the rounded digits"},
        },
        RegionalSettings::EnglishUS());
}

TEST(Format, NamedFormats)
{
    const Date jan5{39818 + 14.5 / 24};
    CheckRows(
        {
            {1234.5, "Currency", "$1,234.50", ""},
            {-1234.5, "Currency", "($1,234.50)", "US negative currency in brackets"},
            {1234.5, "Fixed", "1234.50", ""},
            {1234.5, "Standard", "1,234.50", ""},
            {0.256, "Percent", "25.60%", ""},
            {1234.5, "Scientific", "1.23E+03", ""},
            {0, "Yes/No", "No", ""},
            {-1, "True/False", "True", ""},
            {3, "On/Off", "On", ""},
            {1234.5, "General Number", "1234.5", ""},
            {jan5, "General Date", "1/5/2009 2:30:00 PM", ""},
            {jan5, "Long Date", "Monday, January 5, 2009", ""},
            {jan5, "Medium Date", "05-Jan-09", ""},
            {jan5, "Short Date", "1/5/2009", ""},
            {jan5, "Long Time", "2:30:00 PM", ""},
            {jan5, "Medium Time", "02:30 PM", ""},
            {jan5, "Short Time", "14:30", ""},
            {jan5, "short date", "1/5/2009", "names ignore case"},
        },
        RegionalSettings::EnglishUS());
    CheckRows(
        {
            {1234.5, "Currency", "1.234,50 €", "German layout: symbol after, blank between"},
            {-1234.5, "Currency", "-1.234,50 €", ""},
            {1234.5, "#,##0.00", "1.234,50", "the pattern is written with . and , whatever the locale"},
            {jan5, "Long Date", "Montag, 5. Januar 2009", ""},
            {jan5, "General Date", "05.01.2009 14:30:00", ""},
        },
        RegionalSettings::German());
}

TEST(Format, DateAndTimeTokens)
{
    const Date jan5{39818 + (14 * 3600 + 5 * 60 + 9) / 86400.0};
    CheckRows(
        {
            {jan5, "d/m/yy", "5/1/09", "the / is the regional date separator"},
            {jan5, "dd mmm yyyy", "05 Jan 2009", ""},
            {jan5, "dddd, mmmm d", "Monday, January 5", ""},
            {jan5, "hh:mm:ss", "14:05:09", "m after h is the minute"},
            {jan5, "mm/dd hh:nn", "01/05 14:05", "m not after h is the month; n is the minute"},
            {jan5, "h:nn AM/PM", "2:05 PM", "AM/PM turns on the 12-hour clock"},
            {jan5, "h:nn am/pm", "2:05 pm", "lower-case marker"},
            {jan5, "h a/p", "2 p", ""},
            {jan5, "q \"quarter\" ww", "1 quarter 2", "quarter, week of year, quoted text"},
            {jan5, "y w", "5 2", "day of year and weekday (Sunday = 1)"},
            {jan5, "ddddd", "1/5/2009", "the short date"},
            {jan5, "ttttt", "2:05:09 PM", "the long time"},
            {jan5, "c", "1/5/2009 2:05:09 PM", "the general date"},
            {jan5, "\\d\\a\\y d", "day 5", "escaped letters are text"},
            {Variant("2009-01-05"), "dd.mm.yyyy", "05.01.2009", "date text is read first"},
            {Variant("next week"), "dd.mm.yyyy", "next week", "text that is no date comes back"},
            {Date{-1.25}, "yyyy-mm-dd hh:nn", "1899-12-29 06:00", "before the epoch"},
            {39818, "yyyy-mm-dd", "2009-01-05", "a number as a date is a serial"},
        },
        RegionalSettings::EnglishUS());
    CheckRows({{jan5, "d/m/yyyy hh:nn", "5.1.2009 14:05", "German separator"}}, RegionalSettings::German());
}

TEST(Format, NoPatternAndFormatNumber)
{
    test::PinnedSettings pin(RegionalSettings::EnglishUS());
    EXPECT_EQ(Format(Null), "") << "Null gives the empty text, not an error";
    EXPECT_EQ(Format(Variant()), "");
    EXPECT_EQ(Format(1.5), "1.5");
    EXPECT_EQ(Format(Date{39818}), "1/5/2009");
    EXPECT_EQ(FormatNumber(-1234.567), "-1,234.57");
    EXPECT_EQ(FormatNumber(0.5, 2, vbFalse), ".50");
    EXPECT_EQ(FormatNumber(-3, 0, vbUseDefault, vbTrue), "(3)");
    EXPECT_EQ(FormatNumber(1234, 1, vbUseDefault, vbUseDefault, vbFalse), "1234.0");
    EXPECT_THROW(FormatNumber(Null), Error);
    RegionalSettings german = RegionalSettings::German();
    EXPECT_EQ(FormatNumber(1234.5, german), "1.234,50");
}

}  // namespace
}  // namespace korvex
