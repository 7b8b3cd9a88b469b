// The index a field gets when its "Optimize" property is True. A text field's rows are ordered by
// their folded text, once from the front and once from the back, so that equality, starts-with and
// ends-with criteria are answered by binary search instead of a scan; a number, currency, date or
// boolean field's rows are ordered by their value, which answers equality. It lives in the store shared
// by all clones, so an edit made through any of them keeps it right.
#pragma once

#include "korvex/platform/ado/Column.h"

#include <span>
#include <string_view>
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

    // Rows whose value equals, starts with or ends with the folded bytes given (Folded()), in
    // ascending row order. Rows that are deleted or filtered out are the caller's to drop.
    std::vector<RowId> Equal(std::string_view key) const;
    std::vector<RowId> StartingWith(std::string_view prefix) const;
    std::vector<RowId> EndingWith(std::string_view suffix) const;
    // Non-text fields: rows whose value equals `value`, in ascending row order.
    std::vector<RowId> EqualNumber(double value) const;
    bool Numeric() const noexcept { return mNumeric; }

    std::size_t BytesAllocated() const noexcept
    {
        return (mSorted.capacity() + mReversed.capacity() + mPending.capacity()) * sizeof(RowId);
    }

private:
    enum class Kind { Equal, Prefix, Suffix };
    std::string_view Text(RowId row) const { return mColumn.Folded().View(row); }
    bool Less(RowId a, RowId b) const noexcept;
    bool LessReversed(RowId a, RowId b) const noexcept;
    std::vector<RowId> Matching(std::string_view key, Kind kind) const;
    void Merge();

    const Column& mColumn;
    bool mNumeric;
    std::vector<RowId> mSorted;    // by folded text (by value when numeric), then row id
    std::vector<RowId> mReversed;  // text only: by folded text read backwards, then row id
    std::vector<RowId> mPending;   // added since the last merge, in no order
};

}  // namespace korvex::ado
