// The shared column and row-source model of the list controls.
#include "korvex/controls/lists/ListModel.h"

#include "korvex/core/ControlRoutines.h"
#include "korvex/core/clsPublic.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/localisation/clsCharTranslation.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/platform/ado/FieldDef.h"
#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <QScopedValueRollback>

#include <algorithm>

namespace korvex {

Q_LOGGING_CATEGORY(lcLists, "korvex.lists")

namespace {

// The hourglass while a filter or sort is applied, put back however the work ends.
class Hourglass {
public:
    Hourglass() { Pointer(mpArrowHourglass); }
    ~Hourglass() { Pointer(mpNormal); }
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;

private:
    static void Pointer(int state)
    {
        if (const auto current = clsPublic::Current())
            current->SetMousePointer(state);
        else
            clsPublic::Global().SetMousePointer(state);
    }
};

bool AllDigits(const QString& text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

bool IsNoFilter(const Variant& filter)
{
    return (filter.IsNumber() && CLng(filter) == ado::adFilterNone) || (filter.IsString() && filter.As<QString>()->isEmpty());
}

}  // namespace

ListModel::ListModel(UserControl& control, Grid& grid) : mControl(control), mGrid(grid) {}

ListModel::~ListModel() = default;

// --- Errors and helpers ----------------------------------------------------------------------

QString ListModel::ErrorSource(const char* suffix) const
{
    return App::Instance()->Title() + QLatin1Char('.') + mControl.Name() + QLatin1String(suffix);
}

void ListModel::Fail(const char* suffix, const QString& description) const
{
    throw Error(ObjectErrorBase, ErrorSource(suffix), description);
}

Variant ListModel::TranslateValue(const Variant& value, bool savingToDB) const
{
    if (mMode != ddrsDataBound)
        return value;
    const auto& translation = clsCharTranslation::Current();
    return translation ? translation->CharTranslateVar(value, savingToDB) : value;
}

QString ListModel::TranslateText(const QString& text) const
{
    if (mMode != ddrsDataBound)
        return text;
    const auto& translation = clsCharTranslation::Current();
    return translation ? translation->CharTranslateStr(text, false) : text;
}

void ListModel::MoveToNothing(ado::Recordset& rs)
{
    if (!rs.IsBOF() && rs.RecordCount() != 0) {
        rs.MoveFirst();
        rs.MovePrevious();
    }
}

bool ListModel::NothingSelected() const
{
    return !mStore || mStore->IsBOF() || mStore->IsEOF();
}

int ListModel::ColumnPosition(const QString& column) const
{
    if (column.isEmpty())
        return -1;
    if (AllDigits(column))
        return column.toInt();
    return mGrid.ColIndex(column);
}

QString ListModel::ColumnFieldName(const QString& column) const
{
    if (column.isEmpty() || !column.front().isDigit())
        return column;
    qsizetype digits = 0;
    while (digits < column.size() && column[digits] >= u'0' && column[digits] <= u'9')
        ++digits;
    return mGrid.ColKey(column.left(digits).toInt());
}

// --- Row source ------------------------------------------------------------------------------

Variant ListModel::RowSource() const
{
    switch (mMode) {
    case ddrsDataBound: return Variant(std::static_pointer_cast<QObject>(mStore));
    case ddrsFree: return FreeListString();
    case ddrsUnknown: break;
    }
    return QString();
}

QString ListModel::FreeListString() const
{
    if (mMode != ddrsFree || !mStore)
        return {};
    // Read by position, so that the selection (the store's cursor) stays where it is.
    QString list;
    const std::size_t rows = mStore->PositionCount();
    const int fields = mStore->Fields()->Count();
    for (std::size_t r = 0; r < rows; ++r) {
        for (int f = 0; f < fields; ++f) {
            if (r > 0 || f > 0)
                list += mListSeparator;
            list += NullToString(mStore->ValueAtPosition(r, f));
        }
    }
    return list;
}

void ListModel::LetRowSource(const Variant& value)
{
    if (mMode == ddrsDataBound)
        Fail(".RowSource [PropertyLet]", QStringLiteral("Before RowSource mode can be changed, Clear the existing data."));
    if (value.IsNull() || (value.IsString() && value.As<QString>()->isEmpty())) {
        Clear();
    } else if (!value.IsString()) {
        Fail(".RowSource [PropertyLet]", QStringLiteral("Invalid RowSource.  Use Set .RowSource if it is a Recordset."));
    } else {
        BuildFreeStore(value.As<QString>()->split(mListSeparator));
        BindGrid();
    }
    mControl.PropertyChanged("RowSource");
}

void ListModel::SetRowSource(const std::shared_ptr<ado::Recordset>& recordset)
{
    if (mMode == ddrsFree)
        Fail(".RowSource [PropertySet]", QStringLiteral("Before RowSource mode can be changed, Clear the existing data."));
    if (!recordset) {
        Clear();
    } else {
        const Variant filter = recordset->Filter();
        auto store = CloneRecordset(*recordset);
        mFilterText = IsNoFilter(filter) ? QString() : CStr(filter);
        mMode = ddrsDataBound;
        mStore = std::move(store);
        mDisplay.reset();
        ResizeColumnArrays(mStore->Fields()->Count());
        mFirstVisibleStale = true;
        BindGrid();
        // The clone starts on its first record: nothing is selected until a value is.
        SetGridFromValue(Null, 1);
    }
    mControl.PropertyChanged("RowSource");
}

// Builds the free-mode store from a flat list of items, Columns to a row. An item the field
// refuses (too long) ends the build; the rows made so far stay.
void ListModel::BuildFreeStore(const QStringList& items)
{
    if (mColumns < 1) {
        qCWarning(lcLists) << mControl.Name() << ": a list without columns cannot hold items";
        return;
    }
    std::vector<ado::FieldDef> fields;
    fields.reserve(static_cast<std::size_t>(mColumns));
    for (int i = 0; i < mColumns; ++i) {
        QString& key = mKeys[static_cast<std::size_t>(i)];
        if (key.trimmed().isEmpty())
            key = QStringLiteral("Column") + QString::number(i);
        fields.push_back(ado::MakeFieldDef(key, ado::adVarChar, FreeFieldSize, ado::adFldUnspecified));
    }
    auto store = std::make_shared<ado::RecordsetStore>(std::move(fields));
    std::vector<Variant> row(static_cast<std::size_t>(mColumns));
    const auto count = items.size();
    try {
        for (qsizetype first = 0; first < count; first += mColumns) {
            for (int c = 0; c < mColumns; ++c) {
                const qsizetype i = first + c;
                row[static_cast<std::size_t>(c)] = i < count ? Variant(items[i]) : Variant(Null);
            }
            store->AppendRow(row);
        }
    } catch (const Error& e) {
        qCWarning(lcLists) << mControl.Name() << ": the list ends before an item its field refuses:" << e.Description();
    }
    auto rs = std::make_shared<ado::Recordset>();
    rs->OpenStore(std::move(store), ado::adOpenUnspecified, ado::adLockUnspecified);
    MoveToNothing(*rs);
    mMode = ddrsFree;
    mStore = std::move(rs);
    mDisplay.reset();
    mFirstVisibleStale = true;
}

void ListModel::AddItem(const QString& item)
{
    if (mMode == ddrsDataBound)
        Fail(".AddItem", QStringLiteral("AddItem can not be used in Bound mode."));
    QStringList items = item.split(mListSeparator);
    if (items.size() > mColumns)
        items.resize(mColumns);
    if (mMode == ddrsUnknown || !mStore) {
        BuildFreeStore(items);
        BindGrid();
        return;
    }
    // Through a clone of its own, so that the selection does not move.
    const auto adder = mStore->Clone();
    adder->AddNew();
    for (int i = 0; i < items.size(); ++i)
        adder->Fields()->Item(i)->SetValue(items[i]);
    adder->Update();
}

void ListModel::AddItemsFromRS(ado::Recordset& rs, const QString& fieldList, bool applyCharTranslation)
{
    if (rs.RecordCount() == 0 || fieldList.isEmpty())
        return;
    const QStringList names = fieldList.split(mListSeparator);
    const auto& translation = clsCharTranslation::Current();
    rs.MoveFirst();
    while (!rs.IsEOF()) {
        QStringList values;
        values.reserve(names.size());
        for (const QString& name : names) {
            QString text = NullToString(rs.Fields()->Item(Variant(name))->Value());
            if (applyCharTranslation && translation)
                text = translation->CharTranslateStr(text, false);
            values.push_back(text);
        }
        AddItem(values.join(mListSeparator));
        rs.MoveNext();
    }
}

void ListModel::Clear()
{
    mMode = ddrsUnknown;
    mGrid.SetDataSource(nullptr);
    mStore.reset();
    mDisplay.reset();
    mGrid.SetRows(mGrid.FixedRows());
    mFirstVisibleStale = true;
}

// --- Columns ---------------------------------------------------------------------------------

void ListModel::ResizeColumnArrays(int count)
{
    mColumns = count;
    mKeys.assign(static_cast<std::size_t>(std::max(count, 0)), QString());
    mFormats.assign(static_cast<std::size_t>(std::max(count, 0)), QString());
}

void ListModel::SetColumns(int columns)
{
    if (mMode == ddrsDataBound)
        Fail(".Columns [PropertyLet]", QStringLiteral("Columns property is Read Only when bound to an ADO Recordset."));
    if (columns < 0)
        throw Error(vbErrInvalidPropertyValue, ErrorSource(".Columns [PropertyLet]"));
    ResizeColumnArrays(columns);
}

QString ListModel::ColKey(int index) const
{
    if (index < 0 || index >= mColumns)
        throw Error(vbErrInvalidPropertyValue, ErrorSource(".ColKey [PropertyGet]"));
    return mKeys[static_cast<std::size_t>(index)];
}

void ListModel::SetColKey(int index, const QString& key)
{
    if (mMode != ddrsUnknown)
        Fail(".ColKey [PropertyLet]", QStringLiteral("ColKey property is Read Only when Dropdown List is not empty."));
    if (index < 0 || index >= mColumns)
        throw Error(vbErrInvalidPropertyValue, ErrorSource(".ColKey [PropertyLet]"));
    mKeys[static_cast<std::size_t>(index)] = key;
}

QString ListModel::ColFormat(const QString& column) const
{
    const int position = ColumnPosition(column);
    if (position < 0 || position >= static_cast<int>(mFormats.size()))
        throw Error(vbErrInvalidPropertyValue, ErrorSource(".ColFormat [PropertyGet]"));
    return mFormats[static_cast<std::size_t>(position)];
}

void ListModel::SetColFormat(const QString& column, const QString& format)
{
    const int position = ColumnPosition(column);
    if (position < 0 || position >= static_cast<int>(mFormats.size()))
        throw Error(vbErrInvalidPropertyValue, ErrorSource(".ColFormat [PropertyLet]"));
    mFormats[static_cast<std::size_t>(position)] = format;
    BindGrid();
}

QString ListModel::FormatOfColumn(int col) const
{
    return col >= 0 && col < static_cast<int>(mFormats.size()) ? mFormats[static_cast<std::size_t>(col)] : QString();
}

bool ListModel::ColHidden(const QString& column) const
{
    return mGrid.ColHidden(ColumnPosition(column));
}

void ListModel::SetColHidden(const QString& column, bool hidden)
{
    mGrid.SetColHidden(ColumnPosition(column), hidden);
    mFirstVisibleStale = true;
}

int ListModel::FirstVisibleColumn() const
{
    if (mFirstVisibleStale) {
        mFirstVisible = -1;
        for (int col = 0; col < mGrid.Cols(); ++col) {
            if (!mGrid.ColHidden(col)) {
                mFirstVisible = col;
                break;
            }
        }
        mFirstVisibleStale = false;
    }
    return mFirstVisible;
}

void ListModel::SetColumnList(const QString& list)
{
    ApplyColumnList(list, true);
}

// The named columns come first, in that order, shown; every other column is hidden. Columns moved
// before an unknown name stay moved.
void ListModel::ApplyColumnList(const QString& list, bool rebind)
{
    if (!mStore) {
        mColumnList = list;
        return;
    }
    if (list.isEmpty()) {
        mColumnList.clear();  // the columns stay as they are
        return;
    }
    const QStringList names = list.split(mListSeparator);
    bool changed = false;
    for (int i = 0; i < names.size(); ++i) {
        const QString name = names[i].trimmed();
        const int index = mGrid.ColIndex(name);
        if (index == -1)
            Fail(".ColumnList", QStringLiteral("Specified ColumnList field \"") + name + QStringLiteral("\" not found."));
        // A column already in its place is left as it is, hidden or not: applying the same list
        // again must not rebind the grid, which would clear the selection.
        if (index != i) {
            mGrid.SetColPosition(index, i);
            mGrid.SetColHidden(i, false);
            changed = true;
        }
    }
    for (int col = static_cast<int>(names.size()); col < mGrid.Cols(); ++col) {
        if (!mGrid.ColHidden(col)) {
            mGrid.SetColHidden(col, true);
            changed = true;
        }
    }
    mFirstVisibleStale = true;
    mColumnList = list;
    if (changed && rebind)
        BindGrid();
}

// --- Values and selection --------------------------------------------------------------------

Variant ListModel::ColValue(const QString& column) const
{
    if (NothingSelected())
        return Null;
    const Variant value = mStore->Fields()->Item(Variant(ColumnFieldName(column)))->Value();
    return TranslateValue(value, false);
}

void ListModel::SetColValue(const QString& column, const Variant& value)
{
    if (BoundValue().IsNull())
        Fail(".ColValue [PropertyLet]", QStringLiteral("No item selected."));
    mStore->Fields()->Item(Variant(ColumnFieldName(column)))->SetValue(value);
    mStore->Update();
}

int ListModel::BoundColumnPosition() const
{
    const int position = ColumnPosition(mBoundColumn);
    return position == -1 ? FirstVisibleColumn() : position;
}

Variant ListModel::BoundValue() const
{
    if (NothingSelected())
        return Null;
    return ColValue(QString::number(BoundColumnPosition()));
}

void ListModel::SetBoundValue(const Variant& value)
{
    SetGridFromValue(value, 1);
}

void ListModel::IndexField(const QString& field)
{
    const int index = mStore->Store()->FieldIndexOf(field);
    if (index >= 0 && !mStore->FieldOptimized(index))
        mStore->SetFieldOptimized(index, true);
}

void ListModel::FindByValue(const QString& field, const Variant& value)
{
    if (value.IsNull()) {
        MoveToNothing(*mStore);
        return;
    }
    const QString criterion = value.IsString() ? QLatin1Char('\'') + *value.As<QString>() + QLatin1Char('\'') : CStr(value);
    if (criterion.isEmpty())
        return;
    if (mStore->RecordCount() == 0) {
        MoveToNothing(*mStore);
        return;
    }
    IndexField(field);
    mStore->MoveFirst();
    mStore->Find(field + QLatin1Char('=') + criterion, 0, ado::adSearchForward);
    if (mStore->IsEOF())
        MoveToNothing(*mStore);
}

void ListModel::SetGridFromValue(const Variant& value, int reason)
{
    const Variant requested = value.IsEmpty() ? Variant(Null) : value;
    const Variant old = TranslateValue(BoundValue(), true);
    const Variant wanted = TranslateValue(requested, true);
    if (ValuesEqual(wanted, old, false))
        return;
    if (!mStore)
        Fail(".SetGridFromValue", QStringLiteral("Item not found."));
    const Variant before = NothingSelected() ? Variant() : mStore->Bookmark();
    // The value is not in the list, or cannot be searched for: the previous selection comes back.
    const auto restore = [&] {
        if (before.IsEmpty())
            MoveToNothing(*mStore);
        else
            mStore->SetBookmark(before);
    };
    try {
        FindByValue(ColumnFieldName(QString::number(BoundColumnPosition())), wanted);
    } catch (const Error&) {
        restore();
        throw;
    }
    const Variant now = TranslateValue(BoundValue(), true);
    if (!ValuesEqual(now, wanted, false)) {
        restore();
        Fail(".SetGridFromValue", QStringLiteral("Item not found."));
    }
    if (mGrid.isVisible())
        BringDisplayInStep();
    if (reason != 0 && mSelectedByValue)
        mSelectedByValue(reason, old, wanted);
}

void ListModel::SelectFromDisplay(int reason)
{
    if (!mStore || !mDisplay)
        return;
    const Variant old = BoundValue();
    if (mDisplay->IsBOF() || mDisplay->IsEOF()) {
        if (!mAllowNullSelection)
            return;
        MoveToNothing(*mStore);
    } else {
        mStore->SetBookmark(mDisplay->Bookmark());
    }
    if (mSelectedFromDisplay)
        mSelectedFromDisplay(reason, old);
}

void ListModel::BringDisplayInStep()
{
    if (!mStore || !mDisplay)
        return;
    if (NothingSelected()) {
        MoveToNothing(*mDisplay);
        if (mGrid.Row() != -1)
            mGrid.SetRow(-1);
        return;
    }
    const Variant selected = mStore->Bookmark();
    try {
        if (mDisplay->IsBOF() || mDisplay->IsEOF()) {
            if (mDisplay->RecordCount() != 0)
                mDisplay->SetBookmark(selected);
        } else {
            const int compared = mDisplay->CompareBookmarks(mDisplay->Bookmark(), selected);
            if (compared == ado::adCompareNotComparable)
                MoveToNothing(*mDisplay);
            else if (compared != ado::adCompareEqual)
                mDisplay->SetBookmark(selected);
        }
    } catch (const Error&) {
        MoveToNothing(*mDisplay);  // the selected record is filtered out of the display
    }
    const int position = mDisplay->AbsolutePosition();
    const int row = position > 0 ? position - 1 : -1;
    if (mGrid.Row() != row)
        mGrid.SetRow(row);
    if (row >= 0) {
        const int col = FirstVisibleColumn();
        if (col >= 0)
            mGrid.ShowCell(row, col);
    }
}

void ListModel::AttachToForm()
{
    if (mAttached)
        return;
    Form* form = GetParentForm(&mControl);
    if (!form)
        return;
    mAttached = true;
    // The recordsets go with the form, not with the last reference the host forgets to drop.
    QObject::connect(form, &Form::Unload, &mControl, [this](short& cancel) {
        if (!cancel && mMode != ddrsUnknown)
            Clear();
    });
}

void ListModel::BindGrid()
{
    if (mControl.UserMode())
        AttachToForm();
    if (!mStore)
        return;
    mDisplay = CloneRecordset(*mStore);
    if (!mSelectableText.isEmpty())
        mDisplay->SetFilter(mSelectableText);
    mGrid.SetDataSource(mDisplay);
    mFirstVisibleStale = true;
    SetGridFromValue(Null, 0);
    MoveToNothing(*mDisplay);
    if (!mColumnList.isEmpty())
        ApplyColumnList(mColumnList, false);
}

// --- List position, filter and sort ----------------------------------------------------------

int ListModel::ListCount() const
{
    return mGrid.Rows() - mGrid.FixedRows();
}

int ListModel::ListIndex()
{
    if (NothingSelected() || !mDisplay)
        return -1;
    BringDisplayInStep();
    const int position = mDisplay->AbsolutePosition();
    return position > 0 ? position - 1 : -1;
}

void ListModel::SetListIndex(int index)
{
    if (index != -1) {
        if (!mDisplay)
            throw Error(vbErrInvalidPropertyValue, ErrorSource(".ListIndex [PropertyLet]"));
        mDisplay->SetAbsolutePosition(index + 1);
        SelectFromDisplay(1);
    } else if (mStore) {
        MoveToNothing(*mStore);
    }
}

Variant ListModel::Filter() const
{
    return mStore ? mStore->Filter() : Variant(std::int32_t{ado::adFilterNone});
}

void ListModel::SetFilter(const Variant& filter)
{
    const Hourglass hourglass;
    const Variant remembered = BoundValue();
    if (mStore) {
        mStore->SetFilter(filter);
        if (mDisplay)
            mDisplay->SetFilter(filter);
    }
    mFilterText = IsNoFilter(filter) ? QString() : CStr(filter);
    if (!mStore)
        return;
    Reselect(remembered);
}

// Filter and Sort move the store to its first record; the value selected before is what is
// selected again, and when the filter took it away, nothing is.
void ListModel::Reselect(const Variant& remembered)
{
    MoveToNothing(*mStore);
    try {
        SetGridFromValue(remembered, 0);
    } catch (const Error& e) {
        MoveToNothing(*mStore);
        // Gone through the filter is expected; anything else is a mistake worth telling.
        if (e.Description() != QLatin1String("Item not found."))
            qCWarning(lcLists).noquote() << mControl.Name() << ": the value selected before cannot be selected again:" << e.Description();
    }
}

QString ListModel::Sort() const
{
    return mStore ? mStore->Sort() : QString();
}

void ListModel::SetSort(const QString& sort)
{
    const Hourglass hourglass;
    const Variant remembered = BoundValue();
    if (!mStore)
        return;
    mStore->SetSort(sort);
    if (mDisplay)
        mDisplay->SetSort(sort);
    Reselect(remembered);
    mFirstVisibleStale = true;
}

void ListModel::SetSelectableItemsFilter(const Variant& filter)
{
    const Hourglass hourglass;
    if (mDisplay) {
        mDisplay->SetFilter(filter);
        BringDisplayInStep();
    }
    mSelectableText = IsNoFilter(filter) ? QString() : CStr(filter);
}

QString ListModel::DisplayFilterText() const
{
    return !mDisplay || IsNoFilter(mDisplay->Filter()) ? QString() : CStr(mDisplay->Filter());
}

bool ListModel::ReplaceDisplayFilter(const QString& filter)
{
    if (!mDisplay || filter == DisplayFilterText())
        return false;
    const bool redraw = mGrid.Redraw();
    mGrid.SetRedraw(false);
    mDisplay->SetFilter(filter.isEmpty() ? Variant(std::int32_t{ado::adFilterNone}) : Variant(filter));
    HighlightAfterReorder();
    mGrid.SetRedraw(redraw);
    return true;
}

bool ListModel::ReplaceDisplaySort(const QString& sort)
{
    if (!mDisplay || sort == mDisplay->Sort())
        return false;
    const bool redraw = mGrid.Redraw();
    mGrid.SetRedraw(false);
    mDisplay->SetSort(sort);
    BringDisplayInStep();
    mGrid.SetRedraw(redraw);
    return true;
}

void ListModel::HighlightAfterReorder()
{
    BringDisplayInStep();
    if (mGrid.Row() < 0 && ListCount() > 0)
        mGrid.SetRow(mGrid.FixedRows());
}

}  // namespace korvex
