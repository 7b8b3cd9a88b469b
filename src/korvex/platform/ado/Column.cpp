// Typed column storage and the conversion between stored slots and variants.
#include "korvex/platform/ado/Column.h"

#include <bit>

namespace korvex::ado {
namespace {

std::uint64_t ToSlot(const Variant& value, StorageKind storage)
{
    switch (storage) {
    case StorageKind::Integer:
        if (const auto* i = value.As<std::int16_t>())
            return static_cast<std::uint64_t>(static_cast<std::int64_t>(*i));
        if (const auto* l = value.As<std::int32_t>())
            return static_cast<std::uint64_t>(static_cast<std::int64_t>(*l));
        if (const auto* b = value.As<std::uint8_t>())
            return *b;
        if (const auto* d = value.As<double>())
            return static_cast<std::uint64_t>(static_cast<std::int64_t>(*d));
        return 0;
    case StorageKind::Real:
        if (const auto* f = value.As<float>())
            return std::bit_cast<std::uint64_t>(static_cast<double>(*f));
        if (const auto* d = value.As<double>())
            return std::bit_cast<std::uint64_t>(*d);
        return 0;
    case StorageKind::Currency:
        if (const auto* c = value.As<Currency>())
            return static_cast<std::uint64_t>(c->Scaled());
        return 0;
    case StorageKind::Date:
        if (const auto* d = value.As<Date>())
            return std::bit_cast<std::uint64_t>(d->serial);
        return 0;
    case StorageKind::Boolean:
        if (const auto* b = value.As<bool>())
            return *b ? 1 : 0;
        return 0;
    case StorageKind::Text: return 0;
    }
    return 0;
}

// Calls `use` with a slot of integer or real storage as the type the field reports it in.
template <typename Use>
auto WithNumber(const FieldDef& field, StorageKind storage, std::uint64_t slot, Use use)
{
    if (storage == StorageKind::Real) {
        if (field.Type == adSingle)
            return use(static_cast<float>(std::bit_cast<double>(slot)));
        return use(std::bit_cast<double>(slot));
    }
    const auto i = static_cast<std::int64_t>(slot);
    switch (field.Type) {
    case adSmallInt:
    case adTinyInt: return use(static_cast<std::int16_t>(i));
    case adUnsignedTinyInt: return use(static_cast<std::uint8_t>(i));
    case adInteger:
    case adUnsignedSmallInt: return use(static_cast<std::int32_t>(i));
    default: return use(static_cast<double>(i));
    }
}

}  // namespace

Column::Column(const FieldDef& field) : mField(field), mStorage(field.Info().storage) {}

void Column::SetNull(RowId row, bool null) noexcept
{
    const std::uint64_t bit = std::uint64_t{1} << (row & 63);
    if (null)
        mNull[row >> 6] |= bit;
    else
        mNull[row >> 6] &= ~bit;
}

void Column::Append(const Variant& value)
{
    const RowId row = mRows++;
    if ((row & 63) == 0)
        mNull.push_back(0);
    if (mStorage == StorageKind::Text)
        mText.emplace_back();
    else
        mSlots.push_back(0);
    Store(row, value);
    if (mFolded)
        mFolded->Append(mStorage == StorageKind::Text ? Text(row) : QStringView());
}

void Column::Set(RowId row, const Variant& value)
{
    Store(row, value);
    if (mFolded && mStorage == StorageKind::Text)
        mFolded->Set(row, Text(row));
}

const FoldedText& Column::Folded() const
{
    if (!mFolded) {
        mFolded = std::make_unique<FoldedText>();
        mFolded->Build(mRows, [this](RowId row) { return mStorage == StorageKind::Text ? Text(row) : QStringView(); });
    }
    return *mFolded;
}

void Column::Store(RowId row, const Variant& value)
{
    const bool null = value.IsNull() || value.IsEmpty();
    SetNull(row, null);
    if (mStorage == StorageKind::Text) {
        const auto* text = value.As<QString>();
        QStringView stored = text ? QStringView(*text) : QStringView();
        if (mField.Info().padded) {
            // Fixed-length text is kept without its padding, which Get puts back.
            while (!stored.isEmpty() && stored.back() == u' ')
                stored.chop(1);
        }
        mText[row] = null || stored.isEmpty() ? TextArena::Ref{} : mArena.Add(stored);
    } else {
        mSlots[row] = null ? 0 : ToSlot(value, mStorage);
    }
}

Variant Column::Get(RowId row) const
{
    if (IsNull(row))
        return Null;
    const std::uint64_t slot = mStorage == StorageKind::Text ? 0 : mSlots[row];
    switch (mStorage) {
    case StorageKind::Text: {
        QString text = Text(row).toString();
        if (mField.Info().padded && text.size() < mField.DefinedSize)
            text = text.leftJustified(mField.DefinedSize, u' ');
        return Variant(std::move(text));
    }
    case StorageKind::Integer:
    case StorageKind::Real: return WithNumber(mField, mStorage, slot, [](auto number) { return Variant(number); });
    case StorageKind::Currency: return Variant(Currency::FromScaled(static_cast<std::int64_t>(slot)));
    case StorageKind::Date: return Variant(Date{std::bit_cast<double>(slot)});
    case StorageKind::Boolean: return Variant(slot != 0);
    }
    return Null;
}

bool Column::Holds(RowId row, const Variant& value) const
{
    if (IsNull(row))
        return value.IsNull();
    // The same type as Get would make, and the same value: compared where it lies.
    const auto same = [&value](auto stored) {
        const auto* held = value.As<decltype(stored)>();
        return held && *held == stored;
    };
    switch (mStorage) {
    case StorageKind::Text: {
        if (mField.Info().padded)
            return Get(row) == value;
        const auto* text = value.As<QString>();
        return text && Text(row) == QStringView(*text);
    }
    case StorageKind::Integer:
    case StorageKind::Real: return WithNumber(mField, mStorage, mSlots[row], same);
    default: return Get(row) == value;
    }
}

double Column::Number(RowId row) const noexcept
{
    const std::uint64_t slot = mSlots[row];
    switch (mStorage) {
    case StorageKind::Integer: return static_cast<double>(static_cast<std::int64_t>(slot));
    case StorageKind::Real:
    case StorageKind::Date: return std::bit_cast<double>(slot);
    case StorageKind::Currency: return static_cast<double>(static_cast<std::int64_t>(slot)) / Currency::Scale;
    case StorageKind::Boolean: return slot ? -1.0 : 0.0;  // True is -1, as the language counts it
    case StorageKind::Text: return 0;
    }
    return 0;
}

std::size_t Column::BytesAllocated() const noexcept
{
    return mText.capacity() * sizeof(TextArena::Ref) + mArena.BytesAllocated() +
           mSlots.capacity() * sizeof(std::uint64_t) + mNull.capacity() * sizeof(std::uint64_t) +
           (mFolded ? mFolded->BytesAllocated() : 0);
}

}  // namespace korvex::ado
