// Two users on one database, each with a batch-optimistic recordset over the same rows: whoever
// writes second finds the rows the first changed or deleted refused with the right status, the
// rest of the batch written, and nothing of the first user's work lost. Run on SQLite, PostgreSQL
// and SQLite through ODBC.
#include "tests/platform/adosql/SqlTestKit.h"
#include "tests/support/ErrorOf.h"

#include "korvex/platform/adosql/DriverError.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/runtime/DateTime.h"

#include <gtest/gtest.h>

using namespace korvex;
using namespace korvex::ado;
using namespace korvex::ado::test;

namespace {

const QString Select = QStringLiteral("SELECT id, name, city FROM people ORDER BY id");
const QString Cities = QStringLiteral("SELECT city FROM people ORDER BY id");
const QString Names = QStringLiteral("SELECT name FROM people ORDER BY id");

class TwoUsers : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (IsSkipped())
            return;
        mFirst = mConnection;
        mSecond = Connect(mText);
        mFirst->Execute(QStringLiteral("DROP TABLE IF EXISTS people"));
        mFirst->Execute(QStringLiteral("CREATE TABLE people (id INTEGER PRIMARY KEY, name VARCHAR(40), city VARCHAR(40))"));
        mFirst->Execute(QStringLiteral("INSERT INTO people VALUES (1, 'Ann', 'Oslo'), (2, 'Bob', NULL), (3, 'Cy', 'Rome')"));
    }

    // Both users read the rows before either writes.
    void OpenBoth()
    {
        mMine = OpenBatch(mFirst, Select);
        mTheirs = OpenBatch(mSecond, Select);
    }

    // The row's status after a refused batch, and the batch's error number.
    int WriteMine()
    {
        try {
            mMine->UpdateBatch();
        } catch (const Error& e) {
            mError = e.Description();
            return e.Number();
        }
        return 0;
    }

    int StatusOf(const char* id)
    {
        EXPECT_TRUE(Seek(mMine, "id", QString::fromLatin1(id)));
        return mMine->Status();
    }

    // Whether the record with that id is neither pending nor refused.
    bool Written(const char* id) { return (StatusOf(id) & (Pending | Refused)) == 0; }

    static constexpr int Pending = adRecNew | adRecModified | adRecDeleted;
    static constexpr int Refused = adRecConcurrencyViolation | adRecDBDeleted | adRecIntegrityViolation;

    std::shared_ptr<Connection> mFirst;
    std::shared_ptr<Connection> mSecond;
    std::shared_ptr<Recordset> mMine;
    std::shared_ptr<Recordset> mTheirs;
    QString mError;
};

TEST_P(TwoUsers, ChangeAgainstChangeRefusesOnlyTheSameColumnAndLastOneWinsAfterResync)
{
    OpenBoth();
    ASSERT_TRUE(Seek(mTheirs, "id", "1"));
    SetValueOf(mTheirs, "city", "Paris");
    ASSERT_TRUE(Seek(mTheirs, "id", "3"));
    SetValueOf(mTheirs, "name", "Cyril");
    mTheirs->UpdateBatch();

    ASSERT_TRUE(Seek(mMine, "id", "1"));
    SetValueOf(mMine, "city", "Lima");   // the same column they changed: refused
    ASSERT_TRUE(Seek(mMine, "id", "2"));
    SetValueOf(mMine, "name", "Bobby");  // untouched by them: written
    ASSERT_TRUE(Seek(mMine, "id", "3"));
    SetValueOf(mMine, "city", "Bern");   // another column of a row they changed: written

    EXPECT_EQ(adErrRowConflict, WriteMine());
    EXPECT_FALSE(mError.isEmpty());
    EXPECT_EQ(adRecModified | adRecConcurrencyViolation, StatusOf("1"));
    EXPECT_EQ(QStringLiteral("Lima"), CStr(ValueOf(mMine, "city")));
    EXPECT_TRUE(Written("2"));
    EXPECT_TRUE(Written("3"));
    EXPECT_EQ((QStringList{"Paris", "<Null>", "Bern"}), ReadColumn(mSecond, Cities));
    EXPECT_EQ((QStringList{"Ann", "Bobby", "Cyril"}), ReadColumn(mSecond, Names));

    // Last one wins: take their values as the ones the row had, then write again.
    ASSERT_TRUE(Seek(mMine, "id", "1"));
    mMine->Resync(adAffectCurrent, adResyncUnderlyingValues);
    EXPECT_EQ(QStringLiteral("Paris"), CStr(mMine->Fields()->Item(Variant("city"))->UnderlyingValue()));
    EXPECT_EQ(QStringLiteral("Lima"), CStr(ValueOf(mMine, "city")));
    EXPECT_EQ(0, WriteMine());
    EXPECT_EQ((QStringList{"Lima", "<Null>", "Bern"}), ReadColumn(mSecond, Cities));
}

