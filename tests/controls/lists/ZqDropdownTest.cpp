// The combo: persistence, the filter its typing makes, the header's sort, the drop-down's size
// and place against a pinned work area, the hooks with two windows, Enter, Escape and Tab, the
// events of every way of selecting, and the closed part's look.
#include "korvex/controls/lists/ZqDropdown.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/controls/display/ZqSimpleButton.h"
#include "korvex/controls/input/ZqText.h"
#include "korvex/controls/lists/ZqDropdown_Header.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/localisation/clsCharTranslation.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/platform/desktop/ThreadHooks.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/localisation/LGS.h"
#include "korvex/runtime/LateBinding.h"
#include "korvex/runtime/Twips.h"
#include "tests/platform/ado/RecordsetBuilder.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"
#include "tests/support/RaisedError.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyle>
#include <QTableView>
#include <QTest>

#include <memory>

namespace korvex {
namespace {

using ado::test::MakeRecordset;

std::shared_ptr<ado::Recordset> Customers()
{
    using namespace ado;
    return MakeRecordset({{"Code", adVarWChar, 10}, {"Name", adVarWChar, 40}, {"Town", adVarWChar, 30}, {"Zip", adVarWChar, 8}},
                         {{"C01", "Baker", "Bath", "BA1"},
                          {"C02", "Adams", "York", "YO1"},
                          {"C03", "Cole", "Leeds", "LS1"},
                          {"C04", "Brown", "Derby", "DE1"},
                          {"C05", "Evans", "Hull", "HU1"}});
}

// Rows of two columns; every code is as wide as every other, and so is every name, unless a row
// is given a long name of its own.
std::shared_ptr<ado::Recordset> Numbered(int rows, int longRow = -1)
{
    auto rs = MakeRecordset({{"Code", ado::adVarWChar, 10}, {"Name", ado::adVarWChar, 80}});
    for (int i = 0; i < rows; ++i) {
        rs->AddNew();
        rs->Fields()->Item(0)->SetValue(Variant(QStringLiteral("K%1").arg(i, 4, 10, QLatin1Char('0'))));
        rs->Fields()->Item(1)->SetValue(Variant(i == longRow ? QStringLiteral("A name far longer than all the others are") : QStringLiteral("N")));
        rs->Update();
    }
    rs->UpdateBatch();
    return rs;
}

QString Shown(const Variant& v)
{
    return v.IsNull() ? QStringLiteral("Null") : CStr(v);
}

class ZqDropdownTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        App::Instance()->SetTitle(QStringLiteral("Korvex Tests"));
        SystemInfo::PinWorkArea(QRect(0, 0, 1280, 800));
        form = std::make_unique<Form>();
        form->resize(600, 400);
        form->move(100, 100);
        combo = new ZqDropdown(form->Client());
        combo->SetName(QStringLiteral("cboCustomer"));
        combo->InitProperties();
        combo->setGeometry(40, 30, 200, 22);
        beneath = new QPushButton(QStringLiteral("Beneath"), form->Client());
        beneath->setGeometry(40, 300, 120, 30);
        QObject::connect(combo, qOverload<ZqDropdownClickReasons>(&ZqDropdown::Click), [this](ZqDropdownClickReasons r) {
            events << QStringLiteral("Click %1").arg(r);
        });
        QObject::connect(combo, &ZqDropdown::Changed, [this](ZqDropdownClickReasons r, const Variant& oldValue, const Variant& newValue) {
            events << QStringLiteral("Changed %1 %2 %3").arg(r).arg(Shown(oldValue), Shown(newValue));
        });
    }
    void TearDown() override
    {
        form.reset();
        SystemInfo::ClearPins();
    }
    void Show()
    {
        form->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(form.get()));
        form->activateWindow();
        combo->setFocus();
        ASSERT_TRUE(QTest::qWaitFor([&] { return combo->hasFocus(); }, 2000));
    }
    void Open()
    {
        combo->DropdownShow();
        ASSERT_TRUE(combo->IsDropdownOpen());
        ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == View(); }, 2000)) << "the list takes the focus";
    }
    QTableView* View() const { return static_cast<QTableView*>(combo->fgDropdown()->View()); }
    QPoint RowCentre(int row) const { return View()->visualRect(View()->model()->index(row, 0)).center(); }
    QString DisplayFilter() const
    {
        const Variant f = combo->Model().DisplayCopy()->Filter();
        return f.IsString() ? CStr(f) : QString();
    }
    QRect ComboRect() const { return QRect(combo->mapToGlobal(QPoint(0, 0)), combo->size()); }
    QRect DropDown() const { return combo->zqfraDropdown()->geometry(); }
    int RowPixels() const { return TwipsToPixelsY(combo->fgDropdown()->RowHeight(0)); }

    test::PinnedSettings pin;
    std::unique_ptr<Form> form;
    ZqDropdown* combo = nullptr;
    QPushButton* beneath = nullptr;
    QStringList events;
};

// --- Persistence and properties --------------------------------------------------------------

