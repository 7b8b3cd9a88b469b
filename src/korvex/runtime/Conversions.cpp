// Conversions between Variant types, text reading and writing, and comparison.
#include "korvex/runtime/Conversions.h"

#include "korvex/runtime/DecimalDigits.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"

#include <QDate>

#include <charconv>
#include <cmath>
#include <limits>

namespace korvex {
namespace {

bool IsAsciiDigit(QChar c)
{
    return c.unicode() >= '0' && c.unicode() <= '9';
}

bool StartsWithAt(QStringView text, qsizetype at, const QString& what)
{
    return !what.isEmpty() && text.mid(at).startsWith(what);
}

// A number read from text: an exact decimal, or the 16- or 32-bit integer a "&H" or "&O"
// literal denotes.
struct ParsedNumber {
    enum class Kind { Decimal, Integer, Long } kind = Kind::Decimal;
    DecimalDigits decimal;
    std::int32_t integer = 0;

    double ToDouble() const { return kind == Kind::Decimal ? decimal.ToDouble() : integer; }
};

enum class ParseStatus { Ok, NotANumber, Overflow };

ParseStatus ParseRadixLiteral(QStringView digits, int base, ParsedNumber& out)
{
    if (digits.isEmpty())
        return ParseStatus::NotANumber;
    std::uint64_t value = 0;
    for (QChar c : digits) {
        int d = IsAsciiDigit(c) ? c.unicode() - '0'
                : (base == 16 && c.toUpper() >= QLatin1Char('A') && c.toUpper() <= QLatin1Char('F'))
                    ? c.toUpper().unicode() - 'A' + 10
                    : -1;
        if (d < 0 || d >= base)
            return ParseStatus::NotANumber;
        value = value * static_cast<unsigned>(base) + static_cast<unsigned>(d);
        if (value > 0xFFFFFFFFu)
            return ParseStatus::Overflow;
    }
    if (value <= 0xFFFFu) {
        out.kind = ParsedNumber::Kind::Integer;
        out.integer = static_cast<std::int16_t>(static_cast<std::uint16_t>(value));
    } else {
        out.kind = ParsedNumber::Kind::Long;
        out.integer = static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
    }
    return ParseStatus::Ok;
}

// Reads a number as the user's locale writes it: sign before or after, brackets for negative,
// the currency symbol, thousands separators in the integer part, the decimal symbol, and an
// exponent introduced by E or D.
ParseStatus ParseNumberText(QStringView text, const RegionalSettings& s, ParsedNumber& out)
{
    text = text.trimmed();
    if (text.isEmpty())
        return ParseStatus::NotANumber;
    if (text.size() >= 2 && text[0] == QLatin1Char('&')) {
        QChar radix = text[1].toUpper();
        if (radix == QLatin1Char('H'))
            return ParseRadixLiteral(text.mid(2), 16, out);
        if (radix == QLatin1Char('O'))
            return ParseRadixLiteral(text.mid(2), 8, out);
        return ParseStatus::NotANumber;
    }

    const qsizetype n = text.size();
    qsizetype i = 0;
    bool negative = false, signSeen = false, openBracket = false, closedBracket = false, currencySeen = false;
    auto skipBlanks = [&] {
        while (i < n && text[i].isSpace())
            ++i;
    };
    auto takeCurrency = [&] {
        if (currencySeen || !StartsWithAt(text, i, s.CurrencySymbol))
            return false;
        i += s.CurrencySymbol.size();
        currencySeen = true;
        return true;
    };
    auto takeSign = [&] {
        if (signSeen || i >= n || (text[i] != QLatin1Char('+') && text[i] != QLatin1Char('-')))
            return false;
        signSeen = true;
        negative = text[i] == QLatin1Char('-');
        ++i;
        return true;
    };

    for (;;) {
        skipBlanks();
        if (takeSign() || takeCurrency())
            continue;
        if (i < n && text[i] == QLatin1Char('(') && !openBracket && !signSeen) {
            openBracket = true;
            ++i;
            continue;
        }
        break;
    }

    std::string digits;
    int fractionDigits = 0;
    bool seenPoint = false;
    const bool blankGroups = s.ThousandSymbol.size() == 1 && s.ThousandSymbol[0].isSpace();
    while (i < n) {
        const QChar c = text[i];
        if (IsAsciiDigit(c)) {
            digits += static_cast<char>(c.unicode());
            if (seenPoint)
                ++fractionDigits;
            ++i;
        } else if (!seenPoint && StartsWithAt(text, i, s.DecimalSymbol)) {
            seenPoint = true;
            i += s.DecimalSymbol.size();
        } else if (!seenPoint && !digits.empty() && s.ThousandSymbol != s.DecimalSymbol &&
                   (StartsWithAt(text, i, s.ThousandSymbol) || (blankGroups && c.isSpace()))) {
            i += blankGroups ? 1 : s.ThousandSymbol.size();
        } else {
            break;
        }
    }
    if (digits.empty())
        return ParseStatus::NotANumber;

    long exponent = 0;
    if (i < n && QStringLiteral("eEdD").contains(text[i])) {
        qsizetype j = i + 1;
        bool exponentNegative = false;
        if (j < n && (text[j] == QLatin1Char('+') || text[j] == QLatin1Char('-')))
            exponentNegative = text[j++] == QLatin1Char('-');
        const qsizetype first = j;
        while (j < n && IsAsciiDigit(text[j])) {
            exponent = std::min(exponent * 10 + (text[j].unicode() - '0'), 1000000L);
            ++j;
        }
        if (j == first)
            return ParseStatus::NotANumber;
        if (exponentNegative)
            exponent = -exponent;
        i = j;
    }

    for (;;) {
        skipBlanks();
        if (takeSign() || takeCurrency())
            continue;
        if (i < n && text[i] == QLatin1Char(')') && openBracket && !closedBracket) {
            closedBracket = true;
            ++i;
            continue;
        }
        break;
    }
    if (i != n || openBracket != closedBracket)
        return ParseStatus::NotANumber;
    if (closedBracket) {
        if (signSeen)
            return ParseStatus::NotANumber;
        negative = true;
    }
    out.kind = ParsedNumber::Kind::Decimal;
    out.decimal = DecimalDigits::FromParts(negative, std::move(digits), static_cast<int>(exponent - fractionDigits));
    double magnitude = out.decimal.ToDouble();
    if (!std::isfinite(magnitude))
        return ParseStatus::Overflow;
    return ParseStatus::Ok;
}

ParsedNumber ParseNumberOrRaise(QStringView text)
{
    ParsedNumber number;
    switch (ParseNumberText(text, RegionalSettings::Current(), number)) {
    case ParseStatus::Ok: return number;
    case ParseStatus::Overflow: Raise(vbErrOverflow);
    case ParseStatus::NotANumber: break;
    }
    Raise(vbErrTypeMismatch);
}

// Whole-number conversions round halves to even and refuse what does not fit.
template <class Int>
Int RoundToInteger(double value)
{
    if (!std::isfinite(value))
        Raise(vbErrOverflow);
    const double rounded = std::nearbyint(value);
    if (rounded < static_cast<double>(std::numeric_limits<Int>::min()) ||
        rounded > static_cast<double>(std::numeric_limits<Int>::max()))
        Raise(vbErrOverflow);
    return static_cast<Int>(rounded);
}

template <class Int>
Int CurrencyToInteger(Currency c)
{
    const std::int64_t scaled = c.Scaled();
    std::int64_t whole = scaled / Currency::Scale;
    const std::int64_t remainder = scaled % Currency::Scale;
    const std::int64_t twice = 2 * (remainder < 0 ? -remainder : remainder);
    if (twice > Currency::Scale || (twice == Currency::Scale && whole % 2 != 0))
        whole += scaled < 0 ? -1 : 1;
    if (whole < std::numeric_limits<Int>::min() || whole > std::numeric_limits<Int>::max())
        Raise(vbErrOverflow);
    return static_cast<Int>(whole);
}

// The plain value behind a variant: objects give their default member; Null is refused for
// conversions that need a value.
Variant Resolve(const Variant& value)
{
    if (value.IsObject())
        return DefaultValue(value.Object());
    if (value.IsArray())
        Raise(vbErrTypeMismatch);
    return value;
}

template <class Int>
Int ToInteger(const Variant& input)
{
    const Variant value = Resolve(input);
    switch (value.VarType()) {
    case vbEmpty: return 0;
    case vbNull: Raise(vbErrInvalidUseOfNull);
    case vbBoolean: return *value.As<bool>() ? static_cast<Int>(-1) : static_cast<Int>(0);
    case vbByte: return RoundToInteger<Int>(*value.As<std::uint8_t>());
    case vbInteger: return RoundToInteger<Int>(*value.As<std::int16_t>());
    case vbLong: return RoundToInteger<Int>(*value.As<std::int32_t>());
    case vbSingle: return RoundToInteger<Int>(*value.As<float>());
    case vbDouble: return RoundToInteger<Int>(*value.As<double>());
    case vbDate: return RoundToInteger<Int>(value.As<Date>()->serial);
    case vbCurrency: return CurrencyToInteger<Int>(*value.As<Currency>());
    case vbString: {
        const ParsedNumber number = ParseNumberOrRaise(*value.As<QString>());
        if (number.kind == ParsedNumber::Kind::Decimal)
            return RoundToInteger<Int>(number.decimal.ToDouble());
        return RoundToInteger<Int>(number.integer);
    }
    default: Raise(vbErrTypeMismatch);
    }
}

QString WithDecimalSymbol(QString text, const QString& decimalSymbol)
{
    if (decimalSymbol != QLatin1String("."))
        text.replace(QLatin1Char('.'), decimalSymbol);
    return text;
}

// Date reading -------------------------------------------------------------------------------

struct DateToken {
    enum class Kind { Number, Word, TimeSeparator } kind;
    int value = 0;
    int digits = 0;
    QString word;
};

bool Tokenise(QStringView text, const RegionalSettings& s, QList<DateToken>& tokens)
{
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n;) {
        const QChar c = text[i];
        if (IsAsciiDigit(c)) {
            DateToken t{DateToken::Kind::Number, 0, 0, {}};
            while (i < n && IsAsciiDigit(text[i])) {
                t.value = std::min(t.value * 10 + (text[i].unicode() - '0'), 100000);
                ++t.digits;
                ++i;
            }
            tokens.append(t);
        } else if (c.isLetter()) {
            DateToken t{DateToken::Kind::Word, 0, 0, {}};
            while (i < n && text[i].isLetter())
                t.word += text[i++].toLower();
            // "a.m." and "p.m." read as one marker.
            if (i < n && text[i] == QLatin1Char('.') && t.word.size() == 1)
                ++i;
            tokens.append(t);
        } else if (c == QLatin1Char(':') || StartsWithAt(text, i, s.TimeSeparator)) {
            tokens.append(DateToken{DateToken::Kind::TimeSeparator, 0, 0, {}});
            i += c == QLatin1Char(':') ? 1 : s.TimeSeparator.size();
        } else if (c.isSpace() || QStringLiteral("/-.,").contains(c)) {
            ++i;
        } else if (StartsWithAt(text, i, s.DateSeparator)) {
            i += s.DateSeparator.size();
        } else {
            return false;
        }
    }
    return true;
}

int MonthOfWord(const QString& word, const RegionalSettings& s)
{
    static const RegionalSettings english = RegionalSettings::EnglishUS();
    for (const RegionalSettings* names : {&s, &english}) {
        for (int m = 0; m < 12; ++m) {
            if (word == names->MonthNames.value(m).toLower() || word == names->AbbreviatedMonthNames.value(m).toLower())
                return m + 1;
        }
    }
    if (word == QLatin1String("sept"))
        return 9;
    return 0;
}

bool IsDayWord(const QString& word, const RegionalSettings& s)
{
    static const RegionalSettings english = RegionalSettings::EnglishUS();
    for (const RegionalSettings* names : {&s, &english}) {
        for (int d = 0; d < 7; ++d) {
            if (word == names->DayNames.value(d).toLower() || word == names->AbbreviatedDayNames.value(d).toLower())
                return true;
        }
    }
    return false;
}

// 0 not a marker, 1 AM, 2 PM.
int MarkerOfWord(const QString& word, const RegionalSettings& s)
{
    if (word == QLatin1String("am") || word == QLatin1String("a") || word == s.AMSymbol.toLower())
        return 1;
    if (word == QLatin1String("pm") || word == QLatin1String("p") || word == s.PMSymbol.toLower())
        return 2;
    return 0;
}

int FullYear(const DateToken& year)
{
    if (year.digits <= 2)
        return year.value < 30 ? 2000 + year.value : 1900 + year.value;
    return year.value;
}

bool ValidDay(int year, int month, int day)
{
    return year >= 100 && year <= 9999 && QDate::isValid(year, month, day);
}

}  // namespace

