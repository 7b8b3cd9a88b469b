// clsFlexGridUtil against the library's grid and against a plain object with the same members,
// which shows that it calls nothing but those members by name.
#include "tests/platform/grid/GridTestKit.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/TestFiles.h"

#include "korvex/controls/lists/clsFlexGridUtil.h"
#include "korvex/localisation/clsLanguage.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/Form.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QHeaderView>
#include <QTableView>
#include <QTest>

namespace korvex {
namespace {

// The grid members the helpers use, over a sheet of three columns A, B, C and one header row;
// each call is written down.
class PlainGrid : public QObject {
    Q_OBJECT
    Q_PROPERTY(int Cols READ Cols)
    Q_PROPERTY(int FixedRows READ FixedRows)
    Q_PROPERTY(int FixedCols READ FixedCols)
    Q_PROPERTY(int MouseRow MEMBER mouseRow)
    Q_PROPERTY(int MouseCol MEMBER mouseCol)
    Q_PROPERTY(QString ToolTipText MEMBER toolTip)

public:
    int Cols() const { return static_cast<int>(keys.size()); }
    int FixedRows() const { return 1; }
    int FixedCols() const { return 0; }
    Q_INVOKABLE int ColIndex(const QString& key) const { return static_cast<int>(keys.indexOf(key)); }
    Q_INVOKABLE void SetColPosition(int col, int position)
    {
        calls << QStringLiteral("ColPosition(%1)=%2").arg(col).arg(position);
        keys.move(col, position);
    }
    Q_INVOKABLE void SetColHidden(int col, bool hidden) { calls << QStringLiteral("ColHidden(%1)=%2").arg(col).arg(hidden); }
    Q_INVOKABLE void SetTextMatrix(int row, int col, const QString& text)
    {
        calls << QStringLiteral("TextMatrix(%1,%2)=%3").arg(row).arg(col).arg(text);
    }
    Q_INVOKABLE QString Cell(int setting, int row, int col) const
    {
        return setting == 19 ? QStringLiteral("text %1 %2").arg(row).arg(col) : QString();
    }
    Q_INVOKABLE int ColWidth(int) const { return colWidth; }

    QStringList keys{"A", "B", "C"};
    QStringList calls;
    int mouseRow = -1;
    int mouseCol = -1;
    int colWidth = 100000;
    QString toolTip;
};

// A form stand-in whose text measure is a fixed 100 twips a character.
class PlainForm : public QObject {
    Q_OBJECT
public:
    Q_INVOKABLE double TextWidth(const QString& text) const { return 100.0 * text.size(); }
};

TEST(clsFlexGridUtil, CallsOnlyTheGridsMembersByName)
{
    PlainGrid fg;
    clsFlexGridUtil util;
    util.SetFGColumns(&fg, QStringLiteral("C; A"));
    EXPECT_EQ(fg.keys, QStringList({"C", "A", "B"}));
    EXPECT_EQ(fg.calls, QStringList({"ColPosition(2)=0", "ColPosition(1)=1", "ColHidden(2)=1"}));

    fg.calls.clear();
    util.SetFGColumnCaptions(&fg, QStringLiteral(" Code |Name "), QStringLiteral("|"));
    EXPECT_EQ(fg.calls, QStringList({"TextMatrix(0,0)=Code", "TextMatrix(0,1)=Name"}));

    PlainForm form;
    fg.mouseRow = 2, fg.mouseCol = 1;
    fg.colWidth = 500;  // "text 2 1" is 800 twips wide
    util.SetFGToolTip(&form, &fg);
    EXPECT_EQ(fg.toolTip, "text 2 1");
    fg.colWidth = 900;
    fg.mouseRow = 3;
    util.SetFGToolTip(&form, &fg);
    EXPECT_EQ(fg.toolTip, "");
    fg.toolTip = QStringLiteral("kept");
    fg.mouseRow = 0;  // the header row
    util.SetFGToolTip(&form, &fg);
    EXPECT_EQ(fg.toolTip, "");
}

TEST(clsFlexGridUtil, SetsUpTheLibrarysGrid)
{
    Form form;
    form.resize(400, 200);
    auto* grid = new Grid(form.Client());
    grid->setGeometry(0, 0, 380, 180);
    auto rs = ado::test::MakeRecordset({{"A", ado::adVarWChar, 60}, {"B", ado::adVarWChar, 10}, {"C", ado::adVarWChar, 10}},
                                       {{"A rather long text for a narrow column", "b", "c"}});
    grid->SetDataSource(rs);
    form.show();
    QApplication::processEvents();

    clsFlexGridUtil util;
    util.SetFGColumns(grid, QStringLiteral("C;A"));
    EXPECT_EQ(grid->ColKey(0), "C");
    EXPECT_EQ(grid->ColKey(1), "A");
    EXPECT_FALSE(grid->ColHidden(0));
    EXPECT_FALSE(grid->ColHidden(1));
    EXPECT_TRUE(grid->ColHidden(2));
    // A key no column has: the grid's own error.
    EXPECT_EQ(test::ErrorOf([&] { util.SetFGColumns(grid, QStringLiteral("A;Nope")); }), GridInvalidIndex);
    EXPECT_EQ(grid->ColKey(0), "A");  // moved before the error, as the grid was asked
    util.SetFGColumns(grid, QStringLiteral("C;A"));

    test::TestFolder folder;
    clsLanguage::Global().LanguageInitialise(langEnglish, folder.Write(QStringLiteral("g.lng"), "Key,English\ncolC,Charge\ncolA,Account\n"));
    util.SetFGColumnCaptionsLGS(grid, QStringLiteral("colC;colA"));
    EXPECT_EQ(grid->TextMatrix(0, 0), "Charge");
    EXPECT_EQ(grid->TextMatrix(0, 1), "Account");

    // The mouse over the long text in a narrow column, then over a short one, then the header.
    auto* view = static_cast<QTableView*>(grid->View());
    QObject::connect(grid, &Control::MouseMove, [&](short&, short&, float&, float&) { util.SetFGToolTip(&form, grid); });
    grid->SetColWidth(1, 600);
    grid->SetColWidth(0, 1500);
    auto cellCentre = [&](int col) { return view->visualRect(grid->Model()->index(0, view->horizontalHeader()->logicalIndex(col))).center(); };
    QTest::mouseMove(view->viewport(), cellCentre(1));
    EXPECT_EQ(grid->ToolTipText(), "A rather long text for a narrow column");
    QTest::mouseMove(view->viewport(), cellCentre(0));
    EXPECT_EQ(grid->ToolTipText(), "");
    grid->SetToolTipText(QStringLiteral("left over"));
    QTest::mouseMove(view->horizontalHeader()->viewport(), QPoint(5, 5));
    EXPECT_EQ(grid->ToolTipText(), "");
}

}  // namespace
}  // namespace korvex

#include "clsFlexGridUtilTest.moc"
