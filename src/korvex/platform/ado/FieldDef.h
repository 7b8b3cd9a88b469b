// What a field is: its name, ADO type, size and attributes, where a provider read it from, and the
// rule for which values it accepts. Values are checked and converted once, on their way in, so
// that the column storage only ever holds values of the field's own type.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/runtime/Variant.h"

#include <QString>

#include <cstdint>

namespace korvex::ado {

// How a column keeps its values: text in an arena, everything else in one 64-bit slot a row.
enum class StorageKind : std::uint8_t { Text, Integer, Real, Currency, Date, Boolean };

struct FieldTypeInfo {
    StorageKind storage = StorageKind::Text;
    int byteSize = 0;         // DefinedSize of the fixed-size types
    bool wide = false;        // two bytes a character (ActualSize)
    bool padded = false;      // fixed-length text, read back padded with blanks to DefinedSize
    bool sizeRequired = false;  // text types that need a positive DefinedSize
    double minimum = 0, maximum = 0;  // range of the integer types
};

// The description of a supported type, or nullptr for a type the engine does not store.
const FieldTypeInfo* FieldTypeInfoOf(int type) noexcept;

struct FieldDef {
    QString Name;
    DataTypeEnum Type = adEmpty;
    int DefinedSize = 0;
    int Attributes = 0;
    int Precision = 0;
    int NumericScale = 0;
    // Where a provider read the field from; empty on fabricated recordsets.
    QString BaseCatalog;
    QString BaseSchema;
    QString BaseTable;
    QString BaseColumn;
    bool KeyColumn = false;
    bool AutoIncrement = false;

    const FieldTypeInfo& Info() const noexcept { return *FieldTypeInfoOf(Type); }
    bool IsText() const noexcept { return Info().storage == StorageKind::Text; }
    bool AcceptsNull() const noexcept { return (Attributes & (adFldIsNullable | adFldMayBeNull)) != 0; }
    bool IsUpdatable() const noexcept { return (Attributes & (adFldUpdatable | adFldUnknownUpdatable)) != 0; }
    // Characters a text may hold; 0 for no limit.
    int TextLimit() const noexcept;
};

// A field definition as Fields.Append makes it: the type must be one the engine stores and text
// types need a size (3001 otherwise). Unspecified attributes (-1) mean a field that accepts Null;
// fabricated fields are always updatable.
FieldDef MakeFieldDef(const QString& name, int type, int definedSize, int attributes);

// A value on its way into a field: the value in the field's own variant type, or the status that
// says why the field refuses it.
struct FieldInput {
    FieldStatusEnum status = adFieldOK;
    Variant value;
};

FieldInput ConvertForField(const Variant& value, const FieldDef& field);
// True when the value needs no conversion: its column stores it exactly as it would store what
// ConvertForField makes of it (a text within the field's size, a Long within its range, a finite
// Double for a Double). Loading rows asks this first, as nearly every value passes.
bool StoresAsIs(const Variant& value, const FieldDef& field) noexcept;

// The number of bytes a stored value takes, as Field.ActualSize reports it.
int ActualSizeOf(const Variant& value, const FieldDef& field);

}  // namespace korvex::ado
