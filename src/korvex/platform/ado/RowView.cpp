// Computing a recordset's view and keeping it in step with its clones.
#include "korvex/platform/ado/RowView.h"

#include <algorithm>

namespace korvex::ado {
namespace {

// Status flags that mark a row refused by the last batch.
constexpr int FailureMask = ~(adRecNew | adRecModified | adRecDeleted | adRecUnmodified);

}  // namespace

void RowView::Define(const RecordsetStore& store, Definition definition)
{
    mStore = &store;
    mDef = std::move(definition);
    mNatural = !mDef.IsFiltered() && mDef.sort.empty();
    mOwnAdded.clear();
    mRows = mNatural ? std::vector<RowId>() : Compute();
    mVersion = store.Version();
    mPositionsValid = false;
}

std::vector<RowId> RowView::Compute() const
{
    const RecordsetStore& store = *mStore;
    std::vector<RowId> rows;
    if (mDef.criteria) {
        rows = mDef.criteria->Select();
    } else if (mDef.byBookmarks) {
        std::copy_if(mDef.bookmarks.begin(), mDef.bookmarks.end(), std::back_inserter(rows),
                     [&](RowId row) { return store.IsVisible(row); });
    } else {
        switch (mDef.group) {
        case adFilterPendingRecords: rows = store.PendingRows(); break;
        case adFilterAffectedRecords:
            std::copy_if(mDef.affected.begin(), mDef.affected.end(), std::back_inserter(rows),
                         [&](RowId row) { return !store.IsGone(row); });
            break;
        case adFilterConflictingRecords:
            for (RowId row = 0; row < store.RowCount(); ++row) {
                if (!store.IsGone(row) && !store.IsBeingAdded(row) && (store.Status(row) & FailureMask))
                    rows.push_back(row);
            }
            break;
        default: rows = store.VisibleRows(); break;
        }
    }
    if (!mOwnAdded.empty()) {
        std::vector<RowId> own;
        std::copy_if(mOwnAdded.begin(), mOwnAdded.end(), std::back_inserter(own),
                     [&](RowId row) { return store.IsVisible(row); });
        std::vector<RowId> merged;
        std::set_union(rows.begin(), rows.end(), own.begin(), own.end(), std::back_inserter(merged));
        rows = std::move(merged);
    }
    SortRows(rows, store, mDef.sort);
    return rows;
}

bool RowView::Accepts(RowId row) const
{
    const RecordsetStore& store = *mStore;
    if (mDef.criteria)
        return store.IsVisible(row) && mDef.criteria->Matches(row);
    if (mDef.byBookmarks)
        return false;
    switch (mDef.group) {
    case adFilterPendingRecords: return (store.Status(row) & (adRecNew | adRecModified | adRecDeleted)) != 0;
    case adFilterAffectedRecords:
    case adFilterConflictingRecords: return false;
    default: return store.IsVisible(row);
    }
}

bool RowView::KeepsDeleted() const noexcept
{
    return mDef.group == adFilterPendingRecords || mDef.group == adFilterAffectedRecords ||
           mDef.group == adFilterConflictingRecords;
}

void RowView::Place(RowId row)
{
    if (IsAscending())
        mRows.insert(std::upper_bound(mRows.begin(), mRows.end(), row), row);
    else
        mRows.push_back(row);  // rows added after a sort go to the end until the next sort
    mPositionsValid = false;
}

void RowView::Resort(std::vector<SortKey> keys)
{
    mDef.sort = std::move(keys);
    mPositionsValid = false;
    if (!mDef.IsFiltered() && mDef.sort.empty()) {
        mNatural = true;
        mRows.clear();
        return;
    }
    std::vector<RowId> rows = mNatural ? mStore->VisibleRows() : std::move(mRows);
    if (!std::is_sorted(rows.begin(), rows.end()))
        std::sort(rows.begin(), rows.end());  // store order, from which the sort is stable
    SortRows(rows, *mStore, mDef.sort);
    mRows = std::move(rows);
    mNatural = false;
}

void RowView::AddOwn(RowId row)
{
    mOwnAdded.insert(std::upper_bound(mOwnAdded.begin(), mOwnAdded.end(), row), row);
    if (!mNatural)
        Place(row);
}

bool RowView::Sync(const RecordsetStore& store, const void* self)
{
    if (store.Version() == mVersion)
        return false;
    const auto changes = store.ChangesSince(mVersion);
    mVersion = store.Version();
    if (mNatural)
        return true;
    mPositionsValid = false;
    if (!changes) {
        mRows = Compute();
        return true;
    }
    std::vector<RowId> leaving;
    for (const RecordsetStore::Change& change : *changes) {
        switch (change.kind) {
        case RecordsetStore::ChangeKind::Added:
            if (change.origin != self && Accepts(change.row))
                Place(change.row);
            break;
        case RecordsetStore::ChangeKind::Deleted:
            if (!KeepsDeleted())
                leaving.push_back(change.row);
            break;
        case RecordsetStore::ChangeKind::Removed: leaving.push_back(change.row); break;
        }
    }
    if (!leaving.empty()) {
        std::sort(leaving.begin(), leaving.end());
        std::erase_if(mRows, [&](RowId row) { return std::binary_search(leaving.begin(), leaving.end(), row); });
    }
    return true;
}

std::optional<std::size_t> RowView::IndexOf(RowId row) const
{
    const std::vector<RowId>& rows = Rows();
    if (IsAscending()) {
        auto it = std::lower_bound(rows.begin(), rows.end(), row);
        if (it != rows.end() && *it == row)
            return static_cast<std::size_t>(it - rows.begin());
        return std::nullopt;
    }
    if (!mPositionsValid) {
        mPositions.assign(mStore->RowCount(), 0);
        for (std::size_t i = 0; i < rows.size(); ++i)
            mPositions[rows[i]] = static_cast<std::uint32_t>(i + 1);
        mPositionsValid = true;
    }
    if (row < mPositions.size() && mPositions[row] != 0)
        return mPositions[row] - 1;
    return std::nullopt;
}

std::size_t RowView::GapIndex(RowId row, std::size_t previous) const
{
    const std::vector<RowId>& rows = Rows();
    if (IsAscending())
        return static_cast<std::size_t>(std::lower_bound(rows.begin(), rows.end(), row) - rows.begin());
    return std::min(previous, rows.size());
}

}  // namespace korvex::ado
