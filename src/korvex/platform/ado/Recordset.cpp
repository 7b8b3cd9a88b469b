// The recordset's cursor, filter and sort, editing and batch operations, and its events.
#include "korvex/platform/ado/Recordset.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/ado/Criteria.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/RecordsetProvider.h"
#include "korvex/platform/ado/RowSource.h"
#include "korvex/platform/ado/RowFilter.h"
#include "korvex/platform/ado/RowSorter.h"
#include "korvex/runtime/Conversions.h"

#include <algorithm>

namespace korvex::ado {
namespace {

bool IsPending(int status)
{
    return (status & (adRecNew | adRecModified | adRecDeleted)) != 0;
}

bool Unwanted(std::uint32_t mask, EventReasonEnum reason)
{
    return (mask >> static_cast<int>(reason)) & 1u;
}

// The recordset-level dynamic properties a client cursor offers.
const char* const DynamicNames[] = {"Unique Table", "Unique Schema", "Unique Catalog", "Resync Command"};

}  // namespace

Recordset::Recordset()
{
    // Signal spies and queued connections need the by-reference status argument by name.
    static const int registered = qRegisterMetaType<EventStatusEnum>("korvex::ado::EventStatusEnum&");
    Q_UNUSED(registered);
}
Recordset::~Recordset() = default;

// Every move goes through here: WillMove first (a handler may cancel), then the move, then
// MoveComplete once the cursor is settled, with the error when the move failed.
template <class Step>
void Recordset::Moving(EventReasonEnum reason, Step&& move)
{
    BeginMove(reason);
    try {
        move();
    } catch (const Error& e) {
        CompleteMove(reason, &e);
        throw;
    }
    CompleteMove(reason, nullptr);
}

// --- Opening and closing ---------------------------------------------------------------------

void Recordset::Open(const Variant& Source, const Variant& ActiveConnection, int CursorType, int LockType, int Options)
{
    if (mStore)
        RaiseAdo(adErrObjectOpen);
    const bool noSource = Source.IsEmpty() || Source.IsNull() || (Source.IsString() && Source.As<QString>()->isEmpty());
    if (!noSource) {
        auto* connection = dynamic_cast<RowSource*>(ActiveConnection.Object());
        if (!connection)
            RaiseAdo(ActiveConnection.IsObject() || ActiveConnection.IsEmpty() ? adErrInvalidConnection : adErrInvalidArgument);
        if (!Source.IsString())
            RaiseAdo(adErrInvalidArgument);
        if (LockType == adLockUnspecified && !mLockTypeSet)
            LockType = adLockReadOnly;
        // A statement that returns no rows leaves the recordset closed.
        if (auto store = connection->OpenSource(*Source.As<QString>(), Options))
            OpenStore(std::move(store), CursorType, LockType);
        return;
    }
    if (mFieldDefs.empty())
        RaiseAdo(adErrInvalidArgument);
    auto store = std::make_shared<RecordsetStore>(mFieldDefs);
    for (std::size_t i = 0; i < mOptimizeWanted.size(); ++i) {
        if (mOptimizeWanted[i])
            store->SetOptimized(static_cast<int>(i), true);
    }
    for (auto it = mDynamicWanted.cbegin(); it != mDynamicWanted.cend(); ++it)
        store->SetDynamicProperty(it.key(), it.value());
    OpenStore(std::move(store), CursorType, LockType);
}

void Recordset::OpenStore(std::shared_ptr<RecordsetStore> store, int CursorType, int LockType)
{
    if (mStore)
        RaiseAdo(adErrObjectOpen);
    if (LockType != adLockUnspecified && (LockType < adLockReadOnly || LockType > adLockBatchOptimistic))
        RaiseAdo(adErrInvalidArgument);
    if (CursorType < adOpenUnspecified || CursorType > adOpenStatic)
        RaiseAdo(adErrInvalidArgument);
    // Rows in memory are updatable in batches unless the caller asked otherwise; the cursor is
    // always a static one.
    if (LockType != adLockUnspecified)
        mLockType = LockType;
    else if (!mLockTypeSet)
        mLockType = adLockBatchOptimistic;
    mCursorType = adOpenStatic;
    // A Sort set while closed applies from the start.
    std::vector<SortKey> keys = BindSortKeys(mSort, *store);
    const QString sort = mSort;
    Moving(adRsnMove, [&] {
        Attach(std::move(store));
        if (!keys.empty()) {
            mView.Resort(std::move(keys));
            ++mViewGeneration;
            mSort = sort;
            PlaceAt(0);
        }
    });
}

void Recordset::Attach(std::shared_ptr<RecordsetStore> store)
{
    mStore = std::move(store);
    mFieldDefs.clear();
    for (int i = 0; i < mStore->FieldCount(); ++i)
        mFieldDefs.push_back(mStore->Field(i));
    mOptimizeWanted.clear();
    mDynamicWanted.clear();
    mEditMode = adEditNone;
    mEditValues.assign(mFieldDefs.size(), Variant());
    mEdited.assign(mFieldDefs.size(), 0);
    mLastAffected.clear();
    mFilter = Variant(std::int32_t{0});
    mSort.clear();
    mView = RowView();
    mView.Define(*mStore, {});
    ++mViewGeneration;
    mPos = {};
    PlaceAt(0);
    if (mFields)
        mFields->Rebuild(static_cast<int>(mFieldDefs.size()));
}

void Recordset::Close()
{
    RequireOpen();
    if (mEditMode == adEditInProgress || mEditMode == adEditAdd)
        RaiseAdo(adErrIllegalOperation);
    mStore->Notify();
    mStore.reset();
    mView = RowView();
    ++mViewGeneration;
    mPos = {};
    mEditMode = adEditNone;
    mFilter = Variant(std::int32_t{0});
    mSort.clear();
    mLastAffected.clear();
}

void Recordset::Requery(int)
{
    RequireOpen();
    if (mEditMode == adEditInProgress || mEditMode == adEditAdd)
        RaiseAdo(adErrIllegalOperation);
    std::shared_ptr<RecordsetStore> store = mStore->Provider().Requery(*mStore);
    Moving(adRsnRequery, [&] { Attach(std::move(store)); });
}

std::shared_ptr<Recordset> Recordset::Clone(int LockType)
{
    RequireOpen();
    if (LockType != adLockUnspecified && LockType != adLockReadOnly)
        RaiseAdo(adErrInvalidArgument);
    auto clone = std::make_shared<Recordset>();
    clone->mCursorLocation = mCursorLocation;
    clone->mCursorType = mCursorType;
    clone->mLockType = LockType == adLockReadOnly ? adLockReadOnly : mLockType;
    clone->mLockTypeSet = true;
    clone->Attach(mStore);
    return clone;
}

void Recordset::RequireOpen() const
{
    if (!mStore)
        RaiseAdo(adErrObjectClosed);
}

void Recordset::RequireUpdatable() const
{
    RequireOpen();
    if (mLockType == adLockReadOnly)
        RaiseAdo(adErrFeatureNotAvailable);
}

// --- Simple properties -----------------------------------------------------------------------

void Recordset::SetCursorLocation(int location)
{
    if (mStore)
        RaiseAdo(adErrObjectOpen);
    if (location != adUseServer && location != adUseClient)
        RaiseAdo(adErrInvalidArgument);
    mCursorLocation = location;
}

void Recordset::SetCursorType(int cursorType)
{
    if (mStore)
        RaiseAdo(adErrObjectOpen);
    if (cursorType < adOpenUnspecified || cursorType > adOpenStatic)
        RaiseAdo(adErrInvalidArgument);
    mCursorType = cursorType;
}

void Recordset::SetLockType(int lockType)
{
    if (mStore)
        RaiseAdo(adErrObjectOpen);
    if (lockType != adLockUnspecified && (lockType < adLockReadOnly || lockType > adLockBatchOptimistic))
        RaiseAdo(adErrInvalidArgument);
    mLockType = lockType;
    mLockTypeSet = lockType != adLockUnspecified;
}

Fields* Recordset::Fields() const
{
    if (!mFields) {
        mFields = new ado::Fields(const_cast<Recordset*>(this));
        mFields->Rebuild(static_cast<int>(mFieldDefs.size()));
    }
    return mFields;
}

Properties* Recordset::Properties() const
{
    if (!mProperties) {
        auto* self = const_cast<Recordset*>(this);
        mProperties = new ado::Properties(self);
        for (const char* name : DynamicNames) {
            const QString key = QString::fromLatin1(name);
            mProperties->Add(
                key, adBSTR,
                [self, key] {
                    const Variant v = self->mStore ? self->mStore->DynamicProperty(key) : self->mDynamicWanted.value(key.toLower());
                    return v.IsEmpty() ? Variant(QString()) : v;
                },
                [self, key](const Variant& value) {
                    if (self->mStore)
                        self->mStore->SetDynamicProperty(key, Variant(CStr(value)));
                    else
                        self->mDynamicWanted.insert(key.toLower(), Variant(CStr(value)));
                });
        }
    }
    return mProperties;
}

// --- Cursor ----------------------------------------------------------------------------------

std::size_t Recordset::Count() const noexcept
{
    return mView.Size() + (mEditMode == adEditAdd ? 1 : 0);
}

RowId Recordset::RowAt(std::size_t index) const noexcept
{
    return index < mView.Size() ? mView.At(index) : mPos.row;
}

std::optional<std::size_t> Recordset::IndexOfRow(RowId row) const
{
    if (mEditMode == adEditAdd && row == mPos.row)
        return mView.Size();
    return mView.IndexOf(row);
}

std::size_t Recordset::PositionCount() const
{
    Sync();
    return mStore ? Count() : 0;
}

RowId Recordset::RowAtPosition(std::size_t position) const
{
    Sync();
    return RowAt(position);
}

std::optional<std::size_t> Recordset::PositionOfRow(RowId row) const
{
    Sync();
    return mStore ? IndexOfRow(row) : std::nullopt;
}

Variant Recordset::ValueAtPosition(std::size_t position, int field) const
{
    Sync();
    if (!mStore || position >= Count())
        return {};
    const RowId row = RowAt(position);
    if ((mEditMode == adEditInProgress || mEditMode == adEditAdd) && row == mPos.row &&
        mEdited[static_cast<std::size_t>(field)])
        return mEditValues[static_cast<std::size_t>(field)];
    return mStore->Value(row, field);
}

bool Recordset::IsSortedView() const noexcept
{
    return !mView.IsAscending();
}

void Recordset::Sync() const
{
    if (mStore && mView.Sync(*mStore, this))
        Refind();
}

void Recordset::Refind() const
{
    if (mPos.at != At::Row && mPos.at != At::Gap)
        return;
    // The rows moved under the cursor: find the current record again, or the gap it left. Most
    // changes (rows added at the end) leave it where it was, which a sorted view checks cheaply.
    if (mPos.at == At::Row && mPos.index < mView.Size() && mView.At(mPos.index) == mPos.row)
        return;
    if (auto index = IndexOfRow(mPos.row)) {
        mPos.at = At::Row;
        mPos.index = *index;
    } else {
        mPos.at = At::Gap;
        mPos.index = mView.GapIndex(mPos.row, mPos.index);
    }
}

void Recordset::PlaceAt(std::ptrdiff_t index)
{
    if (mEditMode == adEditDelete)
        mEditMode = adEditNone;
    if (index < 0)
        mPos = {At::BOF, 0, 0};
    else if (static_cast<std::size_t>(index) >= Count())
        mPos = {At::EOF_, Count(), 0};
    else
        mPos = {At::Row, static_cast<std::size_t>(index), RowAt(static_cast<std::size_t>(index))};
}

bool Recordset::IsBOF() const
{
    RequireOpen();
    Sync();
    return mPos.at == At::BOF || (Count() == 0 && mPos.at != At::Gap);
}

bool Recordset::IsEOF() const
{
    RequireOpen();
    Sync();
    return mPos.at == At::EOF_ || (Count() == 0 && mPos.at != At::Gap);
}

int Recordset::RecordCount() const
{
    RequireOpen();
    Sync();
    return static_cast<int>(Count());
}

int Recordset::AbsolutePosition() const
{
    RequireOpen();
    Sync();
    if (Count() == 0 || mPos.at == At::Gap)
        return adPosUnknown;
    if (mPos.at == At::BOF)
        return adPosBOF;
    if (mPos.at == At::EOF_)
        return adPosEOF;
    return static_cast<int>(mPos.index) + 1;
}

void Recordset::SetAbsolutePosition(int position)
{
    PrepareMove();
    if (position < 1 || static_cast<std::size_t>(position) > Count())
        RaiseAdo(adErrInvalidArgument);
    Moving(adRsnMove, [&] { PlaceAt(position - 1); });
}

RowId Recordset::ReadableRow() const
{
    RequireOpen();
    Sync();
    if (mPos.at != At::Row && mPos.at != At::Gap)
        RaiseAdo(adErrNoCurrentRecord);
    return mPos.row;
}

Variant Recordset::Bookmark() const
{
    return mStore->BookmarkOf(ReadableRow());
}

void Recordset::SetBookmark(const Variant& bookmark)
{
    PrepareMove();
    const auto row = mStore->RowOfBookmark(bookmark);
    const auto index = row ? IndexOfRow(*row) : std::nullopt;
    if (!index)
        RaiseAdo(adErrInvalidArgument);
    Moving(adRsnMove, [&] { PlaceAt(static_cast<std::ptrdiff_t>(*index)); });
}

int Recordset::CompareBookmarks(const Variant& Bookmark1, const Variant& Bookmark2) const
{
    RequireOpen();
    Sync();
    const auto a = mStore->RowOfBookmark(Bookmark1);
    const auto b = mStore->RowOfBookmark(Bookmark2);
    if (!a || !b)
        RaiseAdo(adErrInvalidArgument);
    if (*a == *b)
        return adCompareEqual;
    const auto ia = IndexOfRow(*a);
    const auto ib = IndexOfRow(*b);
    if (!ia || !ib)
        return adCompareNotComparable;  // a record the filter hides has no place to compare
    return *ia < *ib ? adCompareLessThan : adCompareGreaterThan;
}

int Recordset::Status() const
{
    const RowId row = ReadableRow();
    return mEditMode == adEditAdd ? adRecNew : mStore->Status(row);
}

// --- Events ----------------------------------------------------------------------------------

void Recordset::BeginMove(EventReasonEnum reason)
{
    if (Unwanted(mUnwantedWillMove, reason))
        return;
    EventStatusEnum status = adStatusOK;
    emit WillMove(reason, status, this);
    if (status == adStatusUnwantedEvent) {
        mUnwantedWillMove |= 1u << static_cast<int>(reason);
    } else if (status == adStatusCancel) {
        const Error cancelled(adErrOperationCancelled, RecordsetSource, AdoErrorDescription(adErrOperationCancelled));
        CompleteMove(reason, &cancelled);
        throw cancelled;
    }
}

void Recordset::CompleteMove(EventReasonEnum reason, const Error* error)
{
    if (Unwanted(mUnwantedMoveComplete, reason))
        return;
    EventStatusEnum status = error ? adStatusErrorsOccurred : adStatusOK;
    emit MoveComplete(reason, error, status, this);
    if (status == adStatusUnwantedEvent)
        mUnwantedMoveComplete |= 1u << static_cast<int>(reason);
}

// --- Navigation ------------------------------------------------------------------------------

void Recordset::MoveFirst()
{
    PrepareMove();
    Moving(adRsnMoveFirst, [&] { PlaceAt(0); });
}

void Recordset::MoveLast()
{
    PrepareMove();
    Moving(adRsnMoveLast, [&] { PlaceAt(Count() == 0 ? 0 : static_cast<std::ptrdiff_t>(Count()) - 1); });
}

void Recordset::MoveNext()
{
    if (IsEOF())
        RaiseAdo(adErrNoCurrentRecord);
    FinishEdit();
    Sync();
    Moving(adRsnMoveNext, [&] {
        const auto index = static_cast<std::ptrdiff_t>(mPos.index);
        PlaceAt(mPos.at == At::BOF ? 0 : (mPos.at == At::Gap ? index : index + 1));
    });
}

void Recordset::MovePrevious()
{
    if (IsBOF())
        RaiseAdo(adErrNoCurrentRecord);
    FinishEdit();
    Sync();
    Moving(adRsnMovePrevious, [&] {
        const auto index = mPos.at == At::EOF_ ? static_cast<std::ptrdiff_t>(Count())
                                               : static_cast<std::ptrdiff_t>(mPos.index);
        PlaceAt(index - 1);
    });
}

std::ptrdiff_t Recordset::ResolveStart(const Variant& start, int direction) const
{
    const auto count = static_cast<std::ptrdiff_t>(Count());
    if (!start.IsEmpty() && !start.IsNull()) {
        if (const auto row = mStore->RowOfBookmark(start)) {
            if (const auto index = IndexOfRow(*row))
                return static_cast<std::ptrdiff_t>(*index);
            RaiseAdo(adErrInvalidArgument);
        }
        if (!start.IsNumber())
            RaiseAdo(adErrInvalidArgument);
        switch (CLng(start)) {
        case adBookmarkCurrent: break;
        case adBookmarkFirst: return 0;
        case adBookmarkLast: return count - 1;
        default: RaiseAdo(adErrInvalidArgument);
        }
    }
    const auto index = static_cast<std::ptrdiff_t>(mPos.index);
    switch (mPos.at) {
    case At::Row: return index;
    case At::Gap: return direction > 0 ? index : index - 1;
    case At::BOF: return direction > 0 ? 0 : -1;
    case At::EOF_: return direction > 0 ? count : count - 1;
    }
    return -1;
}

void Recordset::Move(int NumRecords, const Variant& Start)
{
    PrepareMove();
    const bool fromCurrent = Start.IsEmpty() || (Start.IsNumber() && !mStore->RowOfBookmark(Start) &&
                                                 CLng(Start) == adBookmarkCurrent);
    std::ptrdiff_t base = 0;
    if (fromCurrent) {
        // BOF stands before the first record, EOF after the last; a gap between its neighbours.
        const auto index = static_cast<std::ptrdiff_t>(mPos.index);
        const bool beforeFirst = mPos.at == At::BOF || Count() == 0;
        if ((beforeFirst && NumRecords <= 0) || (mPos.at == At::EOF_ && NumRecords >= 0) ||
            (mPos.at == At::Gap && NumRecords == 0))
            RaiseAdo(adErrNoCurrentRecord);
        switch (mPos.at) {
        case At::Row: base = index; break;
        case At::BOF: base = -1; break;
        case At::EOF_: base = static_cast<std::ptrdiff_t>(Count()); break;
        case At::Gap: base = NumRecords > 0 ? index - 1 : index; break;
        }
    } else {
        base = ResolveStart(Start, NumRecords);
    }
    const std::ptrdiff_t target = base + NumRecords;
    Moving(adRsnMove, [&] { PlaceAt(target); });
}

void Recordset::Find(const QString& Criteria, int SkipRecords, int SearchDirection, const Variant& Start)
{
    RequireOpen();
    const RowFilter filter(ParseCriteria(Criteria), *mStore);
    if (!filter.IsSingleClause() || (SearchDirection != adSearchForward && SearchDirection != adSearchBackward))
        RaiseAdo(adErrInvalidArgument);
    FinishEdit();
    Sync();
    const int step = SearchDirection;
    const auto count = static_cast<std::ptrdiff_t>(Count());
    std::ptrdiff_t index = ResolveStart(Start, step) + static_cast<std::ptrdiff_t>(SkipRecords) * step;
    std::ptrdiff_t found = -1;
    const auto candidates = mView.IsAscending() ? filter.Candidates() : std::nullopt;
    if (candidates && index >= 0 && index < count) {
        // The view is in row order, so the index's rows come in the order a scan would meet them.
        const RowId from = RowAt(static_cast<std::size_t>(index));
        if (step > 0) {
            for (auto it = std::lower_bound(candidates->begin(), candidates->end(), from);
                 found < 0 && it != candidates->end(); ++it) {
                if (const auto i = IndexOfRow(*it); i && filter.Matches(*it))
                    found = static_cast<std::ptrdiff_t>(*i);
            }
        } else {
            for (auto it = std::upper_bound(candidates->begin(), candidates->end(), from);
                 found < 0 && it != candidates->begin();) {
                --it;
                if (const auto i = IndexOfRow(*it); i && filter.Matches(*it))
                    found = static_cast<std::ptrdiff_t>(*i);
            }
        }
    } else {
        for (; found < 0 && index >= 0 && index < count; index += step) {
            if (filter.Matches(RowAt(static_cast<std::size_t>(index))))
                found = index;
        }
    }
    Moving(adRsnMove, [&] { PlaceAt(found >= 0 ? found : (step > 0 ? count : -1)); });
}

// --- Filter and sort -------------------------------------------------------------------------

std::vector<RowId> Recordset::RowsOfBookmarks(const Variant& bookmarks) const
{
    std::vector<RowId> rows;
    for (const Variant& bookmark : bookmarks.Items()) {
        const auto row = mStore->RowOfBookmark(bookmark);
        if (!row)
            RaiseAdo(adErrInvalidArgument);
        rows.push_back(*row);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void Recordset::SetFilter(const Variant& filter)
{
    RequireOpen();
    RowView::Definition definition;
    definition.sort = mView.Def().sort;
    Variant stored = filter;
    if (const auto* text = filter.As<QString>()) {
        if (text->trimmed().isEmpty())
            stored = Variant(std::int32_t{adFilterNone});
        else
            definition.criteria = std::make_shared<RowFilter>(ParseCriteria(*text), *mStore);
        // Typing on narrows a filter: its rows are among the last answer's.
        if (const auto& wider = mView.Def().criteria; definition.criteria && wider && definition.criteria->Narrows(*wider))
            definition.within = mView.Selected();
    } else if (filter.IsArray()) {
        definition.byBookmarks = true;
        definition.bookmarks = RowsOfBookmarks(filter);
    } else if (filter.IsEmpty() || filter.IsNumber()) {
        const int group = filter.IsEmpty() ? adFilterNone : CLng(filter);
        if (group < adFilterNone || group > adFilterConflictingRecords || group == adFilterPredicate)
            RaiseAdo(adErrInvalidArgument);
        definition.group = static_cast<FilterGroupEnum>(group);
        stored = Variant(std::int32_t{group});
        if (group == adFilterAffectedRecords) {
            definition.affected = mLastAffected;
            std::sort(definition.affected.begin(), definition.affected.end());
        }
    } else {
        RaiseAdo(adErrInvalidArgument);
    }
    FinishEdit();
    Sync();
    Moving(adRsnMove, [&] {
        mView.Define(*mStore, std::move(definition));
        ++mViewGeneration;
        mFilter = stored;
        PlaceAt(0);
    });
}

void Recordset::SetSort(const QString& sort)
{
    if (!mStore) {
        (void)ParseSortTerms(sort);  // the field names are checked when the recordset opens
        mSort = sort;
        return;
    }
    std::vector<SortKey> keys = BindSortKeys(sort, *mStore);
    FinishEdit();
    Sync();
    Moving(adRsnMove, [&] {
        mView.Resort(std::move(keys));
        ++mViewGeneration;
        mSort = sort;
        PlaceAt(0);
    });
}

// --- Field values ----------------------------------------------------------------------------

void Recordset::AppendFieldDef(FieldDef field)
{
    if (mStore)
        RaiseAdo(adErrIllegalOperation, FieldsSource);
    for (const FieldDef& f : mFieldDefs) {
        if (f.Name.compare(field.Name, Qt::CaseInsensitive) == 0)
            RaiseAdo(adErrObjectInCollection, FieldsSource);
    }
    mFieldDefs.push_back(std::move(field));
    mOptimizeWanted.resize(mFieldDefs.size(), 0);
}

void Recordset::DeleteFieldDef(int index)
{
    if (mStore)
        RaiseAdo(adErrIllegalOperation, FieldsSource);
    mFieldDefs.erase(mFieldDefs.begin() + index);
    mOptimizeWanted.resize(mFieldDefs.size() + 1, 0);
    mOptimizeWanted.erase(mOptimizeWanted.begin() + index);
}

Variant Recordset::FieldValue(int field) const
{
    const RowId row = ReadableRow();
    if ((mEditMode == adEditInProgress || mEditMode == adEditAdd) && mEdited[static_cast<std::size_t>(field)])
        return mEditValues[static_cast<std::size_t>(field)];
    return mStore->Value(row, field);
}

void Recordset::SetFieldValue(int field, const Variant& value)
{
    RequireUpdatable();
    Sync();
    if (mPos.at != At::Row || (mEditMode != adEditAdd && (mStore->Status(mPos.row) & adRecDeleted)))
        RaiseAdo(adErrNoCurrentRecord);
    const FieldDef& def = mFieldDefs[static_cast<std::size_t>(field)];
    if (!def.IsUpdatable())
        RaiseAdo(adErrPermissionDenied, FieldSource);
    FieldInput input = ConvertForField(value, def);
    Field* object = mFields ? mFields->Item(field) : nullptr;
    if (object)
        object->SetStatus(input.status);
    if (input.status != adFieldOK)
        RaiseAdo(adErrMultipleStep, FieldSource);
    if (mEditMode == adEditNone || mEditMode == adEditDelete)
        mEditMode = adEditInProgress;
    mEditValues[static_cast<std::size_t>(field)] = std::move(input.value);
    mEdited[static_cast<std::size_t>(field)] = 1;
}

Variant Recordset::FieldOriginalValue(int field) const
{
    const RowId row = ReadableRow();
    return mEditMode == adEditAdd ? Variant() : mStore->OriginalValue(row, field);
}

Variant Recordset::FieldUnderlyingValue(int field) const
{
    const RowId row = ReadableRow();
    return mEditMode == adEditAdd ? Variant() : mStore->UnderlyingValue(row, field);
}

bool Recordset::FieldOptimized(int field) const
{
    if (mStore)
        return mStore->IsOptimized(field);
    return field < static_cast<int>(mOptimizeWanted.size()) && mOptimizeWanted[static_cast<std::size_t>(field)];
}

void Recordset::SetFieldOptimized(int field, bool on)
{
    if (mStore) {
        mStore->SetOptimized(field, on);
        return;
    }
    mOptimizeWanted.resize(mFieldDefs.size(), 0);
    mOptimizeWanted[static_cast<std::size_t>(field)] = on ? 1 : 0;
}

// --- Editing ---------------------------------------------------------------------------------

void Recordset::PrepareMove()
{
    RequireOpen();
    FinishEdit();
    Sync();
}

void Recordset::FinishEdit()
{
    if (mEditMode == adEditInProgress || mEditMode == adEditAdd)
        Update();
}

void Recordset::DiscardEdit()
{
    if (mEditMode == adEditAdd)
        mStore->DiscardAdd(mPos.row, this);
    ClearEdits();
}

void Recordset::ClearEdits()
{
    std::fill(mEditValues.begin(), mEditValues.end(), Variant());
    std::fill(mEdited.begin(), mEdited.end(), 0);
    mEditMode = adEditNone;
}

void Recordset::SetValues(const Variant& fields, const Variant& values)
{
    const QList<Variant> names = fields.IsArray() ? fields.Items() : QList<Variant>{fields};
    const QList<Variant> items = values.IsArray() ? values.Items() : QList<Variant>{values};
    if (names.size() != items.size())
        RaiseAdo(adErrInvalidArgument);
    for (qsizetype i = 0; i < names.size(); ++i)
        SetFieldValue(Fields()->Item(names[i])->Index(), items[i]);
}

void Recordset::AddNew(const Variant& FieldList, const Variant& Values)
{
    RequireUpdatable();
    FinishEdit();
    Sync();
    Moving(adRsnAddNew, [&] {
        mBeforeAdd = mPos;
        const RowId row = mStore->BeginAdd();
        DiscardEdit();
        mEditMode = adEditAdd;
        mPos = {At::Row, mView.Size(), row};
        // The move is announced with the new record's values in place.
        if (!FieldList.IsEmpty()) {
            SetValues(FieldList, Values);
            Update();
        }
    });
}

void Recordset::Update(const Variant& Fields, const Variant& Values)
{
    RequireOpen();
    if (!Fields.IsEmpty())
        SetValues(Fields, Values);
    if (mEditMode != adEditInProgress && mEditMode != adEditAdd)
        return;
    Sync();
    const RowId row = mPos.row;
    const bool adding = mEditMode == adEditAdd;
    if (!adding && (mPos.at != At::Row || !mStore->IsVisible(row))) {
        DiscardEdit();  // the record was deleted through a clone meanwhile
        RaiseAdo(adErrNoCurrentRecord);
    }
    for (std::size_t f = 0; f < mEdited.size(); ++f) {
        if (mEdited[f])
            mStore->WriteValue(row, static_cast<int>(f), mEditValues[f]);
    }
    if (adding) {
        mStore->CommitAdd(row, this, true);
        mView.AddOwn(row);
    }
    ClearEdits();
    Sync();
    if (!IsBatch()) {
        const RowId rows[] = {row};
        if (auto error = SendChanges(rows))
            throw *error;
    }
}

void Recordset::CancelUpdate()
{
    RequireOpen();
    if (mEditMode == adEditInProgress) {
        DiscardEdit();
        return;
    }
    if (mEditMode != adEditAdd)
        return;
    Moving(adRsnUndoAddNew, [&] {
        DiscardEdit();
        mPos = mBeforeAdd;
        Refind();
    });
}

std::optional<Error> Recordset::SendChanges(std::span<const RowId> rows)
{
    BatchOutcome outcome = mStore->Provider().UpdateBatch(*mStore, rows);
    std::vector<RowId> accepted;
    accepted.reserve(rows.size());
    for (RowId row : rows) {
        auto refused = std::find_if(outcome.refused.begin(), outcome.refused.end(),
                                    [&](const auto& r) { return r.first == row; });
        if (refused != outcome.refused.end())
            mStore->AddStatusFlags(row, refused->second);
        else
            accepted.push_back(row);
    }
    mStore->AcceptChanges(accepted, this);
    if (!outcome.values.empty()) {
        std::sort(accepted.begin(), accepted.end());
        for (const SourceValue& v : outcome.values) {
            if (std::binary_search(accepted.begin(), accepted.end(), v.row))
                mStore->SetSourceValue(v.row, v.field, v.value);
        }
    }
    mLastAffected.assign(rows.begin(), rows.end());
    Sync();
    return std::move(outcome.error);
}

void Recordset::Delete(int AffectRecords)
{
    RequireUpdatable();
    if (AffectRecords != adAffectCurrent && AffectRecords != adAffectGroup)
        RaiseAdo(adErrInvalidArgument);
    std::vector<RowId> rows;
    if (AffectRecords == adAffectCurrent) {
        Sync();
        if (mPos.at != At::Row || (mEditMode != adEditAdd && (mStore->Status(mPos.row) & adRecDeleted)))
            RaiseAdo(adErrNoCurrentRecord);
        if (mEditMode == adEditAdd) {
            // A record never added leaves a gap where it stood, at the end.
            Moving(adRsnDelete, [&] {
                const RowId row = mPos.row;
                DiscardEdit();
                mPos = {At::Gap, mView.Size(), row};
                mEditMode = adEditDelete;
            });
            return;
        }
        rows.push_back(mPos.row);
    } else {
        FinishEdit();
        Sync();
        for (RowId row : mView.Rows()) {
            if (!(mStore->Status(row) & adRecDeleted))
                rows.push_back(row);
        }
    }
    std::optional<Error> error;
    Moving(adRsnDelete, [&] {
        DiscardEdit();
        mStore->MarkDeleted(rows, this);
        mLastAffected = rows;
        if (!IsBatch())
            error = SendChanges(rows);
        Sync();
        if (mPos.at == At::Row || mPos.at == At::Gap)
            mEditMode = adEditDelete;
    });
    if (error)
        throw *error;
}

std::vector<RowId> Recordset::RowsAffected(int affect, bool pendingOnly) const
{
    std::vector<RowId> rows;
    switch (affect) {
    case adAffectCurrent: {
        const RowId row = ReadableRow();
        if (!mStore->IsGone(row) && (!pendingOnly || IsPending(mStore->Status(row))))
            rows.push_back(row);
        break;
    }
    case adAffectGroup:
        for (RowId row : mView.Rows()) {
            if (!pendingOnly || IsPending(mStore->Status(row)))
                rows.push_back(row);
        }
        std::sort(rows.begin(), rows.end());
        break;
    case adAffectAll:
    case adAffectAllChapters:
        if (pendingOnly) {
            rows = mStore->PendingRows();
        } else {
            for (RowId row = 0; row < mStore->RowCount(); ++row) {
                if (!mStore->IsGone(row) && !mStore->IsBeingAdded(row))
                    rows.push_back(row);
            }
        }
        break;
    default: RaiseAdo(adErrInvalidArgument);
    }
    return rows;
}

void Recordset::UpdateBatch(int AffectRecords)
{
    PrepareMove();
    const std::vector<RowId> rows = RowsAffected(AffectRecords, true);
    if (rows.empty())
        return;
    const std::optional<Error> error = SendChanges(rows);
    CompleteMove(adRsnUpdate, error ? &*error : nullptr);
    if (error)
        throw *error;
}

void Recordset::CancelBatch(int AffectRecords)
{
    RequireOpen();
    if (AffectRecords < adAffectCurrent || AffectRecords > adAffectAllChapters)
        RaiseAdo(adErrInvalidArgument);
    bool moved = false;
    if (mEditMode == adEditAdd) {
        DiscardEdit();
        mPos = mBeforeAdd;
        Refind();
        moved = true;
    } else if (mEditMode == adEditInProgress) {
        DiscardEdit();
    }
    Sync();
    std::vector<RowId> rows;
    if (AffectRecords != adAffectCurrent || mPos.at == At::Row || mPos.at == At::Gap)
        rows = RowsAffected(AffectRecords, true);
    mStore->CancelChanges(rows, this);
    mLastAffected = rows;
    Sync();
    if (moved || !rows.empty())
        CompleteMove(adRsnUndoUpdate, nullptr);
}

void Recordset::Resync(int AffectRecords, int ResyncValues)
{
    RequireOpen();
    if (ResyncValues != adResyncUnderlyingValues && ResyncValues != adResyncAllValues)
        RaiseAdo(adErrInvalidArgument);
    FinishEdit();
    Sync();
    const std::vector<RowId> rows = RowsAffected(AffectRecords, false);
    mStore->Provider().Resync(*mStore, rows, static_cast<ResyncEnum>(ResyncValues));
    mLastAffected = rows;
    Sync();
    CompleteMove(adRsnResynch, nullptr);
}

}  // namespace korvex::ado
