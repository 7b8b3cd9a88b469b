// The rows behind a recordset and all its clones: the field definitions, one column per field,
// each row's status, the values as read before pending changes, the field indexes, and a log of
// rows added and removed that lets each clone bring its own ordered view up to date lazily.
// A provider fills a store, reads its pending changes and writes back what the data source says.
#pragma once

#include "korvex/platform/ado/Column.h"
#include "korvex/platform/ado/FieldDef.h"
#include "korvex/platform/ado/FieldIndex.h"
#include "korvex/runtime/Variant.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace korvex::ado {

class RecordsetProvider;

class RecordsetStore {
public:
    // How the set of rows changed: the views of the clones replay these.
    enum class ChangeKind : std::uint8_t {
        Added,    // a new row became visible
        Deleted,  // a row was deleted, pending a batch update; pending-record views keep it
        Removed,  // a row is gone for good
    };
    struct Change {
        RowId row;
        ChangeKind kind;
        const void* origin;  // the recordset that made the change
    };

    // The fields must be valid definitions (MakeFieldDef, or a provider's own).
    explicit RecordsetStore(std::vector<FieldDef> fields);
    ~RecordsetStore();
    RecordsetStore(const RecordsetStore&) = delete;
    RecordsetStore& operator=(const RecordsetStore&) = delete;

    // Fields.
    int FieldCount() const noexcept { return static_cast<int>(mFields.size()); }
    const FieldDef& Field(int field) const { return mFields[static_cast<std::size_t>(field)]; }
    // The field of that name, ignoring case; -1 when there is none.
    int FieldIndexOf(QStringView name) const;
    const Column& ColumnOf(int field) const { return mColumns[static_cast<std::size_t>(field)]; }

    // Loading: a row as read from the data source (unmodified). Values are converted to the
    // fields' types; a value a field refuses raises the multiple-step error and adds nothing.
    RowId AppendRow(std::span<const Variant> values);

    // Rows. Row ids count every row ever made, so a bookmark stays valid while its row exists.
    RowId RowCount() const noexcept { return static_cast<RowId>(mState.size()); }
    // In the cursors' ordinary views: neither deleted nor gone nor still being added.
    bool IsVisible(RowId row) const noexcept { return (mState[row] & HiddenMask) == 0; }
    bool IsGone(RowId row) const noexcept { return (mState[row] & GoneFlag) != 0; }
    bool IsBeingAdded(RowId row) const noexcept { return (mState[row] & AddingFlag) != 0; }
    // ADO's record status (RecordStatusEnum flags).
    int Status(RowId row) const noexcept { return static_cast<int>(mState[row] & StatusMask); }
    // The visible rows in ascending order: the order of an unfiltered, unsorted cursor.
    const std::vector<RowId>& VisibleRows() const noexcept { return mVisible; }
    // Rows with changes not yet sent (new, modified or deleted), ascending.
    std::vector<RowId> PendingRows() const;

    Variant Value(RowId row, int field) const { return ColumnOf(field).Get(row); }
    // The value as read, before pending changes; Empty for a row added and not yet sent.
    Variant OriginalValue(RowId row, int field) const;
    // A changed row's values as read, one per field; nullptr for a row without changes kept
    // (unchanged, or added): its values as read are its values. Valid until the next write.
    const Variant* OriginalValues(RowId row) const;
    // The fields written since the row was read, as bits (field f at bit f; bit 63 stands for
    // every field from 63 on): only these can differ from the values as read.
    std::uint64_t WrittenFields(RowId row) const;
    // Whether the row's value of the field is `value` (the same type and value), without
    // making a copy of it.
    bool ValueIs(RowId row, int field, const Variant& value) const { return ColumnOf(field).Holds(row, value); }
    // The value the data source last reported (Resync); the original value until then.
    Variant UnderlyingValue(RowId row, int field) const;
    // Whether any row has such values apart from its original ones.
    bool HasResyncedValues() const noexcept { return !mUnderlying.empty(); }

    // Editing, for the recordset. `value` must come from ConvertForField.
    RowId BeginAdd();
    // Makes an added row visible to every clone: pending (adRecNew) in batch mode, written otherwise.
    void CommitAdd(RowId row, const void* origin, bool pending);
    void DiscardAdd(RowId row, const void* origin);
    // Keeps the value as read the first time a written row changes, and marks it modified.
    void WriteValue(RowId row, int field, const Variant& value);
    // Batch mode: the rows stay, marked deleted, until the batch is sent or cancelled.
    void MarkDeleted(std::span<const RowId> rows, const void* origin);
    void Remove(std::span<const RowId> rows, const void* origin);

    // The end of a batch: accepted rows lose their pending state (deleted ones go), cancelled rows
    // get their values as read back (new ones go, deleted ones come back).
    void AcceptChanges(std::span<const RowId> rows, const void* origin);
    void CancelChanges(std::span<const RowId> rows, const void* origin);
    // Adds failure flags (adRecConcurrencyViolation, adRecDBDeleted ...) to a row's status.
    void AddStatusFlags(RowId row, int flags);

    // What a provider reports after reading rows again.
    void SetUnderlyingValue(RowId row, int field, const Variant& value);
    // The data source's values replace the row's, pending changes included.
    void ReplaceValues(RowId row, std::span<const Variant> values);
    // A value the data source chose for a written row (a generated key): stored as read, the
    // row's status unchanged.
    void SetSourceValue(RowId row, int field, const Variant& value);

