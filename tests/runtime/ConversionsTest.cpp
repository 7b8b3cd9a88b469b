// Conversions, tests and comparison of Variant values, as tables of VB's edge cases: rounding
// of halves, overflow, Null against Empty, texts in two locales, dates around the epoch.
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace korvex {
namespace {

TEST(Conversions, WholeNumbersRoundHalvesToEvenAndRefuseWhatDoesNotFit)
{
    test::PinnedSettings pin;
    struct Row {
        Variant in;
        int expected;
        const char* why;
    };
    const Row rows[] = {
        {2.5, 2, "half goes to the even neighbour"},
        {3.5, 4, "half goes to the even neighbour"},
        {-2.5, -2, "negative halves too"},
        {-0.5, 0, "no negative zero"},
        {2.5000001, 3, "just above a half rounds up"},
        {Variant("2.5"), 2, "text is read, then rounded the same way"},
        {Variant(" -7 "), -7, "blanks around a number are allowed"},
        {Currency::FromScaled(25000), 2, "currency 2.5 rounds to even"},
        {Currency::FromScaled(35000), 4, "currency 3.5 rounds to even"},
        {true, -1, "True is -1"},
        {Variant(), 0, "Empty is 0"},
        {Date{1.75}, 2, "a date converts through its serial"},
        {Variant("&HFFFF"), -1, "a 16-bit hex literal is an Integer"},
        {Variant("&O17"), 15, "octal literal"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(CInt(r.in), r.expected) << r.why;

    EXPECT_EQ(test::ErrorOf([] { CInt(32767.5); }), vbErrOverflow) << "rounds to 32768 first";
    EXPECT_EQ(CInt(-32768.5), -32768) << "-32768.5 rounds to the even -32768, which fits";
    EXPECT_EQ(test::ErrorOf([] { CInt(Variant("40000")); }), vbErrOverflow);
    EXPECT_EQ(test::ErrorOf([] { CLng(2147483647.5); }), vbErrOverflow);
    EXPECT_EQ(CLng(Variant("&HFFFFFFFF")), -1) << "a 32-bit hex literal is a Long";
    EXPECT_EQ(CLng(Variant("&H10000")), 65536);
    EXPECT_EQ(test::ErrorOf([] { CLng(Variant("&H100000000")); }), vbErrOverflow);
    EXPECT_EQ(test::ErrorOf([] { CByte(-1); }), vbErrOverflow);
    EXPECT_EQ(test::ErrorOf([] { CLng(std::numeric_limits<double>::quiet_NaN()); }), vbErrOverflow);
    EXPECT_EQ(test::ErrorOf([] { CInt(Variant("abc")); }), vbErrTypeMismatch);
    EXPECT_EQ(test::ErrorOf([] { CInt(Variant("")); }), vbErrTypeMismatch) << "an empty text is no number";
    EXPECT_EQ(test::ErrorOf([] { CInt(Null); }), vbErrInvalidUseOfNull);
}

TEST(Conversions, TextIsReadAndWrittenWithTheRegionalSymbols)
{
    {
        test::PinnedSettings pin(RegionalSettings::EnglishUS());
        EXPECT_EQ(CDbl(Variant("1,234.5")), 1234.5);
        EXPECT_EQ(CDbl(Variant("($1,234.50)")), -1234.5) << "brackets and the currency symbol";
        EXPECT_EQ(CDbl(Variant("5-")), -5) << "a trailing sign";
        EXPECT_EQ(CDbl(Variant("1.5E3")), 1500);
        EXPECT_EQ(CDbl(Variant("1.5D3")), 1500) << "D introduces an exponent too";
        EXPECT_EQ(CStr(1234.5), "1234.5");
        EXPECT_EQ(CStr(Variant(1.0f / 3.0f)), "0.3333333") << "Single keeps 7 significant digits";
        EXPECT_EQ(CStr(1.0 / 3.0), "0.333333333333333") << "Double keeps 15";
        EXPECT_EQ(CStr(1e15), "1E+15");
        EXPECT_EQ(CStr(123456789012345.0), "123456789012345");
        EXPECT_EQ(CStr(1234567890123456.0), "1.23456789012346E+15");
        EXPECT_EQ(CStr(0.0001), "0.0001");
        EXPECT_EQ(CStr(0.00001), "1E-05");
        EXPECT_EQ(CStr(-0.0), "0");
        EXPECT_EQ(CStr(true), "True");
        EXPECT_EQ(CStr(Variant()), "") << "Empty is the empty text";
        EXPECT_EQ(test::ErrorOf([] { CStr(Null); }), vbErrInvalidUseOfNull);
        EXPECT_EQ(test::ErrorOf([] { CDbl(Variant("(5")); }), vbErrTypeMismatch) << "unbalanced bracket";
        EXPECT_EQ(test::ErrorOf([] { CDbl(Variant("-5-")); }), vbErrTypeMismatch) << "two signs";
        EXPECT_EQ(test::ErrorOf([] { CDbl(Variant("1e999")); }), vbErrOverflow);
    }
    {
        test::PinnedSettings pin(RegionalSettings::German());
        EXPECT_EQ(CDbl(Variant("1.234,5")), 1234.5);
        EXPECT_EQ(CDbl(Variant("1.5")), 15) << "in German the point groups thousands";
        EXPECT_EQ(CStr(1234.5), "1234,5");
        EXPECT_EQ(CStr(Currency::FromScaled(-12345)), "-1,2345");
        EXPECT_EQ(CStr(Variant(Date{39818.5})), "05.01.2009 12:00:00");
    }
}

TEST(Conversions, CurrencyKeepsFourDecimalsExactly)
{
    test::PinnedSettings pin;
    EXPECT_EQ(CCur(Variant("922337203685477.5807")).Scaled(), std::numeric_limits<std::int64_t>::max())
        << "read from the digits, not through a double";
    EXPECT_EQ(test::ErrorOf([] { CCur(Variant("922337203685477.5808")); }), vbErrOverflow);
    EXPECT_EQ(CCur(0.1).Scaled(), 1000);
    EXPECT_EQ(CCur(1.00005).Scaled(), 10000) << "the fifth decimal rounds half to even";
    EXPECT_EQ(CCur(1.00015).Scaled(), 10002);
    EXPECT_EQ(CCur(Variant("0.00005")).Scaled(), 0);
    EXPECT_EQ(CCur(Variant("0.00015")).Scaled(), 2);
    EXPECT_EQ(CStr(CCur(Variant("10.10"))), "10.1") << "no trailing zeros when shown";
    EXPECT_EQ(test::ErrorOf([] { CCur(1e300); }), vbErrOverflow);
    EXPECT_EQ(CLng(Currency::FromScaled(-25000)), -2);
}

TEST(Conversions, DatesCountFromTheEpochAndKeepTheTimeAsAPositiveFraction)
{
    test::PinnedSettings pin;
    struct Row {
        double serial;
        int year, month, day, hour, minute;
    };
    const Row rows[] = {
        {0, 1899, 12, 30, 0, 0},   {1, 1899, 12, 31, 0, 0},    {2, 1900, 1, 1, 0, 0},
        {-1, 1899, 12, 29, 0, 0},  {-1.25, 1899, 12, 29, 6, 0}, {-0.25, 1899, 12, 30, 6, 0},
        {39818.75, 2009, 1, 5, 18, 0}, {-657434, 100, 1, 1, 0, 0}, {2958465, 9999, 12, 31, 0, 0},
    };
    for (const Row& r : rows) {
        const DateParts p = SplitDate(Date{r.serial});
        EXPECT_EQ(std::tuple(p.Year, p.Month, p.Day, p.Hour, p.Minute),
                  std::tuple(r.year, r.month, r.day, r.hour, r.minute))
            << r.serial;
        const DateParts back = SplitDate(MakeDate(p));
        EXPECT_EQ(std::tuple(back.Year, back.Month, back.Day, back.Hour), std::tuple(p.Year, p.Month, p.Day, p.Hour))
            << "round trip of " << r.serial;
    }
    EXPECT_EQ(MakeDate(SplitDate(Date{-1.25})).serial, -1.25) << "before the epoch the time is subtracted";
    EXPECT_EQ(SplitDate(Date{-1.9999999}).Day, 30) << "a time that rounds to midnight moves to the next day";
    EXPECT_EQ(DateSerial(2009, 13, 1).serial, DateSerial(2010, 1, 1).serial) << "month 13 carries";
    EXPECT_EQ(DateSerial(2009, 3, 0).serial, DateSerial(2009, 2, 28).serial) << "day 0 is the day before";
    EXPECT_EQ(DateSerial(29, 1, 1).serial, DateSerial(2029, 1, 1).serial) << "two-digit years below 30";
    EXPECT_EQ(DateSerial(30, 1, 1).serial, DateSerial(1930, 1, 1).serial);

    EXPECT_EQ(CDate(Variant("1/5/2009")).serial, 39818) << "US order";
    EXPECT_EQ(CDate(Variant("13/1/2009")).serial, DateSerial(2009, 1, 13).serial)
        << "a day that is no month is read the other way round";
    EXPECT_EQ(CDate(Variant("2009-01-05 14:30")).serial, 39818 + TimeSerial(14, 30, 0));
    EXPECT_EQ(CDate(Variant("January 5, 2009")).serial, 39818);
    EXPECT_EQ(CDate(Variant("5 Jan 09 2:30 pm")).serial, 39818 + TimeSerial(14, 30, 0));
    EXPECT_EQ(CDate(Variant("12:00 AM")).serial, 0) << "a time alone has no date part";
    EXPECT_EQ(CDate(Variant("39818.5")).serial, 39818.5) << "a number as text is a serial";
    EXPECT_EQ(test::ErrorOf([] { CDate(Variant("2/30/2009")); }), vbErrTypeMismatch);
    EXPECT_EQ(test::ErrorOf([] { CDate(Variant("25:00")); }), vbErrTypeMismatch);
    EXPECT_EQ(test::ErrorOf([] { CDate(3e6); }), vbErrOverflow);
    EXPECT_EQ(CStr(Variant(Date{39818})), "1/5/2009") << "no time part, no time shown";
    EXPECT_EQ(CStr(Variant(Date{0.5})), "12:00:00 PM") << "no date part, only the time";
    EXPECT_EQ(CStr(Variant(Date{0})), "12:00:00 AM") << "the epoch itself shows as midnight";
    {
        test::PinnedSettings german(RegionalSettings::German());
        EXPECT_EQ(CDate(Variant("5.1.2009")).serial, 39818) << "German order";
        EXPECT_EQ(CDate(Variant("5. Januar 2009")).serial, 39818) << "German month name";
    }
}

TEST(Conversions, NumericAndDateTestsAgreeWithTheConversions)
{
    test::PinnedSettings pin;
    struct Row {
        Variant in;
        bool numeric, date;
    };
    const Row rows[] = {
        {Variant(), true, false},          {Null, false, false},           {Variant("12"), true, false},
        {Variant(" 1,000.5 "), true, false}, {Variant("&H1F"), true, false}, {Variant(""), false, false},
        {Variant("1/5/2009"), false, true}, {Variant(Date{5}), false, true}, {true, true, false},
        {Variant("12abc"), false, false},  {Variant("(5)"), true, false},   {Variant("10:30"), false, true},
    };
    for (const Row& r : rows) {
        EXPECT_EQ(IsNumeric(r.in), r.numeric) << ::testing::PrintToString(r.in);
        EXPECT_EQ(IsDate(r.in), r.date) << ::testing::PrintToString(r.in);
    }
}

TEST(Conversions, ValReadsTheLeadingNumberWhateverTheLocale)
{
    test::PinnedSettings pin(RegionalSettings::German());
    EXPECT_EQ(Val(u"  1 2 3"), 123) << "blanks inside are skipped";
    EXPECT_EQ(Val(u"1.5"), 1.5) << "always a point";
    EXPECT_EQ(Val(u"1,5"), 1) << "a comma ends the number";
    EXPECT_EQ(Val(u"-2.5e2xyz"), -250);
    EXPECT_EQ(Val(u"&HFF"), 255);
    EXPECT_EQ(Val(u"&HFFFF"), -1);
    EXPECT_EQ(Val(u"abc"), 0);
    EXPECT_EQ(Val(u""), 0);
    EXPECT_EQ(Val(u"1e"), 1) << "an exponent without digits is ignored";
}

TEST(Conversions, ComparisonFollowsTheOperatorsRules)
{
    test::PinnedSettings pin;
    using C = Comparison;
    struct Row {
        Variant a, b;
        C expected;
        const char* why;
    };
    const Row rows[] = {
        {Null, Null, C::Null, "Null against anything is Null"},
        {Null, Variant(), C::Null, ""},
        {Variant(), Variant(""), C::Equal, "Empty beside text is the empty text"},
        {Variant(), Variant(0), C::Equal, "Empty beside a number is 0"},
        {Variant(), Variant("a"), C::Less, ""},
        {Variant(5), Variant("5"), C::Less, "a number is less than any text"},
        {Variant("10"), Variant(9), C::Greater, ""},
        {Variant(std::int16_t{5}), Variant(5.0), C::Equal, "numbers compare by value across types"},
        {Currency::FromScaled(15000), Variant(1.5), C::Equal, ""},
        {Currency::FromScaled(1), Variant(0), C::Greater, "currency compares exactly"},
        {Variant("abc"), Variant("ABC"), C::Greater, "binary comparison: lower case after upper"},
        {true, Variant(-1), C::Equal, "True is -1"},
        {Date{1}, Variant(1), C::Equal, "dates compare by serial"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(Compare(r.a, r.b), r.expected) << r.why;
    EXPECT_EQ(Compare(Variant("abc"), Variant("ABC"), vbTextCompare), C::Equal);
}

TEST(Conversions, TypeNamesAndCoercionToAType)
{
    EXPECT_EQ(TypeName(Variant()), "Empty");
    EXPECT_EQ(TypeName(Null), "Null");
    EXPECT_EQ(TypeName(Variant(std::int16_t{1})), "Integer");
    EXPECT_EQ(TypeName(Variant(1)), "Long");
    EXPECT_EQ(TypeName(Currency{}), "Currency");
    EXPECT_EQ(TypeName(Variant::Nothing()), "Nothing");
    EXPECT_EQ(TypeName(Variant::Array({1, 2})), "Variant()");
    EXPECT_EQ(VarType(Variant::Array({})), vbArray | vbVariant);
    EXPECT_EQ(CVType(Variant("12"), vbInteger), Variant(std::int16_t{12}));
    EXPECT_EQ(CVType(Null, vbVariant), Null);
    EXPECT_EQ(test::ErrorOf([] { CVType(Variant("x"), vbDouble); }), vbErrTypeMismatch);
}

}  // namespace
}  // namespace korvex