// Text -----------------------------------------------------------------------------------------

QString NumberToText(double value, int significantDigits, const QString& decimalSymbol)
{
    if (value == 0)
        return QStringLiteral("0");
    if (std::isnan(value))
        return QStringLiteral("NaN");
    if (std::isinf(value))
        return value > 0 ? QStringLiteral("Infinity") : QStringLiteral("-Infinity");
    DecimalDigits d = DecimalDigits::FromDouble(value, significantDigits);
    const int magnitude = d.IntegerDigitCount() - 1;  // the power of ten of the first digit
    QString digits = QString::fromStdString(d.Digits);
    QString text;
    if (magnitude < -4 || magnitude >= significantDigits) {
        text = digits.left(1);
        if (digits.size() > 1)
            text += QLatin1Char('.') + digits.mid(1);
        text += QStringLiteral("E%1%2").arg(magnitude < 0 ? QLatin1Char('-') : QLatin1Char('+'))
                    .arg(std::abs(magnitude), 2, 10, QLatin1Char('0'));
    } else if (d.Exponent >= 0) {
        text = digits + QString(d.Exponent, QLatin1Char('0'));
    } else {
        const int fraction = -d.Exponent;
        if (digits.size() <= fraction)
            digits.prepend(QString(fraction - digits.size() + 1, QLatin1Char('0')));
        digits.insert(digits.size() - fraction, QLatin1Char('.'));
        text = digits;
    }
    return WithDecimalSymbol(d.Negative ? QLatin1Char('-') + text : text, decimalSymbol);
}