TEST_F(ZqDropdownTest, PersistsWhatDiffersFromItsDefaultsAndRefusesBadValues)
{
    PropertyBag untouched;
    combo->WriteProperties(untouched);
    EXPECT_TRUE(untouched.Values().isEmpty()) << "defaults are not stored";

    combo->SetAllowFilter(true);
    combo->SetAllowSorting(true);
    combo->SetButtonStyle(ddbsButtonLeftAligned);
    combo->SetFilterMode(ddfmEndsWith);
    combo->SetDataField(QStringLiteral("Town"));
    combo->SetMaxItemsToDisplay(12);
    combo->SetColumns(2);
    combo->SetRowSource(Variant(QStringLiteral("A;Apple;B;Banana")));
    combo->SetColumnCaptions(QStringLiteral("Code;Fruit"));
    PropertyBag bag;
    combo->WriteProperties(bag);
    EXPECT_EQ(bag.Values().keys(), (QStringList{"AllowFilter", "AllowSorting", "ButtonStyle", "ColumnCaptions", "Columns",
                                                "DataField", "FilterMode", "MaxItemsToDisplay", "RowSource"}));

    auto* loaded = new ZqDropdown(form->Client());
    loaded->SetName(QStringLiteral("cboLoaded"));
    loaded->ReadProperties(bag);
    EXPECT_TRUE(loaded->AllowFilter());
    EXPECT_TRUE(loaded->AllowSorting());
    EXPECT_EQ(loaded->ButtonStyle(), ddbsButtonLeftAligned);
    EXPECT_EQ(loaded->FilterMode(), ddfmEndsWith);
    EXPECT_EQ(loaded->DataField(), "Town");
    EXPECT_EQ(loaded->MaxItemsToDisplay(), 12);
    EXPECT_EQ(CStr(loaded->RowSource()), "A;Apple;B;Banana");
    EXPECT_EQ(loaded->ListCount(), 2);
    EXPECT_EQ(loaded->ZqDDHeader()->Captions(), (QStringList{"Code", "Fruit"})) << "the captions reach the header";
    EXPECT_TRUE(loaded->ZqDDHeader()->isVisibleTo(loaded->zqfraDropdown()));
    EXPECT_TRUE(loaded->zqtxtFilter()->isVisibleTo(loaded->zqfraDropdown()));
    EXPECT_EQ(loaded->zqtxtFilter()->DefaultText(), LGS(QStringLiteral("zqdd0002"), QStringLiteral("Type to filter results")));
    loaded->SetReadOnly(true);
    EXPECT_FALSE(loaded->zqtxtFilter()->isVisibleTo(loaded->zqfraDropdown())) << "no filter box for a read-only combo";

    EXPECT_EQ(test::ErrorOf([&] { combo->SetButtonStyle(2); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(test::ErrorOf([&] { combo->SetFilterMode(-1); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(combo->ButtonStyle(), ddbsButtonLeftAligned);
    EXPECT_EQ(combo->FilterMode(), ddfmEndsWith);
    EXPECT_EQ(TypeNameOf(combo), "ZqDropdown");
}

// --- The filter typing makes -----------------------------------------------------------------

TEST(ZqDropdownFilter, TheTermsAreBuiltFromTheTypedText)
{
    const auto swap = [](const QString& t) { return QString(t).replace(QChar(0x160), QChar(0xA6)); };
    const QStringList codeName{QStringLiteral("Code"), QStringLiteral("Name")};
    struct Row {
        QString typed;
        int mode;
        QStringList keys;
        QString filter;
        std::optional<QString> expected;
        const char* why;
    };
    const Row rows[] = {
        {"ab", ddfmEndsWith, codeName, "", "Code Like '%ab' OR Name Like '%ab'", "one term a column, ends with"},
        {"ab", ddfmStartsWith, codeName, "", "Code Like 'ab%' OR Name Like 'ab%'", "starts with"},
        {"o'b", ddfmStartsWith, {"Name"}, "", "Name Like 'o''b%'", "a quote is doubled"},
        {"''", ddfmStartsWith, {"Name"}, "", "Name Like '''''%'", "every quote"},
        {"%", ddfmStartsWith, codeName, "", std::nullopt, "wildcards alone filter nothing"},
        {"%*%", ddfmEndsWith, codeName, "", std::nullopt, "nor a mix of them"},
        {"%a", ddfmStartsWith, {"Name"}, "", "Name Like '%a%'", "a wildcard with a letter stays"},
        {"b", ddfmStartsWith, codeName, "Town <> 'Hull'",
         "(Town <> 'Hull' AND Code Like 'b%') OR (Town <> 'Hull' AND Name Like 'b%')", "within the list's own filter"},
        {"\u00e9", ddfmStartsWith, {"Name"}, "", "Name Like '\u00e9%'", "non-ASCII, translated alike: one form"},
        {"\u0160a", ddfmStartsWith, codeName, "",
         "Code Like '\u0160a%' OR Code Like '\u00a6a%' OR Name Like '\u0160a%' OR Name Like '\u00a6a%'",
         "a translated form that differs adds its own term for each column"},
        {"\u0160", ddfmEndsWith, {"Name"}, "Zip = 'X'", "(Zip = 'X' AND Name Like '%\u0160') OR (Zip = 'X' AND Name Like '%\u00a6')",
         "both forms within the list's filter"},
        {"ab", ddfmStartsWith, {}, "", QString(), "no shown columns: no filter"},
    };
    for (const Row& r : rows) {
        const auto made = ZqDropdown::TypedFilter(r.typed, r.mode, r.keys, r.filter, swap);
        EXPECT_EQ(made, r.expected) << r.why << ": " << r.typed.toStdString() << " gave " << made.value_or(QStringLiteral("<nothing>")).toStdString();
    }
}

TEST_F(ZqDropdownTest, TypingFiltersTheDisplayOnlyAndClosingRestoresIt)
{
    combo->SetRowSource(Customers());
    combo->SetAllowFilter(true);
    combo->SetBoundValue(Variant("C03"));
    Show();
    Open();
    ASSERT_TRUE(combo->zqtxtFilter()->isVisible());
    events.clear();

    QTest::keyClicks(View(), QStringLiteral("b"));
    EXPECT_EQ(combo->zqtxtFilter()->Text(), "b") << "a character typed in the list goes to the filter box";
    EXPECT_EQ(DisplayFilter(), "Code Like 'b%' OR Name Like 'b%' OR Town Like 'b%' OR Zip Like 'b%'");
    EXPECT_EQ(combo->ListCount(), 2) << "Baker of Bath and Brown";
    EXPECT_EQ(combo->fgDropdown()->Row(), 0) << "the first row is highlighted";
    EXPECT_EQ(CStr(combo->BoundValue()), "C03") << "the selection is not the filter's";
    const auto& store = combo->Model().ItemStore();
    EXPECT_TRUE(combo->Model().DisplayCopy()->FieldOptimized(store->Store()->FieldIndexOf(QStringLiteral("Name"))))
        << "the searched fields are indexed";
    QTest::keyClick(View(), Qt::Key_Backspace);
    EXPECT_EQ(combo->zqtxtFilter()->Text(), "");
    EXPECT_EQ(combo->ListCount(), 5);
    EXPECT_EQ(combo->fgDropdown()->Row(), 2) << "back on the selection";

    combo->zqtxtFilter()->SetText(QStringLiteral("%"));
    EXPECT_EQ(DisplayFilter(), "") << "only wildcards leave the list unfiltered";
    EXPECT_EQ(combo->ListCount(), 5);
    combo->zqtxtFilter()->SetText(QStringLiteral("le"));
    EXPECT_EQ(combo->ListCount(), 1) << "Leeds";
    combo->SetRowSource(Customers());
    EXPECT_EQ(combo->ListCount(), 1) << "new rows while open are offered through the typed text too";
    combo->DropdownHide();
    EXPECT_EQ(combo->zqtxtFilter()->Text(), "");
    EXPECT_EQ(DisplayFilter(), "");
    EXPECT_EQ(combo->ListCount(), 5);
    EXPECT_TRUE(events.isEmpty()) << events.join(QLatin1Char('|')).toStdString();

    // Ends-with, within the list's own filter, and the translated form of a non-ASCII letter.
    combo->SetFilterMode(ddfmEndsWith);
    combo->SetFilter(Variant("Town <> 'Hull'"));
    combo->SetColumnList(QStringLiteral("Name"));
    Open();
    combo->zqtxtFilter()->SetText(QStringLiteral("s"));
    EXPECT_EQ(DisplayFilter(), "(Town <> 'Hull' AND Name Like '%s')");
    EXPECT_EQ(combo->ListCount(), 1) << "Adams; Evans lives in Hull";
    auto translation = clsCharTranslation::Create();
    const QString translated = translation->CharTranslateStr(QStringLiteral("\u00e9"), true);
    ASSERT_NE(translated, QStringLiteral("\u00e9")) << "the saving table must change this letter for the test to mean anything";
    combo->zqtxtFilter()->SetText(QString());
    QKeyEvent accented(QEvent::KeyPress, Qt::Key_Eacute, Qt::NoModifier, QStringLiteral("\u00e9"));
    QApplication::sendEvent(View(), &accented);
    EXPECT_EQ(DisplayFilter(), QStringLiteral("(Town <> 'Hull' AND Name Like '%\u00e9') OR (Town <> 'Hull' AND Name Like '%") + translated + "')");
    translation->CharTranslateSetMode(ctmNoTranslation);
}

TEST_F(ZqDropdownTest, NoTypedTextMakesTheFilterRaiseOrHang)
{
    combo->SetRowSource(Customers());
    combo->SetAllowFilter(true);
    Show();
    Open();
    ScopedMessageBoxRecorder boxes;
    const QStringList nasty{"'", "''", "'%'", "%'", "a'", "*", "**", "a*b", "a%b", "[", "]", "[a]", "[*]", "#", "(", ")",
                            "\"", "\\", " ", "  ", "a' OR 'x'='x", "' AND Code Like '", "=", "<>", "\u00e9'%", "\u65e5\u672c",
                            "\U0001F600", "\t", QString(300, QLatin1Char('x')), "Like", "AND", "OR", "%_%", "_", "?"};
    for (const QString& typed : nasty) {
        combo->zqtxtFilter()->SetText(typed);
        EXPECT_TRUE(boxes.shown().isEmpty()) << "typing " << typed.toStdString() << " raised "
                                             << (boxes.shown().isEmpty() ? "" : boxes.shown().front().prompt.toStdString());
        boxes.recorder().shown.clear();
        combo->zqtxtFilter()->SetText(QString());
        EXPECT_EQ(combo->ListCount(), 5) << "after " << typed.toStdString();
    }
}

TEST_F(ZqDropdownTest, TheSelectableItemsStayOfferedAndOddFieldNamesAreBracketed)
{
    using namespace ado;
    auto rs = MakeRecordset({{"Code", adVarWChar, 10}, {"First Name", adVarWChar, 20}, {"Town", adVarWChar, 20}},
                            {{"C01", "Ann", "Bath"}, {"C02", "Abe", "Hull"}, {"C03", "Bob", "York"}, {"C04", "Al", "Leeds"}});
    combo->SetRowSource(rs);
    combo->SetAllowFilter(true);
    combo->SetFilter(Variant("Town <> 'Hull'"));
    combo->SetSelectableItemsFilter(Variant("Code <> 'C04'"));
    EXPECT_EQ(DisplayFilter(), "(Town <> 'Hull') AND (Code <> 'C04')") << "offered: within the store's own filter";
    EXPECT_EQ(combo->ListCount(), 2);
    combo->SetBoundValue(Variant("C04"));
    EXPECT_EQ(combo->Text(), "C04") << "a value no longer offered can still be the selection";
    Show();
    Open();
    ScopedMessageBoxRecorder boxes;
    QTest::keyClicks(View(), QStringLiteral("a"));
    EXPECT_EQ(DisplayFilter(), "((Town <> 'Hull') AND (Code <> 'C04') AND Code Like 'a%') OR ((Town <> 'Hull') AND (Code <> 'C04') AND "
                               "[First Name] Like 'a%') OR ((Town <> 'Hull') AND (Code <> 'C04') AND Town Like 'a%')");
    EXPECT_EQ(combo->ListCount(), 1) << "Ann; Abe lives in Hull, Al is not offered";
    EXPECT_TRUE(boxes.shown().isEmpty());
    EXPECT_TRUE(combo->fgDropdown()->Redraw());
    combo->DropdownHide();
    EXPECT_EQ(DisplayFilter(), "(Town <> 'Hull') AND (Code <> 'C04')") << "an emptied box offers the selectable items again";
    EXPECT_EQ(CStr(combo->BoundValue()), "C04");

    // A filter the recordset refuses leaves the list painting.
    EXPECT_NE(korvex::test::ErrorOf([&] { combo->Model().ReplaceDisplayFilter(QStringLiteral("Nope Like 'x%'")); }), 0);
    EXPECT_TRUE(combo->fgDropdown()->Redraw());
    combo->SetSelectableItemsFilter(Variant(QString()));
    combo->SetColumnCaptions(QStringLiteral("Code;Name;Town"));
    combo->SetAllowSorting(true);
    Open();
    combo->ZqDDHeader()->mnuCols()->actions().at(1)->trigger();
    EXPECT_EQ(combo->Model().DisplayCopy()->Sort(), "[First Name], Code, Town");
    EXPECT_EQ(combo->fgDropdown()->TextMatrix(0, 0), "C04") << "Al first";
    combo->DropdownHide();
    combo->SetColumnList(QStringLiteral("Code;Town"));
    EXPECT_EQ(combo->ZqDDHeader()->SortedColIndex(), -1) << "a new display copy has the store's order, and the mark goes";
}

// --- Sorting by the header -------------------------------------------------------------------

TEST_F(ZqDropdownTest, AHeaderChoiceSortsTheDisplayByThatColumnAndTwoMore)
{
    combo->SetRowSource(Customers());
    combo->SetColumnCaptions(QStringLiteral("Code;Name;Town;Zip"));
    combo->SetAllowSorting(true);
    combo->SetBoundValue(Variant("C02"));
    Show();
    Open();
    events.clear();
    combo->ZqDDHeader()->mnuCols()->actions().at(1)->trigger();
    EXPECT_EQ(combo->Model().DisplayCopy()->Sort(), "Name, Code, Town");
    EXPECT_EQ(combo->Sort(), "") << "the item store keeps its own order";
    EXPECT_EQ(combo->ZqDDHeader()->SortedColIndex(), 1);
    EXPECT_TRUE(combo->ZqDDHeader()->lbl()->Caption().endsWith(QStringLiteral("Name")));
    EXPECT_EQ(combo->fgDropdown()->Row(), 0) << "Adams, the selection, comes first now";
    EXPECT_EQ(combo->fgDropdown()->Col(), 1) << "the cursor goes to the sorted column";
    EXPECT_EQ(CStr(combo->BoundValue()), "C02");
    combo->ZqDDHeader()->mnuCols()->actions().at(3)->trigger();
    EXPECT_EQ(combo->Model().DisplayCopy()->Sort(), "Zip, Code, Name");
    EXPECT_EQ(combo->fgDropdown()->TextMatrix(0, 0), "C01") << "BA1 first";
    EXPECT_EQ(combo->fgDropdown()->TextMatrix(1, 0), "C04") << "then DE1";
    EXPECT_TRUE(events.isEmpty());

    const auto raised = test::RaisedError([&] { combo->SetSort(QStringLiteral("Name")); });
    ASSERT_TRUE(raised);
    EXPECT_EQ(raised->Number(), ObjectErrorBase);
    EXPECT_EQ(raised->Source(), "Korvex Tests.cboCustomer.Sort [PropertyLet]");
    EXPECT_EQ(raised->Description(), "Sort may not be specified if AllowSorting is True.");
    combo->SetAllowSorting(false);
    combo->SetSort(QStringLiteral("Town"));
    EXPECT_EQ(combo->ZqDDHeader()->SortedColIndex(), -1);
    EXPECT_EQ(combo->Sort(), "Town");
    EXPECT_EQ(CStr(combo->BoundValue()), "C02");
}

// --- Size and place --------------------------------------------------------------------------

TEST_F(ZqDropdownTest, TheDropDownMeasuresItsRowsAndFitsTheWorkArea)
{
    combo->setGeometry(40, 30, 30, 22);  // narrower than the list, so the list's width counts
    combo->SetMaxItemsToDisplay(25);
    Show();
    combo->SetRowSource(Numbered(3));
    const QRect r = ComboRect();
    const auto pin = [&](int left, int top, int right, int bottom) { SystemInfo::PinWorkArea(QRect(QPoint(left, top), QPoint(right - 1, bottom - 1))); };
    pin(0, 0, 1280, 800);
    Open();
    const int row = RowPixels();
    EXPECT_EQ(DropDown().height(), 3 * row + 2) << "three rows and the border";
    EXPECT_EQ(DropDown().topLeft(), QPoint(r.left(), r.bottom() + 1)) << "below, from the left edge";
    EXPECT_EQ(combo->VisibleRows(), 3);
    const auto rowBar = [&] {
        for (auto* bar : combo->fgDropdown()->findChildren<QScrollBar*>(Qt::FindDirectChildrenOnly))
            if (bar->orientation() == Qt::Vertical)
                return bar->isVisible();
        return false;
    };
    EXPECT_FALSE(rowBar()) << "three rows fit without a scroll bar; the list is " << combo->fgDropdown()->height()
                           << " high, its view's viewport " << View()->viewport()->height() << ", a row " << row;
    const int narrow = DropDown().width();
    EXPECT_GT(narrow, r.width() + 6) << "the list is wider than the control";
    combo->DropdownHide();

    combo->Clear();
    combo->SetRowSource(Numbered(100));
    Open();
    EXPECT_EQ(DropDown().height(), 25 * row + 1 + 2);
    EXPECT_EQ(combo->VisibleRows(), 25);
    EXPECT_EQ(DropDown().width(), narrow + SystemInfo::SystemMetric(SM_CXVSCROLL)) << "a scroll bar's width more";
    EXPECT_TRUE(rowBar());
    const int wide = DropDown().width();
    const int tall = DropDown().height();
    combo->DropdownHide();

    // Little room below, enough above: above the control.
    pin(0, r.top() - tall - 10, 1280, r.bottom() + 1 + 50);
    Open();
    EXPECT_EQ(DropDown().bottom() + 1, r.top());
    EXPECT_EQ(DropDown().height(), tall);
    combo->DropdownHide();

    // Not wide enough to the right: the right edges line up.
    pin(0, 0, r.left() + wide - 5, 800);
    Open();
    EXPECT_EQ(DropDown().right(), r.right());
    EXPECT_EQ(DropDown().width(), wide);
    combo->DropdownHide();

    // Too tall for either side: the larger room, and the rows that fit in it.
    pin(0, r.top() - 120, 1280, r.bottom() + 1 + 150);
    Open();
    EXPECT_EQ(DropDown().top(), r.bottom() + 1) << "more room below than above";
    EXPECT_EQ(DropDown().height(), 150);
    EXPECT_EQ(combo->VisibleRows(), (150 - 2) / row);
    combo->DropdownHide();
    pin(0, r.top() - 170, 1280, r.bottom() + 1 + 100);
    Open();
    EXPECT_EQ(DropDown().top(), r.top() - 170) << "more room above: up to the top of the work area";
    EXPECT_EQ(DropDown().bottom() + 1, r.top());
    combo->DropdownHide();

    // Too wide for either side: the wider room.
    pin(r.left() - 10, 0, r.left() - 10 + wide - 20, 800);
    Open();
    EXPECT_EQ(DropDown().left(), r.left());
    EXPECT_EQ(DropDown().width(), wide - 30);
    combo->DropdownHide();
}

TEST_F(ZqDropdownTest, ColumnsAreMeasuredOnTwentyRowsSpreadOverTheList)
{
    combo->setGeometry(40, 30, 30, 22);
    Show();
    combo->SetRowSource(Numbered(1000));
    Open();
    const int plain = DropDown().width();
    combo->DropdownHide();
    combo->Clear();
    combo->SetRowSource(Numbered(1000, 7));  // between the rows read: every 50th from the first
    Open();
    EXPECT_EQ(DropDown().width(), plain) << "a row that is not read does not count";
    combo->DropdownHide();
    combo->Clear();
    combo->SetRowSource(Numbered(1000, 950));
    Open();
    EXPECT_GT(DropDown().width(), plain + 100) << "a row that is read does";
    // No text read is cut short: the text, the view's margins and its grid line fit the column.
    const QFontMetricsF metrics(View()->font());
    for (int row : {0, 950}) {
        for (int col = 0; col < 2; ++col) {
            const QString text = combo->fgDropdown()->TextMatrix(row, col);
            EXPECT_GE(View()->columnWidth(col), metrics.horizontalAdvance(text) + 7) << text.toStdString();
        }
    }
}

TEST_F(ZqDropdownTest, KeysTypedBeforeTheFocusReachesTheListAreNotLost)
{
    combo->SetRowSource(Customers());
    combo->SetAllowFilter(true);
    Show();
    QTest::keyClick(combo, Qt::Key_Down);
    QTest::keyClicks(combo, QStringLiteral("br"));  // at once, before the list's window is active
    EXPECT_TRUE(combo->IsDropdownOpen());
    EXPECT_EQ(combo->zqtxtFilter()->Text(), "br");
    EXPECT_EQ(combo->ListCount(), 1) << "Brown";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(CStr(combo->BoundValue()), "C04");

    // A press on the list before the focus arrives is a press in the drop-down.
    combo->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return combo->hasFocus(); }, 2000));
    combo->DropdownShow();
    QTest::mouseClick(View()->viewport(), Qt::LeftButton, {}, RowCentre(1));
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(CStr(combo->BoundValue()), "C02");
}

// --- Hooks, keys and the mouse ---------------------------------------------------------------

TEST_F(ZqDropdownTest, PressesInTheDropDownGoOnOutsideOnesCloseItAndInAnotherWindowGoOnToo)
{
    combo->SetRowSource(Customers());
    Show();
    QSignalSpy pressed(beneath, &QPushButton::pressed);
    QSignalSpy clicked(beneath, &QPushButton::clicked);
    Open();
    EXPECT_EQ(ThreadHooks::Owner(), combo);

    QTest::mousePress(View()->viewport(), Qt::LeftButton, {}, RowCentre(3));
    EXPECT_TRUE(combo->IsDropdownOpen()) << "a press in the drop-down goes on";
    EXPECT_EQ(combo->fgDropdown()->Row(), 3);
    QTest::mouseRelease(View()->viewport(), Qt::LeftButton, {}, RowCentre(3));
    EXPECT_FALSE(combo->IsDropdownOpen()) << "the click on the list picks and closes";
    EXPECT_EQ(CStr(combo->BoundValue()), "C04");
    EXPECT_EQ(events, (QStringList{"Click 2", "Changed 2 Null C04"}));
    EXPECT_EQ(ThreadHooks::Owner(), nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return combo->hasFocus(); }, 2000)) << "the focus comes back to the combo";

    Open();
    QTest::mouseClick(beneath, Qt::LeftButton);
    EXPECT_FALSE(combo->IsDropdownOpen()) << "a press outside with the focus inside closes it";
    EXPECT_EQ(pressed.count(), 0) << "and is used up";
    EXPECT_EQ(clicked.count(), 0) << "release and all";
    QTest::mouseClick(beneath, Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 1) << "once closed, the form's buttons work again";

    // The drop button: a press opens; a press on the closed part while open closes.
    QTest::mousePress(combo->zqsbDrop(), Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_TRUE(combo->IsDropdownOpen());
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == View(); }, 2000));
    QTest::mouseRelease(combo->zqsbDrop(), Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_TRUE(combo->IsDropdownOpen());
    QTest::mouseClick(combo, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_FALSE(combo->IsDropdownOpen());

    // Another top-level window with the focus: a press there closes the drop-down and goes on.
    QWidget other;
    auto* otherButton = new QPushButton(QStringLiteral("Other"), &other);
    other.setGeometry(800, 100, 200, 100);
    QSignalSpy otherClicked(otherButton, &QPushButton::clicked);
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));
    Open();
    other.activateWindow();
    otherButton->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return otherButton->hasFocus(); }, 2000));
    EXPECT_TRUE(combo->IsDropdownOpen());
    QTest::mouseClick(otherButton, Qt::LeftButton);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(otherClicked.count(), 1);
    EXPECT_EQ(CStr(combo->BoundValue()), "C04") << "closing by the hooks picks nothing";
}

