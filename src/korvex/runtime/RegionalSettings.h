// The user's regional settings as the conversions, Format and the controls read them: number
// and date symbols, day and month names, currency layout, and the locale-information texts by
// their Win32 codes. One current set serves the process; tests pin a fixed one.
#pragma once

#include "korvex/runtime/DateTime.h"

#include <QLocale>
#include <QString>
#include <QStringList>

namespace korvex {

// Win32 locale-information codes that the library asks for by number.
enum LocaleInfoCode : int {
    LOCALE_ILANGUAGE = 0x1,
    LOCALE_SLANGUAGE = 0x2,
    LOCALE_SCOUNTRY = 0x6,
    LOCALE_SDECIMAL = 0xE,
    LOCALE_STHOUSAND = 0xF,
    LOCALE_SGROUPING = 0x10,
    LOCALE_IDIGITS = 0x11,
    LOCALE_ILZERO = 0x12,
    LOCALE_SCURRENCY = 0x14,
    LOCALE_ICURRDIGITS = 0x19,
    LOCALE_ICURRENCY = 0x1B,
    LOCALE_INEGCURR = 0x1C,
    LOCALE_SDATE = 0x1D,
    LOCALE_STIME = 0x1E,
    LOCALE_SSHORTDATE = 0x1F,
    LOCALE_SLONGDATE = 0x20,
    LOCALE_IDATE = 0x21,
    LOCALE_S1159 = 0x28,
    LOCALE_S2359 = 0x29,
    LOCALE_SDAYNAME1 = 0x2A,        // Monday; SDAYNAME7 (0x30) is Sunday
    LOCALE_SABBREVDAYNAME1 = 0x31,  // Monday
    LOCALE_SMONTHNAME1 = 0x38,
    LOCALE_SABBREVMONTHNAME1 = 0x44,
    LOCALE_SNEGATIVESIGN = 0x51,
    LOCALE_STIMEFORMAT = 0x1003,
    LOCALE_INEGNUMBER = 0x1010,
};

struct RegionalSettings {
    QString LocaleName = QStringLiteral("en-US");
    int LanguageId = 0x0409;  // the Windows language identifier, shown in hexadecimal
    QString DecimalSymbol = QStringLiteral(".");
    QString ThousandSymbol = QStringLiteral(",");
    QString NegativeSign = QStringLiteral("-");
    int NumberDigits = 2;          // decimals of the standard number formats
    bool LeadingZero = true;       // 0.5 rather than .5
    int NegativeNumberFormat = 1;  // 0 (1.1), 1 -1.1, 2 - 1.1, 3 1.1-, 4 1.1 -
    QString CurrencySymbol = QStringLiteral("$");
    int CurrencyDigits = 2;
    int CurrencyPositiveFormat = 0;  // 0 $1, 1 1$, 2 $ 1, 3 1 $
    int CurrencyNegativeFormat = 0;  // the sixteen Windows layouts, 0 ($1) ... 15 (1 $)
    QString DateSeparator = QStringLiteral("/");
    QString TimeSeparator = QStringLiteral(":");
    // Date and time pictures in the Windows notation: d dd ddd dddd M MM MMM MMMM y yy yyyy,
    // h hh H HH m mm s ss t tt, text in single quotes.
    QString ShortDatePattern = QStringLiteral("M/d/yyyy");
    QString LongDatePattern = QStringLiteral("dddd, MMMM d, yyyy");
    QString TimePattern = QStringLiteral("h:mm:ss tt");
    QString AMSymbol = QStringLiteral("AM");
    QString PMSymbol = QStringLiteral("PM");
    QStringList DayNames;  // Sunday first
    QStringList AbbreviatedDayNames;
    QStringList MonthNames;  // January first
    QStringList AbbreviatedMonthNames;

    RegionalSettings();

    // The text GetLocaleInfo gives for the code, "" for codes not modelled here.
    QString LocaleInfo(int code) const;

    // Order of day, month and year in the short date: "MDY", "DMY" or "YMD".
    QString DateOrder() const;

    // Renders a date with a picture in the Windows notation above.
    QString FormatDatePicture(Date date, const QString& picture) const;

    // Settings taken from a Qt locale: symbols, names and patterns converted to the notation
    // above, the currency layout read off the locale's own currency strings.
    static RegionalSettings FromLocale(const QLocale& locale);
    // Fixed sets that do not depend on the machine, for tests and defaults.
    static RegionalSettings EnglishUS();
    static RegionalSettings EnglishUK();
    static RegionalSettings German();

    // The settings every conversion uses. Set once at start-up (or by a test) on the
    // user-interface thread; the default is the system locale.
    static const RegionalSettings& Current();
    static void SetCurrent(const RegionalSettings& settings);
};

}  // namespace korvex
