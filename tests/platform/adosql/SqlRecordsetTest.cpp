// Recordsets opened from statements: what they learn about their base tables and keys, values
// that must survive the trip unchanged (quotes, semicolons, keywords, blanks in names, Null,
// empty texts), and CancelBatch, Resync and Requery. Plus the Connection itself: providers,
// statements with parameters, transactions and the driver's errors.
#include "tests/platform/adosql/SqlTestKit.h"
#include "tests/support/ErrorOf.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/adosql/DriverError.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/Property.h"

#include <gtest/gtest.h>

using namespace korvex;
using namespace korvex::ado;
using namespace korvex::ado::test;
using korvex::test::ErrorOf;

namespace {

Variant FieldProperty(const std::shared_ptr<Recordset>& rs, const char* field, const char* property)
{
    return rs->Fields()->Item(Variant(field))->Properties()->Item(Variant(property))->Value();
}

class SqlRecordset : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (IsSkipped())
            return;
        mConnection->Execute(QStringLiteral("DROP TABLE IF EXISTS \"Order Lines\""));
        mConnection->Execute(QStringLiteral("DROP TABLE IF EXISTS customers"));
        mConnection->Execute(QStringLiteral(
            "CREATE TABLE \"Order Lines\" (\"Order No\" INTEGER NOT NULL, \"Line\" INTEGER NOT NULL, "
            "\"Select\" VARCHAR(200), \"Unit Price\" DOUBLE PRECISION, PRIMARY KEY (\"Order No\", \"Line\"))"));
        mConnection->Execute(QStringLiteral("CREATE TABLE customers (code VARCHAR(10) PRIMARY KEY, name VARCHAR(40))"));
        mConnection->Execute(QStringLiteral("INSERT INTO customers VALUES ('A1', 'Ann'), ('B2', 'Bob')"));
    }
};

TEST_P(SqlRecordset, FieldsKnowTheirBaseTableColumnsAndKey)
{
    auto rs = OpenBatch(mConnection, QStringLiteral("SELECT name AS \"Customer Name\", code, 1 + 1 AS two FROM customers"));
    EXPECT_EQ(QStringLiteral("customers"), CStr(rs->Properties()->Item(Variant("Unique Table"))->Value()));
    EXPECT_EQ(QStringLiteral("customers"), CStr(FieldProperty(rs, "Customer Name", "BASETABLENAME")));
    EXPECT_EQ(QStringLiteral("name"), CStr(FieldProperty(rs, "Customer Name", "BASECOLUMNNAME")));
    EXPECT_FALSE(CBool(FieldProperty(rs, "Customer Name", "KEYCOLUMN")));
    EXPECT_TRUE(CBool(FieldProperty(rs, "code", "KEYCOLUMN")));
    EXPECT_TRUE(rs->Fields()->Item(Variant("code"))->Attributes() & adFldKeyColumn);
    EXPECT_EQ(QString(), CStr(FieldProperty(rs, "two", "BASETABLENAME")));
    EXPECT_EQ(2, CLng(ValueOf(rs, "two")));
    EXPECT_EQ(2, rs->RecordCount());

    // A renamed column is written back under its own name.
    ASSERT_TRUE(Seek(rs, "code", "B2"));
    SetValueOf(rs, "Customer Name", "Bea");
    rs->UpdateBatch();
    EXPECT_EQ((QStringList{"Ann", "Bea"}), ReadColumn(mConnection, QStringLiteral("SELECT name FROM customers ORDER BY code")));

    // Opened without a lock type the recordset is read-only.
    auto readOnly = std::make_shared<Recordset>();
    readOnly->Open(Variant("SELECT * FROM customers"), Variant(static_cast<QObject*>(mConnection.get())));
    EXPECT_EQ(adLockReadOnly, readOnly->LockType());
    EXPECT_NE(0, ErrorOf([&] { SetValueOf(readOnly, "name", "X"); }));
}