TEST_F(ZqDropdownTest, EnterPicksEscapeKeepsTabPicksAndMovesOn)
{
    combo->SetRowSource(Customers());
    Show();
    Open();
    QTest::keyClick(View(), Qt::Key_Return);
    EXPECT_TRUE(events.isEmpty()) << "nothing selected, nothing highlighted: Enter picks nothing";
    EXPECT_TRUE(combo->BoundValue().IsNull());
    combo->SetBoundValue(Variant("C02"));
    Show();
    events.clear();
    Open();
    EXPECT_EQ(combo->fgDropdown()->Row(), 1) << "opened on the selection";
    QTest::keyClick(View(), Qt::Key_Down);
    EXPECT_EQ(combo->fgDropdown()->Row(), 2);
    QTest::keyClick(View(), Qt::Key_Escape);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(CStr(combo->BoundValue()), "C02") << "Escape keeps the selection";
    EXPECT_TRUE(events.isEmpty());
    EXPECT_TRUE(QTest::qWaitFor([&] { return combo->hasFocus(); }, 2000));

    QTest::keyClick(combo, Qt::Key_Down);
    ASSERT_TRUE(combo->IsDropdownOpen()) << "Down on the closed part opens";
    ASSERT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == View(); }, 2000));
    QTest::keyClick(View(), Qt::Key_Down);
    QTest::keyClick(View(), Qt::Key_Return);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(CStr(combo->BoundValue()), "C03");
    EXPECT_EQ(events, (QStringList{"Click 2", "Changed 2 C02 C03"}));
    events.clear();

    ASSERT_TRUE(QTest::qWaitFor([&] { return combo->hasFocus(); }, 2000));
    Open();
    QTest::keyClick(View(), Qt::Key_Down);
    QTest::keyClick(View(), Qt::Key_Tab);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(CStr(combo->BoundValue()), "C04");
    EXPECT_EQ(events, (QStringList{"Click 2", "Changed 2 C03 C04"}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return beneath->hasFocus(); }, 2000)) << "Tab moves the focus on";

    // A form's own shortcut for Escape does not take the key from the open drop-down.
    auto* cancel = new QAction(form.get());
    cancel->setShortcut(Qt::Key_Escape);
    form->addAction(cancel);
    QSignalSpy cancelled(cancel, &QAction::triggered);
    combo->setFocus();
    Open();
    QTest::keyClick(View(), Qt::Key_Escape);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(cancelled.count(), 0);
    QTest::keyClick(combo, Qt::Key_Escape);
    EXPECT_EQ(cancelled.count(), 1) << "closed, the form has its key back";

    // A held key does not close; the column menu takes Escape for itself.
    combo->SetColumnCaptions(QStringLiteral("Code;Name"));
    combo->SetAllowSorting(true);
    combo->setFocus();
    Open();
    QTest::keyEvent(QTest::Press, View(), Qt::Key_Escape, Qt::NoModifier, -1);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(View(), &held);
    EXPECT_FALSE(combo->IsDropdownOpen()) << "the fresh Escape closed it";
    Open();
    QApplication::sendEvent(View(), &held);
    EXPECT_TRUE(combo->IsDropdownOpen()) << "a repeated Enter is no fresh key-down";
    combo->ZqDDHeader()->ShowMenu();
    ASSERT_TRUE(combo->ZqDDHeader()->MenuVisible());
    QTest::keyClick(View(), Qt::Key_Escape);
    EXPECT_FALSE(combo->ZqDDHeader()->MenuVisible());
    EXPECT_TRUE(combo->IsDropdownOpen()) << "Escape took the menu down only";
}

