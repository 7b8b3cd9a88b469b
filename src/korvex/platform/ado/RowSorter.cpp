// Sorting rows by refining runs of ties: the rows are ordered by eight bytes of a key at a time,
// and only the rows that still tie look at the next eight bytes, or at the next key once a text has
// ended or a value is settled. No comparison reads a whole text, and a run of thousands of rows
// sharing a long prefix costs one pass per eight shared bytes instead of a text compare per pair.
// The row's old position settles what is left, which keeps the sort stable.
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

// A place in a text's folded bytes: a code unit and how many of its bytes lie before the place.
// Rows that tie on every byte before a place have the same code units there, so one cursor serves
// a whole run.
struct Cursor {
    std::uint32_t unit = 0;
    std::uint32_t skip = 0;
    bool operator==(const Cursor&) const = default;
};

// The next eight folded bytes from `at` (FoldedText's encoding), high to low, each raised by one
// so that the end of a text (0) comes before every byte, a folded NUL character's too. Moves `at`
// past them. Two texts compare as the sequences of these keys do, which is CompareNoCase's order.
std::uint64_t NextChunk(QStringView text, Cursor& at) noexcept
{
    std::uint64_t key = 0;
    int shift = 56;
    const char16_t* p = text.utf16();
    const auto size = static_cast<std::uint32_t>(text.size());
    while (shift >= 0 && at.unit < size) {
        unsigned char bytes[3];
        const auto n = static_cast<std::uint32_t>(EncodeFolded(FoldCase(p[at.unit]), bytes));
        for (; at.skip < n && shift >= 0; ++at.skip, shift -= 8)
            key |= (std::uint64_t{bytes[at.skip]} + 1) << shift;
        if (at.skip == n) {
            ++at.unit;
            at.skip = 0;
        }
    }
    return key;
}

struct Entry {
    std::uint64_t key;  // the part of the current sort key being ordered, flipped when descending
    RowId row;
    std::uint32_t position;
};
using EntryIt = std::vector<Entry>::iterator;

// Entries [begin, end) that tie on every sort key before `field` and, for a text field, on the
// folded bytes before `at`.
struct Run {
    std::size_t begin;
    std::size_t end;
    std::size_t field;
    Cursor at;
};

class Sorter {
public:
    Sorter(std::vector<Entry>& entries, const RecordsetStore& store, std::span<const SortKey> keys)
        : mEntries(entries), mStore(store), mKeys(keys)
    {
    }

    void Sort()
    {
        Push(0, mEntries.size(), 0, {});
        while (!mPending.empty()) {
            const Run run = mPending.back();
            mPending.pop_back();
            Refine(run);
        }
    }

private:
    void Push(std::size_t begin, std::size_t end, std::size_t field, Cursor at)
    {
        if (end - begin > 1)
            mPending.push_back({begin, end, field, at});
    }
    std::size_t Index(EntryIt it) const { return static_cast<std::size_t>(it - mEntries.begin()); }

    void Refine(const Run& run)
    {
        auto first = mEntries.begin() + static_cast<std::ptrdiff_t>(run.begin);
        auto last = mEntries.begin() + static_cast<std::ptrdiff_t>(run.end);
        if (run.field == mKeys.size()) {
            std::sort(first, last, [](const Entry& a, const Entry& b) { return a.position < b.position; });
            return;
        }
        const SortKey& key = mKeys[run.field];
        const Column& column = mStore.ColumnOf(key.field);
        const bool text = column.Storage() == StorageKind::Text;
        if (run.at == Cursor{}) {
            // Nulls come first in ascending order and last in descending order, tied among themselves.
            const bool descending = key.descending;
            const auto split =
                std::partition(first, last, [&](const Entry& e) { return column.IsNull(e.row) != descending; });
            if (descending) {
                Push(Index(split), run.end, run.field + 1, {});
                last = split;
            } else {
                Push(run.begin, Index(split), run.field + 1, {});
                first = split;
            }
        }
        const std::uint64_t flip = key.descending ? ~std::uint64_t{0} : 0;
        if (text)
            ReadChunks(first, last, column, run.at, flip);
        else
            for (auto it = first; it != last; ++it)
                it->key = OrderedBits(column.Number(it->row)) ^ flip;
        std::sort(first, last, [](const Entry& a, const Entry& b) { return a.key < b.key; });
        for (auto tie = first; tie != last;) {
            auto end = std::find_if(tie + 1, last, [&](const Entry& e) { return e.key != tie->key; });
            if (end - tie > 1) {
                // Texts that filled the chunk may go on; texts that ended inside it are equal.
                if (text && ((tie->key ^ flip) & 0xFF) != 0) {
                    Cursor next = run.at;
                    NextChunk(column.Text(tie->row), next);
                    Push(Index(tie), Index(end), run.field, next);
                } else {
                    Push(Index(tie), Index(end), run.field + 1, {});
                }
            }
            tie = end;
        }
    }

    // Rows past the first run lie all over the store: the texts' places are gathered first, in a
    // loop short enough for many cache misses to be under way at once, and each text is fetched
    // a few rows ahead of its use.
    void ReadChunks(EntryIt first, EntryIt last, const Column& column, Cursor from, std::uint64_t flip)
    {
        constexpr std::size_t Ahead = 8;
        const auto n = static_cast<std::size_t>(last - first);
        mTexts.resize(n);
        for (std::size_t i = 0; i < n; ++i)
            mTexts[i] = column.Text(first[static_cast<std::ptrdiff_t>(i)].row);
        for (std::size_t i = 0; i < n; ++i) {
            if (i + Ahead < n)
                __builtin_prefetch(mTexts[i + Ahead].utf16() + from.unit);
            Cursor at = from;
            first[static_cast<std::ptrdiff_t>(i)].key = NextChunk(mTexts[i], at) ^ flip;
        }
    }

    std::vector<Entry>& mEntries;
    const RecordsetStore& mStore;
    std::span<const SortKey> mKeys;
    std::vector<Run> mPending;
    std::vector<QStringView> mTexts;
};

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
    std::vector<Entry> entries(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        entries[i] = {0, rows[i], static_cast<std::uint32_t>(i)};
    Sorter(entries, store, keys).Sort();
    for (std::size_t i = 0; i < entries.size(); ++i)
        rows[i] = entries[i].row;
}

}  // namespace korvex::ado
