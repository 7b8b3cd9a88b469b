// Computing a recordset's view and keeping it in step with its clones.
#include "korvex/platform/ado/RowView.h"

#include <algorithm>

namespace korvex::ado {
namespace {

// Status flags that mark a row refused by the last batch.
constexpr int FailureMask = ~(adRecNew | adRecModified | adRecDeleted | adRecUnmodified);

}  // namespace

void RowView::Order::Index(RowId rowCount)
{
    // A view holding a good share of the store's rows gets a table as long as the store; a
    // small one a sorted list.
    dense.clear();
    sparse.clear();
    if (rows.size() * 8 >= rowCount) {
        dense.assign(rowCount, 0);
        for (std::size_t i = 0; i < rows.size(); ++i)
            dense[rows[i]] = static_cast<std::uint32_t>(i + 1);
    } else {
        sparse.reserve(rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i)
            sparse.emplace_back(rows[i], static_cast<std::uint32_t>(i));
        std::sort(sparse.begin(), sparse.end());
    }
}

std::optional<std::size_t> RowView::Order::Find(RowId row) const
{
    if (!dense.empty()) {
        if (row < dense.size() && dense[row] != 0)
            return dense[row] - 1;
        return std::nullopt;
    }
    auto it = std::lower_bound(sparse.begin(), sparse.end(), std::pair<RowId, std::uint32_t>(row, 0));
    if (it != sparse.end() && it->first == row)
        return it->second;
    return std::nullopt;
}

void RowView::Define(const RecordsetStore& store, Definition definition)
{
    mStore = &store;
    mDef = std::move(definition);
    mNatural = !mDef.IsFiltered() && mDef.sort.empty();
    mOwnAdded.clear();
    mSelected.reset();
    mVersion = store.Version();
    if (mNatural)
        SetOrder({}, false);
    else if (ShowsAllSorted() && mAllSorted && mAllSortedKeys == mDef.sort && mAllSortedVersion == store.ContentVersion())
        mOrder = mAllSorted;
    else
        SetOrder(Compute(), !mDef.sort.empty());
    mDef.within.reset();
}

bool RowView::ShowsAllSorted() const noexcept
{
    return !mDef.IsFiltered() && !mDef.sort.empty() && mOwnAdded.empty();
}

void RowView::SetOrder(std::vector<RowId> rows, bool sorted)
{
    mOrder = std::make_shared<Order>();
    mOrder->rows = std::move(rows);
    if (sorted)
        mOrder->Index(mStore->RowCount());
    if (ShowsAllSorted()) {
        mAllSorted = mOrder;
        mAllSortedKeys = mDef.sort;
        mAllSortedVersion = mStore->ContentVersion();
    }
}

RowView::Order& RowView::Mutable()
{
    if (mOrder.use_count() > 1)
        mOrder = std::make_shared<Order>(*mOrder);
    return *mOrder;
}

std::shared_ptr<const std::vector<RowId>> RowView::Selected() const
{
    return mStore && mSelectedVersion == mStore->ContentVersion() ? mSelected : nullptr;
}

std::vector<RowId> RowView::Compute()
{
    const RecordsetStore& store = *mStore;
    std::vector<RowId> rows;
    if (mDef.criteria) {
        rows = mDef.criteria->Select(mDef.within.get());
        mSelected = std::make_shared<const std::vector<RowId>>(rows);
        mSelectedVersion = store.ContentVersion();
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
    Order& order = Mutable();
    if (IsAscending()) {
        order.rows.insert(std::upper_bound(order.rows.begin(), order.rows.end(), row), row);
        return;
    }
    // Rows added after a sort go to the end until the next sort.
    order.rows.push_back(row);
    const auto index = static_cast<std::uint32_t>(order.rows.size() - 1);
    if (!order.dense.empty()) {
        if (order.dense.size() <= row)
            order.dense.resize(std::size_t{row} + 1, 0);
        order.dense[row] = index + 1;
    } else {
        const std::pair<RowId, std::uint32_t> entry(row, index);
        order.sparse.insert(std::upper_bound(order.sparse.begin(), order.sparse.end(), entry), entry);
    }
}

void RowView::Resort(std::vector<SortKey> keys)
{
    mDef.sort = std::move(keys);
    if (!mDef.IsFiltered() && mDef.sort.empty()) {
        mNatural = true;
        SetOrder({}, false);
        return;
    }
    if (ShowsAllSorted() && mAllSorted && mAllSortedKeys == mDef.sort && mAllSortedVersion == mStore->ContentVersion() &&
        (mNatural || mOrder->rows.size() == mAllSorted->rows.size())) {
        mNatural = false;
        mOrder = mAllSorted;
        return;
    }
    std::vector<RowId> rows = mNatural ? mStore->VisibleRows() : mOrder->rows;
    if (!std::is_sorted(rows.begin(), rows.end()))
        std::sort(rows.begin(), rows.end());  // store order, from which the sort is stable
    SortRows(rows, *mStore, mDef.sort);
    mNatural = false;
    SetOrder(std::move(rows), !mDef.sort.empty());
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
    if (!changes) {
        SetOrder(Compute(), !IsAscending());
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
        Order& order = Mutable();
        const std::size_t before = order.rows.size();
        std::erase_if(order.rows, [&](RowId row) { return std::binary_search(leaving.begin(), leaving.end(), row); });
        if (order.rows.size() != before && !IsAscending())
            order.Index(store.RowCount());
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
    return mOrder->Find(row);
}

std::size_t RowView::GapIndex(RowId row, std::size_t previous) const
{
    const std::vector<RowId>& rows = Rows();
    if (IsAscending())
        return static_cast<std::size_t>(std::lower_bound(rows.begin(), rows.end(), row) - rows.begin());
    return std::min(previous, rows.size());
}

}  // namespace korvex::ado