// Also run in a real X server (see CMakeLists.txt): the same steps with real window activation.
TEST_F(ZqDropdownTest, AJourneyByKeyboardAndAClickOutside)
{
    combo->SetRowSource(Customers());
    combo->SetAllowFilter(true);
    Show();
    QSignalSpy pressed(beneath, &QPushButton::pressed);
    QTest::keyClick(combo, Qt::Key_Down);
    ASSERT_TRUE(combo->IsDropdownOpen());
    ASSERT_TRUE(combo->zqfraDropdown()->isWindow());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(combo->zqfraDropdown()));
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == View(); }, 3000)) << "the list has the focus";
    const QRect r = ComboRect();
    EXPECT_EQ(DropDown().topLeft(), QPoint(r.left(), r.bottom() + 1)) << "under the control, on the screen";

    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("b"));
    EXPECT_EQ(combo->zqtxtFilter()->Text(), "b");
    EXPECT_EQ(combo->ListCount(), 2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(CStr(combo->BoundValue()), "C04") << "Brown, the second of Baker and Brown";
    EXPECT_EQ(events, (QStringList{"Click 2", "Changed 2 Null C04"}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return combo->hasFocus(); }, 3000));
    EXPECT_FALSE(combo->zqfraDropdown()->isVisible());

    // Through the window system, as a user's click comes: it closes and goes no further.
    QTest::keyClick(combo, Qt::Key_Down);
    ASSERT_TRUE(combo->IsDropdownOpen());
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::focusWidget() == View(); }, 3000));
    const QPoint onBeneath = beneath->mapTo(form.get(), beneath->rect().center());
    QTest::mouseClick(form->windowHandle(), Qt::LeftButton, {}, onBeneath);
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_EQ(pressed.count(), 0) << "the widget beneath never saw the press";
    EXPECT_EQ(CStr(combo->BoundValue()), "C04");
    QTest::qWait(20);
    QTest::mouseClick(form->windowHandle(), Qt::LeftButton, {}, onBeneath);
    EXPECT_EQ(pressed.count(), 1) << "a click once closed reaches it";
}