TEST_P(SqlRecordset, HostileValuesAndNamesWithBlanksRoundTripUnchanged)
{
    const QStringList hostile{QStringLiteral("O'Brien's \"quoted\" text"), QStringLiteral("a; DROP TABLE customers; --"),
                              QStringLiteral("SELECT * FROM \"Order Lines\" WHERE 1=1"), QStringLiteral("?, ?, $1 :name"),
                              QStringLiteral(""), QStringLiteral("Ünïcödé € — 漢字"), QStringLiteral("  padded  ")};
    auto rs = OpenBatch(mConnection, QStringLiteral("SELECT * FROM \"Order Lines\""));
    EXPECT_EQ(QStringLiteral("Order Lines"), CStr(rs->Properties()->Item(Variant("Unique Table"))->Value()));
    for (int i = 0; i < hostile.size(); ++i) {
        rs->AddNew();
        SetValueOf(rs, "Order No", Variant(std::int32_t{7}));
        SetValueOf(rs, "Line", Variant(std::int32_t{i + 1}));
        SetValueOf(rs, "Select", Variant(hostile[i]));
        SetValueOf(rs, "Unit Price", i % 2 ? Variant(0.1 * i) : Variant(Null));
    }
    rs->UpdateBatch();
    const QString select = QStringLiteral("SELECT \"Select\" FROM \"Order Lines\" ORDER BY \"Line\"");
    EXPECT_EQ(hostile, ReadColumn(mConnection, select));
    EXPECT_EQ(2, ReadColumn(mConnection, QStringLiteral("SELECT code FROM customers")).size());

    // Changed through a second recordset, each value is still found by its original.
    auto again = OpenBatch(mConnection, QStringLiteral("SELECT * FROM \"Order Lines\" ORDER BY \"Line\""));
    QStringList expected;
    for (again->MoveFirst(); !again->IsEOF(); again->MoveNext()) {
        EXPECT_EQ(hostile[CLng(ValueOf(again, "Line")) - 1], CStr(ValueOf(again, "Select")));
        const QString changed = CStr(ValueOf(again, "Select")) + QStringLiteral("'; --");
        SetValueOf(again, "Select", Variant(changed));
        expected << changed;
        // Floating point read back through a driver is still found by its original.
        if (!ValueOf(again, "Unit Price").IsNull())
            SetValueOf(again, "Unit Price", Variant(CDbl(ValueOf(again, "Unit Price")) + 1.0));
    }
    again->UpdateBatch();
    EXPECT_EQ(expected, ReadColumn(mConnection, select));
    EXPECT_EQ((QStringList{"<Null>", "1100", "<Null>", "1300", "<Null>", "1500", "<Null>"}),
              ReadColumn(mConnection, QStringLiteral("SELECT CAST(ROUND(\"Unit Price\" * 1000) AS INTEGER) FROM \"Order Lines\" ORDER BY \"Line\"")));
    for (again->MoveFirst(); !again->IsEOF(); again->MoveNext())
        again->Delete();
    again->UpdateBatch();
    EXPECT_EQ(QStringList(), ReadColumn(mConnection, select));
}

// One batch whose rows change different columns, to the empty text and to Null, and one row
// changed and changed back; then a second batch over the same rows.
TEST_P(SqlRecordset, RowsOfDifferentChangesInOneBatchWriteJustTheirOwn)
{
    auto rs = OpenBatch(mConnection, QStringLiteral("SELECT * FROM \"Order Lines\""));
    for (int line = 1; line <= 6; ++line) {
        rs->AddNew();
        SetValueOf(rs, "Order No", Variant(std::int32_t{1}));
        SetValueOf(rs, "Line", Variant(std::int32_t{line}));
        SetValueOf(rs, "Select", Variant(QStringLiteral("text %1").arg(line)));
        SetValueOf(rs, "Unit Price", Variant(static_cast<double>(line)));
    }
    rs->UpdateBatch();

    auto again = OpenBatch(mConnection, QStringLiteral("SELECT * FROM \"Order Lines\" ORDER BY \"Line\""));
    const auto line = [&](int n) {
        EXPECT_TRUE(Seek(again, "Line", QString::number(n)));
    };
    line(5);
    SetValueOf(again, "Select", Variant(QStringLiteral("five")));
    SetValueOf(again, "Unit Price", Variant(50.0));
    line(1);
    SetValueOf(again, "Select", Variant(QStringLiteral("")));
    line(2);
    SetValueOf(again, "Unit Price", Variant(20.0));
    line(3);
    SetValueOf(again, "Select", Variant(Null));
    line(4);
    SetValueOf(again, "Select", Variant(QStringLiteral("four")));
    SetValueOf(again, "Select", Variant(QStringLiteral("text 4")));
    again->UpdateBatch();
    const QString texts = QStringLiteral("SELECT \"Select\" FROM \"Order Lines\" ORDER BY \"Line\"");
    const QString prices = QStringLiteral("SELECT CAST(\"Unit Price\" AS INTEGER) FROM \"Order Lines\" ORDER BY \"Line\"");
    EXPECT_EQ(ReadColumn(mConnection, texts), (QStringList{"", "text 2", "<Null>", "text 4", "five", "text 6"}));
    EXPECT_EQ(ReadColumn(mConnection, prices), (QStringList{"1", "20", "3", "4", "50", "6"}));

    // The rows written are found by their new values as read.
    for (again->MoveFirst(); !again->IsEOF(); again->MoveNext())
        SetValueOf(again, "Select", Variant(CStr(ValueOf(again, "Line")) + u'!'));
    again->UpdateBatch();
    EXPECT_EQ(ReadColumn(mConnection, texts), (QStringList{"1!", "2!", "3!", "4!", "5!", "6!"}));
}

