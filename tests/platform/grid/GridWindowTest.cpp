// The grid over many rows: the view holds a window of them, and the keyboard, the wheel, the
// scroll bar and rows changed through clones move it, while the grid's members speak of all rows.
#include "tests/platform/grid/GridTestKit.h"

#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/Form.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QHeaderView>
#include <QScrollBar>
#include <QTableView>
#include <QTest>
#include <QWheelEvent>

namespace korvex {
namespace {

using namespace ado;

constexpr int Many = 20000;

QString CodeOf(int i)
{
    return QStringLiteral("R%1").arg(i, 5, 10, QChar(u'0'));
}

// Record i has the code R0000i; Amount is i modulo 100.
std::shared_ptr<Recordset> ManyRows(int rows = Many)
{
    auto store = std::make_shared<RecordsetStore>(
        std::vector<FieldDef>{MakeFieldDef("Code", adVarWChar, 10, adFldIsNullable), MakeFieldDef("Amount", adInteger, 4, adFldIsNullable)});
    for (int i = 0; i < rows; ++i) {
        const Variant values[] = {Variant(CodeOf(i)), Variant(std::int32_t{i % 100})};
        store->AppendRow(values);
    }
    auto rs = std::make_shared<Recordset>();
    rs->OpenStore(std::move(store), adOpenStatic, adLockOptimistic);
    return rs;
}

struct ShownGrid : korvex::test::ShownGrid {
    QScrollBar* RowBar() const { return grid->findChild<QScrollBar*>(QString(), Qt::FindDirectChildrenOnly); }
    void Key(int key, Qt::KeyboardModifiers modifiers = {}) const { QTest::keyClick(View(), Qt::Key(key), modifiers); }
    // The text painted in the first data row shown whole.
    QString FirstShownCode() const
    {
        QModelIndex first = View()->indexAt(QPoint(2, 2));
        if (View()->visualRect(first).top() < 0)
            first = first.sibling(first.row() + 1, 0);
        return first.data().toString();
    }
    // The grid row is on the screen whole.
    bool FullyShown(int row) const
    {
        const QRect cell = View()->visualRect(grid->Model()->index(row - grid->FixedRows(), 0));
        return cell.isValid() && View()->viewport()->rect().contains(cell);
    }
    bool CurrentRowHighlighted() const
    {
        const QRect cell = View()->visualRect(grid->Model()->index(grid->Row() - 1, 0));
        const QModelIndex shown = View()->indexAt(cell.center());
        return cell.isValid() && shown.data().toString() == grid->TextMatrix(grid->Row(), 0) &&
               View()->selectionModel()->isRowSelected(shown.row());
    }
};

TEST(GridWindow, HoldsAFewPagesOfRowsWhateverTheirNumber)
{
    ShownGrid g;
    g.grid->SetDataSource(ManyRows());
    EXPECT_EQ(g.grid->Rows(), Many + 1);
    // What the view keeps per row (its header records) stays a few pages.
    EXPECT_LT(g.View()->verticalHeader()->count(), 100);
    EXPECT_EQ(g.View()->model()->rowCount(), g.View()->verticalHeader()->count());
    ASSERT_NE(g.RowBar(), nullptr);
    EXPECT_TRUE(g.RowBar()->isVisible());
    // The bar ends where the last row shows whole at the bottom.
    g.grid->SetTopRow(Many);
    EXPECT_EQ(g.grid->TopRow(), g.RowBar()->maximum() + 1);
    EXPECT_EQ(g.grid->BottomRow(), Many);
    EXPECT_TRUE(g.FullyShown(Many));
    EXPECT_FALSE(g.FullyShown(g.grid->TopRow() - 1));

    // Ten rows: one window of ten, and no scroll bar.
    g.grid->SetDataSource(ManyRows(10));
    EXPECT_EQ(g.View()->verticalHeader()->count(), 10);
    EXPECT_FALSE(g.RowBar()->isVisible());
    EXPECT_EQ(g.grid->BottomRow(), 10);
}

TEST(GridWindow, KeysMoveTheCurrentRowAcrossTheWindowsEdge)
{
    ShownGrid g;
    auto rs = ManyRows();
    g.grid->SetDataSource(rs);
    g.View()->setFocus();
    ASSERT_EQ(g.grid->Row(), 1);

    const int window = g.View()->model()->rowCount();
    for (int i = 0; i < window + 5; ++i)
        g.Key(Qt::Key_Down);
    EXPECT_EQ(g.grid->Row(), window + 6);
    EXPECT_EQ(rs->AbsolutePosition(), window + 6);
    EXPECT_GT(g.grid->TopRow(), 1);
    EXPECT_TRUE(g.FullyShown(g.grid->Row()));
    EXPECT_FALSE(g.FullyShown(g.grid->Row() + 1));  // it just came into view at the bottom
    EXPECT_TRUE(g.CurrentRowHighlighted());
    EXPECT_EQ(g.FirstShownCode(), CodeOf(g.grid->TopRow() - 1));

    const int row = g.grid->Row();
    const int page = g.grid->BottomRow() - g.grid->TopRow();
    g.Key(Qt::Key_PageDown);
    g.Key(Qt::Key_PageDown);
    g.Key(Qt::Key_PageDown);
    EXPECT_GT(g.grid->Row(), row + 2 * page);
    EXPECT_LE(g.grid->Row(), row + 3 * page + 3);
    EXPECT_TRUE(g.CurrentRowHighlighted());
    EXPECT_EQ(g.grid->TextMatrix(g.grid->Row(), 0), CodeOf(rs->AbsolutePosition() - 1));

    g.Key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(g.grid->Row(), Many);
    EXPECT_EQ(g.grid->BottomRow(), Many);
    EXPECT_TRUE(g.CurrentRowHighlighted());
    g.Key(Qt::Key_Up);
    EXPECT_EQ(g.grid->Row(), Many - 1);
    EXPECT_EQ(g.grid->BottomRow(), Many);

    g.Key(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(g.grid->Row(), 1);
    EXPECT_EQ(g.grid->TopRow(), 1);
    EXPECT_EQ(g.FirstShownCode(), CodeOf(0));
    g.Key(Qt::Key_PageUp);
    EXPECT_EQ(g.grid->Row(), 1);

    // A refused move to the far end leaves the rows where they stood.
    g.grid->SetTopRow(500);
    g.grid->SetRow(505);
    QObject::connect(g.grid, &Grid::BeforeRowColChange, [](int, int, int, int, bool& cancel) { cancel = true; });
    g.Key(Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(g.grid->Row(), 505);
    EXPECT_EQ(g.grid->TopRow(), 500);
    EXPECT_EQ(rs->AbsolutePosition(), 505);
}

TEST(GridWindow, TheWheelAndTheScrollBarMoveTheRowsButNotTheCurrentRow)
{
    ShownGrid g;
    auto rs = ManyRows();
    g.grid->SetDataSource(rs);
    g.grid->SetRow(3);

    const QPoint at = g.View()->viewport()->rect().center();
    for (int i = 0; i < 40; ++i) {
        QWheelEvent wheel(at, g.View()->viewport()->mapToGlobal(at), {}, QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(g.View()->viewport(), &wheel);
    }
    const int step = QApplication::wheelScrollLines();
    EXPECT_EQ(g.grid->TopRow(), 1 + 40 * step);  // past the window's pages, row for row
    EXPECT_EQ(g.FirstShownCode(), CodeOf(40 * step));
    EXPECT_EQ(g.grid->Row(), 3);
    EXPECT_EQ(rs->AbsolutePosition(), 3);

    // The scroll bar dragged to the middle; the current row is off the screen and the window.
    g.RowBar()->setSliderPosition(Many / 2);
    EXPECT_EQ(g.grid->TopRow(), Many / 2 + 1);
    EXPECT_EQ(g.FirstShownCode(), CodeOf(Many / 2));
    EXPECT_EQ(g.grid->Row(), 3);
    EXPECT_FALSE(g.View()->visualRect(g.grid->Model()->index(2, 0)).isValid());
    EXPECT_EQ(g.grid->TextMatrix(Many / 2 + 5, 0), CodeOf(Many / 2 + 4));
    EXPECT_EQ(g.grid->FindRow(CodeOf(Many - 3), -1, 0), Many - 2);

    // A key moves on from the current row, which comes back into view highlighted.
    g.View()->setFocus();
    g.Key(Qt::Key_Down);
    EXPECT_EQ(g.grid->Row(), 4);
    EXPECT_LE(g.grid->TopRow(), 4);
    EXPECT_TRUE(g.CurrentRowHighlighted());

    // Code far down: ShowCell and Row scroll there; the mouse reads the rows on the screen.
    g.grid->ShowCell(15000, 1);
    EXPECT_TRUE(g.FullyShown(15000));
    EXPECT_FALSE(g.FullyShown(15001));
    g.grid->SetRow(14990);
    EXPECT_TRUE(g.CurrentRowHighlighted());
    const QRect cell = g.View()->visualRect(g.grid->Model()->index(14989, 1));
    QTest::mouseMove(g.View()->viewport(), cell.center());
    EXPECT_EQ(g.grid->MouseRow(), 14990);
    QTest::mouseClick(g.View()->viewport(), Qt::LeftButton, {}, g.View()->visualRect(g.grid->Model()->index(14991, 1)).center());
    EXPECT_EQ(g.grid->Row(), 14992);
    EXPECT_EQ(rs->AbsolutePosition(), 14992);
    EXPECT_TRUE(g.CurrentRowHighlighted());
}

TEST(GridWindow, RowsChangedThroughClonesWhileScrolledFarDown)
{
    ShownGrid g;
    auto shown = ManyRows();
    g.grid->SetDataSource(shown);
    g.grid->SetTopRow(Many - 100);
    g.grid->SetRow(Many - 95);
    const QString current = g.grid->TextMatrix(g.grid->Row(), 0);

    auto other = shown->Clone();
    other->SetAbsolutePosition(10);
    other->Delete();  // above the screen: the current row keeps its record
    QApplication::processEvents();
    EXPECT_EQ(g.grid->Rows(), Many);
    EXPECT_EQ(g.grid->TextMatrix(g.grid->Row(), 0), current);
    EXPECT_TRUE(g.CurrentRowHighlighted());
    EXPECT_EQ(g.FirstShownCode(), g.grid->TextMatrix(g.grid->TopRow(), 0));

    other->AddNew();
    other->Fields()->Item("Code")->SetValue(Variant("Z"));
    other->Update();
    QApplication::processEvents();
    EXPECT_EQ(g.grid->Rows(), Many + 1);
    g.grid->ShowCell(Many, 0);
    EXPECT_EQ(g.grid->BottomRow(), Many);
    EXPECT_TRUE(g.FullyShown(Many));
    EXPECT_EQ(g.View()->indexAt(g.View()->visualRect(g.grid->Model()->index(Many - 1, 0)).center()).data().toString(), "Z");
    EXPECT_EQ(g.grid->TextMatrix(g.grid->Row(), 0), current);

    // A filter leaves fewer rows than the top stood at, and puts the recordset on its first
    // record: the rows show from the top again.
    shown->SetFilter(Variant("Amount = 7"));
    EXPECT_EQ(g.grid->Rows(), Many / 100 + 1);
    EXPECT_EQ(g.grid->Row(), 1);
    EXPECT_EQ(g.grid->TopRow(), 1);
    EXPECT_EQ(g.FirstShownCode(), "R00007");
    EXPECT_TRUE(g.CurrentRowHighlighted());
    EXPECT_EQ(g.RowBar()->maximum(), Many / 100 - (g.grid->BottomRow() - g.grid->TopRow()));

    // Rows removed under the screen at the end: the screen closes up to the last row.
    g.grid->SetTopRow(Many / 100);
    auto filtered = shown->Clone();
    filtered->SetFilter(Variant("Amount = 7"));
    for (int i = 0; i < 3; ++i) {
        filtered->MoveLast();
        filtered->Delete();
    }
    QApplication::processEvents();
    EXPECT_EQ(g.grid->Rows(), Many / 100 - 2);
    EXPECT_EQ(g.grid->BottomRow(), Many / 100 - 3);
    EXPECT_TRUE(g.FullyShown(Many / 100 - 3));
    EXPECT_EQ(g.grid->TopRow(), g.RowBar()->maximum() + 1);
    shown->SetFilter(Variant(std::int32_t{adFilterNone}));
    EXPECT_EQ(g.grid->Rows(), Many - 2);
}

TEST(GridWindow, RowHeightsStayWithTheirRowsAsTheWindowMoves)
{
    ShownGrid g;
    g.grid->SetDataSource(ManyRows());
    const int normal = g.grid->RowHeight(1);
    g.grid->SetRowHeight(5000, normal * 3);
    g.grid->SetTopRow(4990);
    EXPECT_EQ(g.grid->RowHeight(5000), normal * 3);
    const QRect tall = g.View()->visualRect(g.grid->Model()->index(4999, 0));
    EXPECT_NEAR(tall.height(), g.View()->visualRect(g.grid->Model()->index(4998, 0)).height() * 3, 3);
    g.grid->SetTopRow(1);
    g.grid->SetTopRow(4995);
    EXPECT_EQ(g.View()->visualRect(g.grid->Model()->index(4999, 0)).height(), tall.height());
    EXPECT_EQ(g.grid->RowHeight(4000), normal);
}

}  // namespace
}  // namespace korvex