TEST_F(ZqDropdownTest, EveryWayOfSelectingRaisesClickThenChanged)
{
    combo->SetRowSource(Customers());
    combo->SetAllowNullSelection(true);
    Show();
    struct Way {
        const char* name;
        std::function<void()> act;
        QStringList expected;
        const char* boundAfter;
    };
    const Way ways[] = {
        {"BoundValue", [&] { combo->SetBoundValue(Variant("C02")); }, {"Click 1", "Changed 1 Null C02"}, "C02"},
        {"the same BoundValue", [&] { combo->SetBoundValue(Variant("c02")); }, {}, "C02"},
        {"ListIndex", [&] { combo->SetListIndex(3); }, {"Click 1", "Changed 1 C02 C04"}, "C04"},
        {"Home on the closed part", [&] { QTest::keyClick(combo, Qt::Key_Home); }, {"Click 2", "Changed 2 C04 C01"}, "C01"},
        {"End on the closed part", [&] { QTest::keyClick(combo, Qt::Key_End); }, {"Click 2", "Changed 2 C01 C05"}, "C05"},
        {"Delete on the closed part", [&] { QTest::keyClick(combo, Qt::Key_Delete); }, {"Click 2", "Changed 2 C05 Null"}, "Null"},
        {"Enter with nothing highlighted",
         [&] {
             Open();
             EXPECT_EQ(combo->fgDropdown()->Row(), -1) << "nothing selected, nothing highlighted";
             QTest::keyClick(View(), Qt::Key_Return);
         },
         {"Click 2", "Changed 2 Null Null"},  // null selections allowed: the user picked nothing
         "Null"},
        {"Tab with nothing highlighted",
         [&] {
             Open();
             QTest::keyClick(View(), Qt::Key_Tab);
         },
         {"Click 2", "Changed 2 Null Null"},
         "Null"},
        {"Alt+Down in the list",
         [&] {
             Open();
             QTest::keyClick(View(), Qt::Key_Down);
             QTest::keyClick(View(), Qt::Key_Down, Qt::AltModifier | Qt::ShiftModifier);
             EXPECT_TRUE(combo->IsDropdownOpen()) << "Alt alone, not with Shift";
             QTest::keyClick(View(), Qt::Key_Down, Qt::AltModifier);
         },
         {"Click 2", "Changed 2 Null C02"},
         "C02"},
        {"Backspace in the list",
         [&] {
             combo->setFocus();
             Open();
             QTest::keyClick(View(), Qt::Key_Backspace);
             combo->DropdownHide();
         },
         {"Click 2", "Changed 2 C02 Null"},
         "Null"},
        {"a value not in the list", [&] { EXPECT_EQ(test::ErrorOf([&] { combo->SetBoundValue(Variant("ZZZ")); }), ObjectErrorBase); }, {}, "Null"},
        {"BoundValue again", [&] { combo->SetBoundValue(Variant("C03")); }, {"Click 1", "Changed 1 Null C03"}, "C03"},
        {"a value not in the list keeps the selection",
         [&] {
             const auto raised = test::RaisedError([&] { combo->SetBoundValue(Variant("ZZZ")); });
             ASSERT_TRUE(raised);
             EXPECT_EQ(raised->Source(), "Korvex Tests.cboCustomer.SetGridFromValue");
             EXPECT_EQ(raised->Description(), "Item not found.");
         },
         {},
         "C03"},
    };
    for (const Way& way : ways) {
        events.clear();
        combo->setFocus();
        way.act();
        EXPECT_EQ(events, way.expected) << way.name << ": " << events.join(QLatin1Char('|')).toStdString();
        EXPECT_EQ(Shown(combo->BoundValue()), way.boundAfter) << way.name;
        EXPECT_FALSE(combo->IsDropdownOpen()) << way.name;
    }
    EXPECT_EQ(combo->Text(), "C03");

    // A read-only combo opens to be looked at, and nothing the user does there selects.
    combo->SetReadOnly(true);
    events.clear();
    QTest::keyClick(combo, Qt::Key_Home);
    combo->setFocus();
    Open();
    QTest::keyClick(View(), Qt::Key_Down);
    QTest::keyClick(View(), Qt::Key_Return);
    EXPECT_TRUE(events.isEmpty()) << events.join(QLatin1Char('|')).toStdString();
    EXPECT_EQ(CStr(combo->BoundValue()), "C03");
}

