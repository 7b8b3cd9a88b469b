// Row storage, row states, pending changes and the change log of a recordset and its clones.
#include "korvex/platform/ado/RecordsetStore.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/ado/RecordsetProvider.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace korvex::ado {
namespace {

// Longer logs are dropped: replaying them would cost more than rebuilding a view.
constexpr std::size_t MaxLogEntries = std::size_t{1} << 16;
constexpr double TagScale = 4294967296.0;
constexpr std::uint32_t TagLimit = (1u << 20) - 1;

std::uint32_t NextBookmarkTag()
{
    static std::atomic<std::uint32_t> next{0};
    return next.fetch_add(1) % TagLimit + 1;
}

}  // namespace

RecordsetStore::RecordsetStore(std::vector<FieldDef> fields)
    : mFields(std::move(fields)), mBookmarkTag(NextBookmarkTag())
{
    mColumns.reserve(mFields.size());
    for (const FieldDef& field : mFields)
        mColumns.emplace_back(field);
    mIndexes.resize(mFields.size());
    mOptimized.resize(mFields.size(), 0);
}

RecordsetStore::~RecordsetStore() = default;

int RecordsetStore::FieldIndexOf(QStringView name) const
{
    for (int i = 0; i < FieldCount(); ++i) {
        if (name.compare(mFields[static_cast<std::size_t>(i)].Name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

RowId RecordsetStore::AppendRow(std::span<const Variant> values)
{
    if (values.size() > mFields.size())
        RaiseAdo(adErrInvalidArgument);
    // Every value is checked before the row is added; only those that need converting are
    // copied, into room kept from row to row, so that loading allocates nothing a row.
    mConverted.resize(mFields.size());
    mConvertedAt.assign(mFields.size(), 0);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].IsNull() || values[i].IsEmpty() || StoresAsIs(values[i], mFields[i]))
            continue;  // the data source's Null stands, whatever the field's attributes say
        FieldInput input = ConvertForField(values[i], mFields[i]);
        if (input.status != adFieldOK)
            RaiseAdo(adErrMultipleStep, FieldSource);
        mConverted[i] = std::move(input.value);
        mConvertedAt[i] = 1;
    }
    const auto row = static_cast<RowId>(mState.size());
    mState.push_back(adRecUnmodified);
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        // Empty is kept as Null, as a column keeps both.
        mColumns[i].Append(mConvertedAt[i] ? mConverted[i] : i < values.size() ? values[i] : Null);
        if (mIndexes[i])
            mIndexes[i]->Add(row);
    }
    Show(row);
    ApplyVisibility();
    Log(row, ChangeKind::Added, nullptr);
    return row;
}

Variant RecordsetStore::OriginalValue(RowId row, int field) const
{
    if (mState[row] & (AddingFlag | adRecNew))
        return {};
    if (const Variant* originals = OriginalValues(row))
        return originals[field];
    return Value(row, field);
}

const Variant* RecordsetStore::OriginalValues(RowId row) const
{
    if (row >= mOriginalSlot.size() || mOriginalSlot[row] == 0 || (mState[row] & (AddingFlag | adRecNew)))
        return nullptr;
    return &mOriginalPool[(mOriginalSlot[row] - 1) * mFields.size()];
}

std::uint64_t RecordsetStore::WrittenFields(RowId row) const
{
    if (row >= mOriginalSlot.size() || mOriginalSlot[row] == 0)
        return 0;
    return mWrittenFields[mOriginalSlot[row] - 1];
}

void RecordsetStore::KeepOriginals(RowId row, int field)
{
    if (mOriginalSlot.size() <= row)
        mOriginalSlot.resize(mState.size(), 0);
    std::uint32_t& slot = mOriginalSlot[row];
    if (slot == 0) {
        // A slot freed by an earlier row is used again before the pool grows.
        if (!mFreeSlots.empty()) {
            slot = mFreeSlots.back();
            mFreeSlots.pop_back();
        } else {
            mOriginalPool.resize(mOriginalPool.size() + mFields.size());
            mWrittenFields.push_back(0);
            slot = static_cast<std::uint32_t>(mWrittenFields.size());
        }
        Variant* originals = &mOriginalPool[(slot - 1) * mFields.size()];
        for (std::size_t i = 0; i < mColumns.size(); ++i)
            originals[i] = mColumns[i].Get(row);
        mWrittenFields[slot - 1] = 0;
    }
    mWrittenFields[slot - 1] |= std::uint64_t{1} << std::min(field, 63);
}

