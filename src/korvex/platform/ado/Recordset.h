// The client-side recordset: a cursor over rows held in memory, with ADO's Filter, Sort, Find,
// bookmarks, clones, editing and batch-optimistic updates. A fabricated recordset is defined with
// Fields.Append and opened without a source; a provider opens one over a store it has filled
// (OpenStore). Clones share the store, so each sees the others' edits, and keep their own cursor,
// filter and sort. Moves raise WillMove and MoveComplete once the cursor is settled.
//
// The C++ names of BOF and EOF are IsBOF and IsEOF (EOF is a C macro); late binding sees ADO's names.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/platform/ado/FieldDef.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/ado/RowView.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Variant.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#ifdef Q_MOC_RUN
#undef EOF  // moc must read the property's name, not the C library's macro
#endif

namespace korvex::ado {

class Recordset : public QObject {
    Q_OBJECT
    Q_PROPERTY(korvex::Variant Filter READ Filter WRITE SetFilter)
    Q_PROPERTY(QString Sort READ Sort WRITE SetSort)
    Q_PROPERTY(korvex::Variant Bookmark READ Bookmark WRITE SetBookmark)
    Q_PROPERTY(int AbsolutePosition READ AbsolutePosition WRITE SetAbsolutePosition)
    Q_PROPERTY(bool BOF READ IsBOF)
    Q_PROPERTY(bool EOF READ IsEOF)
    Q_PROPERTY(int RecordCount READ RecordCount)
    Q_PROPERTY(int EditMode READ EditMode)
    Q_PROPERTY(int Status READ Status)
    Q_PROPERTY(int State READ State)
    Q_PROPERTY(int CursorLocation READ CursorLocation WRITE SetCursorLocation)
    Q_PROPERTY(int CursorType READ CursorType WRITE SetCursorType)
    Q_PROPERTY(int LockType READ LockType WRITE SetLockType)
    Q_PROPERTY(korvex::ado::Fields* Fields READ Fields)
    Q_PROPERTY(korvex::ado::Properties* Properties READ Properties)

public:
    Recordset();
    ~Recordset() override;

    // Opening and closing.
    // Without a source: a fabricated recordset over the appended fields (3001 without fields).
    // With a source: its rows, read through ActiveConnection (an open Connection; 3709 without
    // one). Such a recordset is read-only unless a lock type is given, as ADO's default is.
    Q_INVOKABLE void Open(const korvex::Variant& Source = {}, const korvex::Variant& ActiveConnection = {},
                          int CursorType = adOpenUnspecified, int LockType = adLockUnspecified,
                          int Options = adCmdUnspecified);
    // Opens over rows a provider has loaded; the store's fields become the recordset's.
    void OpenStore(std::shared_ptr<RecordsetStore> store, int CursorType = adOpenUnspecified,
                   int LockType = adLockUnspecified);
    Q_INVOKABLE void Close();
    // Runs the source again, as Close and Open would: pending changes go, Filter and Sort are
    // cleared, the first record is current (MoveComplete adRsnRequery). Clones keep the old rows.
    // 3219 while a record is being edited or added; 3251 on a fabricated recordset.
    Q_INVOKABLE void Requery(int Options = -1);
    // A recordset over the same rows, with its own cursor (on the first record), no filter and no
    // sort. LockType: adLockUnspecified keeps the lock type, adLockReadOnly makes it read-only.
    std::shared_ptr<Recordset> Clone(int LockType = adLockUnspecified);

