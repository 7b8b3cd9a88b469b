// Grid: the view, its models and its selection model. The grid's model is the RecordsetModel
// with the grid's captions, alignments, display-text notice and, unbound, a small store of cell
// texts; the view reads it through a window of a few pages of rows, because a view keeps a
// header record for every row its model has; the selection model asks the host before the
// user moves the current cell.
#include "korvex/platform/grid/Grid.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"

#include <QCoreApplication>
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
#include <QWheelEvent>

#include <algorithm>
#include <climits>
#include <cstdlib>

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

// --- The window: the rows the view holds ------------------------------------------------------

// Rows start to start + count - 1 of the grid's model, as rows 0 to count - 1. Moving the
// window tells the view that its cells changed; only a new count starts the view over.
class GridWindow : public QAbstractTableModel {
public:
    GridWindow(GridModel* rows, QObject* parent) : QAbstractTableModel(parent), mRows(rows)
    {
        connect(rows, &QAbstractItemModel::dataChanged, this,
                [this](const QModelIndex& from, const QModelIndex& to, const QList<int>& roles) {
                    const int first = std::max(from.row(), mStart);
                    const int last = std::min(to.row(), mStart + mCount - 1);
                    if (first <= last && to.column() < mColumns)
                        emit dataChanged(index(first - mStart, from.column()), index(last - mStart, to.column()), roles);
                });
        connect(rows, &QAbstractItemModel::headerDataChanged, this, [this](Qt::Orientation orientation, int first, int last) {
            if (orientation == Qt::Horizontal && last < mColumns)
                emit headerDataChanged(orientation, first, last);
        });
    }

    int Start() const { return mStart; }
    int Count() const { return mCount; }
    QModelIndex Source(const QModelIndex& index) const { return mRows->index(mStart + index.row(), index.column()); }

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : mCount; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : mColumns; }
    QVariant data(const QModelIndex& index, int role) const override
    {
        return index.isValid() ? mRows->data(Source(index), role) : QVariant();
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        return mRows->headerData(orientation == Qt::Vertical ? mStart + section : section, orientation, role);
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return index.isValid() ? mRows->flags(Source(index)) : Qt::NoItemFlags;
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        return index.isValid() && mRows->setData(Source(index), value, role);
    }

    void Place(int start, int count)
    {
        const int columns = mRows->columnCount();
        if (count != mCount || columns != mColumns) {
            beginResetModel();
            mStart = start;
            mCount = count;
            mColumns = columns;
            endResetModel();
        } else if (start != mStart) {
            mStart = start;
            Reread();
        }
    }
    // The grid's rows changed under the window: every cell is read again.
    void Reread()
    {
        if (mCount > 0 && mColumns > 0)
            emit dataChanged(index(0, 0), index(mCount - 1, mColumns - 1));
    }

private:
    GridModel* mRows;
    int mStart = 0;
    int mCount = 0;
    int mColumns = 0;
};

// --- The selection model: the user's moves ask first ----------------------------------------

class GridSelectionModel : public QItemSelectionModel {
public:
    GridSelectionModel(QAbstractItemModel* model, Grid* grid) : QItemSelectionModel(model, grid), mGrid(grid) {}

    void setCurrentIndex(const QModelIndex& index, QItemSelectionModel::SelectionFlags command) override
    {
        mRefused = false;
        if (!mGrid->mByCode && !mGrid->mSyncing && index.isValid() && index != currentIndex()) {
            const int row = mGrid->mWindow->Start() + index.row() + mGrid->mFixedRows;
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
        if (Refused())
            return;
        // The selection is the current row. The view picks it by pixels, which name another
        // row when the window moved under the press.
        const QModelIndex current = currentIndex();
        if (!mGrid->mByCode && !mGrid->mSyncing && current.isValid() && (command & QItemSelectionModel::Select))
            QItemSelectionModel::select(QItemSelection(current, current), command | QItemSelectionModel::Rows);
        else
            QItemSelectionModel::select(selection, command);
    }
    // Whether the last move asked for was refused; a key press starts with Forget.
    bool Refused() const { return mRefused && !mGrid->mByCode && !mGrid->mSyncing; }
    void Forget() { mRefused = false; }

private:

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
        // The grid's own scroll bar covers every row; this one only the window.
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        // One height for every row: nothing measures the rows, so their number does not matter.
        verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        verticalHeader()->setDefaultAlignment(Qt::AlignCenter);
        horizontalHeader()->setHighlightSections(false);
        horizontalHeader()->setSectionsClickable(false);
        viewport()->setMouseTracking(true);
        horizontalHeader()->viewport()->setMouseTracking(true);
        verticalHeader()->viewport()->setMouseTracking(true);
    }

