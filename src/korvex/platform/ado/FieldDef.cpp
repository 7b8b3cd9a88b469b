// Field types, their sizes and ranges, and value conversion on the way into a field.
#include "korvex/platform/ado/FieldDef.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <cmath>

namespace korvex::ado {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

constexpr FieldTypeInfo Integer(int bytes, double minimum, double maximum)
{
    FieldTypeInfo info;
    info.storage = StorageKind::Integer;
    info.byteSize = bytes;
    info.minimum = minimum;
    info.maximum = maximum;
    return info;
}

constexpr FieldTypeInfo Fixed(StorageKind storage, int bytes)
{
    FieldTypeInfo info;
    info.storage = storage;
    info.byteSize = bytes;
    return info;
}

constexpr FieldTypeInfo Text(bool wide, bool padded, bool sizeRequired)
{
    FieldTypeInfo info;
    info.wide = wide;
    info.padded = padded;
    info.sizeRequired = sizeRequired;
    return info;
}

// The result of a conversion that the runtime refused: overflow and type mismatch have their own
// field statuses.
FieldInput Refused(const Error& e)
{
    return {e.Number() == vbErrOverflow ? adFieldDataOverflow : adFieldCantConvertValue, {}};
}

FieldInput ToInteger(const Variant& value, const FieldDef& field)
{
    const FieldTypeInfo& info = field.Info();
    double d = 0;
    try {
        d = value.IsEmpty() ? 0.0 : CDbl(value);
    } catch (const Error& e) {
        return Refused(e);
    }
    if (!std::isfinite(d))
        return {adFieldDataOverflow, {}};
    d = std::nearbyint(d);  // the language rounds halves to even when it makes whole numbers
    if (d < 0 && info.minimum == 0)
        return {adFieldSignMismatch, {}};
    if (d < info.minimum || d > info.maximum)
        return {adFieldDataOverflow, {}};
    switch (field.Type) {
    case adSmallInt:
    case adTinyInt: return {adFieldOK, Variant(static_cast<std::int16_t>(d))};
    case adUnsignedTinyInt: return {adFieldOK, Variant(static_cast<std::uint8_t>(d))};
    case adInteger:
    case adUnsignedSmallInt: return {adFieldOK, Variant(static_cast<std::int32_t>(d))};
    default: return {adFieldOK, Variant(d)};  // wider than Long: held as Double, as the host would
    }
}

FieldInput ToText(const Variant& value, const FieldDef& field)
{
    if (value.IsObject() || value.IsArray())
        return {adFieldCantConvertValue, {}};
    QString text;
    try {
        text = value.IsEmpty() ? QString() : CStr(value);
    } catch (const Error& e) {
        return Refused(e);
    }
    const int limit = field.TextLimit();
    if (limit > 0 && text.size() > limit)
        return {adFieldCantConvertValue, {}};  // it would have to be truncated
    if (field.Info().padded)
        text = text.leftJustified(limit, u' ');
    return {adFieldOK, Variant(std::move(text))};
}

}  // namespace

// The descriptions are constants, made at compile time: this is asked for every value a field
// stores or hands out.
const FieldTypeInfo* FieldTypeInfoOf(int type) noexcept
{
    static constexpr FieldTypeInfo smallInt = Integer(2, -32768, 32767);
    static constexpr FieldTypeInfo integer = Integer(4, -2147483648.0, 2147483647.0);
    static constexpr FieldTypeInfo tinyInt = Integer(1, -128, 127);
    static constexpr FieldTypeInfo unsignedTinyInt = Integer(1, 0, 255);
    static constexpr FieldTypeInfo unsignedSmallInt = Integer(2, 0, 65535);
    static constexpr FieldTypeInfo unsignedInt = Integer(4, 0, 4294967295.0);
    static constexpr FieldTypeInfo bigInt = Integer(8, -kTwoTo63, kTwoTo63 - 1024);
    static constexpr FieldTypeInfo unsignedBigInt = Integer(8, 0, kTwoTo63 - 1024);
    static constexpr FieldTypeInfo single = Fixed(StorageKind::Real, 4);
    static constexpr FieldTypeInfo dbl = Fixed(StorageKind::Real, 8);
    static constexpr FieldTypeInfo decimal = Fixed(StorageKind::Real, 19);
    static constexpr FieldTypeInfo currency = Fixed(StorageKind::Currency, 8);
    static constexpr FieldTypeInfo date = Fixed(StorageKind::Date, 8);
    static constexpr FieldTypeInfo boolean = Fixed(StorageKind::Boolean, 2);
    static constexpr FieldTypeInfo unlimitedWide = Text(true, false, false);
    static constexpr FieldTypeInfo unlimitedNarrow = Text(false, false, false);
    static constexpr FieldTypeInfo fixedNarrow = Text(false, true, true);
    static constexpr FieldTypeInfo fixedWide = Text(true, true, true);
    static constexpr FieldTypeInfo variableNarrow = Text(false, false, true);
    static constexpr FieldTypeInfo variableWide = Text(true, false, true);
    switch (type) {
    case adSmallInt: return &smallInt;
    case adInteger: return &integer;
    case adTinyInt: return &tinyInt;
    case adUnsignedTinyInt: return &unsignedTinyInt;
    case adUnsignedSmallInt: return &unsignedSmallInt;
    case adUnsignedInt: return &unsignedInt;
    case adBigInt: return &bigInt;
    case adUnsignedBigInt: return &unsignedBigInt;
    case adSingle: return &single;
    case adDouble: return &dbl;
    case adDecimal:
    case adNumeric:
    case adVarNumeric: return &decimal;
    case adCurrency: return &currency;
    case adDate:
    case adDBDate:
    case adDBTime:
    case adDBTimeStamp: return &date;
    case adBoolean: return &boolean;
    case adBSTR:
    case adGUID:
    case adLongVarWChar: return &unlimitedWide;
    case adLongVarChar: return &unlimitedNarrow;
    case adChar: return &fixedNarrow;
    case adWChar: return &fixedWide;
    case adVarChar: return &variableNarrow;
    case adVarWChar: return &variableWide;
    default: return nullptr;
    }
}

