// The values of one field for every row, in the field's own representation: texts in an arena,
// numbers, currency, dates and booleans in one 64-bit slot a row, Null as a bit. Variants are made
// only when a value is read, which keeps a million-row item store within twice its payload.
#pragma once

#include "korvex/platform/ado/FieldDef.h"
#include "korvex/platform/ado/FoldedText.h"
#include "korvex/platform/ado/TextArena.h"
#include "korvex/runtime/Variant.h"

#include <QStringView>

#include <cstdint>
#include <memory>
#include <vector>

namespace korvex::ado {

class Column {
public:
    explicit Column(const FieldDef& field);

    // `value` is Null or already converted to the field's type (ConvertForField).
    void Append(const Variant& value);
    void Set(RowId row, const Variant& value);
    // The stored value as the field reports it (fixed-length text padded to its size).
    Variant Get(RowId row) const;
    // Get(row) == value, without making the variant (and for a text, its string).
    bool Holds(RowId row, const Variant& value) const;

    bool IsNull(RowId row) const noexcept { return (mNull[row >> 6] >> (row & 63)) & 1u; }
    StorageKind Storage() const noexcept { return mStorage; }
    // Text columns: the stored text without padding ("" for Null).
    QStringView Text(RowId row) const noexcept { return mArena.View(mText[row]); }
    // Text columns: every row's text folded to bytes, made on first use and kept in step with
    // every change from then on.
    const FoldedText& Folded() const;
    // Non-text columns: the value as a number (days for dates, units for currency).
    double Number(RowId row) const noexcept;

    std::size_t BytesAllocated() const noexcept;

private:
    void SetNull(RowId row, bool null) noexcept;
    void Store(RowId row, const Variant& value);

    FieldDef mField;
    StorageKind mStorage;
    std::vector<TextArena::Ref> mText;
    TextArena mArena;
    std::vector<std::uint64_t> mSlots;
    std::vector<std::uint64_t> mNull;
    RowId mRows = 0;
    mutable std::unique_ptr<FoldedText> mFolded;
};

}  // namespace korvex::ado
