// Format: named formats, numeric sections over exact decimal digits, and date tokens.
#include "korvex/runtime/Format.h"

#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/DecimalDigits.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"

#include <QDate>

#include <cmath>

namespace korvex {
namespace {

// Sections split at ";" outside quotes and escapes.
QStringList SplitSections(const QString& pattern)
{
    QStringList sections;
    QString current;
    bool quoted = false;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern[i];
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (!quoted && c == QLatin1Char('\\') && i + 1 < pattern.size()) {
            current += c;
            current += pattern[++i];
            continue;
        } else if (!quoted && c == QLatin1Char(';')) {
            sections.append(current);
            current.clear();
            continue;
        }
        current += c;
    }
    sections.append(current);
    return sections;
}

// Calls `visit(char, isLiteral)` for each character of a section, with quoted and escaped text
// reported as literal.
template <class Visit>
void ScanSection(const QString& section, Visit visit)
{
    bool quoted = false;
    for (qsizetype i = 0; i < section.size(); ++i) {
        const QChar c = section[i];
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (quoted) {
            visit(i, c, true);
        } else if (c == QLatin1Char('\\') && i + 1 < section.size()) {
            ++i;
            visit(i, section[i], true);
        } else {
            visit(i, c, false);
        }
    }
}

enum class PatternKind { Number, Date };

PatternKind KindOf(const QString& pattern)
{
    bool digits = false, dateTokens = false;
    ScanSection(pattern, [&](qsizetype, QChar c, bool literal) {
        if (literal)
            return;
        const QChar lower = c.toLower();
        if (c == QLatin1Char('0') || c == QLatin1Char('#') || c == QLatin1Char('%'))
            digits = true;
        else if (QStringLiteral("dmyhnswqct/:").contains(lower))
            dateTokens = true;
    });
    return dateTokens && !digits ? PatternKind::Date : PatternKind::Number;
}

// Numbers -----------------------------------------------------------------------------------

struct NumberItem {
    enum class Kind { Literal, Integer, Fraction, Point, Exponent, ExponentDigit } kind;
    QString text;      // literal text; for placeholders "0" or "#"
    bool plus = false;  // exponent shown with "+" for positive powers
};

struct NumberSection {
    QList<NumberItem> items;
    int integerPlaceholders = 0;
    int fractionPlaceholders = 0;
    QString fractionPattern;   // the fraction placeholders in order, "0" or "#" each
    int minIntegerDigits = 0;  // placeholders from the leftmost "0" to the decimal point
    int exponentMinDigits = 0;
    bool grouping = false;
    int scaling = 0;  // commas that divide by a thousand each
    int percents = 0;
    bool scientific = false;
};

NumberSection ParseNumberSection(const QString& section)
{
    NumberSection s;
    bool afterPoint = false, inExponent = false, seenDigit = false;
    auto literal = [&](const QString& text) {
        if (!s.items.isEmpty() && s.items.last().kind == NumberItem::Kind::Literal)
            s.items.last().text += text;
        else
            s.items.append({NumberItem::Kind::Literal, text});
    };
    // Collected first, so that commas can look ahead at what follows them.
    struct Char {
        QChar c;
        bool literal;
    };
    QList<Char> chars;
    ScanSection(section, [&](qsizetype, QChar c, bool isLiteral) { chars.append({c, isLiteral}); });
    auto isPlaceholder = [&](qsizetype i) {
        return i < chars.size() && !chars[i].literal && (chars[i].c == QLatin1Char('0') || chars[i].c == QLatin1Char('#'));
    };
    for (qsizetype i = 0; i < chars.size(); ++i) {
        const QChar c = chars[i].c;
        if (chars[i].literal) {
            literal(QString(c));
        } else if (c == QLatin1Char('0') || c == QLatin1Char('#')) {
            seenDigit = true;
            if (inExponent) {
                s.items.append({NumberItem::Kind::ExponentDigit, QString(c)});
                if (c == QLatin1Char('0'))
                    ++s.exponentMinDigits;
            } else if (afterPoint) {
                s.items.append({NumberItem::Kind::Fraction, QString(c)});
                ++s.fractionPlaceholders;
                s.fractionPattern += c;
            } else {
                s.items.append({NumberItem::Kind::Integer, QString(c)});
                ++s.integerPlaceholders;
            }
        } else if (c == QLatin1Char('.') && !afterPoint && !inExponent) {
            afterPoint = true;
            s.items.append({NumberItem::Kind::Point, {}});
        } else if (c == QLatin1Char(',') && !afterPoint && !inExponent) {
            qsizetype j = i;
            while (j < chars.size() && !chars[j].literal && chars[j].c == QLatin1Char(','))
                ++j;
            if (isPlaceholder(j) && seenDigit)
                s.grouping = true;
            else if (seenDigit)
                s.scaling += static_cast<int>(j - i);
            i = j - 1;
        } else if (c == QLatin1Char(',')) {
            // Commas after the decimal point mean nothing.
        } else if (c == QLatin1Char('%')) {
            ++s.percents;
            literal(QStringLiteral("%"));
        } else if ((c == QLatin1Char('E') || c == QLatin1Char('e')) && !inExponent && i + 2 < chars.size() &&
                   !chars[i + 1].literal &&
                   (chars[i + 1].c == QLatin1Char('+') || chars[i + 1].c == QLatin1Char('-')) && isPlaceholder(i + 2)) {
            inExponent = true;
            s.scientific = true;
            s.items.append({NumberItem::Kind::Exponent, QString(c), chars[i + 1].c == QLatin1Char('+')});
            ++i;
        } else {
            literal(QString(c));
        }
    }
    // Zero padding covers the integer placeholders from the leftmost "0" to the point.
    int position = 0;
    for (const NumberItem& item : s.items) {
        if (item.kind != NumberItem::Kind::Integer)
            continue;
        if (item.text == QLatin1String("0")) {
            s.minIntegerDigits = s.integerPlaceholders - position;
            break;
        }
        ++position;
    }
    return s;
}

// Renders the magnitude of a number with one section; the caller adds any sign.
QString RenderNumberSection(const NumberSection& s, DecimalDigits value, const RegionalSettings& settings)
{
    value.Negative = false;
    if (!value.IsZero())
        value.Exponent += 2 * s.percents - 3 * s.scaling;

    int exponent = 0;
    if (s.scientific && !value.IsZero()) {
        const int integerDigits = std::max(1, s.integerPlaceholders);
        exponent = value.IntegerDigitCount() - integerDigits;
        value.Exponent -= exponent;
        value.RoundToDecimals(s.fractionPlaceholders, Rounding::HalfAwayFromZero);
        if (value.IntegerDigitCount() > integerDigits) {  // 9.99 rounded up to 10.0
            ++exponent;
            value.Exponent -= 1;
            value.RoundToDecimals(s.fractionPlaceholders, Rounding::HalfAwayFromZero);
        }
    } else {
        value.RoundToDecimals(s.fractionPlaceholders, Rounding::HalfAwayFromZero);
    }

    QString integerDigits;
    for (int position = value.IntegerDigitCount() - 1; position >= 0; --position)
        integerDigits += QChar(u'0' + value.DigitAt(position));
    if (integerDigits.size() < s.minIntegerDigits)
        integerDigits.prepend(QString(s.minIntegerDigits - integerDigits.size(), QLatin1Char('0')));
    if (s.grouping)
        integerDigits = GroupDigits(integerDigits, settings.ThousandSymbol);

    QString fractionDigits;
    for (int i = 1; i <= s.fractionPlaceholders; ++i)
        fractionDigits += QChar(u'0' + value.DigitAt(-i));
    // Trailing zeros on "#" placeholders are not shown.
    while (!fractionDigits.isEmpty() && s.fractionPattern[fractionDigits.size() - 1] == QLatin1Char('#') &&
           fractionDigits.endsWith(QLatin1Char('0')))
        fractionDigits.chop(1);

    QString out;
    int integerSeen = 0, fractionSeen = 0;
    const qsizetype integerCount = s.grouping ? 1 : s.integerPlaceholders;
    QString exponentDigits = QString::number(std::abs(exponent));
    if (exponentDigits.size() < s.exponentMinDigits)
        exponentDigits.prepend(QString(s.exponentMinDigits - exponentDigits.size(), QLatin1Char('0')));
    bool exponentWritten = false;
    for (const NumberItem& item : s.items) {
        switch (item.kind) {
        case NumberItem::Kind::Literal: out += item.text; break;
        case NumberItem::Kind::Integer: {
            // Digits map onto placeholders from the right; surplus digits go to the first one.
            const qsizetype slot = integerSeen++;
            if (s.grouping && slot > 0)
                break;
            const qsizetype fromRight = integerCount - 1 - slot;
            const qsizetype n = integerDigits.size();
            if (slot == 0) {
                if (n > fromRight)
                    out += integerDigits.left(n - fromRight);
            } else if (fromRight < n) {
                out += integerDigits[n - 1 - fromRight];
            }
            break;
        }
        case NumberItem::Kind::Point: out += settings.DecimalSymbol; break;
        case NumberItem::Kind::Fraction:
            if (fractionSeen < fractionDigits.size())
                out += fractionDigits[fractionSeen];
            ++fractionSeen;
            break;
        case NumberItem::Kind::Exponent:
            out += item.text;
            if (exponent < 0)
                out += QLatin1Char('-');
            else if (item.plus)
                out += QLatin1Char('+');
            break;
        case NumberItem::Kind::ExponentDigit:
            if (!exponentWritten)
                out += exponentDigits;
            exponentWritten = true;
            break;
        }
    }
    return out;
}

DecimalDigits DigitsOf(const Variant& number)
{
    switch (number.VarType()) {
    case vbCurrency: return DecimalDigits::FromCurrency(*number.As<Currency>());
    case vbInteger:
    case vbLong:
    case vbByte:
    case vbBoolean: return DecimalDigits::FromInteger(CLng(number));
    case vbSingle: return DecimalDigits::FromDouble(*number.As<float>(), 7);
    default: return DecimalDigits::FromDouble(CDbl(number));
    }
}

QString FormatNumberPattern(const Variant& number, const QStringList& sections, const RegionalSettings& settings)
{
    const DecimalDigits digits = DigitsOf(number);
    const bool negative = digits.Negative;
    const bool zero = digits.IsZero();
    // An empty or missing section falls back to the positive one, which then carries the sign.
    QString section = sections.value(0);
    bool addSign = negative;
    if (negative && sections.size() >= 2 && !sections[1].isEmpty()) {
        section = sections[1];
        addSign = false;
    } else if (zero && sections.size() >= 3 && !sections[2].isEmpty()) {
        section = sections[2];
    }
    const QString text = RenderNumberSection(ParseNumberSection(section), digits, settings);
    return addSign ? QLatin1Char('-') + text : text;
}

// Dates -------------------------------------------------------------------------------------

int WeekOfYear(const DateParts& p)
{
    // Weeks start on Sunday; the week holding 1 January is week 1.
    const int firstWeekday = QDate(p.Year, 1, 1).dayOfWeek() % 7;  // 0 = Sunday
    return (p.DayOfYear() - 1 + firstWeekday) / 7 + 1;
}

QString RenderDateSection(const QString& section, Date date, const RegionalSettings& settings)
{
    const DateParts p = SplitDate(date);
    auto two = [](int n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
    const QString lowerSection = section.toLower();
    const bool twelveHour = lowerSection.contains(QLatin1String("am/pm")) || lowerSection.contains(QLatin1String("a/p")) ||
                            lowerSection.contains(QLatin1String("ampm"));
    const int hour12 = p.Hour % 12 == 0 ? 12 : p.Hour % 12;
    const int hour = twelveHour ? hour12 : p.Hour;

    QString out;
    bool lastWasHour = false;
    bool quoted = false;
    const qsizetype n = section.size();
    for (qsizetype i = 0; i < n;) {
        const QChar c = section[i];
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
            ++i;
            continue;
        }
        if (quoted) {
            out += c;
            ++i;
            continue;
        }
        if (c == QLatin1Char('\\') && i + 1 < n) {
            out += section[i + 1];
            i += 2;
            continue;
        }
        const QStringView rest = QStringView(section).mid(i);
        if (rest.startsWith(QLatin1String("am/pm"), Qt::CaseInsensitive)) {
            QString marker = p.Hour < 12 ? QStringLiteral("AM") : QStringLiteral("PM");
            out += c.isLower() ? marker.toLower() : marker;
            i += 5;
            continue;
        }
        if (rest.startsWith(QLatin1String("a/p"), Qt::CaseInsensitive)) {
            QString marker = p.Hour < 12 ? QStringLiteral("A") : QStringLiteral("P");
            out += c.isLower() ? marker.toLower() : marker;
            i += 3;
            continue;
        }
        if (rest.startsWith(QLatin1String("ampm"), Qt::CaseInsensitive)) {
            out += p.Hour < 12 ? settings.AMSymbol : settings.PMSymbol;
            i += 4;
            continue;
        }
        if (rest.startsWith(QLatin1String("ttttt"), Qt::CaseInsensitive)) {
            out += settings.FormatDatePicture(date, settings.TimePattern);
            i += 5;
            lastWasHour = false;
            continue;
        }
        const QChar lower = c.toLower();
        if (!QStringLiteral("dwmnqyhsc").contains(lower)) {
            out += c == QLatin1Char('/') ? settings.DateSeparator : c == QLatin1Char(':') ? settings.TimeSeparator : QString(c);
            ++i;
            continue;
        }
        qsizetype run = 1;
        while (i + run < n && section[i + run].toLower() == lower)
            ++run;
        i += run;
        bool isHour = false;
        switch (lower.unicode()) {
        case 'c': out += FormatGeneralDate(date, settings); break;
        case 'd':
            out += run == 1   ? QString::number(p.Day)
                   : run == 2 ? two(p.Day)
                   : run == 3 ? settings.AbbreviatedDayNames.value(p.Weekday() - 1)
                   : run == 4 ? settings.DayNames.value(p.Weekday() - 1)
                   : run == 5 ? settings.FormatDatePicture(date, settings.ShortDatePattern)
                              : settings.FormatDatePicture(date, settings.LongDatePattern);
            break;
        case 'w': out += run == 1 ? QString::number(p.Weekday()) : QString::number(WeekOfYear(p)); break;
        case 'm':
            if (lastWasHour && run <= 2)
                out += run == 1 ? QString::number(p.Minute) : two(p.Minute);
            else
                out += run == 1   ? QString::number(p.Month)
                       : run == 2 ? two(p.Month)
                       : run == 3 ? settings.AbbreviatedMonthNames.value(p.Month - 1)
                                  : settings.MonthNames.value(p.Month - 1);
            break;
        case 'n': out += run == 1 ? QString::number(p.Minute) : two(p.Minute); break;
        case 'q': out += QString::number((p.Month - 1) / 3 + 1); break;
        case 'y':
            out += run == 1   ? QString::number(p.DayOfYear())
                   : run == 2 ? two(p.Year % 100)
                              : QStringLiteral("%1").arg(p.Year, 4, 10, QLatin1Char('0'));
            break;
        case 'h':
            out += run == 1 ? QString::number(hour) : two(hour);
            isHour = true;
            break;
        case 's': out += run == 1 ? QString::number(p.Second) : two(p.Second); break;
        default: break;
        }
        lastWasHour = isHour;
    }
    return out;
}

// Named formats -----------------------------------------------------------------------------

QString CurrencyText(const Variant& number, const RegionalSettings& s)
{
    DecimalDigits digits = DigitsOf(number);
    const bool negative = digits.Negative;
    QString pattern = s.LeadingZero ? QStringLiteral("#,##0") : QStringLiteral("#,###");
    if (s.CurrencyDigits > 0)
        pattern += QLatin1Char('.') + QString(s.CurrencyDigits, QLatin1Char('0'));
    const QString amount = RenderNumberSection(ParseNumberSection(pattern), digits, s);
    static const QStringList positive = {QStringLiteral("$1"), QStringLiteral("1$"), QStringLiteral("$ 1"),
                                         QStringLiteral("1 $")};
    static const QStringList negativeLayouts = {
        QStringLiteral("($1)"),  QStringLiteral("-$1"),  QStringLiteral("$-1"),   QStringLiteral("$1-"),
        QStringLiteral("(1$)"),  QStringLiteral("-1$"),  QStringLiteral("1-$"),   QStringLiteral("1$-"),
        QStringLiteral("-1 $"),  QStringLiteral("-$ 1"), QStringLiteral("1 $-"),  QStringLiteral("$ 1-"),
        QStringLiteral("$ -1"),  QStringLiteral("1- $"), QStringLiteral("($ 1)"), QStringLiteral("(1 $)")};
    QString layout = negative ? negativeLayouts.value(s.CurrencyNegativeFormat, negativeLayouts[0])
                              : positive.value(s.CurrencyPositiveFormat, positive[0]);
    QString out;
    for (QChar c : layout) {
        if (c == QLatin1Char('$'))
            out += s.CurrencySymbol;
        else if (c == QLatin1Char('1'))
            out += amount;
        else if (c == QLatin1Char('-'))
            out += s.NegativeSign;
        else
            out += c;
    }
    return out;
}

bool NamedFormat(const Variant& value, const QString& pattern, const RegionalSettings& s, QString& out)
{
    const QString name = pattern.trimmed().toLower();
    auto asNumber = [&](auto render) {
        if (!IsNumeric(value) && value.VarType() != vbDate) {
            out = CStr(value);
            return true;
        }
        const Variant number = value.VarType() == vbDate ? Variant(value.As<Date>()->serial)
                               : value.IsString()        ? Variant(CDbl(value))
                                                         : value;
        out = render(number);
        return true;
    };
    // Text that is no date is shown as it is.
    auto asDate = [&](auto render) {
        Date date;
        try {
            date = CDate(value);
        } catch (const Error&) {
            out = CStr(value);
            return true;
        }
        out = render(date);
        return true;
    };
    auto picture = [&](const QString& windowsPicture) {
        return [&, windowsPicture](Date date) { return s.FormatDatePicture(date, windowsPicture); };
    };
    auto tokens = [&](const QString& section) {
        return [&, section](Date date) { return RenderDateSection(section, date, s); };
    };
    auto custom = [&](const QString& p) {
        return [&, p](const Variant& number) { return FormatNumberPattern(number, SplitSections(p), s); };
    };
    if (name == QLatin1String("general number"))
        return asNumber([&](const Variant& number) { return CStr(number); });
    if (name == QLatin1String("currency"))
        return asNumber([&](const Variant& number) { return CurrencyText(number, s); });
    if (name == QLatin1String("fixed"))
        return asNumber(custom(QStringLiteral("0.00")));
    if (name == QLatin1String("standard"))
        return asNumber(custom(QStringLiteral("#,##0.00")));
    if (name == QLatin1String("percent"))
        return asNumber(custom(QStringLiteral("0.00%")));
    if (name == QLatin1String("scientific"))
        return asNumber(custom(QStringLiteral("0.00E+00")));
    auto yesNo = [&](const char* yes, const char* no) {
        return asNumber([&](const Variant& number) {
            return QString::fromLatin1(CDbl(number) != 0 ? yes : no);
        });
    };
    if (name == QLatin1String("yes/no"))
        return yesNo("Yes", "No");
    if (name == QLatin1String("true/false"))
        return yesNo("True", "False");
    if (name == QLatin1String("on/off"))
        return yesNo("On", "Off");
    if (name == QLatin1String("general date"))
        return asDate([&](Date date) { return FormatGeneralDate(date, s); });
    if (name == QLatin1String("long date"))
        return asDate(picture(s.LongDatePattern));
    if (name == QLatin1String("medium date"))
        return asDate(tokens(QStringLiteral("dd-mmm-yy")));
    if (name == QLatin1String("short date"))
        return asDate(picture(s.ShortDatePattern));
    if (name == QLatin1String("long time"))
        return asDate(picture(s.TimePattern));
    if (name == QLatin1String("medium time"))
        return asDate(tokens(QStringLiteral("hh:nn AM/PM")));
    if (name == QLatin1String("short time"))
        return asDate(tokens(QStringLiteral("hh:nn")));
    return false;
}

}  // namespace

