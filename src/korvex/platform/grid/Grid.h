// Grid: the grid control the list controls and host forms sit on, a QTableView over a
// RecordsetModel that reads its DataSource recordset in place, so a million rows bind and
// scroll as ten do (uniform row heights; nothing measures every row). The view itself holds
// only a window of a few pages of rows; the grid's own scroll bar covers them all. Its members
// follow the grid numbering hosts know: row 0 is the header row when FixedRows is 1, so record r + 1 stands
// in row r; column indexes are display positions (moving a column renumbers the others) and
// keys name columns (a bound column's key is its field name).
//
// A row, column or key the grid does not have raises GridInvalidIndex (381, the platform's
// "Subscript out of range" for an indexed property), never a crash. A value a property cannot
// take raises 380.
#pragma once

#include "korvex/platform/grid/RecordsetModel.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Variant.h"

#include <QPointer>

#include <map>
#include <memory>
#include <vector>

class QScrollBar;

namespace korvex {

class GridModel;
class GridView;
class GridWindow;

inline constexpr int GridInvalidIndex = vbErrInvalidPropertyArrayIndex;

// What Cell reads and writes: the text as stored, or the text shown (after CellDisplayText).
enum GridCellSettings : int {
    gcsText = 0,
    gcsTextDisplay = 19,
};

// What AutoSize fits: column widths to their texts, or row heights to wrapped texts.
enum GridAutoSizeModes : int {
    gasColWidth = 0,
    gasRowHeight = 1,
};

class Grid : public UserControl {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "Grid")
    Q_PROPERTY(korvex::Variant DataSource READ DataSourceVariant WRITE SetDataSourceVariant)
    Q_PROPERTY(int Rows READ Rows WRITE SetRows)
    Q_PROPERTY(int Cols READ Cols WRITE SetCols)
    Q_PROPERTY(int FixedRows READ FixedRows WRITE SetFixedRows)
    Q_PROPERTY(int FixedCols READ FixedCols WRITE SetFixedCols)
    Q_PROPERTY(int Row READ Row WRITE SetRow)
    Q_PROPERTY(int Col READ Col WRITE SetCol)
    Q_PROPERTY(int TopRow READ TopRow WRITE SetTopRow)
    Q_PROPERTY(int BottomRow READ BottomRow)
    Q_PROPERTY(int MouseRow READ MouseRow)
    Q_PROPERTY(int MouseCol READ MouseCol)
    Q_PROPERTY(QString ToolTipText READ ToolTipText WRITE SetToolTipText)
    Q_PROPERTY(bool Redraw READ Redraw WRITE SetRedraw)
    Q_PROPERTY(bool WordWrap READ WordWrap WRITE SetWordWrap)
    Q_PROPERTY(int AutoSizeMode READ AutoSizeMode WRITE SetAutoSizeMode)
    Q_PROPERTY(bool ExtendLastCol READ ExtendLastCol WRITE SetExtendLastCol)
    Q_PROPERTY(int RowHeightMin READ RowHeightMin WRITE SetRowHeightMin)

public:
    explicit Grid(QWidget* parent = nullptr);
    ~Grid() override;

    // The recordset shown: one column per field, one row per record in its own order; Nothing
    // unbinds. The grid follows the recordset (rows added, deleted, filtered or sorted through it
    // or any clone) and its current record: moving the grid's Row moves the recordset, and a
    // move of the recordset moves the Row. Binding starts the columns over: keys are the field
    // names, all shown, in field order. A closed recordset raises 380.
    const std::shared_ptr<ado::Recordset>& DataSource() const;
    void SetDataSource(std::shared_ptr<ado::Recordset> recordset);
    Variant DataSourceVariant() const;
    void SetDataSourceVariant(const Variant& recordset);

    // Counts include the fixed rows and columns. Bound, Rows and Cols follow the recordset and
    // only FixedRows / FixedCols may be written to them; unbound they size a grid of empty cells.
    int Rows() const;
    void SetRows(int rows);
    int Cols() const;
    void SetCols(int cols);
    // 0 or 1: a header row with the captions; a row-selector column.
    int FixedRows() const noexcept { return mFixedRows; }
    void SetFixedRows(int rows);
    int FixedCols() const noexcept { return mFixedCols; }
    void SetFixedCols(int cols);

