// Failures in the middle of writing a batch: a database locked by someone else, a constraint
// that refuses one row, a full disk, a connection that dies half-way. Whatever happens, rows not
// written stay pending with their status, rows written are not lost, and the error says what
// went wrong.
#include "tests/platform/adosql/SqlTestKit.h"

#include "korvex/platform/adosql/DriverError.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/platform/ado/Fields.h"

#include <gtest/gtest.h>

using namespace korvex;
using namespace korvex::ado;
using namespace korvex::ado::test;

namespace {

constexpr int Pending = adRecNew | adRecModified | adRecDeleted;

// The batch's error, or a failure when there was none.
Error BatchError(const std::shared_ptr<Recordset>& rs)
{
    try {
        rs->UpdateBatch();
    } catch (const Error& e) {
        return e;
    }
    ADD_FAILURE() << "UpdateBatch raised no error";
    return Error(0, {}, {});
}

// Records with changes not yet written, deleted ones included.
int PendingCount(const std::shared_ptr<Recordset>& rs)
{
    rs->SetFilter(Variant(std::int32_t{adFilterPendingRecords}));
    const int count = rs->RecordCount();
    rs->SetFilter(Variant(std::int32_t{adFilterNone}));
    return count;
}

// The status of every record, first to last.
std::vector<int> Statuses(const std::shared_ptr<Recordset>& rs)
{
    std::vector<int> out;
    for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext())
        out.push_back(rs->Status() & (Pending | adRecIntegrityViolation | adRecConcurrencyViolation | adRecDBDeleted));
    return out;
}

void CreateStock(const std::shared_ptr<Connection>& connection)
{
    connection->Execute(QStringLiteral("DROP TABLE IF EXISTS stock"));
    connection->Execute(QStringLiteral(
        "CREATE TABLE stock (item INTEGER PRIMARY KEY, name VARCHAR(20) NOT NULL, qty INTEGER CHECK (qty >= 0))"));
    connection->Execute(QStringLiteral("INSERT INTO stock VALUES (1, 'bolt', 5), (2, 'nut', 6), (3, 'pin', 7)"));
}

const QString StockSelect = QStringLiteral("SELECT item, name, qty FROM stock ORDER BY item");
const QString Quantities = QStringLiteral("SELECT qty FROM stock ORDER BY item");

class Faults : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (!IsSkipped())
            CreateStock(mConnection);
    }
};

TEST_P(Faults, ConstraintRefusesItsRowAndTheOthersAreWritten)
{
    auto rs = OpenBatch(mConnection, StockSelect);
    SetValueOf(rs, "qty", Variant(std::int32_t{50}));
    rs->MoveNext();
    SetValueOf(rs, "qty", Variant(std::int32_t{-1}));  // the CHECK refuses it
    rs->MoveNext();
    SetValueOf(rs, "qty", Variant(std::int32_t{70}));
    rs->AddNew();
    SetValueOf(rs, "item", Variant(std::int32_t{4}));
    SetValueOf(rs, "qty", Variant(std::int32_t{1}));  // name NOT NULL refuses it
    rs->AddNew();
    SetValueOf(rs, "item", Variant(std::int32_t{5}));
    SetValueOf(rs, "name", Variant("washer"));
    rs->Update();

    const Error error = BatchError(rs);
    EXPECT_EQ(adErrIntegrity, error.Number());
    EXPECT_TRUE(error.Description().contains(QStringLiteral("constraint"), Qt::CaseInsensitive) ||
                error.Description().contains(QStringLiteral("null"), Qt::CaseInsensitive))
        << error.Description().toStdString();
    EXPECT_EQ((std::vector<int>{0, adRecModified | adRecIntegrityViolation, 0, adRecNew | adRecIntegrityViolation, 0}),
              Statuses(rs));
    EXPECT_EQ((QStringList{"50", "6", "70", "<Null>"}), ReadColumn(mConnection, Quantities));

    // Put right, the refused rows go on their own.
    rs->MoveFirst();
    rs->MoveNext();
    SetValueOf(rs, "qty", Variant(std::int32_t{0}));
    rs->MoveNext();
    rs->MoveNext();
    SetValueOf(rs, "name", Variant("screw"));
    rs->UpdateBatch();
    EXPECT_EQ((std::vector<int>{0, 0, 0, 0, 0}), Statuses(rs));
    EXPECT_EQ((QStringList{"50", "0", "70", "1", "<Null>"}), ReadColumn(mConnection, Quantities));
}

KORVEX_ON_EVERY_BACKEND(Faults);