QString GroupDigits(const QString& digits, const QString& separator)
{
    QString out;
    const qsizetype n = digits.size();
    for (qsizetype i = 0; i < n; ++i) {
        if (i > 0 && (n - i) % 3 == 0)
            out += separator;
        out += digits[i];
    }
    return out;
}

QString Format(const Variant& value, const QString& pattern)
{
    return Format(value, pattern, RegionalSettings::Current());
}

QString Format(const Variant& input, const QString& pattern, const RegionalSettings& settings)
{
    const Variant value = input.IsObject() ? DefaultValue(input.Object()) : input;
    if (value.IsArray())
        Raise(vbErrTypeMismatch);

    if (pattern.isEmpty()) {
        if (value.IsNull() || value.IsEmpty())
            return {};
        if (value.VarType() == vbDate)
            return FormatGeneralDate(*value.As<Date>(), settings);
        if (value.VarType() == vbBoolean)
            return *value.As<bool>() ? QStringLiteral("True") : QStringLiteral("False");
        if (value.IsString())
            return *value.As<QString>();
        const Variant number = value;
        if (number.VarType() == vbSingle)
            return NumberToText(*number.As<float>(), 7, settings.DecimalSymbol);
        if (number.VarType() == vbDouble)
            return NumberToText(*number.As<double>(), 15, settings.DecimalSymbol);
        if (number.VarType() == vbCurrency) {
            QString text = number.As<Currency>()->ToInvariantString();
            return text.replace(QLatin1Char('.'), settings.DecimalSymbol);
        }
        return QString::number(CLng(number));
    }

    if (value.IsNull()) {
        const QStringList sections = SplitSections(pattern);
        if (sections.size() >= 4 && KindOf(pattern) == PatternKind::Number)
            return RenderNumberSection(ParseNumberSection(sections[3]), {}, settings);
        return {};
    }

    QString named;
    if (NamedFormat(value.IsEmpty() ? Variant(0) : value, pattern, settings, named))
        return named;

    if (KindOf(pattern) == PatternKind::Date) {
        Date date;
        if (value.IsEmpty()) {
            date = Date{0};
        } else {
            try {
                date = CDate(value);
            } catch (const Error&) {
                return CStr(value);  // text that is no date is shown as it is
            }
        }
        return RenderDateSection(SplitSections(pattern).value(0), date, settings);
    }

    Variant number = value.IsEmpty() ? Variant(0) : value;
    if (number.IsString()) {
        if (!IsNumeric(number))
            return *number.As<QString>();  // text that is no number is shown as it is
        number = CDbl(number);
    } else if (number.VarType() == vbDate) {
        number = number.As<Date>()->serial;
    }
    if (!number.IsNumber())
        Raise(vbErrTypeMismatch);
    if ((number.VarType() == vbDouble && !std::isfinite(*number.As<double>())) ||
        (number.VarType() == vbSingle && !std::isfinite(*number.As<float>())))
        return NumberToText(CDbl(number), 15, settings.DecimalSymbol);
    return FormatNumberPattern(number, SplitSections(pattern), settings);
}