TEST_F(ZqDropdownTest, ShowingNeedsAButtonAndEnabledAndAMessageBoxKeepsItOpen)
{
    combo->SetRowSource(Customers());
    Show();
    combo->SetButtonStyle(ddbsButtonNotVisible);
    combo->DropdownShow();
    EXPECT_FALSE(combo->IsDropdownOpen());
    EXPECT_FALSE(combo->zqsbDrop()->isVisible());
    combo->SetButtonStyle(ddbsButtonRightAligned);
    combo->SetEnabled(false);
    combo->DropdownShow();
    EXPECT_FALSE(combo->IsDropdownOpen());
    combo->SetEnabled(true);
    combo->setFocus();

    // The box is shown with the hooks taken off, so its own clicks do not close the drop-down.
    struct Watching : MessageBoxService {
        QObject* ownerDuringBox = reinterpret_cast<QObject*>(1);
        QString prompt;
        int Show(const QString& p, int, const QString&, QWidget*) override
        {
            ownerDuringBox = ThreadHooks::Owner();
            prompt = p;
            return vbNo;
        }
    };
    auto service = std::make_unique<Watching>();
    Watching* watching = service.get();
    auto previous = MessageBoxService::Install(std::move(service));
    Open();
    EXPECT_EQ(combo->MsgBoxFromDropDown(QStringLiteral("Really?"), vbYesNo), vbNo);
    const auto watched = MessageBoxService::Install(std::move(previous));  // keeps it for the checks
    EXPECT_EQ(watching->ownerDuringBox, nullptr);
    EXPECT_EQ(watching->prompt, "Really?");
    EXPECT_TRUE(combo->IsDropdownOpen());
    EXPECT_EQ(ThreadHooks::Owner(), combo) << "the hooks are back";

    // A second combo that opens takes the hooks over.
    auto* second = new ZqDropdown(form->Client());
    second->SetName(QStringLiteral("cboSecond"));
    second->InitProperties();
    second->setGeometry(300, 30, 150, 22);
    second->SetRowSource(Customers());
    second->show();
    second->DropdownShow();
    EXPECT_EQ(ThreadHooks::Owner(), second);
    second->DropdownHide();
    // A box from a closed combo while another is open leaves the hooks with the open one.
    combo->DropdownHide();
    combo->DropdownShow();
    ASSERT_EQ(ThreadHooks::Owner(), combo);
    auto usual = MessageBoxService::Install(std::make_unique<Watching>());
    EXPECT_EQ(second->MsgBoxFromDropDown(QStringLiteral("Sure?"), vbYesNo), vbNo);
    MessageBoxService::Install(std::move(usual));
    EXPECT_EQ(ThreadHooks::Owner(), combo);
    combo->DropdownHide();
    EXPECT_EQ(ThreadHooks::Owner(), nullptr);
}

