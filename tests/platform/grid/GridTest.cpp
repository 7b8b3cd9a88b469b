// The grid: its numbering and members by name, bad indexes, columns moved and hidden, the rows
// following changes made through clones, the user's moves that handlers cancel, the cell text
// a handler changes as painted, and the cell under the mouse.
#include "tests/platform/grid/GridTestKit.h"
#include "tests/support/ErrorOf.h"

#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/Form.h"
#include "korvex/runtime/LateBinding.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QHeaderView>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QToolTip>

namespace korvex {
namespace {

using ado::adFilterNone;

using test::ShownGrid;

Variant Int(int v)
{
    return Variant(std::int32_t{v});
}

TEST(Grid, NumbersRowsAfterTheHeaderAndMovesWithTheRecordset)
{
    ShownGrid g;
    auto rs = test::Customers();
    g.grid->SetDataSource(rs);
    EXPECT_EQ(g.grid->Rows(), 6);
    EXPECT_EQ(g.grid->Cols(), 3);
    EXPECT_EQ(g.grid->TextMatrix(0, 1), "Name");
    EXPECT_EQ(g.grid->TextMatrix(2, 1), "Adams");
    EXPECT_EQ(g.grid->Row(), 1);  // the recordset is on its first record

    g.grid->SetRow(4);
    EXPECT_EQ(rs->AbsolutePosition(), 4);
    rs->MoveLast();
    EXPECT_EQ(g.grid->Row(), 5);
    g.grid->SetRow(-1);
    EXPECT_TRUE(rs->IsBOF());
    EXPECT_EQ(g.grid->Row(), -1);

    // The same members by name, as the list controls and the column utility reach them.
    QList<Variant> cell{Int(3), Int(2)};
    EXPECT_EQ(CStr(CallByName(g.grid, "TextMatrix", VbGet, cell)), "Leeds");
    EXPECT_EQ(CLng(GetProperty(g.grid, "Rows")), 6);
    SetProperty(g.grid, "Row", Int(2));
    EXPECT_EQ(rs->AbsolutePosition(), 2);
    QList<Variant> key{Variant("town")};
    EXPECT_EQ(CLng(CallByName(g.grid, "ColIndex", VbGet, key)), 2);

    // Without a fixed row, record r + 1 is row r.
    g.grid->SetFixedRows(0);
    EXPECT_EQ(g.grid->Rows(), 5);
    EXPECT_EQ(g.grid->TextMatrix(0, 1), "Baker");
    EXPECT_EQ(g.grid->Row(), 1);
}

TEST(Grid, RaisesItsInvalidIndexErrorForRowsColumnsAndKeysItDoesNotHave)
{
    ShownGrid g;
    g.grid->SetDataSource(test::Customers());
    EXPECT_EQ(test::ErrorOf([&] { g.grid->ColKey(3); }), GridInvalidIndex);
    EXPECT_EQ(test::ErrorOf([&] { g.grid->ColWidth(-1); }), GridInvalidIndex);
    EXPECT_EQ(test::ErrorOf([&] { g.grid->TextMatrix(6, 0); }), GridInvalidIndex);
    EXPECT_EQ(test::ErrorOf([&] { g.grid->SetRow(0); }), GridInvalidIndex);  // the header row
    EXPECT_EQ(test::ErrorOf([&] { g.grid->SetColPosition(g.grid->ColIndex("Nope"), 0); }), GridInvalidIndex);
    QList<Variant> args{Int(9), Variant(true)};
    EXPECT_EQ(test::ErrorOf([&] { CallByName(g.grid, "ColHidden", VbLet, args); }), GridInvalidIndex);
    EXPECT_EQ(test::ErrorOf([&] { g.grid->Cell(7, 1, 1); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { g.grid->SetFixedRows(2); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(g.grid->ColIndex("Nope"), -1);
    EXPECT_EQ(g.grid->FindRow("Zz", -1, 1), -1);
    EXPECT_EQ(g.grid->FindRow("co", -1, 1), 3);
    EXPECT_EQ(g.grid->FindRow("cole", 4, 1, false, true), -1);

    // Unbound, the grid is a sheet of empty cells of the size given.
    g.grid->SetDataSource(nullptr);
    EXPECT_EQ(g.grid->Rows(), 1);
    g.grid->SetCols(2);
    g.grid->SetRows(3);
    g.grid->SetTextMatrix(2, 1, QStringLiteral("x"));
    EXPECT_EQ(g.grid->TextMatrix(2, 1), "x");
    EXPECT_EQ(test::ErrorOf([&] { g.grid->SetRows(0); }), vbErrInvalidPropertyValue);
}

TEST(Grid, MovesHidesAndSizesColumnsByPosition)
{
    ShownGrid g;
    auto rs = test::Customers();
    g.grid->SetDataSource(rs);
    g.grid->SetColPosition(2, 0);  // Town first: the others move up one
    EXPECT_EQ(g.grid->ColKey(0), "Town");
    EXPECT_EQ(g.grid->ColKey(1), "Code");
    EXPECT_EQ(g.grid->ColIndex("Name"), 2);
    EXPECT_EQ(g.grid->TextMatrix(1, 0), "Bath");
    g.grid->SetColHidden(1, true);
    EXPECT_TRUE(g.grid->ColHidden(1));
    g.grid->SetColWidth(0, 1500);
    EXPECT_NEAR(g.grid->ColWidth(0), 1500, 15);
    g.grid->SetColAlignment(0, 6);
    EXPECT_EQ(g.grid->ColAlignment(0), 6);
    EXPECT_EQ(g.grid->Model()->index(0, 2).data(Qt::TextAlignmentRole).value<Qt::Alignment>(),
              Qt::AlignRight | Qt::AlignTop);

    // Filter and sort keep the columns as they are; binding again starts them over.
    rs->SetSort("Town");
    EXPECT_EQ(g.grid->ColKey(0), "Town");
    EXPECT_TRUE(g.grid->ColHidden(1));
    EXPECT_EQ(g.grid->TextMatrix(1, 0), "Bath");
    EXPECT_EQ(g.grid->TextMatrix(2, 0), "Derby");
    g.grid->SetDataSource(rs);
    EXPECT_EQ(g.grid->ColKey(0), "Code");
    EXPECT_FALSE(g.grid->ColHidden(1));
}

TEST(Grid, FollowsRowsAddedDeletedFilteredAndSortedThroughClones)
{
    ShownGrid g;
    auto store = test::Customers();
    auto shown = store->Clone();
    g.grid->SetDataSource(shown);
    g.grid->SetRow(3);  // Cole

    auto other = store->Clone();
    other->AddNew();
    other->Fields()->Item("Code")->SetValue(Variant("C06"));
    other->Fields()->Item("Name")->SetValue(Variant("Aston"));
    other->Update();
    EXPECT_EQ(g.grid->Rows(), 7);
    EXPECT_EQ(g.grid->TextMatrix(6, 1), "Aston");

    other->MoveFirst();
    other->Delete();  // Baker: Cole moves up to row 2 and stays current
    other->MoveNext();
    EXPECT_EQ(g.grid->Rows(), 6);
    EXPECT_EQ(g.grid->TextMatrix(g.grid->Row(), 1), "Cole");

    shown->SetFilter(Variant("Town LIKE 'Y*' OR Town LIKE 'L*'"));
    EXPECT_EQ(g.grid->Rows(), 3);
    EXPECT_EQ(g.grid->TextMatrix(2, 2), "Leeds");
    EXPECT_EQ(g.grid->Row(), 1);  // a filter puts the recordset on its first record

    shown->SetFilter(Variant(std::int32_t{adFilterNone}));
    shown->SetSort("Name");
    QStringList names;
    for (int r = 1; r < g.grid->Rows(); ++r)
        names << g.grid->TextMatrix(r, 1);
    EXPECT_EQ(names, QStringList({"Adams", "Aston", "Brown", "Cole", "Evans"}));
    g.grid->SetRow(4);
    EXPECT_EQ(ado::test::Text(*shown, "Name"), "Cole");
    g.grid->ShowCell(5, 2);
    EXPECT_EQ(g.grid->BottomRow(), 5);

    // Sorted rows start over when a clone adds one (the recordset puts it last until sorted
    // again); the current row stays on its record.
    other->AddNew();
    other->Fields()->Item("Name")->SetValue(Variant("Abel"));
    other->Update();
    QApplication::processEvents();
    EXPECT_EQ(g.grid->Rows(), 7);
    EXPECT_EQ(g.grid->TextMatrix(6, 1), "Abel");
    EXPECT_EQ(g.grid->TextMatrix(g.grid->Row(), 1), "Cole");
}

TEST(Grid, HandlersCancelTheUsersMovesButNotCode)
{
    ShownGrid g;
    auto rs = test::Customers();
    g.grid->SetFixedRows(0);
    g.grid->SetDataSource(rs);
    g.View()->setFocus();
    bool refuse = true;
    QList<QList<int>> asked;
    QObject::connect(g.grid, &Grid::BeforeRowColChange, [&](int oldRow, int oldCol, int newRow, int newCol, bool& cancel) {
        asked << QList<int>{oldRow, oldCol, newRow, newCol};
        cancel = refuse;
    });
    QSignalSpy after(g.grid, &Grid::AfterRowColChange);
    QSignalSpy clicks(g.grid, &Control::Click);

    QTest::keyClick(g.View(), Qt::Key_Down);
    QTest::mouseClick(g.View()->viewport(), Qt::LeftButton, {}, g.CellCentre(3, 1));
    EXPECT_EQ(g.grid->Row(), 0);
    EXPECT_EQ(rs->AbsolutePosition(), 1);
    ASSERT_EQ(asked.size(), 2);
    EXPECT_EQ(asked[0], (QList<int>{0, 0, 1, 0}));
    EXPECT_EQ(asked[1], (QList<int>{0, 0, 3, 1}));
    EXPECT_EQ(clicks.count(), 1);  // the click itself still happened
    EXPECT_EQ(after.count(), 0);

    g.grid->SetRow(2);  // code is obeyed without asking
    EXPECT_EQ(asked.size(), 2);
    EXPECT_EQ(rs->AbsolutePosition(), 3);

    refuse = false;
    QTest::mouseClick(g.View()->viewport(), Qt::LeftButton, {}, g.CellCentre(4, 2));
    EXPECT_EQ(g.grid->Row(), 4);
    EXPECT_EQ(g.grid->Col(), 2);
    EXPECT_EQ(ado::test::Text(*rs, "Code"), "C05");
    ASSERT_GE(after.count(), 2);
    EXPECT_EQ(after.last()[2].toInt(), 4);
}

TEST(Grid, PaintsTheTextTheDisplayHandlerGives)
{
    ShownGrid g;
    g.grid->SetDataSource(test::Customers());
    g.grid->SetRow(-1);
    QObject::connect(g.grid, &Grid::CellDisplayText, [](int row, int col, QString& text) {
        if (col == 1)
            text = row == 2 ? QString() : text.toUpper();
    });
    EXPECT_EQ(CStr(g.grid->Cell(gcsTextDisplay, 1, 1)), "BAKER");
    EXPECT_EQ(CStr(g.grid->Cell(gcsText, 1, 1)), "Baker");
    EXPECT_EQ(g.grid->TextMatrix(1, 1), "Baker");

    // Painted: the blanked cell has no text pixels, its neighbour above has.
    const QImage image = g.View()->viewport()->grab().toImage();
    auto darkPixels = [&](int modelRow) {
        const QRect cell = g.View()->visualRect(g.grid->Model()->index(modelRow, 1)).adjusted(2, 2, -2, -2);
        int dark = 0;
        for (int y = cell.top(); y <= cell.bottom(); ++y)
            for (int x = cell.left(); x <= cell.right(); ++x)
                dark += qGray(image.pixel(x, y)) < 128;
        return dark;
    };
    EXPECT_GT(darkPixels(0), 10);
    EXPECT_EQ(darkPixels(1), 0);
    if (HasFailure())
        image.save(QStringLiteral("grid-display-text.png"));
}

TEST(Grid, TracksTheCellUnderTheMouseAndShowsItsToolTipText)
{
    ShownGrid g;
    g.grid->SetDataSource(test::Customers());
    QList<QList<int>> seen;
    QObject::connect(g.grid, &Control::MouseMove, [&](short&, short&, float&, float&) {
        seen << QList<int>{g.grid->MouseRow(), g.grid->MouseCol()};
    });
    QTest::mouseMove(g.View()->viewport(), g.CellCentre(2, 1));
    QTest::mouseMove(g.View()->horizontalHeader()->viewport(), QPoint(g.View()->columnViewportPosition(2) + 5, 5));
    ASSERT_EQ(seen.size(), 2);
    EXPECT_EQ(seen[0], (QList<int>{3, 1}));
    EXPECT_EQ(seen[1], (QList<int>{0, 2}));

    g.grid->SetToolTipText(QStringLiteral("The whole text"));
    QHelpEvent help(QEvent::ToolTip, g.CellCentre(0, 0), g.View()->viewport()->mapToGlobal(g.CellCentre(0, 0)));
    QApplication::sendEvent(g.View()->viewport(), &help);
    EXPECT_EQ(QToolTip::text(), "The whole text");
    g.grid->SetToolTipText(QString());
    EXPECT_TRUE(QTest::qWaitFor([] { return QToolTip::text().isEmpty(); }, 2000));
}

TEST(Grid, KeepsItsSettingsInTheFormFile)
{
    Form form;
    Grid grid(form.Client());
    grid.InitProperties();
    grid.SetFixedRows(0);
    grid.SetExtendLastCol(true);
    PropertyBag bag;
    grid.WriteProperties(bag);
    EXPECT_EQ(bag.Values(), (QJsonObject{{"FixedRows", 0}, {"ExtendLastCol", true}}));
    Grid loaded(form.Client());
    loaded.ReadProperties(bag);
    EXPECT_EQ(loaded.FixedRows(), 0);
    EXPECT_TRUE(loaded.ExtendLastCol());
}

}  // namespace
}  // namespace korvex