    // The current cell; -1 for none. Setting Row moves the recordset to that record (-1 moves it
    // before the first); code is obeyed without BeforeRowColChange, which the user's moves raise.
    int Row() const;
    void SetRow(int row);
    int Col() const;
    void SetCol(int col);
    // The first and last data rows in view; setting TopRow scrolls. TopRow is the row scrolled
    // to: at the very end, where the last row sits on the bottom edge, the first row shown whole.
    int TopRow() const;
    void SetTopRow(int row);
    int BottomRow() const;
    // The cell under the mouse, the fixed row and column included; -1 off the cells.
    int MouseRow() const noexcept { return mMouseRow; }
    int MouseCol() const noexcept { return mMouseCol; }

    // Shown as the tool tip over the cells while not empty.
    const QString& ToolTipText() const noexcept { return mToolTipText; }
    void SetToolTipText(const QString& text);
    // False holds painting back while many settings change; True paints once.
    bool Redraw() const noexcept { return mRedraw; }
    void SetRedraw(bool redraw);
    // Wrapped cell texts; rows grow only through AutoSize in gasRowHeight mode.
    bool WordWrap() const noexcept { return mWordWrap; }
    void SetWordWrap(bool wrap);
    int AutoSizeMode() const noexcept { return mAutoSizeMode; }
    void SetAutoSizeMode(int mode);
    // The last visible column takes the width left over.
    bool ExtendLastCol() const noexcept { return mExtendLastCol; }
    void SetExtendLastCol(bool extend);
    // The smallest row height in twips; 0: the font's.
    int RowHeightMin() const noexcept { return mRowHeightMin; }
    void SetRowHeightMin(int twips);

    // Columns, by index (display position).
    Q_INVOKABLE QString ColKey(int col) const;
    Q_INVOKABLE void SetColKey(int col, const QString& key);
    // The index of the column with that key (ignoring case); -1 when none has it.
    Q_INVOKABLE int ColIndex(const QString& key) const;
    // Reads the column's position (its index); writing moves the column there.
    Q_INVOKABLE int ColPosition(int col) const;
    Q_INVOKABLE void SetColPosition(int col, int position);
    Q_INVOKABLE bool ColHidden(int col) const;
    Q_INVOKABLE void SetColHidden(int col, bool hidden);
    // Twips.
    Q_INVOKABLE int ColWidth(int col) const;
    Q_INVOKABLE void SetColWidth(int col, int twips);
    // 0 to 8: horizontal (left, centre, right) times 3 plus vertical (top, centre, bottom);
    // 9 to 11: general (text left, numbers right) with top, centre, bottom.
    Q_INVOKABLE int ColAlignment(int col) const;
    Q_INVOKABLE void SetColAlignment(int col, int alignment);

    // Cells. Row 0 of a grid with a fixed row holds the captions; a data cell of a bound grid
    // reads and writes the recordset's field (writing moves the recordset there and updates).
    Q_INVOKABLE QString TextMatrix(int row, int col) const;
    Q_INVOKABLE void SetTextMatrix(int row, int col, const QString& text);
    Q_INVOKABLE korvex::Variant Cell(int setting) const;
    Q_INVOKABLE korvex::Variant Cell(int setting, int row, int col) const;
    Q_INVOKABLE void SetCell(int setting, int row, int col, const korvex::Variant& value);

    // Twips; all data rows share one height unless AutoSize or RowHeight gave them their own.
    // Such heights are kept by row (and move with rows added or removed before them); the
    // window the view holds is sized by the shared height, so a screen of rows lower than it
    // may show fewer rows than fit, never wrong ones.
    Q_INVOKABLE int RowHeight(int row) const;
    Q_INVOKABLE void SetRowHeight(int row, int twips);
    // Fits column widths (gasColWidth: to the texts of the rows in view and the caption) or row
    // heights (gasRowHeight: to wrapped texts, rows in view only) of columns col1 to col2.
    Q_INVOKABLE void AutoSize(int col1);
    Q_INVOKABLE void AutoSize(int col1, int col2);
    // The first row from `row` (FixedRows when -1) whose text in `col` begins with (or, with
    // fullMatch, equals) `item`; -1 when none.
    Q_INVOKABLE int FindRow(const QString& item, int row = -1, int col = -1, bool caseSensitive = false,
                            bool fullMatch = false) const;
    // Scrolls the cell into view.
    Q_INVOKABLE void ShowCell(int row, int col);

