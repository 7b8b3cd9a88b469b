// Editing: clones seeing each other's changes, EditMode through AddNew, Update, CancelUpdate and
// Delete, pending status through UpdateBatch and CancelBatch, immediate updates, and a provider
// that refuses rows and reads them again.
#include "tests/platform/ado/RecordsetBuilder.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/ado/RecordsetProvider.h"

#include <gtest/gtest.h>

namespace korvex::ado {
namespace {

using korvex::test::ErrorOf;
using test::MakeRecordset;
using test::Text;
using test::Values;

std::shared_ptr<Recordset> Names(int lockType = adLockBatchOptimistic)
{
    return MakeRecordset({{"Code", adVarChar, 5}, {"Name", adVarChar, 20}},
                         {{"a", "Ann"}, {"b", "Bob"}, {"c", "Cy"}}, lockType);
}

TEST(RecordsetEditing, ClonesSeeEachOthersEditsAddsAndDeletes)
{
    auto rs = Names();
    auto clone = rs->Clone();
    EXPECT_EQ(Text(*clone, "Code"), "a") << "a clone starts on the first record";

    rs->Fields()->Item("Name")->SetValue("Anne");
    EXPECT_EQ(Text(*clone, "Name"), "Ann") << "an edit is private until Update";
    rs->Update();
    EXPECT_EQ(Text(*clone, "Name"), "Anne");

    clone->AddNew(Variant::Array({"Code", "Name"}), Variant::Array({"d", "Dee"}));
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(Values(*rs, "Name"), (QStringList{"Anne", "Bob", "Cy", "Dee"}));

    auto filtered = rs->Clone();
    filtered->SetFilter(Variant("Name LIKE 'x*'"));
    auto sorted = rs->Clone();
    sorted->SetSort("Name DESC");
    EXPECT_EQ(filtered->RecordCount(), 0);
    rs->AddNew(Variant::Array({"Code", "Name"}), Variant::Array({"x", "Xavier"}));
    rs->AddNew(Variant::Array({"Code", "Name"}), Variant::Array({"z", "Zed"}));
    EXPECT_EQ(Values(*filtered, "Code"), (QStringList{"x"})) << "a filtered clone takes new rows that match";
    EXPECT_EQ(Values(*sorted, "Code"), (QStringList{"d", "c", "b", "a", "x", "z"}))
        << "new rows wait at the end until the next sort";

    clone->SetAbsolutePosition(2);
    rs->SetAbsolutePosition(2);
    rs->Delete();
    EXPECT_EQ(clone->RecordCount(), 5);
    EXPECT_FALSE(clone->IsEOF());
    EXPECT_EQ(clone->AbsolutePosition(), adPosUnknown) << "the clone's record was deleted under it";
    EXPECT_EQ(ErrorOf([&] { clone->Fields()->Item("Name")->SetValue("x"); }), adErrNoCurrentRecord);
    clone->MoveNext();
    EXPECT_EQ(Text(*clone, "Code"), "c") << "moving on from a deleted record lands on the next one";
    sorted->SetSort("Name DESC");
    EXPECT_EQ(Values(*sorted, "Code"), (QStringList{"z", "x", "d", "c", "a"}));
}

TEST(RecordsetEditing, ManyChangesThroughOneCloneStillReachAFilteredSortedClone)
{
    // More changes than the store keeps a log of: the watching clone must rebuild, not replay.
    auto rs = MakeRecordset({{"Id", adInteger}, {"Name", adVarChar, 10}});
    auto watcher = rs->Clone();
    watcher->SetFilter(Variant("Name LIKE 'x*'"));
    watcher->SetSort("Id DESC");
    const int rows = 70000;
    for (int i = 0; i < rows; ++i)
        rs->AddNew(Variant::Array({"Id", "Name"}), Variant::Array({i, i % 2 ? "y" : "x"}));
    rs->MoveFirst();
    rs->Delete();
    EXPECT_EQ(watcher->RecordCount(), rows / 2 - 1) << "row 0 was deleted";
    watcher->MoveFirst();
    EXPECT_EQ(watcher->Fields()->Item("Id")->Value(), Variant(rows - 2));
    watcher->MoveLast();
    EXPECT_EQ(watcher->Fields()->Item("Id")->Value(), Variant(2));

    auto small = rs->Clone();
    small->SetFilter(Variant("Id < 3"));
    rs->AddNew(Variant::Array({"Id", "Name"}), Variant::Array({-1, "x"}));
    EXPECT_EQ(Values(*small, "Id"), (QStringList{"1", "2", "-1"})) << "a few changes are replayed";
}

TEST(RecordsetEditing, AddNewWithValuesAnnouncesTheMoveWithTheValuesInPlace)
{
    auto rs = Names();
    QStringList seen;
    QObject::connect(rs.get(), &Recordset::MoveComplete,
                     [&](EventReasonEnum reason, const Error*, EventStatusEnum&, Recordset* r) {
                         if (reason != adRsnAddNew)
                             return;
                         const Variant name = r->Fields()->Item("Name")->Value();
                         seen << (name.IsNull() ? QString() : CStr(name)) + QString::number(r->EditMode());
                     });
    rs->AddNew(Variant("Name"), Variant("Dora"));
    EXPECT_EQ(seen, QStringList{QStringLiteral("Dora%1").arg(adEditNone)}) << "announced once, with its values saved";
    rs->AddNew();
    EXPECT_EQ(seen.size(), 2) << "without values the new record is announced empty";
    EXPECT_EQ(seen.last(), QStringLiteral("%1").arg(adEditAdd));
}

TEST(RecordsetEditing, EditModeFollowsAddNewUpdateCancelAndDelete)
{
    auto rs = Names();
    Field* name = rs->Fields()->Item("Name");
    EXPECT_EQ(rs->EditMode(), adEditNone);
    name->SetValue("Annie");
    EXPECT_EQ(rs->EditMode(), adEditInProgress);
    EXPECT_EQ(name->Value(), Variant("Annie"));
    rs->CancelUpdate();
    EXPECT_EQ(rs->EditMode(), adEditNone);
    EXPECT_EQ(name->Value(), Variant("Ann"));

    rs->MoveLast();
    rs->AddNew();
    EXPECT_EQ(rs->EditMode(), adEditAdd);
    EXPECT_EQ(rs->Status(), adRecNew);
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_EQ(rs->AbsolutePosition(), 4);
    EXPECT_EQ(name->Value(), Null);
    EXPECT_EQ(name->OriginalValue(), Variant()) << "a record being added has no original values";
    rs->CancelUpdate();
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(Text(*rs, "Code"), "c") << "back on the record current before AddNew";

    rs->AddNew();
    name->SetValue("Dee");
    rs->MoveFirst();  // moving away updates the new record
    EXPECT_EQ(rs->EditMode(), adEditNone);
    EXPECT_EQ(Values(*rs, "Name"), (QStringList{"Ann", "Bob", "Cy", "Dee"}));

    rs->SetAbsolutePosition(2);
    rs->Delete();
    EXPECT_EQ(rs->EditMode(), adEditDelete);
    EXPECT_TRUE(rs->Status() & adRecDeleted);
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_FALSE(rs->IsBOF() || rs->IsEOF()) << "the deleted record stays current";
    EXPECT_EQ(Text(*rs, "Name"), "Bob") << "and can still be read";
    EXPECT_EQ(ErrorOf([&] { rs->Delete(); }), adErrNoCurrentRecord);
    EXPECT_EQ(ErrorOf([&] { rs->Move(0); }), adErrNoCurrentRecord) << "no record to stay on";
    const Variant deleted = rs->Bookmark();
    rs->Move(-1);
    EXPECT_EQ(Text(*rs, "Name"), "Ann") << "one back from a deleted record";
    EXPECT_EQ(ErrorOf([&] { rs->SetBookmark(deleted); }), adErrInvalidArgument);
    rs->MoveNext();
    EXPECT_EQ(Text(*rs, "Name"), "Cy");
    EXPECT_EQ(rs->EditMode(), adEditNone);

    // The binding control's Cancel of an added record: Delete, then MoveNext, then back.
    rs->AddNew();
    rs->Delete();
    rs->MoveNext();
    EXPECT_TRUE(rs->IsEOF());
    rs->MovePrevious();
    EXPECT_EQ(Text(*rs, "Name"), "Dee") << "the neighbour of the dropped record";
    EXPECT_EQ(rs->RecordCount(), 3);

    rs->Delete();
    rs->MoveNext();
    EXPECT_TRUE(rs->IsEOF());
    rs->MovePrevious();
    EXPECT_EQ(Text(*rs, "Name"), "Cy") << "deleting the last record leaves its predecessor last";
    rs->Delete();
    rs->MoveFirst();
    rs->Delete();
    EXPECT_FALSE(rs->IsEOF());
    rs->MoveNext();
    EXPECT_TRUE(rs->IsEOF() && rs->IsBOF()) << "deleting the only record empties the recordset";
}

TEST(RecordsetBatch, ChangesStayPendingUntilUpdateBatchOrCancelBatch)
{
    auto rs = Names();
    rs->Fields()->Item("Name")->Properties()->Item("Optimize")->SetValue(true);
    Field* name = rs->Fields()->Item("Name");
    name->SetValue("Anne");
    rs->Update();
    rs->MoveNext();
    rs->Delete();
    rs->AddNew(Variant::Array({"Code", "Name"}), Variant::Array({"d", "Dee"}));

    rs->SetFilter(Variant(adFilterPendingRecords));
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"a", "b", "d"})) << "pending includes the deleted record";
    QList<int> statuses;
    for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext())
        statuses << rs->Status();
    EXPECT_EQ(statuses, (QList<int>{adRecModified, adRecDeleted, adRecNew}));
    rs->MoveFirst();
    EXPECT_EQ(name->Value(), Variant("Anne"));
    EXPECT_EQ(name->OriginalValue(), Variant("Ann"));
    EXPECT_EQ(name->UnderlyingValue(), Variant("Ann"));

    rs->CancelBatch();
    rs->SetFilter(Variant(adFilterNone));
    EXPECT_EQ(Values(*rs, "Name"), (QStringList{"Ann", "Bob", "Cy"})) << "values back, b back, d gone";
    rs->MoveFirst();
    EXPECT_EQ(rs->Status(), adRecUnmodified);
    rs->SetFilter(Variant(adFilterAffectedRecords));
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"a", "b"})) << "the rows the cancel touched";
    rs->SetFilter(Variant("Name = 'anne'"));
    EXPECT_EQ(rs->RecordCount(), 0) << "the index followed the cancel";
    rs->SetFilter(Variant("Name = 'ann'"));
    EXPECT_EQ(rs->RecordCount(), 1);

    rs->SetFilter(Variant(adFilterNone));
    name->SetValue("Anne");
    rs->Update();
    rs->UpdateBatch();
    EXPECT_EQ(rs->Status(), adRecOK);
    EXPECT_EQ(name->OriginalValue(), Variant("Anne")) << "what was sent is now the original";
    rs->SetFilter(Variant(adFilterPendingRecords));
    EXPECT_EQ(rs->RecordCount(), 0);
}

