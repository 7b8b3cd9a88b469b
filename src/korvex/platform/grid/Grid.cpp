// Grid: the view, its model and its selection model. The model is the RecordsetModel with the
// grid's captions, alignments, display-text notice and, unbound, a small store of cell texts;
// the selection model asks the host before the user moves the current cell.
#include "korvex/platform/grid/Grid.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"

#include <QHash>
#include <QHeaderView>
#include <QHelpEvent>
#include <QItemSelectionModel>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTableView>
#include <QToolTip>

#include <algorithm>

namespace korvex {

KORVEX_REGISTER_CONTROL(Grid);

namespace {

constexpr int GeneralCentre = 10;
constexpr int CellMargin = 6;         // pixels around a cell's text, as the item delegate leaves them
constexpr int MeasureAllRowsUpTo = 1000;  // AutoSize of rows measures every row only in small grids

Qt::Alignment QtAlignment(int alignment, bool number)
{
    Qt::Alignment horizontal;
    switch (alignment / 3) {
    case 0: horizontal = Qt::AlignLeft; break;
    case 1: horizontal = Qt::AlignHCenter; break;
    case 2: horizontal = Qt::AlignRight; break;
    default: horizontal = number ? Qt::AlignRight : Qt::AlignLeft; break;
    }
    static constexpr Qt::AlignmentFlag vertical[] = {Qt::AlignTop, Qt::AlignVCenter, Qt::AlignBottom};
    return horizontal | vertical[alignment % 3];
}

}  // namespace

// --- The model -------------------------------------------------------------------------------

class GridModel : public RecordsetModel {
public:
    explicit GridModel(Grid* grid) : RecordsetModel(grid), mGrid(grid) {}

    bool Bound() const { return Recordset() != nullptr; }
    int rowCount(const QModelIndex& parent = {}) const override
    {
        return Bound() ? RecordsetModel::rowCount(parent) : (parent.isValid() ? 0 : mRows);
    }
    int columnCount(const QModelIndex& parent = {}) const override
    {
        return Bound() ? RecordsetModel::columnCount(parent) : (parent.isValid() ? 0 : mCols);
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid())
            return {};
        if (role == Qt::TextAlignmentRole) {
            const Variant value = Bound() ? Value(index.row(), index.column()) : Variant();
            return QVariant::fromValue(QtAlignment(mGrid->AlignmentOf(index.column()),
                                                   value.IsNumber() && value.VarType() != vbBoolean));
        }
        if (role == Qt::EditRole && !Bound())
            return StoredText(index.row(), index.column());
        return RecordsetModel::data(index, role);
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (role == Qt::DisplayRole && orientation == Qt::Horizontal) {
            if (const auto it = mCaptions.constFind(section); it != mCaptions.cend())
                return *it;
            return Bound() ? RecordsetModel::headerData(section, orientation, role) : QVariant(QString());
        }
        if (role == Qt::DisplayRole)
            return QString();  // the row selector column is blank
        return RecordsetModel::headerData(section, orientation, role);
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return Bound() ? RecordsetModel::flags(index) : (index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags);
    }

    // The text as stored: the recordset's, or the unbound grid's.
    QString StoredText(int row, int col) const
    {
        return Bound() ? Text(row, col) : mCells.value(Key(row, col));
    }
    void SetStoredText(int row, int col, const QString& text)
    {
        mCells.insert(Key(row, col), text);
        emit dataChanged(index(row, col), index(row, col));
    }
    QString Caption(int col) const { return headerData(col, Qt::Horizontal, Qt::DisplayRole).toString(); }
    void SetCaption(int col, const QString& text)
    {
        mCaptions.insert(col, text);
        emit headerDataChanged(Qt::Horizontal, col, col);
    }
    // Binding or unbinding starts the grid over.
    void Bind(std::shared_ptr<ado::Recordset> recordset)
    {
        mCaptions.clear();
        mCells.clear();
        mRows = mCols = 0;
        SetRecordset(std::move(recordset));
    }
    void Resize(int rows, int cols)
    {
        beginResetModel();
        mRows = rows;
        mCols = cols;
        for (auto it = mCells.begin(); it != mCells.end();)
            it = (it.key() >> 32) >= static_cast<quint64>(rows) || (it.key() & 0xFFFFFFFF) >= static_cast<quint64>(cols) ? mCells.erase(it) : ++it;
        endResetModel();
    }

protected:
    QString DisplayText(int row, int field) const override
    {
        return Guarded(mGrid, [&] { return mGrid->ShownText(row, field); }, QString());
    }

private:
    static quint64 Key(int row, int col) { return (static_cast<quint64>(row) << 32) | static_cast<quint32>(col); }

