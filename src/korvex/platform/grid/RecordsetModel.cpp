// RecordsetModel: cells read through the recordset's positions; changes found by comparing the
// recordset's view generation and its store's change log with what the views were last told.
#include "korvex/platform/grid/RecordsetModel.h"

#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/DateTime.h"
#include "korvex/runtime/EntryGuard.h"

#include <algorithm>

namespace korvex {

Q_LOGGING_CATEGORY(lcGrid, "korvex.grid")

namespace {

// Removals beyond this many are told as a reset: one signal instead of thousands.
constexpr std::size_t MaxRemovalsTold = 512;

// A value as Qt's own views, delegates and completers expect it: plain Qt types, Null as none.
QVariant PlainValue(const Variant& value)
{
    switch (value.VarType()) {
    case vbEmpty:
    case vbNull: return {};
    case vbBoolean: return CBool(value);
    case vbInteger:
    case vbLong:
    case vbByte: return static_cast<int>(CLng(value));
    case vbSingle:
    case vbDouble:
    case vbCurrency: return CDbl(value);
    case vbDate: return ToQDateTime(CDate(value));
    case vbString: return *value.As<QString>();
    default: return {};
    }
}

}  // namespace

RecordsetModel::RecordsetModel(QObject* parent) : QAbstractTableModel(parent) {}

RecordsetModel::RecordsetModel(std::shared_ptr<ado::Recordset> recordset, QObject* parent)
    : QAbstractTableModel(parent)
{
    SetRecordset(std::move(recordset));
}

RecordsetModel::~RecordsetModel()
{
    Unwatch();
}

void RecordsetModel::SetRecordset(std::shared_ptr<ado::Recordset> recordset)
{
    QObject::disconnect(mMoveConnection);
    Unwatch();
    mRS = std::move(recordset);
    if (mRS) {
        // Every move of the recordset may come with new rows, a new order or a record being
        // added; the model looks at once so that views and the recordset agree in the handlers.
        mMoveConnection = connect(mRS.get(), &ado::Recordset::MoveComplete, this,
                                  [this](ado::EventReasonEnum, const Error*, ado::EventStatusEnum&, ado::Recordset*) {
                                      Guarded(this, [this] { Refresh(); });
                                  });
    }
    Watch();
    Reset(Current());
}

RecordsetModel::Stamp RecordsetModel::Current() const
{
    Stamp stamp;
    if (!mRS || !mRS->Store())
        return stamp;
    stamp.store = mRS->Store().get();
    stamp.generation = mRS->ViewGeneration();
    stamp.version = stamp.store->Version();
    stamp.content = stamp.store->ContentVersion();
    return stamp;
}

void RecordsetModel::Watch()
{
    if (!mRS || !mRS->Store())
        return;
    const std::shared_ptr<ado::RecordsetStore>& store = mRS->Store();
    mWatched = store;
    mWatchId = store->Watch([this] { ScheduleRefresh(); });
}

void RecordsetModel::Unwatch()
{
    if (auto store = mWatched.lock())
        store->Unwatch(mWatchId);
    mWatched.reset();
    mWatchId = 0;
}

void RecordsetModel::ScheduleRefresh()
{
    if (mRefreshQueued)
        return;
    mRefreshQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (mRefreshQueued)
                Guarded(this, [this] { Refresh(); });
        },
        Qt::QueuedConnection);
}

void RecordsetModel::Reset(const Stamp& stamp)
{
    beginResetModel();
    mLeaving.clear();
    mStamp = stamp;
    mRows = stamp.store ? static_cast<int>(mRS->PositionCount()) : 0;
    mColumns = stamp.store ? static_cast<int>(mRS->FieldDefs().size()) : 0;
    endResetModel();
}

void RecordsetModel::Refresh()
{
    mRefreshQueued = false;
    const int count = mRS && mRS->Store() ? static_cast<int>(mRS->PositionCount()) : 0;
    const Stamp now = Current();
    if (now.store != mStamp.store) {
        Unwatch();
        Watch();
    }
    if (now.store != mStamp.store || now.generation != mStamp.generation ||
        (now.store && static_cast<int>(mRS->FieldDefs().size()) != mColumns)) {
        Reset(now);
        return;
    }
    if (!now.store)
        return;
    if (now.version != mStamp.version) {
        bool told = false;
        if (const auto changes = now.store->ChangesSince(mStamp.version); changes && !mRS->IsSortedView()) {
            std::vector<ado::RowId> added, removed;
            for (const ado::RecordsetStore::Change& change : *changes)
                (change.kind == ado::RecordsetStore::ChangeKind::Added ? added : removed).push_back(change.row);
            if (removed.empty())
                told = AnnounceAdded(added, count);
            else if (added.empty())
                told = AnnounceRemoved(removed, count);
        }
        if (!told) {
            Reset(now);
            return;
        }
    } else if (count != mRows) {
        // A record being added came (AddNew) or went (CancelUpdate) in this recordset.
        if (!AnnounceAdded({}, count)) {
            Reset(now);
            return;
        }
    }
    const bool valuesChanged = now.content != mStamp.content;
    mStamp = now;
    if (valuesChanged && mRows > 0 && mColumns > 0)
        emit dataChanged(index(0, 0), index(mRows - 1, mColumns - 1));
}