TEST_P(SqlRecordset, CancelBatchResyncAndRequery)
{
    auto rs = OpenBatch(mConnection, QStringLiteral("SELECT code, name FROM customers ORDER BY code"));
    SetValueOf(rs, "name", "Changed");
    rs->AddNew(Variant("code"), Variant("C3"));
    rs->CancelBatch();
    EXPECT_EQ(2, rs->RecordCount());
    rs->MoveFirst();
    EXPECT_EQ(QStringLiteral("Ann"), CStr(ValueOf(rs, "name")));
    rs->UpdateBatch();  // nothing pending: nothing written
    EXPECT_EQ((QStringList{"Ann", "Bob"}), ReadColumn(mConnection, QStringLiteral("SELECT name FROM customers ORDER BY code")));

    // Someone else changes a row and adds one: Resync reads the changed values, Requery the new row.
    auto other = Connect(mText);
    other->Execute(QStringLiteral("UPDATE customers SET name = ? WHERE code = ?"), Variant::Array({Variant("Anna"), Variant("A1")}));
    other->Execute(QStringLiteral("INSERT INTO customers VALUES ('C3', 'Cy')"));
    rs->MoveFirst();
    SetValueOf(rs, "name", "Mine");
    rs->Resync(adAffectAll, adResyncUnderlyingValues);
    EXPECT_EQ(QStringLiteral("Mine"), CStr(ValueOf(rs, "name")));
    EXPECT_EQ(QStringLiteral("Anna"), CStr(rs->Fields()->Item(Variant("name"))->UnderlyingValue()));
    rs->Resync(adAffectAll, adResyncAllValues);
    EXPECT_EQ(QStringLiteral("Anna"), CStr(ValueOf(rs, "name")));
    EXPECT_EQ(0, rs->Status() & (adRecModified | adRecConcurrencyViolation));
    EXPECT_EQ(2, rs->RecordCount());
    rs->Requery();
    EXPECT_EQ(3, rs->RecordCount());
    EXPECT_TRUE(Seek(rs, "code", "C3"));
}

TEST_P(SqlRecordset, AStatementWithoutRowsLeavesTheRecordsetClosed)
{
    auto rs = OpenBatch(mConnection, QStringLiteral("UPDATE customers SET name = 'Ana' WHERE code = 'A1'"));
    EXPECT_EQ(adStateClosed, rs->State());
    EXPECT_EQ((QStringList{"Ana", "Bob"}), ReadColumn(mConnection, QStringLiteral("SELECT name FROM customers ORDER BY code")))
        << "the statement ran";
    rs->Open(Variant(QStringLiteral("SELECT code FROM customers")), Variant(static_cast<QObject*>(mConnection.get())));
    EXPECT_EQ(adStateOpen, rs->State()) << "and the recordset can be opened afterwards";
}

