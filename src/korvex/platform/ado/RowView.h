// The rows one recordset's cursor walks, in order: all visible rows of the store, or those its
// Filter lets through, sorted by its Sort. An unfiltered, unsorted view is the store's own list, so
// a clone costs nothing however many rows there are; filtering or sorting gives the recordset its
// own list. Changes made through other clones reach the list lazily, by replaying the store's
// change log the next time the recordset looks.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/ado/RowFilter.h"
#include "korvex/platform/ado/RowSorter.h"

#include <memory>
#include <optional>
#include <vector>

namespace korvex::ado {

class RowView {
public:
    struct Definition {
        std::shared_ptr<const RowFilter> criteria;
        bool byBookmarks = false;
        std::vector<RowId> bookmarks;  // ascending
        FilterGroupEnum group = adFilterNone;
        std::vector<RowId> affected;   // the rows of the last batch operation, ascending
        std::vector<SortKey> sort;

        bool IsFiltered() const noexcept { return criteria || byBookmarks || group != adFilterNone; }
    };

    // Starts over with a definition; rows added through this recordset are forgotten.
    void Define(const RecordsetStore& store, Definition definition);
    // Catches up with rows added and removed through any clone; true when the rows changed.
    bool Sync(const RecordsetStore& store, const void* self);
    // Sorts the view's rows by new keys, or puts them back in store order for no keys; the rows
    // themselves stay (Sync first).
    void Resort(std::vector<SortKey> keys);
    // A row this recordset added: it stays in the view whatever the filter says, until the
    // filter or sort is set again.
    void AddOwn(RowId row);

    const Definition& Def() const noexcept { return mDef; }
    bool IsAscending() const noexcept { return mDef.sort.empty(); }
    const std::vector<RowId>& Rows() const noexcept { return mNatural && mStore ? mStore->VisibleRows() : mRows; }
    std::size_t Size() const noexcept { return Rows().size(); }
    RowId At(std::size_t index) const noexcept { return Rows()[index]; }
    std::optional<std::size_t> IndexOf(RowId row) const;
    // Where a row that has left the view stood: the index of the row that followed it.
    std::size_t GapIndex(RowId row, std::size_t previous) const;

private:
    std::vector<RowId> Compute() const;
    bool Accepts(RowId row) const;
    bool KeepsDeleted() const noexcept;
    void Place(RowId row);

    const RecordsetStore* mStore = nullptr;
    Definition mDef;
    bool mNatural = true;
    std::vector<RowId> mRows;
    std::vector<RowId> mOwnAdded;  // ascending
    std::uint64_t mVersion = 0;
    // Row to index + 1, built on demand for sorted views.
    mutable std::vector<std::uint32_t> mPositions;
    mutable bool mPositionsValid = false;
};

}  // namespace korvex::ado
