// Format strings of the numeric box: one section parsed into its digit positions, then the
// value's exact digits laid into them.
#include "korvex/platform/numberbox/NumberFormat.h"

#include "korvex/runtime/Format.h"

#include <QStringList>

#include <cmath>

namespace korvex {
namespace {

struct Section {
    QString text;
    int integerPositions = 0;
    int fractionPositions = 0;
    QString fractionPattern;    // "0" or "#" for each position after the point
    int minIntegerDigits = 0;   // positions from the leftmost integer "0" to the point
    bool grouping = false;
};

Section ParseSection(const QString& text)
{
    Section s;
    s.text = text;
    bool afterPoint = false;
    int leftmostZero = -1;
    for (QChar c : text) {
        if (c == QLatin1Char('0') || c == QLatin1Char('#')) {
            if (afterPoint) {
                ++s.fractionPositions;
                s.fractionPattern += c;
            } else {
                if (c == QLatin1Char('0') && leftmostZero < 0)
                    leftmostZero = s.integerPositions;
                ++s.integerPositions;
            }
        } else if (c == QLatin1Char('.')) {
            afterPoint = true;
        } else if (c == QLatin1Char(',') && !afterPoint) {
            s.grouping = true;
        }
    }
    if (leftmostZero >= 0)
        s.minIntegerDigits = s.integerPositions - leftmostZero;
    return s;
}

// Lays a magnitude, already rounded to the section's decimals, into the section.
QString RenderSection(const Section& s, const DecimalDigits& magnitude, const NumberSeparators& separators)
{
    QString integerDigits;
    for (int position = magnitude.IntegerDigitCount() - 1; position >= 0; --position)
        integerDigits += QChar(u'0' + magnitude.DigitAt(position));
    if (integerDigits.size() < s.minIntegerDigits)
        integerDigits.prepend(QString(s.minIntegerDigits - integerDigits.size(), QLatin1Char('0')));

    QString fractionDigits;
    for (int i = 1; i <= s.fractionPositions; ++i)
        fractionDigits += QChar(u'0' + magnitude.DigitAt(-i));
    while (!fractionDigits.isEmpty() && s.fractionPattern[fractionDigits.size() - 1] == QLatin1Char('#') &&
           fractionDigits.endsWith(QLatin1Char('0')))
        fractionDigits.chop(1);

    QString out;
    bool afterPoint = false;
    int integerSeen = 0;
    int fractionSeen = 0;
    const qsizetype n = integerDigits.size();
    for (QChar c : s.text) {
        const bool position = c == QLatin1Char('0') || c == QLatin1Char('#');
        if (position && !afterPoint) {
            const int slot = integerSeen++;
            if (s.grouping) {
                // Grouped digits cannot be spread over positions: all of them go to the first.
                if (slot == 0)
                    out += GroupDigits(integerDigits, separators.Thousands);
                continue;
            }
            // Digits fill the positions from the right; any surplus goes to the first one.
            const qsizetype fromRight = s.integerPositions - 1 - slot;
            if (slot == 0) {
                if (n > fromRight)
                    out += integerDigits.left(n - fromRight);
            } else if (fromRight < n) {
                out += integerDigits[n - 1 - fromRight];
            }
        } else if (position) {
            if (fractionSeen < fractionDigits.size())
                out += fractionDigits[fractionSeen];
            ++fractionSeen;
        } else if (c == QLatin1Char('.') && !afterPoint) {
            afterPoint = true;
            // ".00" has no integer position, yet 12.5 must not lose its 12.
            if (s.integerPositions == 0)
                out += integerDigits;
            out += separators.Decimal;
        } else if (c != QLatin1Char(',')) {
            out += c;
        }
    }
    return out;
}

DecimalDigits Rounded(DecimalDigits magnitude, const Section& s)
{
    magnitude.Negative = false;
    magnitude.RoundToDecimals(s.fractionPositions, Rounding::HalfAwayFromZero);
    return magnitude;
}

// The positive section with only its digit positions and point: what the user edits in.
QString PlainPositiveSection(const QString& format)
{
    QString plain;
    bool point = false;
    for (QChar c : format.section(QLatin1Char(';'), 0, 0)) {
        if (c == QLatin1Char('0') || c == QLatin1Char('#')) {
            plain += c;
        } else if (c == QLatin1Char('.') && !point) {
            point = true;
            plain += c;
        }
    }
    return plain;
}

}  // namespace

std::optional<DecimalDigits> DigitsOfNumber(const Variant& value)
{
    switch (value.VarType()) {
    case vbCurrency: return DecimalDigits::FromCurrency(*value.As<Currency>());
    case vbInteger: return DecimalDigits::FromInteger(*value.As<std::int16_t>());
    case vbLong: return DecimalDigits::FromInteger(*value.As<std::int32_t>());
    case vbByte: return DecimalDigits::FromInteger(*value.As<std::uint8_t>());
    case vbBoolean: return DecimalDigits::FromInteger(*value.As<bool>() ? -1 : 0);
    case vbSingle: {
        const float f = *value.As<float>();
        if (!std::isfinite(f))
            return std::nullopt;
        return DecimalDigits::FromDouble(f, 7);
    }
    case vbDouble: {
        const double d = *value.As<double>();
        if (!std::isfinite(d))
            return std::nullopt;
        return DecimalDigits::FromDouble(d);
    }
    default: return std::nullopt;
    }
}

QString RenderNumberFormat(const QString& format, const Variant& value, const NumberSeparators& separators)
{
    const std::optional<DecimalDigits> digits = DigitsOfNumber(value);
    if (!digits)
        return {};
    const QStringList sections = format.split(QLatin1Char(';'));
    const bool hasNegativeSection = sections.size() >= 2 && !sections[1].isEmpty();
    const bool withSign = digits->Negative && !hasNegativeSection;
    Section section = ParseSection(digits->Negative && hasNegativeSection ? sections[1] : sections[0]);
    DecimalDigits magnitude = Rounded(*digits, section);
    if (magnitude.IsZero()) {
        // What shows as zero is zero: the zero section, or the positive one without a sign.
        section = ParseSection(sections.size() >= 3 ? sections[2] : sections[0]);
        return RenderSection(section, magnitude, separators);
    }
    const QString text = RenderSection(section, magnitude, separators);
    return withSign ? QLatin1Char('-') + text : text;
}

NumberEditRules EditRulesOf(const QString& format)
{
    const QStringList sections = format.split(QLatin1Char(';'));
    const Section positive = ParseSection(sections[0]);
    NumberEditRules rules;
    rules.IntegerPositions = positive.integerPositions;
    rules.Decimals = positive.fractionPositions;
    rules.NegativeAllowed = sections.size() >= 2 && !sections[1].isEmpty();
    return rules;
}

QString RenderEditText(const QString& format, const Variant& value, const NumberSeparators& separators)
{
    const std::optional<DecimalDigits> digits = DigitsOfNumber(value);
    if (!digits)
        return {};
    const Section section = ParseSection(PlainPositiveSection(format));
    const DecimalDigits magnitude = Rounded(*digits, section);
    const QString text = RenderSection(section, magnitude, separators);
    return digits->Negative && !magnitude.IsZero() ? QLatin1Char('-') + text : text;
}

}  // namespace korvex