    // The model the view reads; a host may hand it to other views as well.
    RecordsetModel* Model() const;
    QWidget* View() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // The user asks to move the current cell; a handler that sets Cancel keeps it where it is.
    void BeforeRowColChange(int OldRow, int OldCol, int NewRow, int NewCol, bool& Cancel);
    void AfterRowColChange(int OldRow, int OldCol, int NewRow, int NewCol);
    // The user asks to move the selection (with the current cell); Cancel refuses it.
    void BeforeSelChange(int OldRowSel, int OldColSel, int NewRowSel, int NewColSel, bool& Cancel);
    // A data cell's text is about to be shown; the handler may change it.
    void CellDisplayText(int Row, int Col, QString& Text);

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class GridModel;
    friend class GridView;
    friend class GridSelectionModel;
    friend class GridWindow;

    // Grid numbering to the model's and back.
    int LogicalOf(int col) const;       // a data column; raises GridInvalidIndex
    int ColOfLogical(int logical) const;
    void RequireRow(int row) const;
    void RequireCol(int col) const;
    int DataRowCount() const;
    int DataColCount() const;
    QString ShownText(int modelRow, int logical);
    int AlignmentOf(int logical) const;

    void Rebind();
    void ApplyRowHeight();
    void ApplyHeaders();
    void FollowRecordset();
    void MoveRecordsetTo(int modelRow);
    void CurrentChanged(int oldRow, int oldCol);
    // User moves: the notices that can cancel them.
    bool AllowMove(int newRow, int newCol);
    void TrackMouse(QObject* watched, QMouseEvent* event);

    // The window of rows the view holds. `top` is the model row shown first; the window takes
    // a page above and below it, so that the view's own moves (a page, a row, the wheel) stay
    // inside and the grid only recentres it afterwards.
    int TopModelRow() const;
    int MaxTop() const;
    int Page() const;
    int RowPixels(int modelRow) const;
    void PlaceWindow(int top);
    void BringIntoView(int modelRow);
    void ApplyWindowHeights();
    // The view's current cell and selection follow mCurrentRow while the window moves.
    void SyncCurrent();
    void MoveCurrentByCode(int modelRow);
    void RowsStartOver();
    void RowsInserted(int first, int last);
    void RowsRemoved(int first, int last);
    void ShiftRowHeights(int from, int by);
    void RaiseMouse(QMouseEvent* event, QWidget* from);

    GridModel* mModel;
    GridWindow* mWindow = nullptr;
    QScrollBar* mRowBar = nullptr;  // covers every row; the view's own bar only the window
    GridView* mView;
    int mFixedRows{};
    int mFixedCols{};
    bool mWordWrap{};
    bool mExtendLastCol{};
    int mRowHeightMin{};
    int mAutoSizeMode = gasColWidth;
    bool mRedraw = true;
    QString mToolTipText;
    int mMouseRow = -1;
    int mMouseCol = -1;
    int mCurrentCol = -1;  // kept while there is no current row
    int mCurrentRow = -1;      // the current model row, whether the window holds it or not
    int mCurrentLogical = -1;  // and its column
    std::map<int, int> mRowHeights;  // model row to pixels, for rows given their own height
    bool mWindowHeights = false;     // the window's rows do not all have the default height
    bool mSyncing = false;
    bool mPlacing = false;
    std::vector<QString> mKeys;     // by logical column
    std::vector<int> mAlignments;   // by logical column
    bool mByCode = false;
    bool mFollowing = false;
    QMetaObject::Connection mMoveConnection;
};

}  // namespace korvex
