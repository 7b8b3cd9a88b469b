// The column and row-source model, through the pick list that carries it: free and recordset
// mode, the mode errors with their exact sources, selection by value, columns by index or key.
#include "tests/controls/lists/ListTestKit.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/RaisedError.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace korvex {
namespace {

using test::ListFixture;

std::optional<Error> Raised(const std::function<void()>& call)
{
    return test::RaisedError(call);
}

void ExpectError(const std::optional<Error>& error, const QString& sourceSuffix, const QString& description)
{
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->Number(), ObjectErrorBase);
    EXPECT_EQ(error->Source(), QStringLiteral("Korvex Tests.lstPick") + sourceSuffix);
    EXPECT_EQ(error->Description(), description);
}

class ListModelTest : public ListFixture {};

TEST_F(ListModelTest, FreeModeBuildsRowsFromTheStringAndReadsThemBack)
{
    list->SetColumns(3);
    list->SetColKey(1, QStringLiteral("Name"));
    list->SetRowSource(Variant("a;b;c;d"));
    EXPECT_EQ(list->Model().Mode(), ddrsFree);
    EXPECT_EQ(list->ListCount(), 2);
    // Blank keys become ColumnN; a key given before stays.
    EXPECT_EQ(list->ColKey(0), QStringLiteral("Column0"));
    EXPECT_EQ(list->ColKey(1), QStringLiteral("Name"));
    EXPECT_EQ(list->ColKey(2), QStringLiteral("Column2"));
    list->SetListIndex(1);
    EXPECT_EQ(list->ColValue(QStringLiteral("0")), Variant("d"));
    EXPECT_TRUE(list->ColValue(QStringLiteral("Name")).IsNull()) << "an item the last row did not get is Null";
    EXPECT_EQ(CStr(list->RowSource()), QStringLiteral("a;b;c;d;;"));

    list->Clear();
    list->SetRowSource(Variant("a;;c"));
    EXPECT_EQ(CStr(list->RowSource()), QStringLiteral("a;;c")) << "empty items keep their separators";

    // AddItem drops items beyond Columns; a row added later keeps the selection where it was.
    list->Clear();
    list->SetColumns(2);
    list->SetListSeparator(QStringLiteral("||"));
    list->AddItem(QStringLiteral("x||y||z"));
    list->AddItem(QStringLiteral("p"));
    list->SetListIndex(0);
    list->AddItem(QStringLiteral("q||r"));
    EXPECT_EQ(list->ListCount(), 3);
    EXPECT_EQ(list->ListIndex(), 0);
    EXPECT_EQ(CStr(list->RowSource()), QStringLiteral("x||y||p||||q||r"));

    // Null or empty clears, and the columns stay.
    list->SetRowSource(Variant(Null));
    EXPECT_EQ(list->Model().Mode(), ddrsUnknown);
    EXPECT_EQ(list->ListCount(), 0);
    EXPECT_EQ(list->Columns(), 2);
}

TEST_F(ListModelTest, AnItemLongerThanItsFieldEndsTheBuildWithTheRowsSoFar)
{
    list->SetRowSource(Variant(QStringLiteral("a;b;") + QString(251, u'x') + QStringLiteral(";c")));
    EXPECT_EQ(list->Model().Mode(), ddrsFree);
    EXPECT_EQ(list->ListCount(), 2);
    EXPECT_EQ(CStr(list->RowSource()), QStringLiteral("a;b"));
}