    Grid* mGrid;
    QHash<int, QString> mCaptions;
    QHash<quint64, QString> mCells;
    int mRows = 0;
    int mCols = 0;
};

// --- The selection model: the user's moves ask first ----------------------------------------

class GridSelectionModel : public QItemSelectionModel {
public:
    GridSelectionModel(QAbstractItemModel* model, Grid* grid) : QItemSelectionModel(model, grid), mGrid(grid) {}

    void setCurrentIndex(const QModelIndex& index, QItemSelectionModel::SelectionFlags command) override
    {
        mRefused = false;
        if (!mGrid->mByCode && index.isValid() && index != currentIndex()) {
            const int row = index.row() + mGrid->mFixedRows;
            const int col = mGrid->ColOfLogical(index.column());
            mRefused = !Guarded(mGrid, [&] { return mGrid->AllowMove(row, col); }, false);
            if (mRefused)
                return;
        }
        QItemSelectionModel::setCurrentIndex(index, command);
    }
    void select(const QModelIndex& index, QItemSelectionModel::SelectionFlags command) override
    {
        if (!Refused())
            QItemSelectionModel::select(index, command);
    }
    void select(const QItemSelection& selection, QItemSelectionModel::SelectionFlags command) override
    {
        if (!Refused())
            QItemSelectionModel::select(selection, command);
    }

private:
    bool Refused() const { return mRefused && !mGrid->mByCode; }

    Grid* mGrid;
    bool mRefused = false;  // the press or key that asked to move was refused: its selection too
};

// --- The view --------------------------------------------------------------------------------

class GridView : public QTableView {
public:
    explicit GridView(Grid* grid) : QTableView(grid), mGrid(grid)
    {
        setSelectionBehavior(QAbstractItemView::SelectRows);
        setSelectionMode(QAbstractItemView::SingleSelection);
        setEditTriggers(QAbstractItemView::NoEditTriggers);
        setWordWrap(false);
        // One height for every row: nothing measures the rows, so their number does not matter.
        verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        verticalHeader()->setDefaultAlignment(Qt::AlignCenter);
        horizontalHeader()->setHighlightSections(false);
        horizontalHeader()->setSectionsClickable(false);
        viewport()->setMouseTracking(true);
        horizontalHeader()->viewport()->setMouseTracking(true);
        verticalHeader()->viewport()->setMouseTracking(true);
    }

protected:
    bool viewportEvent(QEvent* event) override
    {
        if (event->type() == QEvent::ToolTip) {
            const auto* help = static_cast<QHelpEvent*>(event);
            if (mGrid->mToolTipText.isEmpty())
                QToolTip::hideText();
            else
                QToolTip::showText(help->globalPos(), mGrid->mToolTipText, viewport());
            return true;
        }
        return QTableView::viewportEvent(event);
    }
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override
    {
        QTableView::currentChanged(current, previous);
        const int oldRow = previous.isValid() ? previous.row() + mGrid->mFixedRows : -1;
        const int oldCol = previous.isValid() ? mGrid->ColOfLogical(previous.column()) : mGrid->mCurrentCol;
        if (current.isValid())
            mGrid->mCurrentCol = mGrid->ColOfLogical(current.column());
        if (mGrid->mByCode)
            mGrid->CurrentChanged(oldRow, oldCol);
        else
            Guarded(mGrid, [&] { mGrid->CurrentChanged(oldRow, oldCol); });
    }

private:
    Grid* mGrid;
};

