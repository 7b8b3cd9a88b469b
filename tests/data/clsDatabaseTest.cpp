// The database helper: the kind of server behind a connection, the server clock and its
// one-second cache, and the shared data routines (type tests, Null conversions, ValuesEqual,
// CloneRecordset).
#include "korvex/data/clsDatabase.h"

#include "tests/platform/ado/RecordsetBuilder.h"
#include "tests/platform/adosql/TestServers.h"
#include "tests/support/ErrorOf.h"

#include "korvex/core/SharedContext.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/Property.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QTest>
#include <QThread>

#include <set>

using namespace korvex;
using namespace korvex::ado;
using korvex::test::ErrorOf;

namespace {

// Seconds between a recordset date and the local clock now.
double SecondsFromNow(Date date)
{
    return std::abs(ToQDateTime(date).msecsTo(QDateTime::currentDateTime())) / 1000.0;
}

TEST(DataRoutines, TypeTestsAcceptExactlyTheirCodes)
{
    const std::set<int> numeric{2, 3, 4, 5, 6, 14, 16, 17, 18, 19, 20, 21, 131, 139};
    const std::set<int> text{8, 129, 130, 200, 202};
    const std::set<int> longText{8, 129, 130, 200, 201, 202, 203};
    for (int code = -1; code <= 300; ++code) {
        SCOPED_TRACE(code);
        EXPECT_EQ(numeric.count(code) == 1, IsNumericFieldType(code));
        EXPECT_EQ(text.count(code) == 1, IsTextFieldType(code));
        EXPECT_EQ(longText.count(code) == 1, IsTextFieldTypeLong(code));
    }
}

TEST(DataRoutines, NullConversionsGiveDefaultsForNullOnly)
{
    EXPECT_FALSE(NullToBoolean(Null));
    EXPECT_EQ(0, NullToLong(Null));
    EXPECT_EQ(QString(), NullToString(Null));
    EXPECT_TRUE(NullToBoolean(Variant(std::int32_t{-1})));
    EXPECT_TRUE(NullToBoolean(Variant("True")));
    EXPECT_EQ(42, NullToLong(Variant("42")));
    EXPECT_EQ(3, NullToLong(Variant(2.5 + 0.6)));
    EXPECT_EQ(QStringLiteral("12"), NullToString(Variant(std::int16_t{12})));
    EXPECT_EQ(QStringLiteral("True"), NullToString(Variant(true)));
    // Anything else that cannot convert still fails as the conversion does.
    EXPECT_EQ(13, ErrorOf([] { NullToLong(Variant("twelve")); }));
}

TEST(DataRoutines, ValuesEqualFollowsNullEmptyTypeAndCaseRules)
{
    struct Case {
        Variant a;
        Variant b;
        bool caseSensitive;
        bool equal;
    };
    const Case cases[] = {
        {Variant("abc"), Variant("ABC"), false, true},
        {Variant("abc"), Variant("ABC"), true, false},
        {Variant("abc"), Variant("abc"), true, true},
        {Variant(std::int32_t{5}), Variant("5"), true, true},      // different types: as text
        {Variant(std::int16_t{5}), Variant(5.0), true, true},
        {Variant(std::int32_t{5}), Variant(std::int32_t{6}), true, false},
        {Variant(5.5), Variant("5.50"), true, false},               // text "5.5" against "5.50"
        {Variant(), Variant(""), true, false},
        {Variant(), Variant(), true, true},
        {Null, Null, true, true},
        {Null, Variant(), true, false},
        {Null, Variant(""), false, false},
        {Variant(true), Variant("True"), true, true},
        {Variant(DateSerial(2024, 2, 29)), Variant(DateSerial(2024, 2, 29)), true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(CStr(c.a.IsNull() ? Variant("<Null>") : c.a).toStdString() + " / " +
                     CStr(c.b.IsNull() ? Variant("<Null>") : c.b).toStdString());
        EXPECT_EQ(c.equal, ValuesEqual(c.a, c.b, c.caseSensitive));
        EXPECT_EQ(c.equal, ValuesEqual(c.b, c.a, c.caseSensitive));
    }
}

TEST(DataRoutines, CloneRecordsetKeepsFilterAndSortOnlyWhenSet)
{
    using korvex::ado::test::MakeRecordset;
    using korvex::ado::test::Values;
    auto rs = MakeRecordset({{"Code", adVarChar, 10}}, {{Variant("B")}, {Variant("A")}, {Variant("C")}});
    std::shared_ptr<Recordset> plain = CloneRecordset(rs);
    EXPECT_EQ(0, CLng(plain->Filter()));
    EXPECT_EQ(QString(), plain->Sort());
    EXPECT_EQ(3, plain->RecordCount());

    rs->SetFilter(Variant("Code <> 'A'"));
    rs->SetSort(QStringLiteral("Code DESC"));
    std::shared_ptr<Recordset> clone = CloneRecordset(rs);
    EXPECT_EQ(QStringLiteral("Code <> 'A'"), CStr(clone->Filter()));
    EXPECT_EQ(QStringLiteral("Code DESC"), clone->Sort());
    EXPECT_EQ((QStringList{"C", "B"}), Values(*clone, "Code"));
    EXPECT_EQ(rs->LockType(), clone->LockType());
}

TEST(ServerKind, ProviderNamesDecideTheKind)
{
    struct Case {
        const char* provider;
        const char* dataProvider;
        ServerTypes kind;
    };
    const Case cases[] = {
        {"SQLOLEDB.1", "", ST_SQLServer},
        {"sqloledb.1", "", ST_Unknown},  // the comparison is exact
        {"SQLOLEDB", "", ST_Unknown},
        {"MSDAORA.1", "", ST_Oracle},
        {"MSDataShape.1", "MSDAORA", ST_Oracle},
        {"MSDataShape.1", "SQLOLEDB", ST_SQLServer},
        {"MSDataShape.1", "SQLOLEDB.1", ST_Unknown},
        {"MSDataShape.1", "SQLite", ST_SQLite},
        {"MSDataShape.1", "PostgreSQL", ST_PostgreSQL},
        {"SQLite.1", "", ST_SQLite},
        {"PostgreSQL.1", "", ST_PostgreSQL},
        {"MSDASQL.1", "", ST_Unknown},  // closed: the server does not say what it is
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.provider) + " / " + c.dataProvider);
        auto connection = std::make_shared<Connection>();
        connection->SetProvider(QString::fromLatin1(c.provider));
        connection->Properties()->Item(Variant("Data Provider"))->SetValue(Variant(c.dataProvider));
        EXPECT_EQ(c.kind, ServerTypeOf(connection));
    }
    EXPECT_EQ(adErrInvalidConnection, ErrorOf([] { ServerTypeOf(nullptr); }));
}