int FieldDef::TextLimit() const noexcept
{
    const FieldTypeInfo& info = Info();
    if (info.storage != StorageKind::Text || DefinedSize <= 0)
        return 0;
    return info.sizeRequired || DefinedSize < 0x7FFFFFFF ? DefinedSize : 0;
}

FieldDef MakeFieldDef(const QString& name, int type, int definedSize, int attributes)
{
    const FieldTypeInfo* info = FieldTypeInfoOf(type);
    if (!info || name.isEmpty() || (info->sizeRequired && definedSize <= 0))
        RaiseAdo(adErrInvalidArgument, FieldsSource);
    FieldDef field;
    field.Name = name;
    field.Type = static_cast<DataTypeEnum>(type);
    field.DefinedSize = info->storage == StorageKind::Text ? definedSize : info->byteSize;
    if (attributes == adFldUnspecified)
        attributes = adFldIsNullable | adFldMayBeNull;
    if (info->padded)
        attributes |= adFldFixed;
    field.Attributes = attributes | adFldUpdatable | adFldUnknownUpdatable;
    return field;
}

FieldInput ConvertForField(const Variant& value, const FieldDef& field)
{
    if (value.IsNull())
        return field.AcceptsNull() ? FieldInput{adFieldOK, Null} : FieldInput{adFieldIntegrityViolation, {}};
    if (value.IsObject() || value.IsArray())
        return {adFieldCantConvertValue, {}};
    try {
        switch (field.Info().storage) {
        case StorageKind::Text: return ToText(value, field);
        case StorageKind::Integer: return ToInteger(value, field);
        case StorageKind::Real: {
            if (field.Type == adSingle)
                return {adFieldOK, Variant(value.IsEmpty() ? 0.0f : CSng(value))};
            const double d = value.IsEmpty() ? 0.0 : CDbl(value);
            if (!std::isfinite(d))
                return {adFieldDataOverflow, {}};
            return {adFieldOK, Variant(d)};
        }
        case StorageKind::Currency: return {adFieldOK, Variant(value.IsEmpty() ? Currency() : CCur(value))};
        case StorageKind::Date:
            if (value.IsEmpty())
                return {adFieldCantConvertValue, {}};  // a date field has no "zero" to take
            return {adFieldOK, Variant(CDate(value))};
        case StorageKind::Boolean: return {adFieldOK, Variant(value.IsEmpty() ? false : CBool(value))};
        }
    } catch (const Error& e) {
        return Refused(e);
    }
    return {adFieldCantConvertValue, {}};
}

bool StoresAsIs(const Variant& value, const FieldDef& field) noexcept
{
    const FieldTypeInfo& info = field.Info();
    switch (info.storage) {
    case StorageKind::Text:
        // Padding is not stored: a fixed-length text is kept without it either way.
        if (const auto* text = value.As<QString>()) {
            const int limit = field.TextLimit();
            return limit <= 0 || text->size() <= limit;
        }
        return false;
    case StorageKind::Integer:
        if (const auto* l = value.As<std::int32_t>())
            return *l >= info.minimum && *l <= info.maximum;
        return false;
    case StorageKind::Real:
        if (const auto* d = value.As<double>())
            return field.Type != adSingle && std::isfinite(*d);
        return false;
    default: return false;
    }
}

int ActualSizeOf(const Variant& value, const FieldDef& field)
{
    if (value.IsNull() || value.IsEmpty())
        return 0;
    const FieldTypeInfo& info = field.Info();
    if (info.storage != StorageKind::Text)
        return info.byteSize;
    const auto* text = value.As<QString>();
    const int length = text ? static_cast<int>(text->size()) : 0;
    return info.wide ? 2 * length : length;
}

}  // namespace korvex::ado