// --- The control -----------------------------------------------------------------------------

Grid::Grid(QWidget* parent) : UserControl(parent), mModel(new GridModel(this)), mView(new GridView(this))
{
    mView->setModel(mModel);
    QItemSelectionModel* standard = mView->selectionModel();
    mView->setSelectionModel(new GridSelectionModel(mModel, this));
    delete standard;
    SetInputWidget(mView);
    for (QWidget* w : {mView->viewport(), mView->horizontalHeader()->viewport(), mView->verticalHeader()->viewport()})
        w->installEventFilter(this);
    // Rows that start over (a filter, a sort, changes through clones) lose the view's current
    // cell: it goes back to the recordset's record.
    connect(mModel, &QAbstractItemModel::modelReset, this, [this] { Guarded(this, [this] { FollowRecordset(); }); });
    LoadDeclaredDefaults();
    ApplyRowHeight();
}

Grid::~Grid() = default;

const PropertyList& Grid::PersistedProperties() const
{
    static const PropertyList list = Declare<Grid>()
                                         .Property("FixedRows", &Grid::FixedRows, &Grid::SetFixedRows, 1)
                                         .Property("FixedCols", &Grid::FixedCols, &Grid::SetFixedCols, 0)
                                         .Property("WordWrap", &Grid::WordWrap, &Grid::SetWordWrap, false)
                                         .Property("ExtendLastCol", &Grid::ExtendLastCol, &Grid::SetExtendLastCol, false)
                                         .Property("RowHeightMin", &Grid::RowHeightMin, &Grid::SetRowHeightMin, 0);
    return list;
}

RecordsetModel* Grid::Model() const
{
    return mModel;
}

QWidget* Grid::View() const
{
    return mView;
}

QSize Grid::sizeHint() const
{
    return mView->sizeHint();
}

QSize Grid::minimumSizeHint() const
{
    return mView->minimumSizeHint();
}

void Grid::Resize()
{
    mView->setGeometry(rect());
}

// --- Binding ---------------------------------------------------------------------------------

const std::shared_ptr<ado::Recordset>& Grid::DataSource() const
{
    return mModel->Recordset();
}

void Grid::SetDataSource(std::shared_ptr<ado::Recordset> recordset)
{
    QObject::disconnect(mMoveConnection);
    if (recordset && !recordset->Store())
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Grid.DataSource"));
    {
        const QScopedValueRollback following(mFollowing, true);
        mModel->Bind(std::move(recordset));
    }
    Rebind();
    if (const auto& rs = DataSource()) {
        // After the model's own connection, so that the rows are in step when the row follows.
        mMoveConnection = connect(rs.get(), &ado::Recordset::MoveComplete, this,
                                  [this](ado::EventReasonEnum, const Error*, ado::EventStatusEnum&, ado::Recordset*) {
                                      Guarded(this, [this] { FollowRecordset(); });
                                  });
        FollowRecordset();
    }
}

Variant Grid::DataSourceVariant() const
{
    return DataSource() ? Variant(std::static_pointer_cast<QObject>(DataSource())) : Variant::Nothing();
}

void Grid::SetDataSourceVariant(const Variant& recordset)
{
    if (!recordset.IsObject())
        Raise(vbErrTypeMismatch, QStringLiteral("Grid.DataSource"));
    if (!recordset.Object()) {
        SetDataSource(nullptr);
        return;
    }
    auto shared = std::dynamic_pointer_cast<ado::Recordset>(recordset.SharedObject());
    if (!shared) {
        qCWarning(lcGrid) << Name() << ": DataSource takes a recordset held by a shared owner, not" << recordset.Object();
        Raise(vbErrTypeMismatch, QStringLiteral("Grid.DataSource"));
    }
    SetDataSource(std::move(shared));
}