void RecordsetStore::DropOriginals(RowId row)
{
    if (row >= mOriginalSlot.size() || mOriginalSlot[row] == 0)
        return;
    const std::uint32_t slot = mOriginalSlot[row];
    mOriginalSlot[row] = 0;
    Variant* originals = &mOriginalPool[(slot - 1) * mFields.size()];
    for (std::size_t i = 0; i < mFields.size(); ++i)
        originals[i] = Variant();  // a text is freed now, not when the slot is next used
    mFreeSlots.push_back(slot);
    // Once every row's changes are sent or cancelled, the pool a big batch grew goes with them.
    // (Moved from empty vectors: assigning {} would keep the storage.)
    if (mFreeSlots.size() == mWrittenFields.size()) {
        mOriginalSlot = std::vector<std::uint32_t>();
        mOriginalPool = std::vector<Variant>();
        mWrittenFields = std::vector<std::uint64_t>();
        mFreeSlots = std::vector<std::uint32_t>();
    }
}

Variant RecordsetStore::UnderlyingValue(RowId row, int field) const
{
    if (!mUnderlying.empty()) {
        if (auto it = mUnderlying.find(row); it != mUnderlying.end()) {
            if (auto f = it->second.find(field); f != it->second.end())
                return f->second;
        }
    }
    return OriginalValue(row, field);
}

std::vector<RowId> RecordsetStore::PendingRows() const
{
    TidyPending();
    return mPending;
}

void RecordsetStore::TidyPending() const
{
    // Rows that stopped being pending go; a row listed twice (pending again since) was listed
    // out of order, and goes once the list is sorted.
    if (mPending.size() != mPendingCount)
        std::erase_if(mPending, [this](RowId row) { return !(mState[row] & PendingFlag); });
    if (!mPendingSorted) {
        std::sort(mPending.begin(), mPending.end());
        mPending.erase(std::unique(mPending.begin(), mPending.end()), mPending.end());
        mPendingSorted = true;
    }
}

void RecordsetStore::MarkPending(RowId row)
{
    if (mState[row] & PendingFlag)
        return;
    mState[row] |= PendingFlag;
    if (mPendingCount == 0) {
        mPending.clear();  // only rows no longer pending were left
        mPendingSorted = true;
    }
    if (!mPending.empty() && row <= mPending.back())
        mPendingSorted = false;
    mPending.push_back(row);
    ++mPendingCount;
}

void RecordsetStore::ClearPending(RowId row)
{
    if (!(mState[row] & PendingFlag))
        return;
    mState[row] &= ~PendingFlag;
    --mPendingCount;
    // Tidied once the list holds many more rows than are pending, so that it never outgrows
    // the edits made.
    if (mPending.size() > 2 * mPendingCount + 64)
        TidyPending();
}

RowId RecordsetStore::BeginAdd()
{
    const auto row = static_cast<RowId>(mState.size());
    mState.push_back(AddingFlag | adRecNew);
    for (Column& column : mColumns)
        column.Append(Null);
    return row;
}

void RecordsetStore::CommitAdd(RowId row, const void* origin, bool pending)
{
    mState[row] = pending ? adRecNew : adRecOK;
    if (pending)
        MarkPending(row);
    for (std::size_t i = 0; i < mIndexes.size(); ++i) {
        if (mIndexes[i])
            mIndexes[i]->Add(row);
    }
    Show(row);
    ApplyVisibility();
    Log(row, ChangeKind::Added, origin);
}

void RecordsetStore::DiscardAdd(RowId row, const void*)
{
    // Nobody but the adding recordset ever saw the row: nothing to tell the other views.
    mState[row] = GoneFlag | adRecDeleted;
}

void RecordsetStore::WriteColumn(RowId row, int field, const Variant& value)
{
    ++mWrites;
    Notify();
    FieldIndex* index = (mState[row] & AddingFlag) ? nullptr : mIndexes[static_cast<std::size_t>(field)].get();
    if (index)
        index->Remove(row);
    mColumns[static_cast<std::size_t>(field)].Set(row, value);
    if (index)
        index->Add(row);
}

void RecordsetStore::WriteValue(RowId row, int field, const Variant& value)
{
    if (!(mState[row] & (AddingFlag | adRecNew))) {
        KeepOriginals(row, field);
        mState[row] |= adRecModified;
        mState[row] &= ~static_cast<std::uint32_t>(adRecUnmodified);
        MarkPending(row);
    }
    WriteColumn(row, field, value);
}

