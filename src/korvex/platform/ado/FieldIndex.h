// The index a text field gets when its "Optimize" property is True: its rows ordered by value,
// ignoring case, so that equality and starts-with criteria are answered by binary search instead
// of a scan. It lives in the store shared by all clones, so an edit made through any of them keeps
// it right.
#pragma once

#include "korvex/platform/ado/Column.h"

#include <QStringView>

#include <span>
#include <vector>

namespace korvex::ado {

class FieldIndex {
public:
    // Indexes the rows given (rows holding Null are left out, they match no value).
    FieldIndex(const Column& column, std::span<const RowId> rows);

    // Keeps the index right around a change of a row's value: Remove while the row still holds the
    // indexed value, Add once it holds the new one.
    void Add(RowId row);
    void Remove(RowId row);

    // Rows whose value equals `key`, or starts with `prefix`, ignoring case; ascending row ids.
    // Rows that are deleted or filtered out are the caller's to drop.
    std::vector<RowId> Equal(QStringView key) const;
    std::vector<RowId> StartingWith(QStringView prefix) const;

    std::size_t BytesAllocated() const noexcept { return (mSorted.capacity() + mPending.capacity()) * sizeof(RowId); }

private:
    bool Less(RowId a, RowId b) const noexcept;
    std::vector<RowId> Matching(QStringView key, bool prefix) const;
    void Merge();
    template <class Keep>
    std::vector<RowId> Collect(std::size_t from, std::size_t to, Keep keep) const;

    const Column& mColumn;
    std::vector<RowId> mSorted;   // by value, then row id
    std::vector<RowId> mPending;  // added since the last merge, in no order
};

}  // namespace korvex::ado
