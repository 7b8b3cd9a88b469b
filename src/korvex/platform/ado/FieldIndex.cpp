// Building, maintaining and searching a field index.
#include "korvex/platform/ado/FieldIndex.h"

#include "korvex/platform/ado/TextCompare.h"

#include <algorithm>

namespace korvex::ado {
namespace {

// Rows added one by one collect here until this many, then merge in one pass.
constexpr std::size_t MergeThreshold = 1024;

}  // namespace

FieldIndex::FieldIndex(const Column& column, std::span<const RowId> rows) : mColumn(column)
{
    // Sorting by a 64-bit key of the first characters first settles most comparisons without
    // touching the texts.
    struct Entry {
        std::uint64_t key;
        RowId row;
    };
    std::vector<Entry> entries;
    entries.reserve(rows.size());
    for (RowId row : rows) {
        if (!column.IsNull(row))
            entries.push_back({FoldedPrefixKey(column.Text(row)), row});
    }
    std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
        if (a.key != b.key)
            return a.key < b.key;
        const int c = CompareNoCase(column.Text(a.row), column.Text(b.row));
        return c != 0 ? c < 0 : a.row < b.row;
    });
    mSorted.reserve(entries.size());
    for (const Entry& e : entries)
        mSorted.push_back(e.row);
}

bool FieldIndex::Less(RowId a, RowId b) const noexcept
{
    const int c = CompareNoCase(mColumn.Text(a), mColumn.Text(b));
    return c != 0 ? c < 0 : a < b;
}

void FieldIndex::Add(RowId row)
{
    if (mColumn.IsNull(row))
        return;
    mPending.push_back(row);
    if (mPending.size() >= MergeThreshold)
        Merge();
}

void FieldIndex::Remove(RowId row)
{
    if (auto it = std::find(mPending.begin(), mPending.end(), row); it != mPending.end()) {
        mPending.erase(it);
        return;
    }
    auto it = std::lower_bound(mSorted.begin(), mSorted.end(), row, [&](RowId a, RowId b) { return Less(a, b); });
    if (it != mSorted.end() && *it == row)
        mSorted.erase(it);
}

void FieldIndex::Merge()
{
    std::sort(mPending.begin(), mPending.end(), [&](RowId a, RowId b) { return Less(a, b); });
    const auto middle = static_cast<std::ptrdiff_t>(mSorted.size());
    mSorted.insert(mSorted.end(), mPending.begin(), mPending.end());
    std::inplace_merge(mSorted.begin(), mSorted.begin() + middle, mSorted.end(),
                       [&](RowId a, RowId b) { return Less(a, b); });
    mPending.clear();
}

template <class Keep>
std::vector<RowId> FieldIndex::Collect(std::size_t from, std::size_t to, Keep keep) const
{
    std::vector<RowId> rows(mSorted.begin() + static_cast<std::ptrdiff_t>(from),
                            mSorted.begin() + static_cast<std::ptrdiff_t>(to));
    for (RowId row : mPending) {
        if (keep(mColumn.Text(row)))
            rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::vector<RowId> FieldIndex::Equal(QStringView key) const
{
    return Matching(key, false);
}

std::vector<RowId> FieldIndex::StartingWith(QStringView prefix) const
{
    return Matching(prefix, true);
}

std::vector<RowId> FieldIndex::Matching(QStringView key, bool prefix) const
{
    // Cut to the key's length, the sorted texts stay in order, so the rows that start with the
    // key form one run, as do the rows equal to it.
    auto head = [&](RowId row) {
        const QStringView text = mColumn.Text(row);
        return prefix ? text.first(std::min(text.size(), key.size())) : text;
    };
    const auto from = std::partition_point(mSorted.begin(), mSorted.end(),
                                           [&](RowId row) { return CompareNoCase(head(row), key) < 0; });
    const auto to =
        std::partition_point(from, mSorted.end(), [&](RowId row) { return CompareNoCase(head(row), key) == 0; });
    return Collect(static_cast<std::size_t>(from - mSorted.begin()), static_cast<std::size_t>(to - mSorted.begin()),
                   [&](QStringView text) { return prefix ? StartsWithNoCase(text, key) : EqualsNoCase(text, key); });
}

}  // namespace korvex::ado