void RecordsetStore::MarkDeleted(std::span<const RowId> rows, const void* origin)
{
    for (RowId row : rows)
        MarkDeletedRow(row, origin);
    ApplyVisibility();
}

void RecordsetStore::Remove(std::span<const RowId> rows, const void* origin)
{
    for (RowId row : rows)
        RemoveRow(row, origin);
    ApplyVisibility();
}

void RecordsetStore::MarkDeletedRow(RowId row, const void* origin)
{
    if (IsGone(row) || (mState[row] & adRecDeleted))
        return;
    if (mState[row] & adRecNew) {
        RemoveRow(row, origin);  // never sent: there is nothing to delete at the data source
        return;
    }
    mState[row] |= adRecDeleted;
    MarkPending(row);
    Hide(row);
    Log(row, ChangeKind::Deleted, origin);
}

void RecordsetStore::RemoveRow(RowId row, const void* origin)
{
    if (IsGone(row))
        return;
    if (IsVisible(row))
        Hide(row);
    ClearPending(row);
    mState[row] = GoneFlag | adRecDeleted;
    ForgetChanges(row);
    Log(row, ChangeKind::Removed, origin);
}

void RecordsetStore::ForgetChanges(RowId row)
{
    DropOriginals(row);
    if (!mUnderlying.empty())
        mUnderlying.erase(row);
}

void RecordsetStore::RestoreOriginals(RowId row)
{
    const Variant* originals = OriginalValues(row);
    if (!originals)
        return;
    for (int i = 0; i < FieldCount(); ++i)
        WriteColumn(row, i, originals[i]);
    DropOriginals(row);
}

void RecordsetStore::AcceptChanges(std::span<const RowId> rows, const void* origin)
{
    for (RowId row : rows) {
        if (IsGone(row) || (mState[row] & AddingFlag))
            continue;
        if (mState[row] & adRecDeleted) {
            RemoveRow(row, origin);
            continue;
        }
        ClearPending(row);
        mState[row] = adRecOK;
        ForgetChanges(row);
    }
    ApplyVisibility();
}

void RecordsetStore::CancelChanges(std::span<const RowId> rows, const void* origin)
{
    bool restored = false;
    for (RowId row : rows) {
        if (IsGone(row) || (mState[row] & AddingFlag))
            continue;
        if (mState[row] & adRecNew) {
            RemoveRow(row, origin);
            continue;
        }
        RestoreOriginals(row);
        if (mState[row] & adRecDeleted) {
            Show(row);
            restored = true;
        }
        ClearPending(row);
        mState[row] = adRecUnmodified;
    }
    ApplyVisibility();
    if (restored)
        DropLog();  // rows came back: every view rebuilds to take them in again
}

void RecordsetStore::AddStatusFlags(RowId row, int flags)
{
    mState[row] |= static_cast<std::uint32_t>(flags) & StatusMask;
}

void RecordsetStore::SetUnderlyingValue(RowId row, int field, const Variant& value)
{
    mUnderlying[row][field] = value;
}

void RecordsetStore::ReplaceValues(RowId row, std::span<const Variant> values)
{
    for (std::size_t i = 0; i < values.size() && i < mFields.size(); ++i) {
        Variant value = Null;
        if (!values[i].IsNull() && !values[i].IsEmpty()) {
            FieldInput input = ConvertForField(values[i], mFields[i]);
            if (input.status != adFieldOK)
                RaiseAdo(adErrMultipleStep, FieldSource);
            value = std::move(input.value);
        }
        WriteColumn(row, static_cast<int>(i), value);
    }
    ForgetChanges(row);
    ClearPending(row);
    const bool wasDeleted = (mState[row] & adRecDeleted) != 0;
    mState[row] = adRecUnmodified;
    if (wasDeleted) {
        Show(row);
        ApplyVisibility();
        DropLog();
    }
}

void RecordsetStore::SetSourceValue(RowId row, int field, const Variant& value)
{
    Variant stored = Null;
    if (!value.IsNull() && !value.IsEmpty()) {
        FieldInput input = ConvertForField(value, mFields[static_cast<std::size_t>(field)]);
        if (input.status != adFieldOK)
            RaiseAdo(adErrMultipleStep, FieldSource);
        stored = std::move(input.value);
    }
    WriteColumn(row, field, stored);
}

void RecordsetStore::SetOptimized(int field, bool on)
{
    const auto f = static_cast<std::size_t>(field);
    mOptimized[f] = on ? 1 : 0;
    if (!on) {
        mIndexes[f].reset();
        return;
    }
    if (mIndexes[f])
        return;
    std::vector<RowId> rows;
    rows.reserve(mState.size());
    for (RowId row = 0; row < RowCount(); ++row) {
        if (!(mState[row] & (AddingFlag | GoneFlag)))
            rows.push_back(row);
    }
    mIndexes[f] = std::make_unique<FieldIndex>(mColumns[f], rows);
}