TEST_P(TwoUsers, ChangeAgainstDeleteMarksTheRowDeletedAtTheSource)
{
    OpenBoth();
    ASSERT_TRUE(Seek(mTheirs, "id", "1"));
    mTheirs->Delete();
    mTheirs->UpdateBatch();

    ASSERT_TRUE(Seek(mMine, "id", "1"));
    SetValueOf(mMine, "city", "Lima");
    ASSERT_TRUE(Seek(mMine, "id", "3"));
    SetValueOf(mMine, "city", "Bern");
    EXPECT_EQ(adErrRowConflict, WriteMine());
    EXPECT_EQ(adRecModified | adRecDBDeleted, StatusOf("1"));
    EXPECT_TRUE(Written("3"));
    EXPECT_EQ((QStringList{"<Null>", "Bern"}), ReadColumn(mSecond, Cities));

    // Resync tells the same: the row is gone.
    ASSERT_TRUE(Seek(mMine, "id", "1"));
    mMine->CancelBatch(adAffectCurrent);
    mMine->Resync(adAffectCurrent, adResyncAllValues);
    EXPECT_TRUE(mMine->Status() & adRecDBDeleted);
}

TEST_P(TwoUsers, DeleteAgainstChangeKeepsTheirChangeAndTheDeletePending)
{
    OpenBoth();
    ASSERT_TRUE(Seek(mTheirs, "id", "2"));
    SetValueOf(mTheirs, "city", "Kyiv");
    mTheirs->UpdateBatch();

    ASSERT_TRUE(Seek(mMine, "id", "2"));
    mMine->Delete();
    ASSERT_TRUE(Seek(mMine, "id", "3"));
    mMine->Delete();
    EXPECT_EQ(adErrRowConflict, WriteMine());
    mMine->SetFilter(Variant(std::int32_t{adFilterConflictingRecords}));
    ASSERT_EQ(1, mMine->RecordCount());
    EXPECT_EQ(adRecDeleted | adRecConcurrencyViolation, mMine->Status() & (Pending | Refused));
    EXPECT_EQ(QStringLiteral("2"), CStr(ValueOf(mMine, "id")));
    EXPECT_EQ((QStringList{"Oslo", "Kyiv"}), ReadColumn(mSecond, Cities));
}

TEST_P(TwoUsers, NullOriginalValuesMatchNullAndOnlyNull)
{
    OpenBoth();
    // Row 2's city is Null as both read it: the first write matches it.
    ASSERT_TRUE(Seek(mTheirs, "id", "2"));
    SetValueOf(mTheirs, "city", "Kyiv");
    mTheirs->UpdateBatch();
    EXPECT_EQ((QStringList{"Oslo", "Kyiv", "Rome"}), ReadColumn(mSecond, Cities));

    // The second still expects Null there and must not overwrite Kyiv.
    ASSERT_TRUE(Seek(mMine, "id", "2"));
    SetValueOf(mMine, "city", "Riga");
    EXPECT_EQ(adErrRowConflict, WriteMine());
    EXPECT_EQ(adRecModified | adRecConcurrencyViolation, StatusOf("2"));

    // Setting a value to Null is matched the other way round.
    ASSERT_TRUE(Seek(mTheirs, "id", "2"));
    SetValueOf(mTheirs, "city", Null);
    mTheirs->UpdateBatch();
    ASSERT_TRUE(Seek(mTheirs, "id", "2"));
    SetValueOf(mTheirs, "city", "Oslo");
    mTheirs->UpdateBatch();
    EXPECT_EQ((QStringList{"Oslo", "Oslo", "Rome"}), ReadColumn(mSecond, Cities));
}