bool RecordsetModel::AnnounceAdded(const std::vector<ado::RowId>& added, int count)
{
    if (count < mRows || mRS->IsSortedView())
        return false;
    std::vector<ado::RowId> sorted = added;
    std::sort(sorted.begin(), sorted.end());
    const ado::RecordsetStore& store = *mRS->Store();
    for (int p = mRows; p < count; ++p) {
        const ado::RowId row = mRS->RowAtPosition(static_cast<std::size_t>(p));
        if (!std::binary_search(sorted.begin(), sorted.end(), row) && !store.IsBeingAdded(row))
            return false;
    }
    if (count > mRows) {
        beginInsertRows({}, mRows, count - 1);
        mRows = count;
        endInsertRows();
    }
    return true;
}

bool RecordsetModel::AnnounceRemoved(const std::vector<ado::RowId>& removed, int count)
{
    std::vector<ado::RowId> rows = removed;
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    // Only when every removed record was among the rows can their places be worked out.
    if (rows.size() > MaxRemovalsTold || static_cast<std::size_t>(mRows - count) != rows.size())
        return false;
    mLeaving.clear();
    for (std::size_t i = 0; i < rows.size(); ++i)
        mLeaving.emplace_back(static_cast<int>(PositionOfNewRow(rows[i], count) + i), rows[i]);
    // From the end, so that the rows still to go keep their places; neighbours go together.
    while (!mLeaving.empty()) {
        std::size_t first = mLeaving.size() - 1;
        while (first > 0 && mLeaving[first - 1].first == mLeaving[first].first - 1)
            --first;
        const int from = mLeaving[first].first;
        const int to = mLeaving.back().first;
        beginRemoveRows({}, from, to);
        mLeaving.resize(first);
        mRows -= to - from + 1;
        endRemoveRows();
    }
    return true;
}

// Unsorted rows stand in store order: the place of a row is the number of rows before it.
std::size_t RecordsetModel::PositionOfNewRow(ado::RowId row, int count) const
{
    std::size_t low = 0, high = static_cast<std::size_t>(count);
    while (low < high) {
        const std::size_t mid = low + (high - low) / 2;
        if (mRS->RowAtPosition(mid) < row)
            low = mid + 1;
        else
            high = mid;
    }
    return low;
}

Variant RecordsetModel::Value(int row, int field) const
{
    if (!mStamp.store || !mRS->Store() || row < 0 || row >= mRows || field < 0 || field >= mColumns)
        return {};
    int before = 0;
    for (const auto& [leaving, record] : mLeaving) {
        if (leaving == row)
            return mRS->Store()->Value(record, field);
        if (leaving > row)
            break;
        ++before;
    }
    return mRS->ValueAtPosition(static_cast<std::size_t>(row - before), field);
}

QString RecordsetModel::Text(int row, int field) const
{
    const Variant value = Value(row, field);
    if (value.IsNull() || value.IsEmpty() || value.IsArray() || value.IsObject())
        return {};
    return CStr(value);
}

int RecordsetModel::RowOfBookmark(const Variant& bookmark) const
{
    if (!mStamp.store || !mRS->Store())
        return -1;
    const auto record = mRS->Store()->RowOfBookmark(bookmark);
    if (!record)
        return -1;
    const auto position = mRS->PositionOfRow(*record);
    return position && static_cast<int>(*position) < mRows ? static_cast<int>(*position) : -1;
}

Variant RecordsetModel::BookmarkOfRow(int row) const
{
    if (!mStamp.store || !mRS->Store() || row < 0 || row >= mRows || !mLeaving.empty())
        return {};
    return mRS->Store()->BookmarkOf(mRS->RowAtPosition(static_cast<std::size_t>(row)));
}

int RecordsetModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : mRows;
}

int RecordsetModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : mColumns;
}

QVariant RecordsetModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return DisplayText(index.row(), index.column());
    case Qt::EditRole:
        return PlainValue(Value(index.row(), index.column()));
    case Qt::TextAlignmentRole: {
        const Variant value = Value(index.row(), index.column());
        const bool number = value.IsNumber() && value.VarType() != vbBoolean;
        return QVariant::fromValue(Qt::Alignment((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
    }
    default:
        return {};
    }
}

QVariant RecordsetModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || section < 0)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (orientation == Qt::Horizontal)
        return section < mColumns && section < static_cast<int>(mRS->FieldDefs().size()) ? QVariant(mRS->FieldDefs()[static_cast<std::size_t>(section)].Name) : QVariant();
    return section < mRows ? QVariant(section + 1) : QVariant();
}

Qt::ItemFlags RecordsetModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    if (mStamp.store && mRS->Store() && mRS->LockType() != ado::adLockReadOnly && index.column() < mColumns &&
        mRS->FieldDefs()[static_cast<std::size_t>(index.column())].IsUpdatable())
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool RecordsetModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable) || !mLeaving.empty())
        return false;
    try {
        mRS->SetAbsolutePosition(index.row() + 1);
        mRS->Fields()->Item(index.column())->SetValue(Variant::FromQVariant(value));
        mRS->Update();
    } catch (const Error& e) {
        qCWarning(lcGrid).noquote() << "the recordset refused the edit of row" << index.row() << "column"
                                    << index.column() << ":" << e.Description();
        if (mRS->EditMode() != ado::adEditNone)
            Guarded(this, [this] { mRS->CancelUpdate(); });
        return false;
    }
    Refresh();
    return true;
}

}  // namespace korvex