TEST(ServerKind, OpenConnectionsReportTheirServers)
{
    korvex::test::PrivateFolder folder;
    const QString file = folder.File(QStringLiteral("kind.db"));
    auto sqlite = std::make_shared<Connection>();
    sqlite->Open(QStringLiteral("Data Source=") + file);
    EXPECT_EQ(ST_SQLite, ServerTypeOf(sqlite));
    auto shaped = std::make_shared<Connection>();
    shaped->Open(QStringLiteral("Provider=MSDataShape;Data Provider=SQLite;Data Source=") + file);
    EXPECT_EQ(QStringLiteral("MSDataShape.1"), shaped->Provider());
    EXPECT_EQ(ST_SQLite, ServerTypeOf(shaped));
    auto odbc = std::make_shared<Connection>();
    odbc->Open(QStringLiteral("Driver={SQLite3};Database=") + file);
    EXPECT_EQ(QStringLiteral("MSDASQL.1"), odbc->Provider());
    EXPECT_EQ(ST_SQLite, ServerTypeOf(odbc));
}

TEST(DatabaseHelper, ServerClockAsksAtMostOncePerSecond)
{
    std::shared_ptr<clsDatabase> database = clsDatabase::Create();
    EXPECT_EQ(database, clsDatabase::Current());
    database->SetGcn(nullptr);
    EXPECT_EQ(adErrInvalidConnection, ErrorOf([&] { database->ServerType(); }));
    EXPECT_EQ(adErrInvalidConnection, ErrorOf([&] { database->ServerDateTime(); }));
    auto connection = std::make_shared<Connection>();
    database->SetGcn(connection);
    EXPECT_EQ(adErrInvalidConnection, ErrorOf([&] { database->ServerDateTime(); }));  // closed

    korvex::test::PrivateFolder folder;
    connection->Open(QStringLiteral("Provider=SQLite;Data Source=") + folder.File(QStringLiteral("clock.db")));
    EXPECT_EQ(connection, SharedContext::ForThisThread().gcn);
    EXPECT_EQ(ST_SQLite, database->ServerType());
    int queries = 0;
    QObject::connect(connection.get(), &Connection::WillExecute, [&](QString&, EventStatusEnum&, Connection*) { ++queries; });

    const Date first = database->ServerDateTime();
    EXPECT_LT(SecondsFromNow(first), 2.0);
    const Date second = database->ServerDateTime();
    EXPECT_EQ(1, queries);
    EXPECT_EQ(first, second);  // the value read a moment ago

    // After the timer has fired, the next call asks again.
    QTest::qWait(1100);
    const Date third = database->ServerDateTime();
    EXPECT_EQ(2, queries);
    EXPECT_GT(ToQDateTime(third).msecsTo(ToQDateTime(first)), -3000);
    EXPECT_GE(ToQDateTime(first).msecsTo(ToQDateTime(third)), 1000);
    QTest::qWait(1100);  // the last refresh timer ends before the test does
}

