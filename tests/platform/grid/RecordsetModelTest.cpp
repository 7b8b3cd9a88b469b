// RecordsetModel: cells read in place without moving the cursor, edits through the recordset,
// and rows added, deleted, filtered and sorted through clones told to the views correctly (the
// model tester checks every signal against the rows).
#include "tests/platform/grid/GridTestKit.h"

#include "korvex/platform/grid/RecordsetModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QCompleter>
#include <QCoreApplication>
#include <QSignalSpy>

namespace korvex {
namespace {

using ado::Recordset;
using ado::adFilterNone;
using ado::adAffectGroup;
using ado::adRecModified;
using ado::adEditNone;
using ado::adLockReadOnly;

QStringList Column(const QAbstractItemModel& model, int column)
{
    QStringList out;
    for (int r = 0; r < model.rowCount(); ++r)
        out << model.index(r, column).data().toString();
    return out;
}

TEST(RecordsetModel, ReadsCellsWithoutMovingTheCursor)
{
    auto rs = test::Customers();
    rs->SetAbsolutePosition(3);
    QSignalSpy moves(rs.get(), &Recordset::MoveComplete);
    RecordsetModel model(rs);
    EXPECT_EQ(model.rowCount(), 5);
    EXPECT_EQ(model.columnCount(), 3);
    EXPECT_EQ(model.headerData(1, Qt::Horizontal).toString(), "Name");
    EXPECT_EQ(model.headerData(0, Qt::Vertical).toInt(), 1);
    EXPECT_EQ(Column(model, 1), QStringList({"Baker", "Adams", "Cole", "Brown", "Evans"}));
    EXPECT_EQ(model.index(4, 2).data(Qt::EditRole).toString(), "Hull");
    EXPECT_FALSE(model.index(5, 0).isValid());
    EXPECT_EQ(rs->AbsolutePosition(), 3);
    EXPECT_EQ(moves.count(), 0);
    EXPECT_EQ(model.RowOfBookmark(rs->Bookmark()), 2);
    EXPECT_EQ(model.BookmarkOfRow(2), rs->Bookmark());
}

TEST(RecordsetModel, PassesTheModelTesterWhileRowsChangeThroughClones)
{
    test::ModelTesterComplaints complaints;
    auto source = test::Customers();
    auto shown = source->Clone();
    RecordsetModel model(shown);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

    // Added through another clone: told once events run, as rows inserted at the end.
    source->AddNew();
    source->Fields()->Item("Code")->SetValue(Variant("C06"));
    source->Fields()->Item("Name")->SetValue(Variant("Flint"));
    source->Update();
    QCoreApplication::processEvents();
    EXPECT_EQ(model.rowCount(), 6);
    ASSERT_EQ(inserted.count(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 5);
    EXPECT_EQ(model.index(5, 1).data().toString(), "Flint");

    // Deleted through the other clone: the row in the middle goes, its neighbours close up.
    source->SetAbsolutePosition(2);
    source->Delete();
    source->MoveNext();
    QCoreApplication::processEvents();
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed[0][1].toInt(), 1);
    EXPECT_EQ(Column(model, 0), QStringList({"C01", "C03", "C04", "C05", "C06"}));

    // A value written through the other clone.
    source->MoveFirst();
    source->Fields()->Item("Town")->SetValue(Variant("Wells"));
    source->Update();
    QCoreApplication::processEvents();
    EXPECT_GE(changed.count(), 1);
    EXPECT_EQ(model.index(0, 2).data().toString(), "Wells");

    // Filtered and sorted through the clone the model shows: the rows start over.
    shown->SetFilter(Variant("Name LIKE 'B*'"));
    EXPECT_EQ(Column(model, 1), QStringList({"Baker", "Brown"}));
    shown->SetFilter(Variant(std::int32_t{adFilterNone}));
    shown->SetSort("Name DESC");
    EXPECT_EQ(Column(model, 1), QStringList({"Flint", "Evans", "Cole", "Brown", "Baker"}));
    EXPECT_GE(resets.count(), 2);

    // Sorted, rows added elsewhere still arrive (by a reset, as the sort decides their place).
    source->AddNew();
    source->Fields()->Item("Code")->SetValue(Variant("C07"));
    source->Fields()->Item("Name")->SetValue(Variant("Dale"));
    source->Update();
    model.Refresh();
    EXPECT_EQ(model.rowCount(), 6);

    // Many rows deleted at once through a filtered clone of the source.
    shown->SetSort(QString());
    auto bulk = source->Clone();
    bulk->SetFilter(Variant("Code <> 'C01'"));
    bulk->Delete(adAffectGroup);
    bulk->UpdateBatch();
    QCoreApplication::processEvents();
    EXPECT_EQ(Column(model, 0), QStringList({"C01"}));
    EXPECT_TRUE(complaints.Lines().isEmpty()) << complaints.Lines().join('\n').toStdString();
}

TEST(RecordsetModel, ARecordBeingAddedShowsAndGoesWithCancel)
{
    test::ModelTesterComplaints complaints;
    auto rs = test::Customers();
    RecordsetModel model(rs);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);
    rs->AddNew();
    EXPECT_EQ(model.rowCount(), 6);
    rs->Fields()->Item("Name")->SetValue(Variant("Gale"));
    EXPECT_EQ(model.index(5, 1).data().toString(), "Gale");
    rs->CancelUpdate();
    EXPECT_EQ(model.rowCount(), 5);
    rs->Close();
    QCoreApplication::processEvents();
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.columnCount(), 0);
    EXPECT_TRUE(complaints.Lines().isEmpty()) << complaints.Lines().join('\n').toStdString();
}

TEST(RecordsetModel, EditsGoThroughTheRecordsetWhereItAllows)
{
    auto rs = test::Customers();
    RecordsetModel model(rs);
    EXPECT_TRUE(model.flags(model.index(0, 0)) & Qt::ItemIsEditable);
    EXPECT_TRUE(model.setData(model.index(3, 2), QStringLiteral("Ely")));
    EXPECT_EQ(rs->AbsolutePosition(), 4);
    EXPECT_EQ(ado::test::Text(*rs, "Town"), "Ely");
    EXPECT_EQ(rs->Status() & adRecModified, adRecModified);

    // Too long for the field: refused, nothing changed, the edit dropped.
    EXPECT_FALSE(model.setData(model.index(0, 0), QStringLiteral("far too long for ten")));
    EXPECT_EQ(model.index(0, 0).data().toString(), "C01");
    EXPECT_EQ(rs->EditMode(), adEditNone);

    auto readOnly = rs->Clone(adLockReadOnly);
    RecordsetModel fixed(readOnly);
    EXPECT_FALSE(fixed.flags(fixed.index(0, 0)) & Qt::ItemIsEditable);
    EXPECT_FALSE(fixed.setData(fixed.index(0, 0), QStringLiteral("X")));
}

TEST(RecordsetModel, ServesQtViewsAsAnyModel)
{
    auto rs = test::Customers();
    RecordsetModel model(rs);
    QComboBox combo;
    combo.setModel(&model);
    combo.setModelColumn(1);
    EXPECT_EQ(combo.count(), 5);
    EXPECT_EQ(combo.itemText(3), "Brown");
    QCompleter completer(&model);
    completer.setCompletionColumn(2);
    completer.setCompletionPrefix(QStringLiteral("Le"));
    EXPECT_EQ(completer.currentCompletion(), "Leeds");
}

}  // namespace
}  // namespace korvex
