// Dates as the library stores them: a day serial counted from 1899-12-30 with the time of day
// as the fraction. Days before the epoch are negative and keep the time as a positive fraction
// of that day (-1.25 is 1899-12-29 06:00), the convention databases and the host share.
#pragma once

#include <QDateTime>

#include <compare>

namespace korvex {

struct Date {
    double serial = 0;
    friend constexpr auto operator<=>(Date, Date) noexcept = default;
};

// 0100-01-01 00:00:00 and 9999-12-31 23:59:59, the range every date value must lie in.
inline constexpr double MinDateSerial = -657434.0;
inline constexpr double MaxDateSerial = 2958465.0 + 86399.0 / 86400.0;

bool IsValidDateSerial(double serial) noexcept;

// The calendar fields of a date, with the time rounded to the nearest second.
struct DateParts {
    int Year = 1899;
    int Month = 12;
    int Day = 30;
    int Hour = 0;
    int Minute = 0;
    int Second = 0;

    bool HasDate() const noexcept { return !(Year == 1899 && Month == 12 && Day == 30); }
    bool HasTime() const noexcept { return Hour != 0 || Minute != 0 || Second != 0; }
    // 1 = Sunday ... 7 = Saturday.
    int Weekday() const;
    int DayOfYear() const;
};

DateParts SplitDate(Date date);

// The date of a calendar day; a month or day outside its range carries into the next larger
// unit (month 13 is January of the next year, day 0 the last day of the previous month). Years
// 0 to 29 mean 2000 to 2029, 30 to 99 mean 1930 to 1999. Raises 5 outside the date range.
Date DateSerial(int year, int month, int day);
// A time of day as a fraction of a day; hours, minutes and seconds carry like DateSerial's.
double TimeSerial(int hour, int minute, int second);
// Combines a day serial and a time of day by the convention above.
Date CombineDateTime(Date day, double timeOfDay);
Date MakeDate(const DateParts& parts);

Date DateFromQDateTime(const QDateTime& dateTime);
QDateTime ToQDateTime(Date date);
Date Now();

}  // namespace korvex