QString FormatGeneralDate(Date date, const RegionalSettings& settings)
{
    const DateParts parts = SplitDate(date);
    if (!parts.HasDate())
        return settings.FormatDatePicture(date, settings.TimePattern);
    QString text = settings.FormatDatePicture(date, settings.ShortDatePattern);
    if (parts.HasTime())
        text += QLatin1Char(' ') + settings.FormatDatePicture(date, settings.TimePattern);
    return text;
}

std::optional<Date> ParseDate(QStringView text, const RegionalSettings& s)
{
    QList<DateToken> tokens;
    if (!Tokenise(text, s, tokens) || tokens.isEmpty())
        return std::nullopt;

    QList<DateToken> numbers;
    int month = 0, marker = 0;
    bool haveTime = false;
    int hour = 0, minute = 0, second = 0;
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const DateToken& t = tokens[i];
        if (t.kind == DateToken::Kind::Number) {
            const bool timeFollows = i + 1 < tokens.size() && tokens[i + 1].kind == DateToken::Kind::TimeSeparator;
            const bool markerFollows = i + 1 < tokens.size() && tokens[i + 1].kind == DateToken::Kind::Word &&
                                       MarkerOfWord(tokens[i + 1].word, s) != 0;
            // A number starts the time when a time separator or an AM/PM marker follows it.
            if (!timeFollows && !(markerFollows && !haveTime)) {
                numbers.append(t);
                continue;
            }
            if (haveTime)
                return std::nullopt;
            haveTime = true;
            hour = t.value;
            int* fields[] = {&minute, &second};
            for (int* field : fields) {
                if (i + 2 < tokens.size() && tokens[i + 1].kind == DateToken::Kind::TimeSeparator &&
                    tokens[i + 2].kind == DateToken::Kind::Number) {
                    *field = tokens[i + 2].value;
                    i += 2;
                } else {
                    break;
                }
            }
            // A trailing separator ("14:30:") is not a time.
            if (i + 1 < tokens.size() && tokens[i + 1].kind == DateToken::Kind::TimeSeparator)
                return std::nullopt;
        } else if (t.kind == DateToken::Kind::Word) {
            if (int m = MarkerOfWord(t.word, s); m != 0 && !marker) {
                marker = m;
            } else if (int mo = MonthOfWord(t.word, s); mo != 0 && !month) {
                month = mo;
            } else if (!IsDayWord(t.word, s)) {
                return std::nullopt;
            }
        } else {
            return std::nullopt;  // a time separator with no number before it
        }
    }

    if (marker) {
        if (!haveTime || hour > 12)
            return std::nullopt;
        if (marker == 2 && hour < 12)
            hour += 12;
        else if (marker == 1 && hour == 12)
            hour = 0;
    }
    if (hour > 23 || minute > 59 || second > 59)
        return std::nullopt;

    int year = 0, day = 0;
    const int thisYear = QDate::currentDate().year();
    auto isYear = [](const DateToken& t) { return t.digits >= 3 || t.value > 31; };
    if (month) {
        if (numbers.size() == 2) {
            const bool yearFirst = isYear(numbers[0]);
            day = numbers[yearFirst ? 1 : 0].value;
            year = FullYear(numbers[yearFirst ? 0 : 1]);
        } else if (numbers.size() == 1) {
            if (isYear(numbers[0])) {
                year = FullYear(numbers[0]);
                day = 1;
            } else {
                year = thisYear;
                day = numbers[0].value;
            }
        } else {
            return std::nullopt;
        }
    } else if (numbers.size() == 3) {
        QString order = isYear(numbers[0]) ? QStringLiteral("YMD") : s.DateOrder();
        // A day that cannot be read in the locale's order is tried the other way round.
        const QStringList orders = order == QLatin1String("MDY")   ? QStringList{order, QStringLiteral("DMY")}
                                   : order == QLatin1String("DMY") ? QStringList{order, QStringLiteral("MDY")}
                                                                   : QStringList{order, QStringLiteral("YDM")};
        bool found = false;
        for (const QString& o : orders) {
            int y = FullYear(numbers[o.indexOf(QLatin1Char('Y'))]);
            int m = numbers[o.indexOf(QLatin1Char('M'))].value;
            int d = numbers[o.indexOf(QLatin1Char('D'))].value;
            if (ValidDay(y, m, d)) {
                year = y, month = m, day = d;
                found = true;
                break;
            }
        }
        if (!found)
            return std::nullopt;
    } else if (numbers.size() == 2) {
        if (isYear(numbers[0]) || isYear(numbers[1])) {
            const bool yearFirst = isYear(numbers[0]);
            year = FullYear(numbers[yearFirst ? 0 : 1]);
            month = numbers[yearFirst ? 1 : 0].value;
            day = 1;
        } else {
            year = thisYear;
            const bool dayFirst = s.DateOrder() == QLatin1String("DMY");
            day = numbers[dayFirst ? 0 : 1].value;
            month = numbers[dayFirst ? 1 : 0].value;
            if (!ValidDay(year, month, day))
                std::swap(day, month);
        }
    } else if (numbers.isEmpty() && haveTime) {
        return Date{TimeSerial(hour, minute, second)};
    } else {
        return std::nullopt;
    }
    if (!ValidDay(year, month, day))
        return std::nullopt;
    return CombineDateTime(DateSerial(year, month, day), TimeSerial(hour, minute, second));
}