// Columns start over: field order, all shown, keys from the field names, default widths.
void Grid::Rebind()
{
    const int count = mModel->columnCount();
    QHeaderView* header = mView->horizontalHeader();
    for (int logical = 0; logical < count; ++logical) {
        header->moveSection(header->visualIndex(logical), logical);
        mView->setColumnHidden(logical, false);
        header->resizeSection(logical, header->defaultSectionSize());
    }
    mKeys.assign(static_cast<std::size_t>(count), QString());
    mAlignments.assign(static_cast<std::size_t>(count), GeneralCentre);
    if (const auto& rs = DataSource()) {
        for (int i = 0; i < count; ++i)
            mKeys[static_cast<std::size_t>(i)] = rs->FieldDefs()[static_cast<std::size_t>(i)].Name;
    }
    mCurrentCol = count > 0 ? mFixedCols : -1;
}

void Grid::FollowRecordset()
{
    mModel->Refresh();
    const auto& rs = DataSource();
    if (mFollowing || !rs || !rs->Store())
        return;
    const int position = rs->AbsolutePosition();
    const int target = position > 0 && position <= mModel->rowCount() ? position - 1 : -1;
    const QModelIndex current = mView->currentIndex();
    if ((current.isValid() ? current.row() : -1) == target)
        return;
    const QScopedValueRollback byCode(mByCode, true);
    const QScopedValueRollback following(mFollowing, true);
    if (target < 0) {
        mView->selectionModel()->clearCurrentIndex();
        mView->selectionModel()->clearSelection();
        return;
    }
    const int col = mCurrentCol >= mFixedCols && mCurrentCol < Cols() ? mCurrentCol : mFixedCols;
    const int logical = col < Cols() ? LogicalOf(col) : 0;
    mView->selectionModel()->setCurrentIndex(mModel->index(target, logical),
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

// The recordset goes where the grid's row is: to that record, or before the first for none.
void Grid::MoveRecordsetTo(int modelRow)
{
    const auto& rs = DataSource();
    if (mFollowing || !rs || !rs->Store())
        return;
    const QScopedValueRollback following(mFollowing, true);
    if (modelRow < 0) {
        if (rs->RecordCount() != 0 && !rs->IsBOF()) {
            rs->MoveFirst();
            rs->MovePrevious();
        }
        return;
    }
    if (rs->AbsolutePosition() != modelRow + 1)
        rs->SetAbsolutePosition(modelRow + 1);
}

void Grid::CurrentChanged(int oldRow, int oldCol)
{
    const QModelIndex current = mView->currentIndex();
    try {
        MoveRecordsetTo(current.isValid() ? current.row() : -1);
    } catch (const Error&) {
        FollowRecordset();  // the recordset did not move (a handler cancelled): nor does the row
        throw;
    }
    const int newRow = Row(), newCol = Col();
    if (newRow != oldRow || newCol != oldCol)
        emit AfterRowColChange(oldRow, oldCol, newRow, newCol);
}

bool Grid::AllowMove(int newRow, int newCol)
{
    const int oldRow = Row(), oldCol = Col();
    if (newRow == oldRow && newCol == oldCol)
        return true;
    bool cancel = false;
    emit BeforeRowColChange(oldRow, oldCol, newRow, newCol, cancel);
    if (!cancel)
        emit BeforeSelChange(oldRow, oldCol, newRow, newCol, cancel);
    return !cancel;
}

// --- Sizes -----------------------------------------------------------------------------------

int Grid::DataRowCount() const
{
    mModel->Refresh();
    return mModel->rowCount();
}

int Grid::DataColCount() const
{
    return mModel->columnCount();
}

int Grid::Rows() const
{
    return mFixedRows + DataRowCount();
}

void Grid::SetRows(int rows)
{
    if (DataSource()) {
        RequireValid(rows == Rows(), "Rows");
        return;
    }
    RequireValid(rows >= mFixedRows, "Rows");
    mModel->Resize(rows - mFixedRows, DataColCount());
}

int Grid::Cols() const
{
    return mFixedCols + DataColCount();
}

void Grid::SetCols(int cols)
{
    if (DataSource()) {
        RequireValid(cols == Cols(), "Cols");
        return;
    }
    RequireValid(cols >= mFixedCols, "Cols");
    const int count = cols - mFixedCols;
    mModel->Resize(DataRowCount(), count);
    mKeys.resize(static_cast<std::size_t>(count));
    mAlignments.resize(static_cast<std::size_t>(count), GeneralCentre);
}

void Grid::SetFixedRows(int rows)
{
    RequireValid(rows == 0 || rows == 1, "FixedRows");
    Assign("FixedRows", mFixedRows, rows, [this] { mView->horizontalHeader()->setVisible(mFixedRows == 1); });
}

void Grid::SetFixedCols(int cols)
{
    RequireValid(cols == 0 || cols == 1, "FixedCols");
    Assign("FixedCols", mFixedCols, cols, [this] { mView->verticalHeader()->setVisible(mFixedCols == 1); });
}

// --- Numbering -------------------------------------------------------------------------------

void Grid::RequireRow(int row) const
{
    if (row < 0 || row >= Rows())
        Raise(GridInvalidIndex, QStringLiteral("Grid"), QStringLiteral("Invalid row index %1").arg(row));
}

void Grid::RequireCol(int col) const
{
    if (col < 0 || col >= Cols())
        Raise(GridInvalidIndex, QStringLiteral("Grid"), QStringLiteral("Invalid column index %1").arg(col));
}

int Grid::LogicalOf(int col) const
{
    RequireCol(col);
    if (col < mFixedCols)
        Raise(GridInvalidIndex, QStringLiteral("Grid"), QStringLiteral("Column %1 is the fixed column").arg(col));
    return mView->horizontalHeader()->logicalIndex(col - mFixedCols);
}

int Grid::ColOfLogical(int logical) const
{
    return mView->horizontalHeader()->visualIndex(logical) + mFixedCols;
}

int Grid::AlignmentOf(int logical) const
{
    return logical >= 0 && logical < static_cast<int>(mAlignments.size()) ? mAlignments[static_cast<std::size_t>(logical)]
                                                                          : GeneralCentre;
}

QString Grid::ShownText(int modelRow, int logical)
{
    QString text = mModel->StoredText(modelRow, logical);
    static const QMetaMethod notice = QMetaMethod::fromSignal(&Grid::CellDisplayText);
    if (isSignalConnected(notice))
        emit CellDisplayText(modelRow + mFixedRows, ColOfLogical(logical), text);
    return text;
}

// --- Current cell and scrolling --------------------------------------------------------------

int Grid::Row() const
{
    const QModelIndex current = mView->currentIndex();
    return current.isValid() ? current.row() + mFixedRows : -1;
}

void Grid::SetRow(int row)
{
    if (row != -1) {
        RequireRow(row);
        if (row < mFixedRows)
            Raise(GridInvalidIndex, QStringLiteral("Grid"), QStringLiteral("Row %1 is the fixed row").arg(row));
    }
    const int modelRow = row < 0 ? -1 : row - mFixedRows;
    MoveRecordsetTo(modelRow);
    const QScopedValueRollback byCode(mByCode, true);
    const QScopedValueRollback following(mFollowing, true);
    if (modelRow < 0) {
        mView->selectionModel()->clearCurrentIndex();
        mView->selectionModel()->clearSelection();
        return;
    }
    const int col = mCurrentCol >= mFixedCols && mCurrentCol < Cols() ? mCurrentCol : mFixedCols;
    if (col >= Cols())
        return;
    mView->selectionModel()->setCurrentIndex(mModel->index(modelRow, LogicalOf(col)),
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

int Grid::Col() const
{
    const QModelIndex current = mView->currentIndex();
    return current.isValid() ? ColOfLogical(current.column()) : mCurrentCol;
}

void Grid::SetCol(int col)
{
    const int logical = LogicalOf(col);
    mCurrentCol = col;
    const QModelIndex current = mView->currentIndex();
    if (!current.isValid())
        return;
    const QScopedValueRollback byCode(mByCode, true);
    mView->selectionModel()->setCurrentIndex(mModel->index(current.row(), logical),
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

int Grid::TopRow() const
{
    const int row = mView->rowAt(0);
    return (row < 0 ? 0 : row) + mFixedRows;
}

void Grid::SetTopRow(int row)
{
    RequireRow(row);
    mView->verticalScrollBar()->setValue(std::max(0, row - mFixedRows));
}

int Grid::BottomRow() const
{
    const int count = DataRowCount();
    int row = mView->rowAt(mView->viewport()->height() - 1);
    if (row < 0)
        row = count - 1;
    return std::max(row, 0) + mFixedRows;
}

void Grid::ShowCell(int row, int col)
{
    RequireRow(row);
    RequireCol(col);
    const int modelRow = row < mFixedRows ? std::max(0, TopRow() - mFixedRows) : row - mFixedRows;
    const int logical = col < mFixedCols ? mView->horizontalHeader()->logicalIndex(0) : LogicalOf(col);
    if (modelRow < DataRowCount() && logical >= 0)
        mView->scrollTo(mModel->index(modelRow, logical));
}

// --- Columns ---------------------------------------------------------------------------------

QString Grid::ColKey(int col) const
{
    RequireCol(col);
    return col < mFixedCols ? QString() : mKeys[static_cast<std::size_t>(LogicalOf(col))];
}

void Grid::SetColKey(int col, const QString& key)
{
    mKeys[static_cast<std::size_t>(LogicalOf(col))] = key;
}

int Grid::ColIndex(const QString& key) const
{
    for (std::size_t logical = 0; logical < mKeys.size(); ++logical) {
        if (mKeys[logical].compare(key, Qt::CaseInsensitive) == 0)
            return ColOfLogical(static_cast<int>(logical));
    }
    return -1;
}

int Grid::ColPosition(int col) const
{
    RequireCol(col);
    return col;
}

void Grid::SetColPosition(int col, int position)
{
    LogicalOf(col);
    LogicalOf(position);
    mView->horizontalHeader()->moveSection(col - mFixedCols, position - mFixedCols);
}

bool Grid::ColHidden(int col) const
{
    RequireCol(col);
    return col >= mFixedCols && mView->isColumnHidden(LogicalOf(col));
}

void Grid::SetColHidden(int col, bool hidden)
{
    mView->setColumnHidden(LogicalOf(col), hidden);
}

int Grid::ColWidth(int col) const
{
    RequireCol(col);
    const int pixels = col < mFixedCols ? mView->verticalHeader()->width() : mView->columnWidth(LogicalOf(col));
    return PixelsToTwipsX(pixels);
}

void Grid::SetColWidth(int col, int twips)
{
    RequireCol(col);
    RequireValid(twips >= 0, "ColWidth");
    if (col < mFixedCols)
        mView->verticalHeader()->setFixedWidth(TwipsToPixelsX(twips));
    else
        mView->setColumnWidth(LogicalOf(col), TwipsToPixelsX(twips));
}

int Grid::ColAlignment(int col) const
{
    RequireCol(col);
    return col < mFixedCols ? GeneralCentre : AlignmentOf(LogicalOf(col));
}

void Grid::SetColAlignment(int col, int alignment)
{
    const int logical = LogicalOf(col);
    RequireValid(alignment >= 0 && alignment <= 11, "ColAlignment");
    mAlignments[static_cast<std::size_t>(logical)] = alignment;
    const int rows = mModel->rowCount();
    if (rows > 0)
        emit mModel->dataChanged(mModel->index(0, logical), mModel->index(rows - 1, logical), {Qt::TextAlignmentRole});
}

// --- Cells -----------------------------------------------------------------------------------

QString Grid::TextMatrix(int row, int col) const
{
    RequireRow(row);
    RequireCol(col);
    if (col < mFixedCols)
        return {};
    const int logical = LogicalOf(col);
    return row < mFixedRows ? mModel->Caption(logical) : mModel->StoredText(row - mFixedRows, logical);
}

void Grid::SetTextMatrix(int row, int col, const QString& text)
{
    RequireRow(row);
    RequireCol(col);
    if (col < mFixedCols)
        return;  // the row selector shows no text
    const int logical = LogicalOf(col);
    if (row < mFixedRows) {
        mModel->SetCaption(logical, text);
        return;
    }
    const auto& rs = DataSource();
    if (!rs) {
        mModel->SetStoredText(row - mFixedRows, logical, text);
        return;
    }
    MoveRecordsetTo(row - mFixedRows);
    rs->Fields()->Item(logical)->SetValue(Variant(text));
    rs->Update();
    mModel->Refresh();
}

Variant Grid::Cell(int setting) const
{
    return Cell(setting, Row(), Col());
}

Variant Grid::Cell(int setting, int row, int col) const
{
    if (setting != gcsText && setting != gcsTextDisplay)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Grid.Cell"));
    const QString stored = TextMatrix(row, col);
    if (setting == gcsText || row < mFixedRows || col < mFixedCols)
        return stored;
    return const_cast<Grid*>(this)->ShownText(row - mFixedRows, LogicalOf(col));
}

void Grid::SetCell(int setting, int row, int col, const Variant& value)
{
    if (setting != gcsText)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Grid.Cell"));
    SetTextMatrix(row, col, value.IsNull() ? QString() : CStr(value));
}

int Grid::FindRow(const QString& item, int row, int col, bool caseSensitive, bool fullMatch) const
{
    const int rows = Rows();
    const int start = row < 0 ? mFixedRows : row;
    if (start >= rows)
        return -1;
    RequireRow(start);
    const int logical = LogicalOf(col < 0 ? std::max(Col(), mFixedCols) : col);
    const Qt::CaseSensitivity cs = caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (int r = std::max(start, mFixedRows); r < rows; ++r) {
        const QString text = mModel->StoredText(r - mFixedRows, logical);
        if (fullMatch ? text.compare(item, cs) == 0 : text.startsWith(item, cs))
            return r;
    }
    return -1;
}

// --- Rows ------------------------------------------------------------------------------------

void Grid::ApplyRowHeight()
{
    const int font = mView->fontMetrics().height() + CellMargin / 2;
    const int height = std::max(font, TwipsToPixelsY(mRowHeightMin));
    mView->verticalHeader()->setMinimumSectionSize(std::min(height, TwipsToPixelsY(mRowHeightMin) > 0 ? height : font));
    mView->verticalHeader()->setDefaultSectionSize(height);
}

int Grid::RowHeight(int row) const
{
    RequireRow(row);
    const int pixels = row < mFixedRows ? mView->horizontalHeader()->height() : mView->rowHeight(row - mFixedRows);
    return PixelsToTwipsY(pixels);
}

void Grid::SetRowHeight(int row, int twips)
{
    RequireRow(row);
    RequireValid(twips >= 0, "RowHeight");
    if (row < mFixedRows)
        mView->horizontalHeader()->setFixedHeight(TwipsToPixelsY(twips));
    else
        mView->setRowHeight(row - mFixedRows, TwipsToPixelsY(twips));
}

void Grid::SetRowHeightMin(int twips)
{
    RequireValid(twips >= 0, "RowHeightMin");
    Assign("RowHeightMin", mRowHeightMin, twips, [this] { ApplyRowHeight(); });
}

void Grid::AutoSize(int col1)
{
    AutoSize(col1, col1);
}

void Grid::AutoSize(int col1, int col2)
{
    RequireCol(col1);
    RequireCol(col2);
    const int rows = DataRowCount();
    // Small grids are measured whole; big ones by the rows in view, so that a million rows
    // cost what a screen does.
    const int first = rows <= MeasureAllRowsUpTo ? 0 : TopRow() - mFixedRows;
    const int last = rows <= MeasureAllRowsUpTo ? rows - 1 : BottomRow() - mFixedRows;
    const QFontMetrics metrics = mView->fontMetrics();
    std::vector<int> heights(static_cast<std::size_t>(std::max(0, last - first + 1)), 0);
    for (int col = std::max(std::min(col1, col2), mFixedCols); col <= std::max(col1, col2); ++col) {
        const int logical = LogicalOf(col);
        if (mAutoSizeMode == gasColWidth) {
            int width = metrics.horizontalAdvance(mModel->Caption(logical));
            for (int r = first; r <= last; ++r)
                width = std::max(width, metrics.horizontalAdvance(ShownText(r, logical)));
            mView->setColumnWidth(logical, width + CellMargin + 1);
        } else {
            const int inner = std::max(1, mView->columnWidth(logical) - CellMargin);
            for (int r = first; r <= last; ++r) {
                const QRect box = metrics.boundingRect(QRect(0, 0, inner, 100000), Qt::TextWordWrap, ShownText(r, logical));
                auto& h = heights[static_cast<std::size_t>(r - first)];
                h = std::max(h, box.height() + CellMargin / 2);
            }
        }
    }
    if (mAutoSizeMode == gasRowHeight) {
        const int base = mView->verticalHeader()->defaultSectionSize();
        for (int r = first; r <= last; ++r)
            mView->setRowHeight(r, std::max(base, heights[static_cast<std::size_t>(r - first)]));
    }
}

// --- Look and behaviour ----------------------------------------------------------------------

void Grid::SetToolTipText(const QString& text)
{
    mToolTipText = text;
    if (text.isEmpty())
        QToolTip::hideText();
}

void Grid::SetRedraw(bool redraw)
{
    mRedraw = redraw;
    mView->setUpdatesEnabled(redraw);
    if (redraw)
        mView->viewport()->update();
}

void Grid::SetWordWrap(bool wrap)
{
    Assign("WordWrap", mWordWrap, wrap, [this] { mView->setWordWrap(mWordWrap); });
}

void Grid::SetAutoSizeMode(int mode)
{
    RequireValid(mode == gasColWidth || mode == gasRowHeight, "AutoSizeMode");
    mAutoSizeMode = mode;
}

void Grid::SetExtendLastCol(bool extend)
{
    Assign("ExtendLastCol", mExtendLastCol, extend, [this] { mView->horizontalHeader()->setStretchLastSection(mExtendLastCol); });
}

// --- Mouse -----------------------------------------------------------------------------------

bool Grid::eventFilter(QObject* watched, QEvent* event)
{
    const auto type = event->type();
    if (watched != mView && (type == QEvent::MouseMove || type == QEvent::MouseButtonPress ||
                             type == QEvent::MouseButtonRelease || type == QEvent::Leave)) {
        Guarded(this, [&] {
            if (type == QEvent::Leave) {
                mMouseRow = mMouseCol = -1;
                return;
            }
            auto* mouse = static_cast<QMouseEvent*>(event);
            TrackMouse(watched, mouse);
            RaiseMouse(mouse, static_cast<QWidget*>(watched));
        });
        return false;
    }
    return UserControl::eventFilter(watched, event);
}

void Grid::TrackMouse(QObject* watched, QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    QHeaderView* across = mView->horizontalHeader();
    QHeaderView* down = mView->verticalHeader();
    int modelRow = -1, logical = -1;
    bool inFixedRow = false, inFixedCol = false;
    if (watched == mView->viewport()) {
        modelRow = mView->rowAt(at.y());
        logical = mView->columnAt(at.x());
    } else if (watched == across->viewport()) {
        inFixedRow = true;
        logical = across->logicalIndexAt(at.x());
    } else {
        inFixedCol = true;
        modelRow = down->logicalIndexAt(at.y());
    }
    mMouseRow = inFixedRow ? 0 : (modelRow < 0 ? -1 : modelRow + mFixedRows);
    mMouseCol = inFixedCol ? 0 : (logical < 0 ? -1 : ColOfLogical(logical));
}

void Grid::RaiseMouse(QMouseEvent* event, QWidget* from)
{
    const QPointF at = from->mapTo(this, event->position().toPoint());
    QMouseEvent mapped(event->type(), at, event->globalPosition(), event->button(), event->buttons(), event->modifiers());
    UserControl::RaiseMouse(event->type(), &mapped);
    if (event->type() == QEvent::MouseButtonRelease && event->button() == Qt::LeftButton && from->rect().contains(event->position().toPoint()))
        emit Click();
}

}  // namespace korvex