TEST(DatabaseHelper, MembersAreReachableByName)
{
    std::shared_ptr<clsDatabase> database = clsDatabase::Create();
    korvex::test::PrivateFolder folder;
    auto earlier = std::make_shared<Connection>();
    earlier->Open(QStringLiteral("Provider=SQLite;Data Source=") + folder.File(QStringLiteral("earlier.db")));
    database->SetGcn(earlier);
    database->ServerDateTime();
    earlier->Close();
    // A new shared connection: the clock is read through it, not through the closed one.
    auto connection = std::make_shared<Connection>();
    connection->Open(QStringLiteral("Provider=SQLite;Data Source=") + folder.File(QStringLiteral("named.db")));
    SetProperty(database.get(), QStringLiteral("gcn"), Variant(std::static_pointer_cast<QObject>(connection)));
    EXPECT_EQ(connection, database->gcn());
    EXPECT_EQ(connection.get(), GetProperty(database.get(), QStringLiteral("gcn")).Object());
    EXPECT_EQ(ST_SQLite, CLng(GetProperty(database.get(), QStringLiteral("ServerType"))));
    const Variant now = GetProperty(database.get(), QStringLiteral("ServerDateTime"));
    EXPECT_EQ(vbDate, VarType(now));
    EXPECT_LT(SecondsFromNow(CDate(now)), 2.0);
    EXPECT_EQ(vbErrTypeMismatch, ErrorOf([&] { SetProperty(database.get(), QStringLiteral("gcn"), Variant(1)); }));
    SetProperty(database.get(), QStringLiteral("gcn"), Variant::Nothing());
    EXPECT_EQ(nullptr, database->gcn());
    QTest::qWait(1100);  // the clock's refresh timer ends before the test does
}

TEST(DatabaseHelper, PostgreSqlServerTimeOnItsOwnThread)
{
    KORVEX_REQUIRE_POSTGRES(server);
    // The clock is kept per thread: a second thread opens its own on its own connection.
    const QString connectionString = server->ConnectionString();
    Date read{};
    ServerTypes kind = ST_Unknown;
    QString failure;
    std::unique_ptr<QThread> thread(QThread::create([&] {
        try {
            auto connection = std::make_shared<Connection>();
            connection->Open(connectionString);
            clsDatabase& database = clsDatabase::Global();
            database.SetGcn(connection);
            kind = database.ServerType();
            read = database.ServerDateTime();
            database.SetGcn(nullptr);
            QTest::qWait(1100);  // the thread's refresh timer fires before the thread ends
        } catch (const Error& e) {
            failure = e.Description();
        }
    }));
    thread->start();
    ASSERT_TRUE(thread->wait(30000));
    ASSERT_EQ(QString(), failure);
    EXPECT_EQ(ST_PostgreSQL, kind);
    EXPECT_LT(SecondsFromNow(read), 2.0);
}

}  // namespace