// Conversions ----------------------------------------------------------------------------------

QString CStr(const Variant& input)
{
    const Variant value = Resolve(input);
    const RegionalSettings& s = RegionalSettings::Current();
    switch (value.VarType()) {
    case vbEmpty: return {};
    case vbNull: Raise(vbErrInvalidUseOfNull);
    case vbBoolean: return *value.As<bool>() ? QStringLiteral("True") : QStringLiteral("False");
    case vbByte: return QString::number(*value.As<std::uint8_t>());
    case vbInteger: return QString::number(*value.As<std::int16_t>());
    case vbLong: return QString::number(*value.As<std::int32_t>());
    case vbSingle: return NumberToText(*value.As<float>(), 7, s.DecimalSymbol);
    case vbDouble: return NumberToText(*value.As<double>(), 15, s.DecimalSymbol);
    case vbCurrency: return WithDecimalSymbol(value.As<Currency>()->ToInvariantString(), s.DecimalSymbol);
    case vbDate: return FormatGeneralDate(*value.As<Date>(), s);
    case vbString: return *value.As<QString>();
    default: Raise(vbErrTypeMismatch);
    }
}

std::int16_t CInt(const Variant& value)
{
    return ToInteger<std::int16_t>(value);
}

std::int32_t CLng(const Variant& value)
{
    return ToInteger<std::int32_t>(value);
}