    // The range of the view's own scroll bar, now.
    void Relayout() { updateGeometries(); }

    // A cell of the grid's model is where its row stands in the window; nowhere outside it.
    QRect visualRect(const QModelIndex& index) const override
    {
        if (index.isValid() && index.model() == mGrid->mModel) {
            const int row = index.row() - mGrid->mWindow->Start();
            return row >= 0 && row < mGrid->mWindow->Count() ? QTableView::visualRect(model()->index(row, index.column())) : QRect();
        }
        return QTableView::visualRect(index);
    }
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override
    {
        if (!mGrid->mSyncing)  // the window moving under the current cell is no reason to scroll
            QTableView::scrollTo(index, hint);
    }

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override
    {
        return Guarded(mGrid, [&] { return MoveCursor(action, modifiers); }, QModelIndex());
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        auto* selection = static_cast<GridSelectionModel*>(selectionModel());
        const int top = mGrid->TopModelRow();
        selection->Forget();
        QTableView::keyPressEvent(event);
        if (selection->Refused())  // the window went to the row asked for: back where it was
            Guarded(mGrid, [&] { mGrid->PlaceWindow(top); });
    }
    void wheelEvent(QWheelEvent* event) override
    {
        // Up and down is the grid's scroll bar; the view's own would stop at the window's edge.
        if (std::abs(event->angleDelta().y()) >= std::abs(event->angleDelta().x()))
            QCoreApplication::sendEvent(mGrid->mRowBar, event);
        else
            QTableView::wheelEvent(event);
    }
    void resizeEvent(QResizeEvent* event) override
    {
        QTableView::resizeEvent(event);
        if (mGrid->mWindow)
            Guarded(mGrid, [&] { mGrid->PlaceWindow(mGrid->TopModelRow()); });
    }
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
        if (mGrid->mSyncing) {
            QTableView::currentChanged(current, previous);
            return;
        }
        const int oldRow = mGrid->Row();
        const int oldCol = mGrid->Col();
        // Before the view scrolls to it, which may move the window.
        mGrid->mCurrentRow = current.isValid() ? mGrid->mWindow->Start() + current.row() : -1;
        if (current.isValid()) {
            mGrid->mCurrentLogical = current.column();
            mGrid->mCurrentCol = mGrid->ColOfLogical(current.column());
        }
        QTableView::currentChanged(current, previous);
        if (mGrid->mByCode)
            mGrid->CurrentChanged(oldRow, oldCol);
        else
            Guarded(mGrid, [&] { mGrid->CurrentChanged(oldRow, oldCol); });
    }

private:
    // Moves within the window are the view's; the grid first brings the current row into view
    // (the move starts from it) and goes to the first or last row itself.
    QModelIndex MoveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
    {
        const int rows = mGrid->mModel->rowCount();
        if (rows == 0)
            return {};
        if ((action == MoveHome || action == MoveEnd) && (modifiers & Qt::ControlModifier)) {
            const int target = action == MoveHome ? 0 : rows - 1;
            QHeaderView* across = horizontalHeader();
            int visual = action == MoveHome ? 0 : across->count() - 1;
            const int step = action == MoveHome ? 1 : -1;
            while (visual + step >= 0 && visual + step < across->count() && across->isSectionHidden(across->logicalIndex(visual)))
                visual += step;
            mGrid->BringIntoView(target);
            return model()->index(target - mGrid->mWindow->Start(), across->logicalIndex(std::max(visual, 0)));
        }
        mGrid->BringIntoView(mGrid->mCurrentRow < 0 ? 0 : mGrid->mCurrentRow);
        return QTableView::moveCursor(action, modifiers);
    }

    Grid* mGrid;
};