// Dates, Booleans, reals and integers are sent and matched as their own types: a row is found
// by the values as read, refused when they changed the same column, and written when a column
// was changed and changed back beside one really changed.
TEST_P(TwoUsers, TypedColumnsAreWrittenAndMatchedAsRead)
{
    mFirst->Execute(QStringLiteral("DROP TABLE IF EXISTS tasks"));
    mFirst->Execute(QStringLiteral(
        "CREATE TABLE tasks (id INTEGER PRIMARY KEY, due TIMESTAMP, done BOOLEAN, price DOUBLE PRECISION, qty INTEGER)"));
    mFirst->Execute(QStringLiteral("INSERT INTO tasks VALUES (1, '2024-03-01 10:00:00', FALSE, 0.1, 5), "
                                   "(2, '2024-03-02 10:00:00', FALSE, 0.2, 6), (3, NULL, TRUE, NULL, NULL)"));
    const QString select = QStringLiteral("SELECT id, due, done, price, qty FROM tasks ORDER BY id");
    const auto day = [](int d, int hour) { return Variant(DateFromQDateTime(QDateTime(QDate(2024, 4, d), QTime(hour, 30)))); };
    mMine = OpenBatch(mFirst, select);
    mTheirs = OpenBatch(mSecond, select);
    ASSERT_TRUE(Seek(mTheirs, "id", "2"));
    SetValueOf(mTheirs, "due", day(2, 8));
    mTheirs->UpdateBatch();

    ASSERT_TRUE(Seek(mMine, "id", "1"));
    SetValueOf(mMine, "due", day(1, 9));
    SetValueOf(mMine, "done", Variant(true));
    SetValueOf(mMine, "price", Variant(0.30000000000000004));
    ASSERT_TRUE(Seek(mMine, "id", "2"));
    SetValueOf(mMine, "due", day(3, 7));  // they changed it first: refused
    ASSERT_TRUE(Seek(mMine, "id", "3"));
    SetValueOf(mMine, "qty", Variant(std::int32_t{9}));
    const Variant doneAsRead = ValueOf(mMine, "done");
    SetValueOf(mMine, "done", Variant(false));
    SetValueOf(mMine, "done", doneAsRead);  // changed back: neither sent nor matched
    SetValueOf(mMine, "due", day(5, 12));
    mSecond->Execute(QStringLiteral("UPDATE tasks SET done = FALSE WHERE id = 3"));
    EXPECT_EQ(adErrRowConflict, WriteMine());
    EXPECT_TRUE(Written("1"));
    EXPECT_EQ(adRecModified | adRecConcurrencyViolation, StatusOf("2"));
    EXPECT_TRUE(Written("3"));
    auto fresh = OpenBatch(mSecond, select);
    ASSERT_TRUE(Seek(fresh, "id", "1"));
    EXPECT_EQ(day(1, 9), ValueOf(fresh, "due"));
    EXPECT_TRUE(CBool(ValueOf(fresh, "done")));
    EXPECT_DOUBLE_EQ(0.30000000000000004, CDbl(ValueOf(fresh, "price")));
    ASSERT_TRUE(Seek(fresh, "id", "2"));
    EXPECT_EQ(day(2, 8), ValueOf(fresh, "due"));
    ASSERT_TRUE(Seek(fresh, "id", "3"));
    EXPECT_EQ(day(5, 12), ValueOf(fresh, "due"));
    EXPECT_FALSE(CBool(ValueOf(fresh, "done"))) << "theirs stays";
    EXPECT_EQ(9, CLng(ValueOf(fresh, "qty")));

    // The rows just written are found again by their new values, and a row they changed
    // meanwhile by any typed column is refused.
    mSecond->Execute(QStringLiteral("UPDATE tasks SET qty = 10 WHERE id = 3"));
    ASSERT_TRUE(Seek(mMine, "id", "2"));
    mMine->CancelBatch(adAffectCurrent);
    for (mMine->MoveFirst(); !mMine->IsEOF(); mMine->MoveNext()) {
        SetValueOf(mMine, "qty", Variant(CLng(ValueOf(mMine, "id")) * 100));
        SetValueOf(mMine, "price", Variant(1.5));
    }
    EXPECT_EQ(adErrRowConflict, WriteMine());
    EXPECT_EQ((QStringList{"100", "200", "10"}), ReadColumn(mSecond, QStringLiteral("SELECT qty FROM tasks ORDER BY id")));
    EXPECT_EQ(adRecModified | adRecConcurrencyViolation, StatusOf("3"));
}

