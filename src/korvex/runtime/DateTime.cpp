// Calendar arithmetic for day serials, through QDate's Julian day numbers.
#include "korvex/runtime/DateTime.h"

#include "korvex/runtime/Error.h"

#include <cmath>

namespace korvex {
namespace {

constexpr qint64 EpochJulianDay = 2415019;  // 1899-12-30

QDate DateOfDayNumber(qint64 day)
{
    return QDate::fromJulianDay(EpochJulianDay + day);
}

}  // namespace

bool IsValidDateSerial(double serial) noexcept
{
    return std::isfinite(serial) && serial >= MinDateSerial - 86399.0 / 86400.0 && serial <= MaxDateSerial;
}

DateParts SplitDate(Date date)
{
    double whole = std::trunc(date.serial);
    double fraction = std::fabs(date.serial - whole);
    auto dayNumber = static_cast<qint64>(whole);
    auto seconds = static_cast<qint64>(std::llround(fraction * 86400.0));
    if (seconds >= 86400) {
        seconds -= 86400;
        ++dayNumber;
    }
    QDate day = DateOfDayNumber(dayNumber);
    DateParts parts;
    parts.Year = day.year();
    parts.Month = day.month();
    parts.Day = day.day();
    parts.Hour = static_cast<int>(seconds / 3600);
    parts.Minute = static_cast<int>(seconds / 60 % 60);
    parts.Second = static_cast<int>(seconds % 60);
    return parts;
}

int DateParts::Weekday() const
{
    return QDate(Year, Month, Day).dayOfWeek() % 7 + 1;
}

int DateParts::DayOfYear() const
{
    return QDate(Year, Month, Day).dayOfYear();
}

Date DateSerial(int year, int month, int day)
{
    if (year >= 0 && year < 30)
        year += 2000;
    else if (year >= 30 && year < 100)
        year += 1900;
    // Carry months into years first, then let the day count run on from the first of the month.
    qint64 months = static_cast<qint64>(year) * 12 + (month - 1);
    qint64 y = months >= 0 ? months / 12 : -((-months + 11) / 12);
    int m = static_cast<int>(months - y * 12) + 1;
    if (y < 100 || y > 9999)
        Raise(vbErrInvalidProcedureCall, QStringLiteral("DateSerial"));
    qint64 serial = QDate(static_cast<int>(y), m, 1).toJulianDay() - EpochJulianDay + (day - 1);
    if (!IsValidDateSerial(static_cast<double>(serial)))
        Raise(vbErrInvalidProcedureCall, QStringLiteral("DateSerial"));
    return Date{static_cast<double>(serial)};
}

double TimeSerial(int hour, int minute, int second)
{
    qint64 seconds = static_cast<qint64>(hour) * 3600 + static_cast<qint64>(minute) * 60 + second;
    return static_cast<double>(seconds) / 86400.0;
}

Date CombineDateTime(Date day, double timeOfDay)
{
    return Date{day.serial < 0 ? day.serial - timeOfDay : day.serial + timeOfDay};
}

Date MakeDate(const DateParts& parts)
{
    return CombineDateTime(DateSerial(parts.Year, parts.Month, parts.Day),
                           TimeSerial(parts.Hour, parts.Minute, parts.Second));
}

Date DateFromQDateTime(const QDateTime& dateTime)
{
    QDate day = dateTime.date();
    QTime time = dateTime.time();
    double dayNumber = static_cast<double>(day.toJulianDay() - EpochJulianDay);
    double fraction = time.msecsSinceStartOfDay() / 86400000.0;
    return CombineDateTime(Date{dayNumber}, fraction);
}

QDateTime ToQDateTime(Date date)
{
    DateParts p = SplitDate(date);
    return QDateTime(QDate(p.Year, p.Month, p.Day), QTime(p.Hour, p.Minute, p.Second));
}

Date Now()
{
    QDateTime now = QDateTime::currentDateTime();
    return DateFromQDateTime(now.addMSecs(-now.time().msec()));
}

}  // namespace korvex
