// The drop-down's "Sorted By" line: the words from the language file or their default, the mark
// and the menu items, the arrow after the measured text, and the menu's choice.
#include "korvex/controls/lists/ZqDropdown_Header.h"

#include "korvex/localisation/clsLanguage.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Label.h"
#include "tests/support/TestFiles.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

namespace korvex {
namespace {

QStringList ItemTexts(const QMenu* menu)
{
    QStringList texts;
    for (const QAction* a : menu->actions())
        texts << a->text();
    return texts;
}

QList<bool> Checks(const QMenu* menu)
{
    QList<bool> checks;
    for (const QAction* a : menu->actions())
        checks << a->isChecked();
    return checks;
}

TEST(ZqDropdown_Header, TheLineTheMarkAndTheMenuItemsFollowTheCaptions)
{
    test::TestFolder folder;
    clsLanguage::Global().LanguageInitialise(langEnglish, folder.Write(QStringLiteral("none.lng"), "Key,English\nother,Other\n"));
    Form form;
    ZqDropdown_Header header(form.Client());
    header.setGeometry(0, 0, 300, 20);
    EXPECT_EQ(header.Prefix(), " Sorted By ") << "the default words between two blanks when the key is missing";
    EXPECT_EQ(header.lbl()->Caption(), " Sorted By ");
    EXPECT_EQ(header.SortedColIndex(), -1);

    header.SetColumns({QStringLiteral("Code"), QStringLiteral("Name"), QStringLiteral("Town")});
    EXPECT_EQ(ItemTexts(header.mnuCols()), (QStringList{"Code", "Name", "Town"}));
    EXPECT_EQ(Checks(header.mnuCols()), (QList<bool>{false, false, false}));

    header.SetSortedColIndex(1);
    EXPECT_EQ(header.lbl()->Caption(), " Sorted By Name");
    EXPECT_EQ(Checks(header.mnuCols()), (QList<bool>{false, true, false}));
    const int textWidth = QFontMetrics(header.lbl()->font()).horizontalAdvance(QStringLiteral(" Sorted By Name"));
    EXPECT_EQ(header.lblDropArrow()->x(), textWidth + 4) << "the arrow stands four pixels after the text";
    EXPECT_EQ(header.lblDropArrow()->y(), (header.height() - header.lblDropArrow()->height()) / 2);

    header.SetSortedColIndex(-1);
    EXPECT_EQ(header.SortedColIndex(), -1);
    EXPECT_EQ(header.lbl()->Caption(), " Sorted By Name") << "no mark leaves the line as it was";
    EXPECT_EQ(Checks(header.mnuCols()), (QList<bool>{false, false, false})) << "and unchecks the previous item";

    header.SetSortedColIndex(7);
    EXPECT_EQ(header.SortedColIndex(), 7) << "an index beyond the captions is kept";
    EXPECT_EQ(header.lbl()->Caption(), " Sorted By Name");

    header.SetSortedColIndex(2);
    header.SetColumns({QStringLiteral("Zip"), QStringLiteral("Street")});
    EXPECT_EQ(ItemTexts(header.mnuCols()), (QStringList{"Zip", "Street"})) << "the surplus items go";
    header.SetColumns({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")});
    EXPECT_EQ(ItemTexts(header.mnuCols()), (QStringList{"A", "B", "C", "D"}));
    EXPECT_EQ(Checks(header.mnuCols()), (QList<bool>{false, false, true, false})) << "the marked item is checked again";

    clsLanguage::Global().LanguageInitialise(langEnglish, folder.Write(QStringLiteral("de.lng"), "Key,English\nzqdd0001,Sortiert nach\n"));
    ZqDropdown_Header german(form.Client());
    EXPECT_EQ(german.Prefix(), " Sortiert nach ");
}

TEST(ZqDropdown_Header, AClickPopsTheMenuUpAndAChoiceReportsItsIndex)
{
    Form form;
    form.resize(320, 200);
    auto* header = new ZqDropdown_Header(form.Client());
    header->setGeometry(0, 0, 300, 20);
    header->SetColumns({QStringLiteral("Code"), QStringLiteral("Name"), QStringLiteral("Town")});
    form.show();
    QApplication::processEvents();
    QSignalSpy chosen(header, &ZqDropdown_Header::ColumnChosen);

    QTest::mouseClick(header->lbl()->findChild<QWidget*>(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_TRUE(header->MenuVisible());
    EXPECT_TRUE(header->mnuCols()->isVisible());
    header->ShowMenu();  // up already: nothing more
    EXPECT_TRUE(header->Owns(header->mnuCols()));
    header->mnuCols()->actions().at(2)->trigger();
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).value<short>(), 2);
    EXPECT_FALSE(header->MenuVisible());

    header->ShowMenu();
    ASSERT_TRUE(header->mnuCols()->isVisible());
    header->SetMenuVisible(false);
    EXPECT_FALSE(header->mnuCols()->isVisible()) << "the combo takes a menu that is up down";
    EXPECT_EQ(chosen.count(), 1);
}

}  // namespace
}  // namespace korvex