TEST(RecordsetBatch, AffectRecordsLimitsWhatIsSentCancelledOrDeleted)
{
    auto rs = Names();
    for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext())
        rs->Fields()->Item("Name")->SetValue(Text(*rs, "Name") + "!");
    rs->SetAbsolutePosition(2);
    rs->UpdateBatch(adAffectCurrent);
    EXPECT_EQ(rs->Status(), adRecOK) << "only b was sent";
    rs->SetFilter(Variant("Code = 'c'"));
    rs->CancelBatch(adAffectGroup);
    rs->SetFilter(Variant(adFilterPendingRecords));
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"a"})) << "c was cancelled with its group, a still waits";
    rs->SetFilter(Variant(adFilterNone));
    EXPECT_EQ(Values(*rs, "Name"), (QStringList{"Ann!", "Bob!", "Cy"}));

    rs->SetFilter(Variant("Code <> 'b'"));
    rs->Delete(adAffectGroup);
    EXPECT_EQ(rs->RecordCount(), 0);
    rs->SetFilter(Variant(adFilterNone));
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"b"}));
    rs->SetFilter(Variant(adFilterAffectedRecords));
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"a", "c"})) << "the deleted rows, still pending";
    EXPECT_EQ(ErrorOf([&] { rs->Delete(adAffectAll); }), adErrInvalidArgument);
}