// --- The closed part -------------------------------------------------------------------------

TEST_F(ZqDropdownTest, TheClosedPartShowsTwoSegmentsAndTheFocus)
{
    combo->setGeometry(40, 30, 260, 22);
    combo->SetRowSource(Customers());
    combo->SetBoundColumn(QStringLiteral("Town"));
    combo->SetBoundValue(Variant("York"));
    EXPECT_EQ(combo->Text(), "C02") << "the text is the first shown column's";
    Show();
    Open();
    combo->DropdownHide();  // the columns now have their measured widths
    ASSERT_TRUE(QTest::qWaitFor([&] { return combo->hasFocus(); }, 2000));
    const int firstWidth = TwipsToPixelsX(combo->fgDropdown()->ColWidth(0));
    const QRect area = combo->TextArea();
    const int frame = combo->style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, combo);
    ASSERT_GT(frame, 0);
    EXPECT_EQ(area.width(), combo->width() - 2 * frame - combo->zqsbDrop()->width());
    EXPECT_EQ(area.left(), frame);
    const QColor highlight = ToQColor(vbHighlight);
    const QColor window = ToQColor(vbWindowBackground);
    const auto inked = [](const QImage& image, const QRect& box, const QColor& background) {
        for (int y = box.top(); y <= box.bottom(); ++y)
            for (int x = box.left(); x <= box.right(); ++x)
                if (image.pixelColor(x, y) != background)
                    return true;
        return false;
    };
    ASSERT_TRUE(combo->hasFocus());
    QImage focused = combo->grab().toImage();
    EXPECT_EQ(focused.pixelColor(area.center().x(), area.bottom() - 3), highlight) << "the highlight while focused and closed";
    EXPECT_NE(focused.pixelColor(area.left(), area.top() + 2), highlight) << "the focus rectangle's dots on the edge";
    EXPECT_TRUE(inked(focused, QRect(area.left() + 3, 4, firstWidth - 6, area.height() - 8), highlight)) << "the code";
    EXPECT_TRUE(inked(focused, QRect(area.left() + firstWidth + 3, 4, 30, area.height() - 8), highlight))
        << "the bound column, after the first";

    beneath->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !combo->hasFocus(); }, 2000));
    QImage plain = combo->grab().toImage();
    EXPECT_EQ(plain.pixelColor(area.center().x(), area.bottom() - 3), window);
    EXPECT_EQ(plain.pixelColor(area.left(), area.top() + 2), window) << "no focus rectangle";
    EXPECT_NE(plain.pixelColor(0, combo->height() / 2), window) << "a text box's frame around it";

    // Too narrow for the second segment: only the first is drawn.
    combo->resize(firstWidth + 2 * frame + combo->zqsbDrop()->width(), 22);
    QApplication::processEvents();
    const QRect small = combo->TextArea();
    const QRect text(small.left() + 3, small.top() + 2, firstWidth - 6, small.height() - 4);
    const QImage narrow = combo->grab().toImage();
    EXPECT_TRUE(inked(narrow, text, window));
    combo->SetBoundValue(Variant());
    const QImage empty = combo->grab().toImage();
    EXPECT_FALSE(inked(empty, text, window)) << "nothing selected, nothing shown";
}

