// Regional settings: fixed sets, the conversion from a Qt locale and the date-picture renderer.
#include "korvex/runtime/RegionalSettings.h"

#include <QRegularExpression>

#include <memory>

namespace korvex {
namespace {

QStringList EnglishDayNames()
{
    return {QStringLiteral("Sunday"),   QStringLiteral("Monday"), QStringLiteral("Tuesday"),
            QStringLiteral("Wednesday"), QStringLiteral("Thursday"), QStringLiteral("Friday"),
            QStringLiteral("Saturday")};
}

QStringList EnglishMonthNames()
{
    return {QStringLiteral("January"), QStringLiteral("February"), QStringLiteral("March"),
            QStringLiteral("April"),   QStringLiteral("May"),      QStringLiteral("June"),
            QStringLiteral("July"),    QStringLiteral("August"),   QStringLiteral("September"),
            QStringLiteral("October"), QStringLiteral("November"), QStringLiteral("December")};
}

QStringList FirstThree(const QStringList& names)
{
    QStringList out;
    for (const QString& n : names)
        out.append(n.left(3));
    return out;
}

// Windows language identifiers of the languages the library ships texts for, and a few
// neighbours; others get the primary language with the default sub-language.
int WindowsLanguageId(const QLocale& locale)
{
    struct Entry {
        QLocale::Language language;
        QLocale::Territory territory;
        int id;
    };
    static const Entry table[] = {
        {QLocale::English, QLocale::UnitedStates, 0x0409}, {QLocale::English, QLocale::UnitedKingdom, 0x0809},
        {QLocale::English, QLocale::Australia, 0x0C09},    {QLocale::English, QLocale::Canada, 0x1009},
        {QLocale::English, QLocale::Ireland, 0x1809},      {QLocale::German, QLocale::Germany, 0x0407},
        {QLocale::German, QLocale::Switzerland, 0x0807},   {QLocale::German, QLocale::Austria, 0x0C07},
        {QLocale::French, QLocale::France, 0x040C},        {QLocale::French, QLocale::Belgium, 0x080C},
        {QLocale::French, QLocale::Switzerland, 0x100C},   {QLocale::Dutch, QLocale::Netherlands, 0x0413},
        {QLocale::Dutch, QLocale::Belgium, 0x0813},
    };
    for (const Entry& e : table)
        if (e.language == locale.language() && e.territory == locale.territory())
            return e.id;
    switch (locale.language()) {
    case QLocale::English: return 0x0409;
    case QLocale::German: return 0x0407;
    case QLocale::French: return 0x040C;
    case QLocale::Dutch: return 0x0413;
    case QLocale::Spanish: return 0x0C0A;
    case QLocale::Italian: return 0x0410;
    default: return 0x0409;
    }
}

// Qt's date and time pattern letters are Windows' except for the AM/PM marker and the time
// zone, which Windows pictures do not have.
QString WindowsPicture(QString qtPattern)
{
    qtPattern.remove(QRegularExpression(QStringLiteral("\\s*\\bt+\\b")));
    qtPattern.replace(QRegularExpression(QStringLiteral("AP|ap|A|a")), QStringLiteral("tt"));
    return qtPattern.trimmed();
}

QString FirstSeparator(const QString& picture, const QString& fallback)
{
    bool quoted = false;
    for (QChar c : picture) {
        if (c == QLatin1Char('\''))
            quoted = !quoted;
        else if (!quoted && !c.isLetter() && !c.isSpace())
            return QString(c);
    }
    return fallback;
}

// Reduces a currency string to its layout: the symbol as "$", the number as "1".
QString CurrencyShape(QString text, const QString& symbol)
{
    text.replace(QChar(0x00A0), QLatin1Char(' ')).replace(QChar(0x202F), QLatin1Char(' '));
    if (!symbol.isEmpty())
        text.replace(symbol, QStringLiteral("$"));
    text.replace(QRegularExpression(QStringLiteral("[0-9][0-9.,' ]*[0-9]|[0-9]")), QStringLiteral("1"));
    return text;
}

int IndexOfShape(const QString& shape, const QStringList& shapes, int fallback)
{
    int i = shapes.indexOf(shape);
    return i >= 0 ? i : fallback;
}

std::unique_ptr<RegionalSettings>& CurrentSlot()
{
    static std::unique_ptr<RegionalSettings> current;
    return current;
}

}  // namespace

RegionalSettings::RegionalSettings()
    : DayNames(EnglishDayNames()), AbbreviatedDayNames(FirstThree(DayNames)), MonthNames(EnglishMonthNames()),
      AbbreviatedMonthNames(FirstThree(MonthNames))
{
}

RegionalSettings RegionalSettings::EnglishUS()
{
    return RegionalSettings{};
}

RegionalSettings RegionalSettings::EnglishUK()
{
    RegionalSettings s;
    s.LocaleName = QStringLiteral("en-GB");
    s.LanguageId = 0x0809;
    s.CurrencySymbol = QStringLiteral("£");
    s.CurrencyNegativeFormat = 1;
    s.ShortDatePattern = QStringLiteral("dd/MM/yyyy");
    s.LongDatePattern = QStringLiteral("dd MMMM yyyy");
    s.TimePattern = QStringLiteral("HH:mm:ss");
    s.AMSymbol = QStringLiteral("am");
    s.PMSymbol = QStringLiteral("pm");
    return s;
}

RegionalSettings RegionalSettings::German()
{
    RegionalSettings s;
    s.LocaleName = QStringLiteral("de-DE");
    s.LanguageId = 0x0407;
    s.DecimalSymbol = QStringLiteral(",");
    s.ThousandSymbol = QStringLiteral(".");
    s.CurrencySymbol = QStringLiteral("€");
    s.CurrencyPositiveFormat = 3;
    s.CurrencyNegativeFormat = 8;
    s.DateSeparator = QStringLiteral(".");
    s.ShortDatePattern = QStringLiteral("dd.MM.yyyy");
    s.LongDatePattern = QStringLiteral("dddd, d. MMMM yyyy");
    s.TimePattern = QStringLiteral("HH:mm:ss");
    s.DayNames = {QStringLiteral("Sonntag"),  QStringLiteral("Montag"),  QStringLiteral("Dienstag"),
                  QStringLiteral("Mittwoch"), QStringLiteral("Donnerstag"), QStringLiteral("Freitag"),
                  QStringLiteral("Samstag")};
    s.AbbreviatedDayNames = {QStringLiteral("So"), QStringLiteral("Mo"), QStringLiteral("Di"), QStringLiteral("Mi"),
                             QStringLiteral("Do"), QStringLiteral("Fr"), QStringLiteral("Sa")};
    s.MonthNames = {QStringLiteral("Januar"),   QStringLiteral("Februar"),  QStringLiteral("März"),
                    QStringLiteral("April"),    QStringLiteral("Mai"),      QStringLiteral("Juni"),
                    QStringLiteral("Juli"),     QStringLiteral("August"),   QStringLiteral("September"),
                    QStringLiteral("Oktober"),  QStringLiteral("November"), QStringLiteral("Dezember")};
    s.AbbreviatedMonthNames = {QStringLiteral("Jan"), QStringLiteral("Feb"), QStringLiteral("Mrz"),
                               QStringLiteral("Apr"), QStringLiteral("Mai"), QStringLiteral("Jun"),
                               QStringLiteral("Jul"), QStringLiteral("Aug"), QStringLiteral("Sep"),
                               QStringLiteral("Okt"), QStringLiteral("Nov"), QStringLiteral("Dez")};
    return s;
}

RegionalSettings RegionalSettings::FromLocale(const QLocale& locale)
{
    RegionalSettings s;
    s.LocaleName = locale.name().replace(QLatin1Char('_'), QLatin1Char('-'));
    s.LanguageId = WindowsLanguageId(locale);
    s.DecimalSymbol = locale.decimalPoint();
    s.ThousandSymbol = locale.groupSeparator();
    s.NegativeSign = locale.negativeSign();
    s.ShortDatePattern = WindowsPicture(locale.dateFormat(QLocale::ShortFormat));
    // Windows short dates carry the century; Qt's often do not.
    if (!s.ShortDatePattern.contains(QLatin1String("yyyy")))
        s.ShortDatePattern.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    s.LongDatePattern = WindowsPicture(locale.dateFormat(QLocale::LongFormat));
    s.TimePattern = WindowsPicture(locale.timeFormat(QLocale::LongFormat));
    s.DateSeparator = FirstSeparator(s.ShortDatePattern, QStringLiteral("/"));
    s.TimeSeparator = FirstSeparator(s.TimePattern, QStringLiteral(":"));
    if (!locale.amText().isEmpty())
        s.AMSymbol = locale.amText();
    if (!locale.pmText().isEmpty())
        s.PMSymbol = locale.pmText();
    for (int day = 0; day < 7; ++day) {
        int qtDay = day == 0 ? 7 : day;  // Qt counts Monday = 1 ... Sunday = 7
        s.DayNames[day] = locale.dayName(qtDay, QLocale::LongFormat);
        s.AbbreviatedDayNames[day] = locale.dayName(qtDay, QLocale::ShortFormat);
    }
    for (int month = 0; month < 12; ++month) {
        s.MonthNames[month] = locale.monthName(month + 1, QLocale::LongFormat);
        s.AbbreviatedMonthNames[month] = locale.monthName(month + 1, QLocale::ShortFormat);
    }
    s.CurrencySymbol = locale.currencySymbol();
    static const QStringList positive = {QStringLiteral("$1"), QStringLiteral("1$"), QStringLiteral("$ 1"),
                                         QStringLiteral("1 $")};
    static const QStringList negative = {
        QStringLiteral("($1)"),  QStringLiteral("-$1"),  QStringLiteral("$-1"),   QStringLiteral("$1-"),
        QStringLiteral("(1$)"),  QStringLiteral("-1$"),  QStringLiteral("1-$"),   QStringLiteral("1$-"),
        QStringLiteral("-1 $"),  QStringLiteral("-$ 1"), QStringLiteral("1 $-"),  QStringLiteral("$ 1-"),
        QStringLiteral("$ -1"),  QStringLiteral("1- $"), QStringLiteral("($ 1)"), QStringLiteral("(1 $)")};
    s.CurrencyPositiveFormat = IndexOfShape(CurrencyShape(locale.toCurrencyString(1.5), s.CurrencySymbol), positive, 0);
    s.CurrencyNegativeFormat =
        IndexOfShape(CurrencyShape(locale.toCurrencyString(-1.5), s.CurrencySymbol), negative, 1);
    QString sample = locale.toCurrencyString(1.5);
    qsizetype point = sample.lastIndexOf(s.DecimalSymbol);
    if (point >= 0) {
        int digits = 0;
        for (qsizetype i = point + 1; i < sample.size() && sample[i].isDigit(); ++i)
            ++digits;
        s.CurrencyDigits = digits;
    }
    return s;
}

QString RegionalSettings::DateOrder() const
{
    QString order;
    for (QChar c : ShortDatePattern) {
        QChar key = c == QLatin1Char('d') ? QLatin1Char('D')
                    : c == QLatin1Char('M') ? QLatin1Char('M')
                    : c == QLatin1Char('y') ? QLatin1Char('Y')
                                            : QChar();
        if (!key.isNull() && !order.contains(key))
            order.append(key);
    }
    if (order == QLatin1String("DMY") || order == QLatin1String("YMD"))
        return order;
    return QStringLiteral("MDY");
}

QString RegionalSettings::LocaleInfo(int code) const
{
    auto number = [](int n) { return QString::number(n); };
    if (code >= LOCALE_SDAYNAME1 && code < LOCALE_SDAYNAME1 + 7)
        return DayNames.value((code - LOCALE_SDAYNAME1 + 1) % 7);
    if (code >= LOCALE_SABBREVDAYNAME1 && code < LOCALE_SABBREVDAYNAME1 + 7)
        return AbbreviatedDayNames.value((code - LOCALE_SABBREVDAYNAME1 + 1) % 7);
    if (code >= LOCALE_SMONTHNAME1 && code < LOCALE_SMONTHNAME1 + 12)
        return MonthNames.value(code - LOCALE_SMONTHNAME1);
    if (code >= LOCALE_SABBREVMONTHNAME1 && code < LOCALE_SABBREVMONTHNAME1 + 12)
        return AbbreviatedMonthNames.value(code - LOCALE_SABBREVMONTHNAME1);
    switch (code) {
    case LOCALE_ILANGUAGE: return QStringLiteral("%1").arg(LanguageId, 4, 16, QLatin1Char('0')).toUpper();
    case LOCALE_SLANGUAGE: {
        QLocale locale(LocaleName);
        return QStringLiteral("%1 (%2)").arg(QLocale::languageToString(locale.language()),
                                            QLocale::territoryToString(locale.territory()));
    }
    case LOCALE_SCOUNTRY: return QLocale::territoryToString(QLocale(LocaleName).territory());
    case LOCALE_SDECIMAL: return DecimalSymbol;
    case LOCALE_STHOUSAND: return ThousandSymbol;
    case LOCALE_SGROUPING: return QStringLiteral("3;0");
    case LOCALE_IDIGITS: return number(NumberDigits);
    case LOCALE_ILZERO: return number(LeadingZero ? 1 : 0);
    case LOCALE_SCURRENCY: return CurrencySymbol;
    case LOCALE_ICURRDIGITS: return number(CurrencyDigits);
    case LOCALE_ICURRENCY: return number(CurrencyPositiveFormat);
    case LOCALE_INEGCURR: return number(CurrencyNegativeFormat);
    case LOCALE_SDATE: return DateSeparator;
    case LOCALE_STIME: return TimeSeparator;
    case LOCALE_SSHORTDATE: return ShortDatePattern;
    case LOCALE_SLONGDATE: return LongDatePattern;
    case LOCALE_IDATE: {
        QString order = DateOrder();
        return number(order == QLatin1String("MDY") ? 0 : order == QLatin1String("DMY") ? 1 : 2);
    }
    case LOCALE_S1159: return AMSymbol;
    case LOCALE_S2359: return PMSymbol;
    case LOCALE_SNEGATIVESIGN: return NegativeSign;
    case LOCALE_STIMEFORMAT: return TimePattern;
    case LOCALE_INEGNUMBER: return number(NegativeNumberFormat);
    default: return {};
    }
}

QString RegionalSettings::FormatDatePicture(Date date, const QString& picture) const
{
    const DateParts p = SplitDate(date);
    auto two = [](int n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
    QString out;
    const qsizetype n = picture.size();
    for (qsizetype i = 0; i < n;) {
        const QChar c = picture[i];
        if (c == QLatin1Char('\'')) {
            // Quoted text; two quotes stand for one.
            qsizetype j = i + 1;
            while (j < n) {
                if (picture[j] == QLatin1Char('\'')) {
                    if (j + 1 < n && picture[j + 1] == QLatin1Char('\'')) {
                        out += QLatin1Char('\'');
                        j += 2;
                        continue;
                    }
                    break;
                }
                out += picture[j++];
            }
            i = j + 1;
            continue;
        }
        qsizetype run = 1;
        while (i + run < n && picture[i + run] == c)
            ++run;
        const int hour12 = p.Hour % 12 == 0 ? 12 : p.Hour % 12;
        switch (c.unicode()) {
        case 'd':
            out += run == 1 ? QString::number(p.Day)
                   : run == 2 ? two(p.Day)
                   : run == 3 ? AbbreviatedDayNames.value(p.Weekday() - 1)
                              : DayNames.value(p.Weekday() - 1);
            break;
        case 'M':
            out += run == 1 ? QString::number(p.Month)
                   : run == 2 ? two(p.Month)
                   : run == 3 ? AbbreviatedMonthNames.value(p.Month - 1)
                              : MonthNames.value(p.Month - 1);
            break;
        case 'y':
            out += run == 1 ? QString::number(p.Year % 100)
                   : run == 2 ? two(p.Year % 100)
                              : QStringLiteral("%1").arg(p.Year, 4, 10, QLatin1Char('0'));
            break;
        case 'h': out += run == 1 ? QString::number(hour12) : two(hour12); break;
        case 'H': out += run == 1 ? QString::number(p.Hour) : two(p.Hour); break;
        case 'm': out += run == 1 ? QString::number(p.Minute) : two(p.Minute); break;
        case 's': out += run == 1 ? QString::number(p.Second) : two(p.Second); break;
        case 't': {
            const QString& marker = p.Hour < 12 ? AMSymbol : PMSymbol;
            out += run == 1 ? marker.left(1) : marker;
            break;
        }
        default: out += QString(run, c); break;
        }
        i += run;
    }
    return out;
}

const RegionalSettings& RegionalSettings::Current()
{
    auto& slot = CurrentSlot();
    if (!slot)
        slot = std::make_unique<RegionalSettings>(FromLocale(QLocale::system()));
    return *slot;
}

void RegionalSettings::SetCurrent(const RegionalSettings& settings)
{
    // Assign in place so that references handed out earlier stay valid.
    auto& slot = CurrentSlot();
    if (slot)
        *slot = settings;
    else
        slot = std::make_unique<RegionalSettings>(settings);
}

}  // namespace korvex