std::uint8_t CByte(const Variant& value)
{
    return ToInteger<std::uint8_t>(value);
}

double CDbl(const Variant& input)
{
    const Variant value = Resolve(input);
    switch (value.VarType()) {
    case vbEmpty: return 0;
    case vbNull: Raise(vbErrInvalidUseOfNull);
    case vbBoolean: return *value.As<bool>() ? -1 : 0;
    case vbByte: return *value.As<std::uint8_t>();
    case vbInteger: return *value.As<std::int16_t>();
    case vbLong: return *value.As<std::int32_t>();
    case vbSingle: return *value.As<float>();
    case vbDouble: return *value.As<double>();
    case vbCurrency: return value.As<Currency>()->ToDouble();
    case vbDate: return value.As<Date>()->serial;
    case vbString: return ParseNumberOrRaise(*value.As<QString>()).ToDouble();
    default: Raise(vbErrTypeMismatch);
    }
}

float CSng(const Variant& value)
{
    const double d = CDbl(value);
    if (std::isfinite(d) && std::fabs(d) > std::numeric_limits<float>::max())
        Raise(vbErrOverflow);
    return static_cast<float>(d);
}

Currency CCur(const Variant& input)
{
    const Variant value = Resolve(input);
    switch (value.VarType()) {
    case vbCurrency: return *value.As<Currency>();
    case vbEmpty: return {};
    case vbNull: Raise(vbErrInvalidUseOfNull);
    case vbBoolean: return Currency::FromInt(*value.As<bool>() ? -1 : 0);
    case vbByte: return Currency::FromInt(*value.As<std::uint8_t>());
    case vbInteger: return Currency::FromInt(*value.As<std::int16_t>());
    case vbLong: return Currency::FromInt(*value.As<std::int32_t>());
    case vbSingle: return Currency::FromDouble(*value.As<float>());
    case vbDouble: return Currency::FromDouble(*value.As<double>());
    case vbDate: return Currency::FromDouble(value.As<Date>()->serial);
    case vbString: {
        // Exact from the digits, so that long amounts keep every digit.
        const ParsedNumber number = ParseNumberOrRaise(*value.As<QString>());
        if (number.kind != ParsedNumber::Kind::Decimal)
            return Currency::FromInt(number.integer);
        auto scaled = number.decimal.ToScaledInteger(4);
        if (!scaled)
            Raise(vbErrOverflow);
        return Currency::FromScaled(*scaled);
    }
    default: Raise(vbErrTypeMismatch);
    }
}