// --- Binding ---------------------------------------------------------------------------------

TEST_F(ZqDropdownTest, ABindingSourceShowsTheRecordsValueThroughBoundValue)
{
    ScopedMessageBoxRecorder boxes;
    combo->SetRowSource(Customers());
    combo->SetBoundColumn(QStringLiteral("Town"));
    combo->SetDataField(QStringLiteral("Town"));
    auto* source = static_cast<DataBindingSource*>(FormFile::AddNewControl(*form, QStringLiteral("DataBindingSource"), QStringLiteral("dbsOrders")));
    auto orders = MakeRecordset({{"OrderId", ado::adInteger}, {"Town", ado::adVarWChar, 30}}, {{1, "Leeds"}, {2, "Hull"}, {3, Null}});
    source->SetRecordset(orders);
    EXPECT_EQ(source->BoundControls(), (QList<QObject*>{combo}));
    EXPECT_EQ(CStr(combo->BoundValue()), "Leeds");
    EXPECT_EQ(combo->Text(), "C03");
    orders->MoveNext();
    EXPECT_EQ(CStr(combo->BoundValue()), "Hull");
    orders->MoveNext();
    EXPECT_TRUE(combo->BoundValue().IsNull());
    EXPECT_TRUE(boxes.shown().isEmpty());
    EXPECT_TRUE(GetProperty(combo, QStringLiteral("BoundValue")).IsNull());
    SetProperty(combo, QStringLiteral("BoundValue"), Variant("York"));
    EXPECT_EQ(combo->Text(), "C02");
}

}  // namespace
}  // namespace korvex