    // "Optimize": an index on the field, shared by all clones.
    void SetOptimized(int field, bool on);
    // Only text fields get an index; on other fields the setting is kept and scans answer.
    bool IsOptimized(int field) const { return mOptimized[static_cast<std::size_t>(field)] != 0; }
    const FieldIndex* IndexOf(int field) const { return mIndexes[static_cast<std::size_t>(field)].get(); }

    // Bookmarks: Doubles that name a row of this store and no other.
    Variant BookmarkOf(RowId row) const;
    // The row a bookmark names, when it names a row of this store that still exists.
    std::optional<RowId> RowOfBookmark(const Variant& bookmark) const;

    // Change tracking for the clones' views: the version grows with every change of the set of
    // rows. When rows come back (cancelled deletes) or the log grows too long, the log is dropped
    // and views that have not caught up start over.
    std::uint64_t Version() const noexcept { return mLogBase + mLog.size(); }
    // Grows with every change of a value as well as of the set of rows: a result computed from the
    // values holds while it stays the same.
    std::uint64_t ContentVersion() const noexcept { return Version() + mWrites; }
    // The changes after `version`; nullopt when they are no longer kept.
    std::optional<std::span<const Change>> ChangesSince(std::uint64_t version) const;

    // The data source behind the rows (never null: fabricated rows get one that accepts
    // everything), and the dynamic properties the clones share ("Unique Table" ...).
    RecordsetProvider& Provider() const;
    void SetProvider(std::shared_ptr<RecordsetProvider> provider) { mProvider = std::move(provider); }
    Variant DynamicProperty(const QString& name) const { return mDynamic.value(name.toLower()); }
    void SetDynamicProperty(const QString& name, const Variant& value) { mDynamic.insert(name.toLower(), value); }

    std::size_t BytesAllocated() const noexcept;

    // Whoever shows the rows (a Qt model over a clone) hears that rows or values changed through
    // any clone. The store may be in the middle of an operation: a watcher only notes the fact
    // and looks later.
    using Watcher = std::function<void()>;
    std::uint64_t Watch(Watcher watcher);
    void Unwatch(std::uint64_t id);
    // Tells the watchers without a change of the rows: a clone closed.
    void Notify() const;

private:
    static constexpr std::uint32_t StatusMask = 0x00FFFFFF;
    static constexpr std::uint32_t AddingFlag = 0x40000000;
    static constexpr std::uint32_t PendingFlag = 0x20000000;
    static constexpr std::uint32_t GoneFlag = 0x80000000;
    static constexpr std::uint32_t HiddenMask = AddingFlag | GoneFlag | adRecDeleted;

    // Rows join and leave the visible list in one pass per operation, so that an operation on
    // many rows of a big store stays linear.
    void Show(RowId row);
    void Hide(RowId row);
    void ApplyVisibility();
    void MarkDeletedRow(RowId row, const void* origin);
    void RemoveRow(RowId row, const void* origin);
    void Log(RowId row, ChangeKind kind, const void* origin);
    void DropLog();
    void WriteColumn(RowId row, int field, const Variant& value);
    void RestoreOriginals(RowId row);
    void KeepOriginals(RowId row, int field);
    void DropOriginals(RowId row);
    void ForgetChanges(RowId row);
    void MarkPending(RowId row);
    void TidyPending() const;
    void ClearPending(RowId row);

    std::vector<FieldDef> mFields;
    std::vector<Column> mColumns;
    std::vector<std::unique_ptr<FieldIndex>> mIndexes;
    std::vector<char> mOptimized;
    std::vector<std::uint32_t> mState;
    std::vector<RowId> mVisible;
    std::vector<RowId> mShowing;
    std::vector<RowId> mHiding;
    // The pending rows: those whose state has PendingFlag. A row that stops being pending stays
    // in the list until it is tidied, so that a batch of thousands of rows costs no search each.
    mutable std::vector<RowId> mPending;
    std::size_t mPendingCount = 0;
    mutable bool mPendingSorted = true;
    // The values as read of rows with changes, FieldCount values a slot, found through each
    // row's slot number (0: none): a batch of thousands of rows neither searches nor allocates
    // a row. Slots freed by sent or cancelled rows are used again.
    std::vector<std::uint32_t> mOriginalSlot;  // by row, as long as the rows when first needed
    std::vector<Variant> mOriginalPool;
    std::vector<std::uint64_t> mWrittenFields;  // by slot
    std::vector<std::uint32_t> mFreeSlots;
    std::unordered_map<RowId, std::map<int, Variant>> mUnderlying;
    std::vector<Change> mLog;
    std::uint64_t mLogBase = 0;
    std::uint64_t mWrites = 0;
    std::uint32_t mBookmarkTag = 0;
    std::shared_ptr<RecordsetProvider> mProvider;
    QHash<QString, Variant> mDynamic;
    std::vector<std::pair<std::uint64_t, Watcher>> mWatchers;
    std::uint64_t mNextWatcher = 1;
    // AppendRow's converted values, kept from row to row.
    std::vector<Variant> mConverted;
    std::vector<char> mConvertedAt;
};

}  // namespace korvex::ado