TEST(SqliteFaults, LockedDatabaseLeavesTheWholeBatchPending)
{
    TestDatabase database;
    const QString file = database.File(QStringLiteral("busy.db"));
    auto mine = Connect(QStringLiteral("Data Source=%1;Busy Timeout=100").arg(file));
    auto theirs = Connect(QStringLiteral("Data Source=%1").arg(file));
    CreateStock(mine);
    auto rs = OpenBatch(mine, StockSelect);
    SetValueOf(rs, "qty", Variant(std::int32_t{1}));
    rs->MoveLast();
    rs->Delete();

    theirs->BeginTrans();
    theirs->Execute(QStringLiteral("UPDATE stock SET name = 'held' WHERE item = 2"));  // takes the write lock
    const Error error = BatchError(rs);
    EXPECT_EQ(adErrTimeout, error.Number());
    EXPECT_TRUE(error.Description().contains(QStringLiteral("locked"), Qt::CaseInsensitive)) << error.Description().toStdString();
    EXPECT_EQ((std::vector<int>{adRecModified, 0}), Statuses(rs));
    EXPECT_EQ(2, PendingCount(rs));  // the deleted record too

    theirs->CommitTrans();
    rs->UpdateBatch();
    EXPECT_EQ((std::vector<int>{0, 0}), Statuses(rs));
    EXPECT_EQ((QStringList{"1", "6"}), ReadColumn(theirs, Quantities));
    EXPECT_EQ((QStringList{"bolt", "held"}), ReadColumn(theirs, QStringLiteral("SELECT name FROM stock ORDER BY item")));
}

TEST(SqliteFaults, FullDiskLeavesTheWholeBatchPending)
{
    TestDatabase database;
    auto connection = Connect(QStringLiteral("Data Source=") + database.File(QStringLiteral("full.db")));
    connection->Execute(QStringLiteral("CREATE TABLE docs (id INTEGER PRIMARY KEY, body TEXT)"));
    connection->Execute(QStringLiteral("INSERT INTO docs VALUES (1, 'first'), (2, 'second')"));
    const QString bodies = QStringLiteral("SELECT body FROM docs ORDER BY id");
    auto rs = OpenBatch(connection, QStringLiteral("SELECT id, body FROM docs ORDER BY id"));
    SetValueOf(rs, "body", Variant("changed"));
    const QString bulky(400000, u'x');
    for (int id = 10; id < 13; ++id)
        rs->AddNew(Variant::Array({Variant("id"), Variant("body")}), Variant::Array({Variant(std::int32_t{id}), Variant(bulky)}));

    const QStringList pages = ReadColumn(connection, QStringLiteral("PRAGMA page_count"));
    ASSERT_EQ(1, pages.size());
    connection->Execute(QStringLiteral("PRAGMA max_page_count = %1").arg(pages[0].toInt() + 20));
    const Error error = BatchError(rs);
    EXPECT_EQ(adErrUnspecified, error.Number());
    EXPECT_TRUE(error.Description().contains(QStringLiteral("full"), Qt::CaseInsensitive)) << error.Description().toStdString();
    EXPECT_EQ((std::vector<int>{adRecModified, 0, adRecNew, adRecNew, adRecNew}), Statuses(rs));
    EXPECT_EQ((QStringList{"first", "second"}), ReadColumn(connection, bodies));

    connection->Execute(QStringLiteral("PRAGMA max_page_count = 1000000"));
    rs->UpdateBatch();
    EXPECT_EQ((std::vector<int>{0, 0, 0, 0, 0}), Statuses(rs));
    EXPECT_EQ((QStringList{"changed", "second", bulky, bulky, bulky}), ReadColumn(connection, bodies));
}

TEST(PostgresFaults, ConnectionLostMidBatchKeepsEveryChangePending)
{
    TestDatabase database;
    QString whyNot;
    const QString text = database.Open(Backend::PostgreSQL, &whyNot);
    if (text.isEmpty())
        GTEST_SKIP() << whyNot.toStdString();
    auto admin = Connect(text);
    CreateStock(admin);
    // A row named "boom" kills the session that writes it, as a crashed server or a cut cable would.
    admin->Execute(QStringLiteral(
        "CREATE OR REPLACE FUNCTION stock_boom() RETURNS trigger AS $$ BEGIN IF NEW.name = 'boom' THEN "
        "PERFORM pg_terminate_backend(pg_backend_pid()); END IF; RETURN NEW; END $$ LANGUAGE plpgsql"));
    admin->Execute(QStringLiteral("CREATE TRIGGER stock_boom BEFORE UPDATE ON stock FOR EACH ROW EXECUTE FUNCTION stock_boom()"));

    auto connection = Connect(text);
    auto rs = OpenBatch(connection, StockSelect);
    SetValueOf(rs, "qty", Variant(std::int32_t{10}));
    rs->MoveNext();
    SetValueOf(rs, "name", Variant("boom"));
    rs->MoveNext();
    SetValueOf(rs, "qty", Variant(std::int32_t{30}));

    const Error error = BatchError(rs);
    EXPECT_EQ(adErrUnspecified, error.Number());
    EXPECT_TRUE(error.Description().contains(QStringLiteral("terminat"), Qt::CaseInsensitive) ||
                error.Description().contains(QStringLiteral("connection"), Qt::CaseInsensitive))
        << error.Description().toStdString();
    EXPECT_EQ((std::vector<int>{adRecModified, adRecModified, adRecModified}), Statuses(rs));
    EXPECT_EQ((QStringList{"5", "6", "7"}), ReadColumn(admin, Quantities));

    // Connected again, the same recordset writes what it kept.
    if (connection->State() == adStateOpen)
        connection->Close();
    connection->Open(text);
    rs->MoveFirst();
    rs->MoveNext();
    SetValueOf(rs, "name", Variant("nut"));
    rs->UpdateBatch();
    EXPECT_EQ((std::vector<int>{0, 0, 0}), Statuses(rs));
    EXPECT_EQ((QStringList{"10", "6", "30"}), ReadColumn(admin, Quantities));
}

}  // namespace