// --- The control -----------------------------------------------------------------------------

Grid::Grid(QWidget* parent) : UserControl(parent), mModel(new GridModel(this)), mView(new GridView(this))
{
    mWindow = new GridWindow(mModel, this);
    mView->setModel(mWindow);
    QItemSelectionModel* standard = mView->selectionModel();
    mView->setSelectionModel(new GridSelectionModel(mWindow, this));
    delete standard;
    mRowBar = new QScrollBar(Qt::Vertical, this);
    mRowBar->setFocusPolicy(Qt::NoFocus);
    mRowBar->hide();
    connect(mRowBar, &QScrollBar::valueChanged, this, [this](int top) { Guarded(this, [&] { PlaceWindow(top); }); });
    // The view scrolls within the window (to a cell, a page, the wheel on its own): the window
    // follows, so that the view's own position goes back to the window's middle.
    connect(mView->verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) {
        if (!mPlacing)
            Guarded(this, [&] { PlaceWindow(mWindow->Start() + value); });
    });
    SetInputWidget(mView);
    for (QWidget* w : {mView->viewport(), mView->horizontalHeader()->viewport(), mView->verticalHeader()->viewport()})
        w->installEventFilter(this);
    // Rows that start over (a filter, a sort, changes through clones) lose the current cell: it
    // goes back to the recordset's record. Rows added or removed keep it on its record.
    connect(mModel, &QAbstractItemModel::modelReset, this, [this] { Guarded(this, [this] { RowsStartOver(); }); });
    connect(mModel, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) { Guarded(this, [&] { RowsInserted(first, last); }); });
    connect(mModel, &QAbstractItemModel::rowsRemoved, this,
            [this](const QModelIndex&, int first, int last) { Guarded(this, [&] { RowsRemoved(first, last); }); });
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
    const int bar = mRowBar->isHidden() ? 0 : mRowBar->sizeHint().width();
    mView->setGeometry(0, 0, width() - bar, height());
    mRowBar->setGeometry(width() - bar, 0, bar, height());
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
    if (mCurrentRow == target)
        return;
    const QScopedValueRollback following(mFollowing, true);
    MoveCurrentByCode(target);
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
    try {
        MoveRecordsetTo(mCurrentRow);
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
    return mCurrentRow < 0 ? -1 : mCurrentRow + mFixedRows;
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
    const QScopedValueRollback following(mFollowing, true);
    MoveCurrentByCode(modelRow);
}