QString FormatNumber(const Variant& value, int decimals, Tristate leadingDigit, Tristate parensForNegative,
                     Tristate groupDigits)
{
    return FormatNumber(value, RegionalSettings::Current(), decimals, leadingDigit, parensForNegative, groupDigits);
}

QString FormatNumber(const Variant& value, const RegionalSettings& s, int decimals, Tristate leadingDigit,
                     Tristate parensForNegative, Tristate groupDigits)
{
    if (value.IsNull())
        Raise(vbErrInvalidUseOfNull);
    if (decimals < -1 || decimals > 255)
        Raise(vbErrInvalidProcedureCall);
    const Variant number = value.IsString() ? Variant(CDbl(value)) : value.IsEmpty() ? Variant(0) : value;
    if (!number.IsNumber() && number.VarType() != vbDate)
        Raise(vbErrTypeMismatch);
    const DecimalDigits digits = DigitsOf(number.VarType() == vbDate ? Variant(number.As<Date>()->serial) : number);
    const int places = decimals == -1 ? s.NumberDigits : decimals;
    const bool leading = leadingDigit == vbUseDefault ? s.LeadingZero : leadingDigit != vbFalse;
    const bool group = groupDigits != vbFalse;
    QString pattern = group ? (leading ? QStringLiteral("#,##0") : QStringLiteral("#,###"))
                            : (leading ? QStringLiteral("0") : QStringLiteral("#"));
    if (places > 0)
        pattern += QLatin1Char('.') + QString(places, QLatin1Char('0'));
    const QString text = RenderNumberSection(ParseNumberSection(pattern), digits, s);
    if (!digits.Negative)
        return text;
    const int style = parensForNegative == vbUseDefault ? s.NegativeNumberFormat
                      : parensForNegative == vbFalse    ? (s.NegativeNumberFormat == 0 ? 1 : s.NegativeNumberFormat)
                                                        : 0;
    switch (style) {
    case 0: return QLatin1Char('(') + text + QLatin1Char(')');
    case 2: return s.NegativeSign + QLatin1Char(' ') + text;
    case 3: return text + s.NegativeSign;
    case 4: return text + QLatin1Char(' ') + s.NegativeSign;
    default: return s.NegativeSign + text;
    }
}

}  // namespace korvex