TEST_P(SqlRecordset, WithoutItsKeyARowIsFoundByRowidOnSQLiteAndNotAtAllElsewhere)
{
    auto rs = OpenBatch(mConnection, QStringLiteral("SELECT name FROM customers ORDER BY code"));
    rs->MoveLast();
    SetValueOf(rs, "name", "Bea");
    if (GetParam() == Backend::SQLite) {
        rs->UpdateBatch();
        EXPECT_EQ(0, rs->Status() & adRecModified);
        EXPECT_EQ((QStringList{"Ann", "Bea"}), ReadColumn(mConnection, QStringLiteral("SELECT name FROM customers ORDER BY code")));
        return;
    }
    try {
        rs->UpdateBatch();
        ADD_FAILURE() << "written without a key";
    } catch (const Error& e) {
        EXPECT_TRUE(e.Description().contains(QStringLiteral("key column information"))) << e.Description().toStdString();
    }
    EXPECT_TRUE(rs->Status() & adRecModified);
    EXPECT_EQ((QStringList{"Ann", "Bob"}), ReadColumn(mConnection, QStringLiteral("SELECT name FROM customers ORDER BY code")));
}

KORVEX_ON_EVERY_BACKEND(SqlRecordset);

// SQLite keeps what it is given whatever the column's type: a text longer than its column
// widens the field, and the rows are read again, the refused one included, text for text.
TEST(Connection, TextsLongerThanTheirColumnWidenTheFieldAndReadWhole)
{
    TestDatabase database;
    QString whyNot;
    auto connection = Connect(database.Open(Backend::SQLite, &whyNot));
    connection->Execute(QStringLiteral("CREATE TABLE codes (id INTEGER PRIMARY KEY, code VARCHAR(3))"));
    connection->Execute(QStringLiteral("INSERT INTO codes VALUES (1, 'abc'), (2, 'a much longer code'), (3, 'xyz')"));
    auto rs = OpenBatch(connection, QStringLiteral("SELECT * FROM codes ORDER BY id"));
    QStringList codes;
    for (; !rs->IsEOF(); rs->MoveNext())
        codes << CStr(ValueOf(rs, "code"));
    EXPECT_EQ(codes, (QStringList{"abc", "a much longer code", "xyz"}));
    EXPECT_GT(rs->Fields()->Item(Variant("code"))->DefinedSize(), 3);
}

TEST(Connection, OpensProvidersAndReportsStateAndNames)
{
    TestDatabase database;
    Connection connection;
    EXPECT_EQ(adStateClosed, connection.State());
    connection.Open(QStringLiteral("Data Source=:memory:"));
    EXPECT_EQ(adStateOpen, connection.State());
    EXPECT_EQ(QStringLiteral("SQLite.1"), connection.Provider());
    EXPECT_EQ(QStringLiteral("SQLite"), CStr(connection.Properties()->Item(Variant("DBMS Name"))->Value()));
    EXPECT_EQ(adErrObjectOpen, ErrorOf([&] { connection.Open(QStringLiteral("Data Source=:memory:")); }));
    EXPECT_EQ(adErrObjectOpen, ErrorOf([&] { connection.SetConnectionString(QStringLiteral("x=y")); }));
    connection.Close();
    EXPECT_EQ(adStateClosed, connection.State());
    EXPECT_EQ(adErrObjectClosed, ErrorOf([&] { connection.Close(); }));
    EXPECT_EQ(adErrInvalidConnection, ErrorOf([&] { connection.Execute(QStringLiteral("SELECT 1")); }));

    EXPECT_EQ(adErrProviderNotFound, ErrorOf([&] { connection.Open(QStringLiteral("Provider=NoSuchThing;Data Source=x")); }));
    EXPECT_EQ(adErrInvalidArgument, ErrorOf([&] { connection.Open(QStringLiteral("Provider=SQLite;Data Source")); }));
    // A file that cannot be opened: the driver's words.
    try {
        connection.Open(QStringLiteral("Data Source=") + database.File(QStringLiteral("missing/folder/x.db")));
        ADD_FAILURE() << "opened a file in a missing folder";
    } catch (const Error& e) {
        EXPECT_EQ(adErrUnspecified, e.Number());
        EXPECT_FALSE(e.Description().isEmpty());
    }
    EXPECT_EQ(adStateClosed, connection.State());

    // A recordset from a statement needs an open connection.
    auto rs = std::make_shared<Recordset>();
    EXPECT_EQ(adErrInvalidConnection, ErrorOf([&] { rs->Open(Variant("SELECT 1")); }));
}

