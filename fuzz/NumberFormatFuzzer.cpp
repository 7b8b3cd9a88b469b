// ZqNumber's formats and the numeric box's renderer over arbitrary ranges, settings, values and
// format strings, and its typing rules over arbitrary text. Nothing may crash; a refused range
// may only raise the library's error; whatever a field shows while editing a value in its range
// must be typeable under its own rules and read back as that value; typed text it takes must
// read as a value.
#include "korvex/controls/input/ZqNumber.h"
#include "korvex/platform/numberbox/NumberBox.h"
#include "korvex/platform/numberbox/NumberEditValidator.h"
#include "korvex/platform/numberbox/NumberFormat.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/DecimalDigits.h"
#include "korvex/runtime/Error.h"

#include <QApplication>

#include <cstdlib>
#include <cstring>

namespace {

using namespace korvex;

struct Reader {
    const std::uint8_t* data;
    std::size_t size;
    std::uint8_t Byte()
    {
        if (size == 0)
            return 0;
        --size;
        return *data++;
    }
    std::int64_t Int64()
    {
        std::uint64_t v = 0;
        for (int i = 0; i < 8; ++i)
            v = (v << 8) | Byte();
        return static_cast<std::int64_t>(v);
    }
    QString Rest() { return QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)); }
};

// A currency amount rounded to `decimals` places, or nullopt when that would leave the range
// of Currency.
std::optional<Currency> RoundedTo(Currency value, int decimals)
{
    DecimalDigits digits = DecimalDigits::FromCurrency(value);
    digits.RoundToDecimals(decimals, Rounding::HalfEven);
    const auto scaled = digits.ToScaledInteger(4);
    if (!scaled)
        return std::nullopt;
    return Currency::FromScaled(*scaled);
}

void CheckRenderer(const QString& format, std::int64_t bits, const NumberSeparators& separators)
{
    double d = 0;
    std::memcpy(&d, &bits, sizeof d);
    for (const Variant& value : {Variant(d), Variant(Currency::FromScaled(bits)), Variant(static_cast<std::int32_t>(bits))}) {
        (void)RenderNumberFormat(format, value, separators);
        (void)RenderEditText(format, value, separators);
    }
    // The same bytes as typed or pasted text under the format's own rules: whatever the box
    // lets through must read as a value, and the caret must stay inside the text.
    NumberEditValidator validator;
    validator.SetRules(EditRulesOf(format));
    validator.SetSeparators(separators);
    QString typed = format;
    int pos = static_cast<int>(typed.size());
    if (validator.validate(typed, pos) != QValidator::Invalid) {
        if (!NumberEditValidator::ValueOf(typed, separators.Decimal))
            std::abort();  // the box would show a text whose value it cannot give
        if (pos < 0 || pos > typed.size())
            std::abort();
    }
}

void CheckField(Reader& in, bool german)
{
    const std::uint8_t flags = in.Byte();
    const std::uint8_t decimals = in.Byte();
    const Currency lower = Currency::FromScaled(in.Int64());
    const Currency upper = Currency::FromScaled(in.Int64());
    const Currency wanted = Currency::FromScaled(in.Int64());
    const int style = flags % 3;  // 2 stands for any style without a negative section

    ZqNumber field;
    field.InitProperties();
    try {
        // Loaded as from a form: both bounds at once, and the order must keep the inner range
        // valid whatever the range was before.
        PropertyBag bag(QJsonObject{{"MinValue", PropertyBag::ToJson(lower)},
                                    {"MaxValue", PropertyBag::ToJson(upper)},
                                    {"DecimalPlaces", decimals},
                                    {"NegativeStyle", style},
                                    {"SuppressLeadingZeroes", (flags & 8) != 0},
                                    {"ThousandsSeparators", (flags & 16) != 0},
                                    {"BlankWhenZero", (flags & 32) != 0}});
        field.ReadProperties(bag);
    } catch (const Error& e) {
        if (e.Number() != vbErrInvalidPropertyValue || lower <= upper)
            std::abort();  // only an inverted range may be refused
        return;
    }
    NumberBox* box = field.c1Number();
    if (Compare(box->MinValue(), box->MaxValue()) == Comparison::Greater)
        std::abort();
    const NumberEditRules rules = EditRulesOf(box->Format());
    if (rules.Decimals != decimals)
        std::abort();
    if (rules.NegativeAllowed != (lower < Currency() && style != 2))
        std::abort();
    if (german != (box->DecimalSeparator() == QLatin1String(",")))
        std::abort();

    // A value of the range with no more decimals than the field shows.
    const auto rounded = RoundedTo(wanted, std::min<int>(decimals, 4));
    if (!rounded)
        return;
    const Currency value = std::clamp(*rounded, lower, upper);
    if (RoundedTo(value, std::min<int>(decimals, 4)) != value || (value < Currency() && !rules.NegativeAllowed))
        return;
    field.SetValue(value);
    (void)field.DisplayText();
    const QString edit = RenderEditText(box->Format(), Variant(value), NumberSeparators{box->DecimalSeparator(), box->ThousandSeparator()});
    NumberEditValidator validator;
    validator.SetRules(rules);
    validator.SetSeparators({box->DecimalSeparator(), box->ThousandSeparator()});
    QString typed = edit;
    int pos = 0;
    if (validator.validate(typed, pos) == QValidator::Invalid)
        std::abort();  // the field shows what it would not let the user type
    const auto back = NumberEditValidator::ValueOf(typed, box->DecimalSeparator());
    if (!back || Compare(*back, Variant(value)) != Comparison::Equal)
        std::abort();  // what the field shows does not read back as its value
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Reader in{data, size};
    const bool german = in.Byte() % 2;
    RegionalSettings::SetCurrent(german ? RegionalSettings::German() : RegionalSettings::EnglishUS());
    CheckField(in, german);
    const std::int64_t bits = in.Int64();
    CheckRenderer(in.Rest(), bits, german ? NumberSeparators{",", "."} : NumberSeparators{});
    return 0;
}