    // Properties.
    Variant Filter() const { return mFilter; }
    // A criteria string, a FilterGroupEnum value or an array of bookmarks; "" or 0 removes the
    // filter. Moves to the first record.
    void SetFilter(const Variant& filter);
    QString Sort() const { return mSort; }
    // Moves to the first record. Set while closed, it applies when the recordset opens.
    void SetSort(const QString& sort);
    Variant Bookmark() const;
    void SetBookmark(const Variant& bookmark);
    // 1-based; adPosBOF, adPosEOF, or adPosUnknown when empty or on a deleted record.
    int AbsolutePosition() const;
    void SetAbsolutePosition(int position);
    bool IsBOF() const;
    bool IsEOF() const;
    int RecordCount() const;
    int EditMode() const { return mEditMode; }
    int Status() const;
    int State() const { return mStore ? adStateOpen : adStateClosed; }
    int CursorLocation() const { return mCursorLocation; }
    void SetCursorLocation(int location);
    int CursorType() const { return mCursorType; }
    void SetCursorType(int cursorType);
    int LockType() const { return mLockType; }
    void SetLockType(int lockType);
    korvex::ado::Fields* Fields() const;
    korvex::ado::Properties* Properties() const;

    // Navigation.
    Q_INVOKABLE void MoveFirst();
    Q_INVOKABLE void MoveLast();
    Q_INVOKABLE void MoveNext();
    Q_INVOKABLE void MovePrevious();
    // Start: adBookmarkCurrent, adBookmarkFirst, adBookmarkLast or a bookmark.
    Q_INVOKABLE void Move(int NumRecords, const korvex::Variant& Start = {});
    // One clause; from the current record (or Start) plus SkipRecords, forward or backward. Not
    // found: EOF going forward, BOF going backward.
    Q_INVOKABLE void Find(const QString& Criteria, int SkipRecords = 0, int SearchDirection = adSearchForward,
                          const korvex::Variant& Start = {});
    Q_INVOKABLE int CompareBookmarks(const korvex::Variant& Bookmark1, const korvex::Variant& Bookmark2) const;

    // Editing. Moving away from an edited record updates it first. With adLockBatchOptimistic an
    // update stays pending (Status) until UpdateBatch or CancelBatch; other lock types send each
    // update and delete at once.
    // AddNew moves to a new record at the end (MoveComplete adRsnAddNew); with values it updates.
    Q_INVOKABLE void AddNew(const korvex::Variant& FieldList = {}, const korvex::Variant& Values = {});
    Q_INVOKABLE void Update(const korvex::Variant& Fields = {}, const korvex::Variant& Values = {});
    // Drops the edit; an added record goes and the record before it is current again
    // (MoveComplete adRsnUndoAddNew).
    Q_INVOKABLE void CancelUpdate();
    // adAffectCurrent or adAffectGroup (the filtered records). The deleted record stays current,
    // readable, until the cursor moves (MoveComplete adRsnDelete).
    Q_INVOKABLE void Delete(int AffectRecords = adAffectCurrent);
    // Sends pending changes through the provider; rows it refuses keep their changes and get its
    // status flags, and its error is raised after MoveComplete (adRsnUpdate) reports it.
    Q_INVOKABLE void UpdateBatch(int AffectRecords = adAffectAll);
    // Puts the values as read back, brings deleted rows back and drops new ones
    // (MoveComplete adRsnUndoUpdate).
    Q_INVOKABLE void CancelBatch(int AffectRecords = adAffectAll);
    // Asks the provider to read the rows again (MoveComplete adRsnResynch); a fabricated
    // recordset has no data source to ask: 3251.
    Q_INVOKABLE void Resync(int AffectRecords = adAffectAll, int ResyncValues = adResyncAllValues);

