// Building, maintaining and searching a field index.
#include "korvex/platform/ado/FieldIndex.h"

#include <algorithm>

namespace korvex::ado {
namespace {

// Rows added one by one collect here until this many, then merge in one pass.
constexpr std::size_t MergeThreshold = 1024;

// Sorting by a 64-bit key of the first (or last) bytes first settles most comparisons without
// touching the texts.
template <class KeyOf, class Compare>
std::vector<RowId> Ordered(std::span<const RowId> rows, KeyOf keyOf, Compare compare)
{
    struct Entry {
        std::uint64_t key;
        RowId row;
    };
    std::vector<Entry> entries;
    entries.reserve(rows.size());
    for (RowId row : rows)
        entries.push_back({keyOf(row), row});
    std::sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
        if (a.key != b.key)
            return a.key < b.key;
        const int c = compare(a.row, b.row);
        return c != 0 ? c < 0 : a.row < b.row;
    });
    std::vector<RowId> out;
    out.reserve(entries.size());
    for (const Entry& e : entries)
        out.push_back(e.row);
    return out;
}

}  // namespace

FieldIndex::FieldIndex(const Column& column, std::span<const RowId> rows)
    : mColumn(column), mNumeric(column.Storage() != StorageKind::Text)
{
    std::vector<RowId> kept;
    kept.reserve(rows.size());
    for (RowId row : rows) {
        if (!column.IsNull(row))
            kept.push_back(row);
    }
    if (mNumeric) {
        mSorted = std::move(kept);
        std::sort(mSorted.begin(), mSorted.end(), [&](RowId a, RowId b) { return Less(a, b); });
        return;
    }
    mSorted = Ordered(
        kept, [&](RowId row) { return HeadKey(Text(row)); }, [&](RowId a, RowId b) { return Text(a).compare(Text(b)); });
    mReversed = Ordered(
        kept, [&](RowId row) { return TailKey(Text(row)); },
        [&](RowId a, RowId b) { return CompareReversed(Text(a), Text(b)); });
}

bool FieldIndex::Less(RowId a, RowId b) const noexcept
{
    if (mNumeric) {
        const double x = mColumn.Number(a), y = mColumn.Number(b);
        return x != y ? x < y : a < b;
    }
    const int c = Text(a).compare(Text(b));
    return c != 0 ? c < 0 : a < b;
}

bool FieldIndex::LessReversed(RowId a, RowId b) const noexcept
{
    const int c = CompareReversed(Text(a), Text(b));
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
    if (mNumeric)
        return;
    it = std::lower_bound(mReversed.begin(), mReversed.end(), row,
                          [&](RowId a, RowId b) { return LessReversed(a, b); });
    if (it != mReversed.end() && *it == row)
        mReversed.erase(it);
}

void FieldIndex::Merge()
{
    auto merge = [&](std::vector<RowId>& order, auto less) {
        std::sort(mPending.begin(), mPending.end(), less);
        const auto middle = static_cast<std::ptrdiff_t>(order.size());
        order.insert(order.end(), mPending.begin(), mPending.end());
        std::inplace_merge(order.begin(), order.begin() + middle, order.end(), less);
    };
    merge(mSorted, [&](RowId a, RowId b) { return Less(a, b); });
    if (!mNumeric)
        merge(mReversed, [&](RowId a, RowId b) { return LessReversed(a, b); });
    mPending.clear();
}

std::vector<RowId> FieldIndex::Equal(std::string_view key) const
{
    return Matching(key, Kind::Equal);
}

std::vector<RowId> FieldIndex::StartingWith(std::string_view prefix) const
{
    return Matching(prefix, Kind::Prefix);
}

std::vector<RowId> FieldIndex::EndingWith(std::string_view suffix) const
{
    return Matching(suffix, Kind::Suffix);
}

std::vector<RowId> FieldIndex::EqualNumber(double value) const
{
    const auto from =
        std::partition_point(mSorted.begin(), mSorted.end(), [&](RowId row) { return mColumn.Number(row) < value; });
    const auto to = std::partition_point(from, mSorted.end(), [&](RowId row) { return mColumn.Number(row) == value; });
    std::vector<RowId> rows(from, to);
    for (RowId row : mPending) {
        if (mColumn.Number(row) == value)
            rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::vector<RowId> FieldIndex::Matching(std::string_view key, Kind kind) const
{
    // Cut to the key's length (from the end for endings), the ordered texts stay in order, so
    // the rows that start (end) with the key form one run, as do the rows equal to it.
    const bool suffix = kind == Kind::Suffix;
    auto compare = [&](RowId row) {
        const std::string_view text = Text(row);
        switch (kind) {
        case Kind::Equal: return text.compare(key);
        case Kind::Prefix: return text.substr(0, key.size()).compare(key);
        case Kind::Suffix: return CompareReversed(text.substr(text.size() - std::min(text.size(), key.size())), key);
        }
        return 0;
    };
    const std::vector<RowId>& order = suffix ? mReversed : mSorted;
    const auto from = std::partition_point(order.begin(), order.end(), [&](RowId row) { return compare(row) < 0; });
    const auto to = std::partition_point(from, order.end(), [&](RowId row) { return compare(row) == 0; });
    std::vector<RowId> rows(from, to);
    for (RowId row : mPending) {
        const std::string_view text = Text(row);
        const bool keep = kind == Kind::Equal    ? text == key
                          : kind == Kind::Prefix ? text.starts_with(key)
                                                 : text.ends_with(key);
        if (keep)
            rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

}  // namespace korvex::ado