TEST_F(ListModelTest, ModeErrorsCarryTheirSourcesAndChangeNothing)
{
    list->SetColumns(2);
    list->AddItem(QStringLiteral("A;Apple"));
    ExpectError(Raised([&] { list->SetColKey(0, QStringLiteral("K")); }), QStringLiteral(".ColKey [PropertyLet]"),
                QStringLiteral("ColKey property is Read Only when Dropdown List is not empty."));
    ExpectError(Raised([&] { list->SetRowSource(test::Customers()); }), QStringLiteral(".RowSource [PropertySet]"),
                QStringLiteral("Before RowSource mode can be changed, Clear the existing data."));
    ExpectError(Raised([&] { list->SetRowSource(Variant(std::int32_t{7})); }), QStringLiteral(".RowSource [PropertyLet]"),
                QStringLiteral("Invalid RowSource.  Use Set .RowSource if it is a Recordset."));
    ExpectError(Raised([&] { list->SetColValue(QStringLiteral("0"), Variant("Z")); }),
                QStringLiteral(".ColValue [PropertyLet]"), QStringLiteral("No item selected."));
    EXPECT_EQ(list->Model().Mode(), ddrsFree);
    EXPECT_EQ(CStr(list->RowSource()), QStringLiteral("A;Apple"));
    EXPECT_EQ(test::ErrorOf([&] { list->ColKey(2); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { list->ColFormat(QString()); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { list->ColFormat(QStringLiteral("Nope")); }), vbErrInvalidPropertyValue);

    list->Clear();
    list->SetRowSource(test::Customers());
    EXPECT_EQ(list->Model().Mode(), ddrsDataBound);
    EXPECT_EQ(list->Columns(), 3);
    ExpectError(Raised([&] { list->AddItem(QStringLiteral("x")); }), QStringLiteral(".AddItem"),
                QStringLiteral("AddItem can not be used in Bound mode."));
    ExpectError(Raised([&] { list->SetColumns(4); }), QStringLiteral(".Columns [PropertyLet]"),
                QStringLiteral("Columns property is Read Only when bound to an ADO Recordset."));
    ExpectError(Raised([&] { list->SetRowSource(Variant("a;b")); }), QStringLiteral(".RowSource [PropertyLet]"),
                QStringLiteral("Before RowSource mode can be changed, Clear the existing data."));
    EXPECT_EQ(list->Columns(), 3);
    EXPECT_EQ(list->ListCount(), 5);
    // A new recordset may replace the old one; Nothing clears.
    list->SetRowSource(test::Customers());
    EXPECT_EQ(list->ListCount(), 5);
    list->SetRowSource(std::shared_ptr<ado::Recordset>());
    EXPECT_EQ(list->Model().Mode(), ddrsUnknown);
}

TEST_F(ListModelTest, BoundValueSelectsByValueAndKeepsTheSelectionWhenNotFound)
{
    QSignalSpy clicks(list, qOverload<ZqDDListClickReasons>(&ZqDropdownList::Click));
    list->SetRowSource(test::Customers());
    EXPECT_TRUE(list->BoundValue().IsNull()) << "a new recordset selects nothing";
    EXPECT_EQ(list->ListIndex(), -1);
    EXPECT_EQ(clicks.count(), 0);

    list->SetBoundValue(Variant("c03"));
    EXPECT_EQ(list->BoundValue(), Variant("C03")) << "compared without regard to case";
    EXPECT_EQ(list->ListIndex(), 2);
    ASSERT_EQ(clicks.count(), 1);
    EXPECT_EQ(clicks.at(0).at(0).value<ZqDDListClickReasons>(), ddlcrChangedByCode);
    list->SetBoundValue(Variant("C03"));
    EXPECT_EQ(clicks.count(), 1) << "the same value again raises nothing";

    ExpectError(Raised([&] { list->SetBoundValue(Variant("C99")); }), QStringLiteral(".SetGridFromValue"),
                QStringLiteral("Item not found."));
    EXPECT_EQ(list->BoundValue(), Variant("C03"));
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_ANY_THROW(list->SetBoundValue(Variant("O'Brien"))) << "a quote ends the search criterion";
    EXPECT_EQ(list->BoundValue(), Variant("C03")) << "and the selection before it stays";

    // The bound column by key; Text is the first visible column's value.
    list->SetBoundColumn(QStringLiteral("Name"));
    EXPECT_EQ(list->BoundValue(), Variant("Cole"));
    list->SetBoundValue(Variant("evans"));
    EXPECT_EQ(list->Text(), QStringLiteral("C05"));
    EXPECT_EQ(list->ColValue(QStringLiteral("Town")), Variant("Hull"));

    list->SetBoundValue(Variant(Null));
    EXPECT_TRUE(list->BoundValue().IsNull());
    EXPECT_EQ(list->ListIndex(), -1);
    EXPECT_EQ(list->Text(), QString());
    list->SetBoundValue(Variant());
    EXPECT_TRUE(list->BoundValue().IsNull()) << "Empty counts as Null";

    // The search goes through the store's index on the bound column.
    const auto& store = list->Model().ItemStore();
    EXPECT_TRUE(store->FieldOptimized(store->Store()->FieldIndexOf(QStringLiteral("Name"))));
}

TEST_F(ListModelTest, ANumericBoundColumnIsSearchedThroughItsIndex)
{
    using namespace ado;
    list->SetRowSource(ado::test::MakeRecordset({{"Id", adInteger}, {"Name", adVarWChar, 20}},
                                                {{30, "Baker"}, {10, "Adams"}, {20, "Cole"}, {Null, "Nobody"}}));
    list->SetBoundColumn(QStringLiteral("Id"));
    list->SetBoundValue(Variant(std::int32_t{20}));
    EXPECT_EQ(list->Text(), QStringLiteral("20"));
    EXPECT_EQ(list->ColValue(QStringLiteral("Name")), Variant("Cole"));
    list->SetBoundValue(Variant(QStringLiteral("10")));
    EXPECT_EQ(list->ColValue(QStringLiteral("Name")), Variant("Adams")) << "a text is read as the field's number";
    ExpectError(Raised([&] { list->SetBoundValue(Variant(std::int32_t{40})); }), QStringLiteral(".SetGridFromValue"),
                QStringLiteral("Item not found."));
    EXPECT_EQ(list->ColValue(QStringLiteral("Name")), Variant("Adams"));
    const auto& store = list->Model().ItemStore();
    EXPECT_TRUE(store->FieldOptimized(store->Store()->FieldIndexOf(QStringLiteral("Id"))));
}

TEST_F(ListModelTest, ListIndexFilterAndSortKeepTheSelectedValue)
{
    QSignalSpy clicks(list, qOverload<ZqDDListClickReasons>(&ZqDropdownList::Click));
    list->SetRowSource(test::Customers());
    list->SetListIndex(3);
    EXPECT_EQ(list->BoundValue(), Variant("C04"));
    EXPECT_EQ(clicks.count(), 1);
    list->SetListIndex(-1);
    EXPECT_TRUE(list->BoundValue().IsNull());
    EXPECT_EQ(clicks.count(), 1) << "-1 selects nothing without an event";

    list->SetBoundValue(Variant("C04"));
    list->SetSort(QStringLiteral("Name"));
    EXPECT_EQ(list->Sort(), QStringLiteral("Name"));
    EXPECT_EQ(list->BoundValue(), Variant("C04"));
    EXPECT_EQ(list->ListIndex(), 2) << "Adams, Baker, Brown";

    list->SetFilter(Variant("Town <> 'York'"));
    EXPECT_EQ(list->ListCount(), 4);
    EXPECT_EQ(list->BoundValue(), Variant("C04"));
    EXPECT_EQ(list->ListIndex(), 1) << "Baker, Brown";
    EXPECT_EQ(list->Model().FilterText(), QStringLiteral("Town <> 'York'"));
    list->SetFilter(Variant("Town = 'York'"));
    EXPECT_TRUE(list->BoundValue().IsNull()) << "the filter took the selected row away";
    list->SetFilter(Variant(std::int32_t{0}));
    EXPECT_EQ(list->Model().FilterText(), QString());
    EXPECT_EQ(list->ListCount(), 5);
    EXPECT_EQ(clicks.count(), 2) << "only the BoundValue write raised Click";
}

TEST_F(ListModelTest, ColumnListOrdersAndHidesByFieldName)
{
    auto rs = ado::test::MakeRecordset({{"Code", ado::adVarWChar, 10}, {"Name", ado::adVarWChar, 20}, {"Extra", ado::adVarWChar, 5}},
                                       {{"A1", "Alpha", "x"}, {"B2", "Beta", "y"}});
    list->SetColumnList(QStringLiteral("Name; Code"));
    list->SetRowSource(rs);
    Grid& grid = *list->fgList();
    EXPECT_EQ(grid.ColKey(0), QStringLiteral("Name"));
    EXPECT_EQ(grid.ColKey(1), QStringLiteral("Code"));
    EXPECT_TRUE(grid.ColHidden(2));
    EXPECT_EQ(list->FirstVisibleColumn(), 0);
    // BoundColumn empty: the first visible column, now Name.
    list->SetBoundValue(Variant("beta"));
    EXPECT_EQ(list->ColValue(QStringLiteral("Code")), Variant("B2"));

    // A column given as 1 is index 1; "1x" is a key for positions but index 1 for field names.
    EXPECT_EQ(list->Model().ColumnPosition(QStringLiteral("1")), 1);
    EXPECT_EQ(list->Model().ColumnPosition(QStringLiteral("1x")), -1);
    EXPECT_EQ(list->Model().ColumnFieldName(QStringLiteral("1x")), QStringLiteral("Code"));
    list->SetColFormat(QStringLiteral("Code"), QStringLiteral(">"));
    EXPECT_EQ(list->ColFormat(QStringLiteral("1")), QStringLiteral(">"));

    ExpectError(Raised([&] { list->SetColumnList(QStringLiteral("Extra;Nope")); }), QStringLiteral(".ColumnList"),
                QStringLiteral("Specified ColumnList field \"Nope\" not found."));
    EXPECT_EQ(grid.ColKey(0), QStringLiteral("Extra")) << "columns moved before the error stay moved";
    EXPECT_EQ(list->ColumnList(), QStringLiteral("Name; Code"));

    // Showing a hidden column again through ColHidden makes the first visible column stale.
    list->SetColHidden(QStringLiteral("0"), true);
    EXPECT_EQ(list->FirstVisibleColumn(), 1);
}

TEST_F(ListModelTest, AddItemsFromRecordsetAndClearWhenTheFormUnloads)
{
    list->SetColumns(2);
    auto rs = test::Customers();
    list->AddItemsFromRS(rs.get(), QStringLiteral("Code;Town"));
    EXPECT_EQ(list->ListCount(), 5);
    EXPECT_TRUE(rs->IsEOF());
    EXPECT_EQ(CStr(list->RowSource()).left(18), QStringLiteral("C01;Bath;C02;York;"));
    list->AddItemsFromRS(rs.get(), QString());
    EXPECT_EQ(list->ListCount(), 5);

    ASSERT_TRUE(form->UnloadForm());
    EXPECT_EQ(list->Model().Mode(), ddrsUnknown);
    EXPECT_EQ(list->Model().ItemStore(), nullptr);
}

}  // namespace
}  // namespace korvex