    // For Field, Fields and providers.
    const std::vector<FieldDef>& FieldDefs() const noexcept { return mFieldDefs; }
    void AppendFieldDef(FieldDef field);
    void DeleteFieldDef(int index);
    Variant FieldValue(int field) const;
    void SetFieldValue(int field, const Variant& value);
    Variant FieldOriginalValue(int field) const;
    Variant FieldUnderlyingValue(int field) const;
    bool FieldOptimized(int field) const;
    void SetFieldOptimized(int field, bool on);
    // For views that show every row (a Qt model): the rows in cursor order read by position,
    // without moving the cursor or raising events. The record being added counts, last, with
    // the values being edited. Positions are 0-based; out of range reads Empty.
    std::size_t PositionCount() const;
    RowId RowAtPosition(std::size_t position) const;
    std::optional<std::size_t> PositionOfRow(RowId row) const;
    Variant ValueAtPosition(std::size_t position, int field) const;
    // Grows whenever the order of the rows starts over (Filter, Sort, Open, Close, Requery), so
    // that a view knows its rows no longer stand where they stood.
    std::uint64_t ViewGeneration() const noexcept { return mViewGeneration; }
    // Sorted rows are not in store order: rows added join wherever the sort puts them.
    bool IsSortedView() const noexcept;
    // The store this recordset and its clones share; null while closed.
    const std::shared_ptr<RecordsetStore>& Store() const noexcept { return mStore; }

signals:
    void WillMove(korvex::ado::EventReasonEnum adReason, korvex::ado::EventStatusEnum& adStatus,
                  korvex::ado::Recordset* pRecordset);
    // pError is set when adStatus is adStatusErrorsOccurred.
    void MoveComplete(korvex::ado::EventReasonEnum adReason, const korvex::Error* pError,
                      korvex::ado::EventStatusEnum& adStatus, korvex::ado::Recordset* pRecordset);

private:
    enum class At : unsigned char { BOF, EOF_, Row, Gap };
    struct Position {
        At at = At::BOF;
        std::size_t index = 0;
        RowId row = 0;
    };

    void Attach(std::shared_ptr<RecordsetStore> store);
    void RequireOpen() const;
    void RequireUpdatable() const;
    bool IsBatch() const noexcept { return mLockType == adLockBatchOptimistic; }

    // Cursor.
    void Sync() const;
    void Refind() const;
    std::size_t Count() const noexcept;
    RowId RowAt(std::size_t index) const noexcept;
    std::optional<std::size_t> IndexOfRow(RowId row) const;
    void PlaceAt(std::ptrdiff_t index);
    RowId ReadableRow() const;
    std::ptrdiff_t ResolveStart(const Variant& start, int direction) const;

    // Events.
    template <class Step>
    void Moving(EventReasonEnum reason, Step&& move);
    void BeginMove(EventReasonEnum reason);
    void CompleteMove(EventReasonEnum reason, const Error* error);

    // Editing.
    // Before moving or sending rows: the recordset must be open, an edit is updated, the view
    // has caught up with the clones.
    void PrepareMove();
    void FinishEdit();
    void DiscardEdit();
    void ClearEdits();
    void SetValues(const Variant& fields, const Variant& values);
    // Sends rows to the provider and marks what it accepted and refused; returns its error.
    std::optional<Error> SendChanges(std::span<const RowId> rows);
    std::vector<RowId> RowsAffected(int affect, bool pendingOnly) const;
    std::vector<RowId> RowsOfBookmarks(const Variant& bookmarks) const;

    std::shared_ptr<RecordsetStore> mStore;
    std::vector<FieldDef> mFieldDefs;
    std::vector<char> mOptimizeWanted;  // Optimize set while closed, applied on Open
    QHash<QString, Variant> mDynamicWanted;  // "Unique Table" ... set while closed
    mutable korvex::ado::Fields* mFields = nullptr;
    mutable korvex::ado::Properties* mProperties = nullptr;
    int mCursorLocation = adUseClient;
    int mCursorType = adOpenForwardOnly;
    int mLockType = adLockReadOnly;
    bool mLockTypeSet = false;

    mutable RowView mView;
    std::uint64_t mViewGeneration = 0;
    mutable Position mPos;
    Variant mFilter = Variant(std::int32_t{0});
    QString mSort;

    int mEditMode = adEditNone;
    std::vector<Variant> mEditValues;
    std::vector<char> mEdited;
    Position mBeforeAdd;
    std::vector<RowId> mLastAffected;

    std::uint32_t mUnwantedWillMove = 0;
    std::uint32_t mUnwantedMoveComplete = 0;
};

}  // namespace korvex::ado
