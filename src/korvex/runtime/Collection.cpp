// Collection: a list of entries plus a key index that shares them.
#include "korvex/runtime/Collection.h"

#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

namespace korvex {

qsizetype Collection::PositionOf(const Variant& index, int missingKeyError) const
{
    if (index.IsString()) {
        auto it = mByKey.constFind(index.As<QString>()->toCaseFolded());
        if (it == mByKey.cend())
            Raise(missingKeyError);
        return mEntries.indexOf(*it);
    }
    if (index.IsNull() || index.IsEmpty() || index.IsObject())
        Raise(vbErrTypeMismatch);
    const std::int32_t position = CLng(index);
    if (position < 1 || position > mEntries.size())
        Raise(vbErrSubscriptOutOfRange);
    return position - 1;
}

void Collection::Add(const Variant& item, const Variant& key, const Variant& before, const Variant& after)
{
    if (!before.IsEmpty() && !after.IsEmpty())
        Raise(vbErrInvalidProcedureCall);
    auto entry = std::make_shared<Entry>();
    entry->item = item;
    if (!key.IsEmpty()) {
        if (!key.IsString())
            Raise(vbErrTypeMismatch);
        entry->foldedKey = key.As<QString>()->toCaseFolded();
        if (mByKey.contains(*entry->foldedKey))
            Raise(vbErrDuplicateKey);
    }
    qsizetype at = mEntries.size();
    if (!before.IsEmpty())
        at = PositionOf(before, vbErrInvalidProcedureCall);
    else if (!after.IsEmpty())
        at = PositionOf(after, vbErrInvalidProcedureCall) + 1;
    mEntries.insert(at, entry);
    if (entry->foldedKey)
        mByKey.insert(*entry->foldedKey, entry);
}

Variant Collection::Item(const Variant& index) const
{
    return mEntries[PositionOf(index, vbErrInvalidProcedureCall)]->item;
}

void Collection::Remove(const Variant& index)
{
    const qsizetype at = PositionOf(index, vbErrInvalidProcedureCall);
    if (mEntries[at]->foldedKey)
        mByKey.remove(*mEntries[at]->foldedKey);
    mEntries.removeAt(at);
}

bool Collection::Contains(const QString& key) const
{
    return mByKey.contains(key.toCaseFolded());
}

void Collection::Clear()
{
    mEntries.clear();
    mByKey.clear();
}

QList<Variant> Collection::Items() const
{
    QList<Variant> items;
    items.reserve(mEntries.size());
    for (const auto& e : mEntries)
        items.append(e->item);
    return items;
}

}  // namespace korvex