TEST(RecordsetBatch, ImmediateModeWritesEachUpdateAndDeleteAtOnce)
{
    auto rs = Names(adLockOptimistic);
    rs->Fields()->Item("Name")->SetValue("Anne");
    rs->Update();
    EXPECT_EQ(rs->Status(), adRecOK);
    rs->MoveNext();
    rs->Delete();
    rs->AddNew(Variant::Array({"Code", "Name"}), Variant::Array({"d", "Dee"}));
    EXPECT_EQ(rs->Status(), adRecOK);
    rs->CancelBatch();
    EXPECT_EQ(Values(*rs, "Name"), (QStringList{"Anne", "Cy", "Dee"})) << "nothing was left to cancel";
}

// Refuses rows named "conflict" as changed by someone else, and answers Resync with the values
// "the server" holds.
class FakeProvider : public RecordsetProvider {
public:
    BatchOutcome UpdateBatch(const RecordsetStore& store, std::span<const RowId> rows) override
    {
        BatchOutcome outcome;
        for (RowId row : rows) {
            sent << QStringLiteral("%1:%2").arg(CStr(store.Value(row, 0))).arg(store.Status(row));
            if (store.Value(row, 1) == Variant("conflict"))
                outcome.refused.push_back({row, adRecConcurrencyViolation});
        }
        if (!outcome.refused.empty())
            outcome.error = Error(-2147217864, "Provider", "Row cannot be located for updating.");
        return outcome;
    }
    void Resync(RecordsetStore& store, std::span<const RowId> rows, ResyncEnum values) override
    {
        for (RowId row : rows) {
            if (store.Value(row, 0) == Variant("b")) {
                store.AddStatusFlags(row, adRecDBDeleted);
            } else if (values == adResyncUnderlyingValues) {
                store.SetUnderlyingValue(row, 1, Variant("server"));
            } else {
                const Variant fresh[] = {store.Value(row, 0), Variant("server")};
                store.ReplaceValues(row, fresh);
            }
        }
    }
    QStringList sent;
};