Variant RecordsetStore::BookmarkOf(RowId row) const
{
    return Variant(static_cast<double>(mBookmarkTag) * TagScale + static_cast<double>(row) + 1.0);
}

std::optional<RowId> RecordsetStore::RowOfBookmark(const Variant& bookmark) const
{
    // Bookmarks are compared without coercion: only a Double can be one.
    const double* value = bookmark.As<double>();
    if (!value || !(*value >= 1.0 && *value < TagScale * (TagLimit + 1.0)) || std::floor(*value) != *value)
        return std::nullopt;
    const auto bits = static_cast<std::uint64_t>(*value);
    if ((bits >> 32) != mBookmarkTag || (bits & 0xFFFFFFFFu) == 0)
        return std::nullopt;
    const auto row = static_cast<RowId>((bits & 0xFFFFFFFFu) - 1);
    if (row >= RowCount() || IsGone(row))
        return std::nullopt;
    return row;
}

std::optional<std::span<const RecordsetStore::Change>> RecordsetStore::ChangesSince(std::uint64_t version) const
{
    if (version < mLogBase || version > Version())
        return std::nullopt;
    return std::span<const Change>(mLog).subspan(static_cast<std::size_t>(version - mLogBase));
}

RecordsetProvider& RecordsetStore::Provider() const
{
    static RecordsetProvider fabricated;
    return mProvider ? *mProvider : fabricated;
}

void RecordsetStore::Show(RowId row)
{
    if (mVisible.empty() || mVisible.back() < row)
        mVisible.push_back(row);  // the common case: a new row, after all others
    else
        mShowing.push_back(row);
}

void RecordsetStore::Hide(RowId row)
{
    mHiding.push_back(row);
}

void RecordsetStore::ApplyVisibility()
{
    if (mHiding.size() == 1) {
        auto it = std::lower_bound(mVisible.begin(), mVisible.end(), mHiding[0]);
        if (it != mVisible.end() && *it == mHiding[0])
            mVisible.erase(it);
    } else if (!mHiding.empty()) {
        std::sort(mHiding.begin(), mHiding.end());
        std::erase_if(mVisible, [&](RowId row) { return std::binary_search(mHiding.begin(), mHiding.end(), row); });
    }
    mHiding.clear();
    if (!mShowing.empty()) {
        std::sort(mShowing.begin(), mShowing.end());
        std::vector<RowId> merged;
        merged.reserve(mVisible.size() + mShowing.size());
        std::merge(mVisible.begin(), mVisible.end(), mShowing.begin(), mShowing.end(), std::back_inserter(merged));
        mVisible = std::move(merged);
        mShowing.clear();
    }
}

void RecordsetStore::Log(RowId row, ChangeKind kind, const void* origin)
{
    if (mLog.size() >= MaxLogEntries)
        DropLog();
    mLog.push_back({row, kind, origin});
    Notify();
}

void RecordsetStore::DropLog()
{
    mLogBase += mLog.size() + 1;
    mLog.clear();
    Notify();
}

std::uint64_t RecordsetStore::Watch(Watcher watcher)
{
    mWatchers.emplace_back(mNextWatcher, std::move(watcher));
    return mNextWatcher++;
}

void RecordsetStore::Unwatch(std::uint64_t id)
{
    std::erase_if(mWatchers, [id](const auto& w) { return w.first == id; });
}

void RecordsetStore::Notify() const
{
    for (const auto& [id, watcher] : mWatchers)
        watcher();
}

std::size_t RecordsetStore::BytesAllocated() const noexcept
{
    std::size_t bytes = mState.capacity() * sizeof(std::uint32_t) + mVisible.capacity() * sizeof(RowId) +
                        mLog.capacity() * sizeof(Change) + mOriginalSlot.capacity() * sizeof(std::uint32_t) +
                        mOriginalPool.capacity() * sizeof(Variant) +
                        mWrittenFields.capacity() * sizeof(std::uint64_t) + mFreeSlots.capacity() * sizeof(std::uint32_t);
    for (const Column& column : mColumns)
        bytes += column.BytesAllocated();
    for (const auto& index : mIndexes) {
        if (index)
            bytes += index->BytesAllocated();
    }
    return bytes;
}

}  // namespace korvex::ado