TEST_P(TwoUsers, InsertsReadBackTheirGeneratedKeysAndRequerySeesTheOtherUser)
{
    mFirst->Execute(QStringLiteral("DROP TABLE IF EXISTS notes"));
    const bool postgres = GetParam() == Backend::PostgreSQL;
    mFirst->Execute(postgres ? QStringLiteral("CREATE TABLE notes (id SERIAL PRIMARY KEY, body VARCHAR(200))")
                             : QStringLiteral("CREATE TABLE notes (id INTEGER PRIMARY KEY, body VARCHAR(200))"));
    mFirst->Execute(QStringLiteral("INSERT INTO notes (body) VALUES ('first')"));
    auto mine = OpenBatch(mFirst, QStringLiteral("SELECT id, body FROM notes ORDER BY id"));
    auto theirs = OpenBatch(mSecond, QStringLiteral("SELECT id, body FROM notes ORDER BY id"));
    theirs->AddNew(Variant("body"), Variant("theirs"));
    theirs->UpdateBatch();
    mine->AddNew(Variant("body"), Variant("mine"));
    mine->AddNew(Variant("body"), Variant("mine too"));
    mine->UpdateBatch();

    // Each new record holds the key the database gave it.
    const QStringList ids = ReadColumn(mSecond, QStringLiteral("SELECT id FROM notes ORDER BY id"));
    ASSERT_EQ(4, ids.size());
    EXPECT_EQ(ids[1], CStr(theirs->Fields()->Item(Variant("id"))->Value()));
    EXPECT_EQ(ids[3], CStr(ValueOf(mine, "id")));
    mine->MovePrevious();
    EXPECT_EQ(ids[2], CStr(ValueOf(mine, "id")));

    // Now that it knows its key, the new row can be changed and deleted like any other.
    SetValueOf(mine, "body", "mine, changed");
    mine->UpdateBatch();
    mine->MoveLast();
    mine->Delete();
    mine->UpdateBatch();
    EXPECT_EQ((QStringList{"first", "theirs", "mine, changed"}),
              ReadColumn(mSecond, QStringLiteral("SELECT body FROM notes ORDER BY id")));

    mine->Requery();
    EXPECT_EQ(3, mine->RecordCount());
    EXPECT_EQ(0, mine->Status() & (Pending | Refused));
    EXPECT_TRUE(Seek(mine, "body", QStringLiteral("theirs")));
}

TEST_P(TwoUsers, ImmediateUpdatesWriteAtOnceAndRefuseWhatTheOtherChanged)
{
    auto mine = std::make_shared<Recordset>();
    mine->Open(Variant(Select), Variant(static_cast<QObject*>(mFirst.get())), adOpenStatic, adLockOptimistic);
    auto theirs = OpenBatch(mSecond, Select);
    SetValueOf(mine, "city", "Lima");
    mine->Update();
    EXPECT_EQ((QStringList{"Lima", "<Null>", "Rome"}), ReadColumn(mSecond, Cities));

    ASSERT_TRUE(Seek(theirs, "id", "3"));
    theirs->Delete();
    theirs->UpdateBatch();
    ASSERT_TRUE(Seek(mine, "id", "3"));
    SetValueOf(mine, "city", "Bern");
    EXPECT_EQ(adErrRowConflict, korvex::test::ErrorOf([&] { mine->Update(); }));
    EXPECT_EQ(adRecModified | adRecDBDeleted, mine->Status() & (Pending | Refused));
    EXPECT_EQ((QStringList{"Lima", "<Null>"}), ReadColumn(mSecond, Cities));
}

KORVEX_ON_EVERY_BACKEND(TwoUsers);

}  // namespace