TEST(RecordsetBatch, AProviderDecidesWhatIsWrittenAndReadAgain)
{
    auto store = std::make_shared<RecordsetStore>(std::vector<FieldDef>{
        MakeFieldDef("Code", adVarChar, 5, adFldKeyColumn), MakeFieldDef("Name", adVarChar, 20, adFldIsNullable)});
    for (const char* code : {"a", "b", "c"}) {
        const Variant row[] = {Variant(code), Variant(QString("name ") + code)};
        store->AppendRow(row);
    }
    auto provider = std::make_shared<FakeProvider>();
    store->SetProvider(provider);
    store->SetDynamicProperty("Unique Table", Variant("Customers"));
    auto rs = std::make_shared<Recordset>();
    rs->OpenStore(store);
    EXPECT_EQ(rs->Properties()->Item("Unique Table")->Value(), Variant("Customers"));
    EXPECT_EQ(rs->Status(), adRecUnmodified) << "rows as read";

    Field* name = rs->Fields()->Item("Name");
    name->SetValue("conflict");
    rs->MoveNext();
    name->SetValue("fine");
    rs->MoveFirst();
    const Error* reported = nullptr;
    int reportedNumber = 0;
    QObject::connect(rs.get(), &Recordset::MoveComplete,
                     [&](EventReasonEnum, const Error* e, EventStatusEnum& status, Recordset*) {
                         reported = e;
                         reportedNumber = e ? e->Number() : 0;
                         EXPECT_EQ(status, e ? adStatusErrorsOccurred : adStatusOK);
                     });
    EXPECT_EQ(ErrorOf([&] { rs->UpdateBatch(); }), -2147217864);
    EXPECT_TRUE(reported != nullptr);
    EXPECT_EQ(reportedNumber, -2147217864) << "MoveComplete carries the error before it is raised";
    EXPECT_EQ(provider->sent, (QStringList{"a:2", "b:2"})) << "both modified rows were sent";
    EXPECT_EQ(rs->Status(), adRecModified | adRecConcurrencyViolation);
    rs->SetFilter(Variant(adFilterConflictingRecords));
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"a"}));
    rs->SetFilter(Variant(adFilterNone));
    rs->MoveNext();
    EXPECT_EQ(rs->Status(), adRecOK) << "b was written";

    rs->MoveFirst();
    rs->Resync(adAffectCurrent, adResyncUnderlyingValues);
    EXPECT_EQ(name->UnderlyingValue(), Variant("server"));
    EXPECT_EQ(name->Value(), Variant("conflict")) << "the user's change is kept";
    rs->Resync(adAffectCurrent, adResyncAllValues);
    EXPECT_EQ(name->Value(), Variant("server"));
    EXPECT_EQ(rs->Status(), adRecUnmodified);
    rs->MoveNext();
    rs->Resync(adAffectCurrent);
    EXPECT_TRUE(rs->Status() & adRecDBDeleted);

    auto fabricated = Names();
    EXPECT_EQ(ErrorOf([&] { fabricated->Resync(); }), adErrFeatureNotAvailable)
        << "rows made in memory have no data source to read again";
    EXPECT_EQ(ErrorOf([&] { rs->Resync(adAffectAll, 7); }), adErrInvalidArgument);
}

}  // namespace
}  // namespace korvex::ado
