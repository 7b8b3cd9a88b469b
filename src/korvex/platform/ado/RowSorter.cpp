// Sorting rows: a 64-bit key per row for the first sort field settles most comparisons, the full
// values settle ties, and the row's old position keeps equal rows in order.
#include "korvex/platform/ado/RowSorter.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/ado/Criteria.h"
#include "korvex/platform/ado/FoldedText.h"
#include "korvex/platform/ado/TextCompare.h"

#include <algorithm>
#include <bit>

namespace korvex::ado {
namespace {

// Doubles mapped to unsigned integers of the same order.
std::uint64_t OrderedBits(double value)
{
    if (value == 0)
        value = 0;  // -0 sorts with 0
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return (bits >> 63) ? ~bits : bits | (std::uint64_t{1} << 63);
}

// Nulls first; then by value. Returns <0, 0 or >0 for ascending order.
int CompareValues(const Column& column, RowId a, RowId b)
{
    const bool nullA = column.IsNull(a);
    const bool nullB = column.IsNull(b);
    if (nullA || nullB)
        return static_cast<int>(nullB) - static_cast<int>(nullA);
    if (column.Storage() == StorageKind::Text)
        return CompareNoCase(column.Text(a), column.Text(b));
    const double x = column.Number(a);
    const double y = column.Number(b);
    return x < y ? -1 : (x > y ? 1 : 0);
}

}  // namespace

std::vector<SortKey> BindSortKeys(QStringView text, const RecordsetStore& store)
{
    std::vector<SortKey> keys;
    for (const SortTerm& term : ParseSortTerms(text)) {
        const int field = store.FieldIndexOf(term.field);
        if (field < 0)
            RaiseAdo(adErrInvalidArgument);
        keys.push_back({field, term.descending});
    }
    return keys;
}

void SortRows(std::vector<RowId>& rows, const RecordsetStore& store, std::span<const SortKey> keys)
{
    if (keys.empty() || rows.size() < 2)
        return;
    struct Entry {
        std::uint64_t key;
        RowId row;
        std::uint32_t position;
        bool null;
    };
    const Column& first = store.ColumnOf(keys[0].field);
    const bool text = first.Storage() == StorageKind::Text;
    std::vector<Entry> entries;
    entries.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const RowId row = rows[i];
        const bool null = first.IsNull(row);
        std::uint64_t key = 0;
        if (!null)
            key = text ? FoldedKey(first.Text(row)) : OrderedBits(first.Number(row));
        entries.push_back({key, row, static_cast<std::uint32_t>(i), null});
    }
    const bool firstDescending = keys[0].descending;
    auto less = [&](const Entry& a, const Entry& b) {
        int c = 0;
        if (a.null != b.null)
            c = a.null ? -1 : 1;
        else if (a.key != b.key)
            c = a.key < b.key ? -1 : 1;
        else if (text && !a.null)
            c = CompareNoCase(first.Text(a.row), first.Text(b.row));
        if (c != 0)
            return firstDescending ? c > 0 : c < 0;
        for (std::size_t k = 1; k < keys.size(); ++k) {
            c = CompareValues(store.ColumnOf(keys[k].field), a.row, b.row);
            if (c != 0)
                return keys[k].descending ? c > 0 : c < 0;
        }
        return a.position < b.position;
    };
    std::sort(entries.begin(), entries.end(), less);
    for (std::size_t i = 0; i < entries.size(); ++i)
        rows[i] = entries[i].row;
}

}  // namespace korvex::ado
