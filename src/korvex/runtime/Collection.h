// An ordered collection with optional text keys, numbered from 1, as the host language's
// Collection object behaves: keys compare ignoring case, a duplicate key raises 457, a bad
// position 9 and an unknown key 5.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace korvex {

class Collection {
public:
    // `key` is Empty for no key, otherwise a text. `before` and `after` (at most one of them)
    // name an existing item by position or key.
    void Add(const Variant& item, const Variant& key = {}, const Variant& before = {}, const Variant& after = {});
    int Count() const noexcept { return static_cast<int>(mEntries.size()); }
    // By position (1 = first) or by key.
    Variant Item(const Variant& index) const;
    void Remove(const Variant& index);
    bool Contains(const QString& key) const;
    void Clear();

    // Iteration over the items in order.
    QList<Variant> Items() const;

private:
    struct Entry {
        Variant item;
        std::optional<QString> foldedKey;
    };

    qsizetype PositionOf(const Variant& index, int missingKeyError) const;

    QList<std::shared_ptr<Entry>> mEntries;
    QHash<QString, std::shared_ptr<Entry>> mByKey;
};

}  // namespace korvex