// Code moves the current cell: no asking, but AfterRowColChange as for the user's moves.
void Grid::MoveCurrentByCode(int modelRow)
{
    const QScopedValueRollback byCode(mByCode, true);
    if (modelRow < 0) {
        if (mCurrentRow < 0)
            return;
        const int oldRow = Row(), oldCol = Col();
        mCurrentRow = -1;
        SyncCurrent();
        CurrentChanged(oldRow, oldCol);
        return;
    }
    const int col = mCurrentCol >= mFixedCols && mCurrentCol < Cols() ? mCurrentCol : mFixedCols;
    if (col >= Cols())
        return;
    const int logical = LogicalOf(col);
    BringIntoView(modelRow);
    mView->selectionModel()->setCurrentIndex(mWindow->index(modelRow - mWindow->Start(), logical),
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

int Grid::Col() const
{
    return mCurrentRow >= 0 && mCurrentLogical >= 0 && mCurrentLogical < DataColCount() ? ColOfLogical(mCurrentLogical)
                                                                                      : mCurrentCol;
}

void Grid::SetCol(int col)
{
    const int logical = LogicalOf(col);
    const int oldCol = Col();
    mCurrentCol = col;
    if (mCurrentRow < 0)
        return;
    const QScopedValueRollback byCode(mByCode, true);
    const QModelIndex shown = mView->currentIndex();
    if (shown.isValid()) {
        mView->selectionModel()->setCurrentIndex(mWindow->index(shown.row(), logical),
                                                 QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        return;
    }
    mCurrentLogical = logical;  // the current row is outside the window: the view has no cell to move
    if (oldCol != col)
        CurrentChanged(Row(), oldCol);
}

int Grid::TopRow() const
{
    return TopModelRow() + mFixedRows;
}

void Grid::SetTopRow(int row)
{
    RequireRow(row);
    PlaceWindow(row - mFixedRows);
}

int Grid::BottomRow() const
{
    const int row = mView->rowAt(mView->viewport()->height() - 1);
    return std::max(row < 0 ? DataRowCount() - 1 : mWindow->Start() + row, 0) + mFixedRows;
}

void Grid::ShowCell(int row, int col)
{
    RequireRow(row);
    RequireCol(col);
    const int modelRow = row < mFixedRows ? TopModelRow() : row - mFixedRows;
    const int logical = col < mFixedCols ? mView->horizontalHeader()->logicalIndex(0) : LogicalOf(col);
    if (modelRow < DataRowCount() && logical >= 0) {
        BringIntoView(modelRow);
        mView->scrollTo(mWindow->index(modelRow - mWindow->Start(), logical));  // across, and to the pixel
    }
}

// --- The window ------------------------------------------------------------------------------

// The row the view is scrolled to; at the very end the view aligns the last row to the bottom
// and this row is the first shown whole.
int Grid::TopModelRow() const
{
    return mWindow->Start() + mView->verticalScrollBar()->value();
}

int Grid::RowPixels(int modelRow) const
{
    const auto it = mRowHeights.find(modelRow);
    return std::max(1, it != mRowHeights.end() ? it->second : mView->verticalHeader()->defaultSectionSize());
}

// Rows a viewport holds at the default height.
int Grid::Page() const
{
    return std::max(1, mView->viewport()->height() / std::max(1, mView->verticalHeader()->defaultSectionSize()));
}

// The top row that shows the last row whole at the bottom, as the view counts it.
int Grid::MaxTop() const
{
    const int rows = mModel->rowCount();
    const int height = mView->viewport()->height();
    int fit = 0;
    for (int used = 0, r = rows - 1; r >= 0; --r) {
        used += RowPixels(r);
        if (used > height)
            break;
        ++fit;
    }
    return std::max(0, rows - std::max(fit, 1));
}

void Grid::PlaceWindow(int top)
{
    if (mPlacing || !mWindow)
        return;
    const QScopedValueRollback placing(mPlacing, true);
    const int rows = mModel->rowCount();
    const int maxTop = MaxTop();
    top = std::clamp(top, 0, maxTop);
    const int page = Page();
    const int count = std::min(rows, 3 * page + 2);
    mWindow->Place(std::clamp(top - page, 0, rows - count), count);
    ApplyWindowHeights();
    mView->Relayout();
    mView->verticalScrollBar()->setValue(top - mWindow->Start());
    {
        const QSignalBlocker quiet(mRowBar);
        mRowBar->setRange(0, maxTop);
        mRowBar->setPageStep(page);
        mRowBar->setValue(top);
    }
    if (mRowBar->isHidden() == (maxTop > 0)) {
        mRowBar->setHidden(maxTop == 0);
        Resize();
    }
    SyncCurrent();
    mView->viewport()->update();
}

// The least scrolling that shows the row whole.
void Grid::BringIntoView(int modelRow)
{
    const int top = TopModelRow();
    if (modelRow < top) {
        PlaceWindow(modelRow);
        return;
    }
    const int height = mView->viewport()->height();
    int first = modelRow;
    for (int used = RowPixels(modelRow); first > 0 && used + RowPixels(first - 1) <= height;)
        used += RowPixels(--first);
    if (first > top)
        PlaceWindow(first);
}

void Grid::ApplyWindowHeights()
{
    if (mRowHeights.empty() && !mWindowHeights)
        return;
    QHeaderView* down = mView->verticalHeader();
    for (int i = 0; i < mWindow->Count(); ++i)
        down->resizeSection(i, RowPixels(mWindow->Start() + i));
    mWindowHeights = !mRowHeights.empty();
}

void Grid::SyncCurrent()
{
    const QScopedValueRollback syncing(mSyncing, true);
    QItemSelectionModel* selection = mView->selectionModel();
    const int row = mCurrentRow - mWindow->Start();
    if (mCurrentRow < 0 || row >= mWindow->Count() || row < 0 || mCurrentLogical < 0 ||
        mCurrentLogical >= mWindow->columnCount()) {
        if (selection->currentIndex().isValid())
            selection->clearCurrentIndex();
        if (selection->hasSelection())
            selection->clearSelection();
        return;
    }
    const QModelIndex want = mWindow->index(row, mCurrentLogical);
    if (selection->currentIndex() != want || !selection->isRowSelected(row))
        selection->setCurrentIndex(want, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void Grid::RowsStartOver()
{
    mCurrentRow = -1;
    mRowHeights.erase(mRowHeights.lower_bound(mModel->rowCount()), mRowHeights.end());
    PlaceWindow(TopModelRow());
    mWindow->Reread();
    FollowRecordset();
}

void Grid::RowsInserted(int first, int last)
{
    const int count = last - first + 1;
    if (mCurrentRow >= first)
        mCurrentRow += count;
    ShiftRowHeights(first, count);
    PlaceWindow(TopModelRow());
    mWindow->Reread();
    SyncCurrent();
}

// A current row removed gives its place to the row above it (the row below at the top), as a
// view's selection does, and that is a move of the current cell.
void Grid::RowsRemoved(int first, int last)
{
    const int count = last - first + 1;
    const int oldRow = Row(), oldCol = Col();
    const bool lost = mCurrentRow >= first && mCurrentRow <= last;
    if (mCurrentRow > last)
        mCurrentRow -= count;
    else if (lost)
        mCurrentRow = first > 0 ? first - 1 : (mModel->rowCount() > 0 ? 0 : -1);
    ShiftRowHeights(first, -count);
    PlaceWindow(TopModelRow());
    mWindow->Reread();
    SyncCurrent();
    if (lost)
        CurrentChanged(oldRow, oldCol);
}

// Heights stay with their rows: rows from `from` move by `by` (rows before from - by go when
// negative).
void Grid::ShiftRowHeights(int from, int by)
{
    if (mRowHeights.empty())
        return;
    std::map<int, int> moved;
    for (const auto& [row, height] : mRowHeights) {
        if (row < from)
            moved.emplace(row, height);
        else if (by > 0 || row >= from - by)
            moved.emplace(row + by, height);
    }
    mRowHeights.swap(moved);
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
    mWindowHeights = true;  // the default height went to every row of the window
    PlaceWindow(TopModelRow());
}

int Grid::RowHeight(int row) const
{
    RequireRow(row);
    const int pixels = row < mFixedRows ? mView->horizontalHeader()->height() : RowPixels(row - mFixedRows);
    return PixelsToTwipsY(pixels);
}

void Grid::SetRowHeight(int row, int twips)
{
    RequireRow(row);
    RequireValid(twips >= 0, "RowHeight");
    if (row < mFixedRows)
        mView->horizontalHeader()->setFixedHeight(TwipsToPixelsY(twips));
    else
        mRowHeights[row - mFixedRows] = TwipsToPixelsY(twips);
    mWindowHeights = true;
    PlaceWindow(TopModelRow());
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
            mRowHeights[r] = std::max(base, heights[static_cast<std::size_t>(r - first)]);
        mWindowHeights = true;
        PlaceWindow(TopModelRow());
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
    if (modelRow >= 0)
        modelRow += mWindow->Start();
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