bool CBool(const Variant& input)
{
    const Variant value = Resolve(input);
    switch (value.VarType()) {
    case vbBoolean: return *value.As<bool>();
    case vbEmpty: return false;
    case vbNull: Raise(vbErrInvalidUseOfNull);
    case vbString: {
        const QString text = value.As<QString>()->trimmed();
        if (text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
            return true;
        if (text.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
            return false;
        return CDbl(value) != 0;
    }
    case vbCurrency: return value.As<Currency>()->Scaled() != 0;
    default: return CDbl(value) != 0;
    }
}

Date CDate(const Variant& input)
{
    const Variant value = Resolve(input);
    switch (value.VarType()) {
    case vbDate: return *value.As<Date>();
    case vbEmpty: return {};
    case vbNull: Raise(vbErrInvalidUseOfNull);
    case vbString: {
        const QString& text = *value.As<QString>();
        if (auto date = ParseDate(text, RegionalSettings::Current()))
            return *date;
        // A number written as text is a day serial.
        ParsedNumber number;
        if (ParseNumberText(text, RegionalSettings::Current(), number) != ParseStatus::Ok)
            Raise(vbErrTypeMismatch);
        const double serial = number.ToDouble();
        if (!IsValidDateSerial(serial))
            Raise(vbErrOverflow);
        return Date{serial};
    }
    default: {
        const double serial = CDbl(value);
        if (!IsValidDateSerial(serial))
            Raise(vbErrOverflow);
        return Date{serial};
    }
    }
}

Variant CVType(const Variant& value, VbVarType type)
{
    switch (type) {
    case vbInteger: return CInt(value);
    case vbLong: return CLng(value);
    case vbSingle: return CSng(value);
    case vbDouble: return CDbl(value);
    case vbCurrency: return CCur(value);
    case vbDate: return CDate(value);
    case vbString: return CStr(value);
    case vbBoolean: return CBool(value);
    case vbByte: return CByte(value);
    case vbEmpty:
    case vbNull:
    case vbVariant: return value;
    default: Raise(vbErrTypeMismatch);
    }
}

QString Trim(const QString& text)
{
    qsizetype begin = 0, end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.mid(begin, end - begin);
}

double Val(QStringView text)
{
    // Blanks, tabs and line feeds are not part of the number but do not end it either.
    QString compact;
    compact.reserve(text.size());
    for (QChar c : text) {
        if (c != QLatin1Char(' ') && c != QLatin1Char('\t') && c != QLatin1Char('\n') && c != QLatin1Char('\r'))
            compact += c;
    }
    const qsizetype n = compact.size();
    if (n >= 2 && compact[0] == QLatin1Char('&')) {
        const QChar radix = compact[1].toUpper();
        const int base = radix == QLatin1Char('H') ? 16 : radix == QLatin1Char('O') ? 8 : 0;
        if (base == 0)
            return 0;
        auto isRadixDigit = [base](QChar c) {
            const char16_t u = c.toUpper().unicode();
            return (u >= '0' && u <= '7') || (base == 16 && ((u >= '8' && u <= '9') || (u >= 'A' && u <= 'F')));
        };
        qsizetype end = 2;
        while (end < n && isRadixDigit(compact[end]))
            ++end;
        ParsedNumber number;
        if (ParseRadixLiteral(QStringView(compact).mid(2, end - 2), base, number) != ParseStatus::Ok)
            return 0;
        return number.integer;
    }
    std::string ascii;
    qsizetype i = 0;
    if (i < n && (compact[i] == QLatin1Char('+') || compact[i] == QLatin1Char('-')))
        ascii += static_cast<char>(compact[i++].unicode());
    bool seenPoint = false;
    while (i < n && (IsAsciiDigit(compact[i]) || (compact[i] == QLatin1Char('.') && !seenPoint))) {
        seenPoint = seenPoint || compact[i] == QLatin1Char('.');
        ascii += static_cast<char>(compact[i++].unicode());
    }
    if (i < n && QStringLiteral("eEdD").contains(compact[i])) {
        std::string exponent = "e";
        qsizetype j = i + 1;
        if (j < n && (compact[j] == QLatin1Char('+') || compact[j] == QLatin1Char('-')))
            exponent += static_cast<char>(compact[j++].unicode());
        const qsizetype first = j;
        while (j < n && IsAsciiDigit(compact[j]))
            exponent += static_cast<char>(compact[j++].unicode());
        if (j > first)
            ascii += exponent;
    }
    const char* begin = ascii.data();
    if (!ascii.empty() && ascii[0] == '+')
        ++begin;
    double value = 0;
    auto result = std::from_chars(begin, ascii.data() + ascii.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        Raise(vbErrOverflow);
    return value;
}

bool IsNumeric(const Variant& input)
{
    if (input.IsObject()) {
        try {
            return IsNumeric(DefaultValue(input.Object()));
        } catch (const Error&) {
            return false;
        }
    }
    switch (input.VarType()) {
    case vbEmpty: return true;
    case vbString: {
        ParsedNumber number;
        return ParseNumberText(*input.As<QString>(), RegionalSettings::Current(), number) == ParseStatus::Ok;
    }
    default: return input.IsNumber();
    }
}

bool IsDate(const Variant& input)
{
    if (input.VarType() == vbDate)
        return true;
    if (input.IsString())
        return ParseDate(*input.As<QString>(), RegionalSettings::Current()).has_value();
    return false;
}

VbVarType VarType(const Variant& value)
{
    return value.VarType();
}

QString TypeName(const Variant& value)
{
    switch (value.VarType()) {
    case vbEmpty: return QStringLiteral("Empty");
    case vbNull: return QStringLiteral("Null");
    case vbInteger: return QStringLiteral("Integer");
    case vbLong: return QStringLiteral("Long");
    case vbSingle: return QStringLiteral("Single");
    case vbDouble: return QStringLiteral("Double");
    case vbCurrency: return QStringLiteral("Currency");
    case vbDate: return QStringLiteral("Date");
    case vbString: return QStringLiteral("String");
    case vbBoolean: return QStringLiteral("Boolean");
    case vbByte: return QStringLiteral("Byte");
    case vbObject: return value.Object() ? TypeNameOf(value.Object()) : QStringLiteral("Nothing");
    default: return QStringLiteral("Variant()");
    }
}

// Comparison -----------------------------------------------------------------------------------

int StrComp(QStringView a, QStringView b, CompareMethod method)
{
    const int c = a.compare(b, method == vbTextCompare ? Qt::CaseInsensitive : Qt::CaseSensitive);
    return c < 0 ? -1 : c > 0 ? 1 : 0;
}

Comparison Compare(const Variant& left, const Variant& right, CompareMethod method)
{
    const Variant a = left.IsObject() ? DefaultValue(left.Object()) : left;
    const Variant b = right.IsObject() ? DefaultValue(right.Object()) : right;
    if (a.IsArray() || b.IsArray())
        Raise(vbErrTypeMismatch);
    if (a.IsNull() || b.IsNull())
        return Comparison::Null;
    auto fromInt = [](int c) { return static_cast<Comparison>(c); };
    if (a.IsEmpty() && b.IsEmpty())
        return Comparison::Equal;
    if (a.IsString() || b.IsString()) {
        if (a.IsString() && b.IsString())
            return fromInt(StrComp(*a.As<QString>(), *b.As<QString>(), method));
        if (a.IsEmpty())
            return fromInt(StrComp(QString(), *b.As<QString>(), method));
        if (b.IsEmpty())
            return fromInt(StrComp(*a.As<QString>(), QString(), method));
        // A number is less than any text.
        return a.IsString() ? Comparison::Greater : Comparison::Less;
    }
    auto inexact = [](const Variant& v) {
        return v.VarType() == vbSingle || v.VarType() == vbDouble || v.VarType() == vbDate;
    };
    if (inexact(a) || inexact(b)) {
        const double x = CDbl(a), y = CDbl(b);
        return x < y ? Comparison::Less : x > y ? Comparison::Greater : Comparison::Equal;
    }
    // Whole numbers and currency compare exactly as ten-thousandths.
    auto scaled = [](const Variant& v) {
        return v.VarType() == vbCurrency ? v.As<Currency>()->Scaled()
                                         : static_cast<std::int64_t>(CLng(v)) * Currency::Scale;
    };
    const std::int64_t x = scaled(a), y = scaled(b);
    return x < y ? Comparison::Less : x > y ? Comparison::Greater : Comparison::Equal;
}

}  // namespace korvex