TEST(Connection, ExecuteTransactionsAndDriverErrors)
{
    TestDatabase database;
    auto connection = Connect(QStringLiteral("Data Source=") + database.File(QStringLiteral("t.db")));
    int affected = -1;
    connection->Execute(QStringLiteral("CREATE TABLE t (n INTEGER PRIMARY KEY, s TEXT NOT NULL)"));
    connection->Execute(QStringLiteral("INSERT INTO t VALUES (?, ?), (?, ?)"),
                        Variant::Array({Variant(std::int32_t{1}), Variant("one"), Variant(std::int32_t{2}), Variant("two")}),
                        adCmdText, &affected);
    EXPECT_EQ(2, affected);

    EXPECT_EQ(1, connection->BeginTrans());
    EXPECT_EQ(adErrFeatureNotAvailable, ErrorOf([&] { connection->BeginTrans(); }));
    connection->Execute(QStringLiteral("DELETE FROM t"), {}, adCmdText, &affected);
    EXPECT_EQ(2, affected);
    EXPECT_EQ(adErrInTransaction, ErrorOf([&] { connection->Close(); }));
    connection->RollbackTrans();
    EXPECT_EQ(adErrIllegalOperation, ErrorOf([&] { connection->CommitTrans(); }));
    EXPECT_EQ((QStringList{"one", "two"}), ReadColumn(connection, QStringLiteral("SELECT s FROM t ORDER BY n")));
    connection->BeginTrans();
    connection->Execute(QStringLiteral("UPDATE t SET s = 'uno' WHERE n = 1"));
    connection->CommitTrans();
    EXPECT_EQ((QStringList{"uno", "two"}), ReadColumn(connection, QStringLiteral("SELECT s FROM t ORDER BY n")));

    struct Case {
        const char* sql;
        int number;
        const char* words;  // what the driver's text must mention
    };
    const Case cases[] = {
        {"SELEKT 1", adErrCommandErrors, "syntax"},
        {"SELECT nothing FROM t", adErrCommandErrors, "nothing"},
        {"INSERT INTO t VALUES (1, 'again')", adErrIntegrity, "UNIQUE"},
        {"INSERT INTO t (n) VALUES (9)", adErrIntegrity, "NOT NULL"},
        {"SELECT 1; DELETE FROM t", adErrCommandErrors, "one statement"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sql);
        try {
            connection->Execute(QString::fromLatin1(c.sql));
            ADD_FAILURE() << "no error";
        } catch (const Error& e) {
            EXPECT_EQ(c.number, e.Number());
            EXPECT_TRUE(e.Description().contains(QString::fromLatin1(c.words), Qt::CaseInsensitive)) << e.Description().toStdString();
            EXPECT_EQ(QStringLiteral("Korvex Provider for SQLite"), e.Source());
        }
    }
    EXPECT_EQ(2, ReadColumn(connection, QStringLiteral("SELECT s FROM t")).size());
}

TEST(Connection, WillExecuteMayRewriteOrCancelAndExecuteCompleteReports)
{
    auto connection = Connect(QStringLiteral("Data Source=:memory:"));
    connection->Execute(QStringLiteral("CREATE TABLE t (n INTEGER)"));
    QStringList seen;
    std::vector<int> outcomes;
    QObject::connect(connection.get(), &Connection::WillExecute, [&](QString& source, EventStatusEnum& status, Connection*) {
        seen << source;
        if (source.contains(QStringLiteral("forbidden")))
            status = adStatusCancel;
        source.replace(QStringLiteral("42"), QStringLiteral("43"));
    });
    QObject::connect(connection.get(), &Connection::ExecuteComplete,
                     [&](int affected, const Error* error, EventStatusEnum&, Connection*) {
                         outcomes.push_back(error ? error->Number() : affected);
                     });
    connection->Execute(QStringLiteral("INSERT INTO t VALUES (42)"));
    EXPECT_EQ(adErrOperationCancelled, ErrorOf([&] { connection->Execute(QStringLiteral("DELETE FROM t -- forbidden")); }));
    auto rs = OpenBatch(connection, QStringLiteral("SELECT n FROM t"));
    EXPECT_EQ(43, CLng(ValueOf(rs, "n")));
    EXPECT_EQ(3, seen.size());
    EXPECT_EQ((std::vector<int>{1, adErrOperationCancelled, -1}), outcomes);
}

}  // namespace
