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
#include <utility>
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
        // Rows among which every match of `criteria` lies (the answer of a wider filter).
        std::shared_ptr<const std::vector<RowId>> within;

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
    const std::vector<RowId>& Rows() const noexcept
    {
        return mNatural && mStore ? mStore->VisibleRows() : mOrder->rows;
    }
    std::size_t Size() const noexcept { return Rows().size(); }
    RowId At(std::size_t index) const noexcept { return Rows()[index]; }
    std::optional<std::size_t> IndexOf(RowId row) const;
    // Where a row that has left the view stood: the index of the row that followed it.
    std::size_t GapIndex(RowId row, std::size_t previous) const;
    // The rows the criteria let through when last computed, ascending, while no value or row of
    // the store has changed since; null otherwise.
    std::shared_ptr<const std::vector<RowId>> Selected() const;

private:
    // The rows in view order, with the way back from a row to its place for sorted views. A sort
    // of all rows is kept aside and shared, so that clearing a filter gets it back at once.
    struct Order {
        std::vector<RowId> rows;
        std::vector<std::uint32_t> dense;                      // row to index + 1
        std::vector<std::pair<RowId, std::uint32_t>> sparse;  // (row, index), by row
        void Index(RowId rowCount);
        std::optional<std::size_t> Find(RowId row) const;
    };

    std::vector<RowId> Compute();
    bool Accepts(RowId row) const;
    bool KeepsDeleted() const noexcept;
    void Place(RowId row);
    void SetOrder(std::vector<RowId> rows, bool sorted);
    Order& Mutable();
    bool ShowsAllSorted() const noexcept;

    const RecordsetStore* mStore = nullptr;
    Definition mDef;
    bool mNatural = true;
    std::shared_ptr<Order> mOrder = std::make_shared<Order>();
    std::vector<RowId> mOwnAdded;  // ascending
    std::uint64_t mVersion = 0;
    std::shared_ptr<const std::vector<RowId>> mSelected;
    std::uint64_t mSelectedVersion = 0;
    std::shared_ptr<Order> mAllSorted;
    std::vector<SortKey> mAllSortedKeys;
    std::uint64_t mAllSortedVersion = 0;
};

}  // namespace korvex::ado
