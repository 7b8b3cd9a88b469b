// Opening 100,000 rows of 10 columns from a SQLite file into a recordset, against a loop of the
// raw sqlite3 C API reading the same rows into the same Variant values; and UpdateBatch of 10,000
// changed rows against a prepared UPDATE with the same WHERE clause run in one transaction.
#include "bench/support/BenchReport.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Conversions.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <cstdio>
#include <vector>

namespace {

using namespace korvex;
using namespace korvex::ado;

constexpr int OpenRows = 100'000;
constexpr int UpdateRows = 10'000;

// The database file, in a folder private to this user, filled once.
const QString& DatabaseFile()
{
    static QTemporaryDir dir;
    static const QString file = [] {
        QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QString path = dir.filePath(QStringLiteral("bench.db"));
        sqlite3* db = nullptr;
        sqlite3_open(path.toUtf8().constData(), &db);
        sqlite3_exec(db,
                     "CREATE TABLE wide (id INTEGER PRIMARY KEY, qty INTEGER, stock INTEGER, price DOUBLE, weight DOUBLE, "
                     "code VARCHAR(12), name VARCHAR(40), city VARCHAR(30), note VARCHAR(60), tag VARCHAR(8));"
                     "CREATE TABLE narrow (id INTEGER PRIMARY KEY, name VARCHAR(40), qty INTEGER);"
                     "BEGIN",
                     nullptr, nullptr, nullptr);
        sqlite3_stmt* insert = nullptr;
        sqlite3_prepare_v2(db, "INSERT INTO wide VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)", -1, &insert, nullptr);
        for (int i = 1; i <= OpenRows; ++i) {
            sqlite3_bind_int(insert, 1, i);
            sqlite3_bind_int(insert, 2, i % 97);
            sqlite3_bind_int(insert, 3, i * 3);
            sqlite3_bind_double(insert, 4, i * 0.25);
            sqlite3_bind_double(insert, 5, 1.0 / i);
            char code[16];
            char name[48];
            std::snprintf(code, sizeof code, "C%d", 1000000 + i);
            std::snprintf(name, sizeof name, "Customer number %d of the list", i);
            sqlite3_bind_text(insert, 6, code, -1, SQLITE_TRANSIENT);
            sqlite3_bind_text(insert, 7, name, -1, SQLITE_TRANSIENT);
            sqlite3_bind_text(insert, 8, i % 2 ? "Amsterdam" : "Oslo", -1, SQLITE_STATIC);
            sqlite3_bind_text(insert, 9, "Deliver to the back door, ring twice", -1, SQLITE_STATIC);
            sqlite3_bind_text(insert, 10, "T", -1, SQLITE_STATIC);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        sqlite3_prepare_v2(db, "INSERT INTO narrow VALUES (?, ?, 0)", -1, &insert, nullptr);
        for (int i = 1; i <= UpdateRows; ++i) {
            char name[24];
            std::snprintf(name, sizeof name, "Item %d", i);
            sqlite3_bind_int(insert, 1, i);
            sqlite3_bind_text(insert, 2, name, -1, SQLITE_TRANSIENT);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
        sqlite3_close(db);
        return path;
    }();
    return file;
}

std::shared_ptr<Connection> OpenConnection()
{
    auto connection = std::make_shared<Connection>();
    connection->Open(QStringLiteral("Provider=SQLite;Data Source=") + DatabaseFile());
    return connection;
}

Variant ColumnValue(sqlite3_stmt* statement, int column)
{
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL: return Null;
    case SQLITE_INTEGER: return Variant(static_cast<std::int32_t>(sqlite3_column_int64(statement, column)));
    case SQLITE_FLOAT: return Variant(sqlite3_column_double(statement, column));
    default: {
        const auto* text = static_cast<const QChar*>(sqlite3_column_text16(statement, column));
        return Variant(QString(text, sqlite3_column_bytes16(statement, column) / 2));
    }
    }
}

void BM_RawOpen(benchmark::State& state)
{
    sqlite3* db = nullptr;
    sqlite3_open(DatabaseFile().toUtf8().constData(), &db);
    for (auto _ : state) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(db, "SELECT * FROM wide", -1, &statement, nullptr);
        std::vector<Variant> values;
        values.reserve(10u * OpenRows);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int c = 0; c < 10; ++c)
                values.push_back(ColumnValue(statement, c));
        }
        sqlite3_finalize(statement);
        benchmark::DoNotOptimize(values.data());
        if (values.size() != 10u * OpenRows)
            state.SkipWithError("wrong row count");
    }
    sqlite3_close(db);
}
BENCHMARK(BM_RawOpen)->Unit(benchmark::kMillisecond);

void BM_RecordsetOpen(benchmark::State& state)
{
    std::shared_ptr<Connection> connection = OpenConnection();
    for (auto _ : state) {
        Recordset rs;
        rs.Open(Variant("SELECT * FROM wide"), Variant(static_cast<QObject*>(connection.get())), adOpenStatic,
                adLockBatchOptimistic);
        if (rs.RecordCount() != OpenRows)
            state.SkipWithError("wrong row count");
        benchmark::DoNotOptimize(rs.Store().get());
    }
}
BENCHMARK(BM_RecordsetOpen)->Unit(benchmark::kMillisecond);

// Both writers leave the file's syncing to the system, the same on both sides: waiting for the
// disk is neither side's work, and its spikes would drown the difference being measured.
constexpr const char* SyncSetting = "PRAGMA synchronous = OFF";

// Both sides write the same change: name alternates between two texts on every row, and each
// row is found by its key and its name as read.
QString NameFor(int id, int round)
{
    return QStringLiteral("Item %1%2").arg(id).arg(round % 2 ? QStringLiteral(" (changed)") : QString());
}

void BM_RawUpdate(benchmark::State& state)
{
    sqlite3* db = nullptr;
    sqlite3_open(DatabaseFile().toUtf8().constData(), &db);
    if (sqlite3_exec(db, SyncSetting, nullptr, nullptr, nullptr) != SQLITE_OK)
        qFatal("cannot set %s: %s", SyncSetting, sqlite3_errmsg(db));
    sqlite3_stmt* update = nullptr;
    sqlite3_prepare_v2(db, "UPDATE narrow SET name = ? WHERE id = ? AND name = ?", -1, &update, nullptr);
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<QString> before;
        std::vector<QString> after;
        for (int id = 1; id <= UpdateRows; ++id) {
            before.push_back(NameFor(id, round));
            after.push_back(NameFor(id, round + 1));
        }
        state.ResumeTiming();
        sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
        int changed = 0;
        for (int id = 1; id <= UpdateRows; ++id) {
            const QString& next = after[id - 1];
            const QString& previous = before[id - 1];
            sqlite3_bind_text16(update, 1, next.utf16(), static_cast<int>(next.size() * 2), SQLITE_STATIC);
            sqlite3_bind_int(update, 2, id);
            sqlite3_bind_text16(update, 3, previous.utf16(), static_cast<int>(previous.size() * 2), SQLITE_STATIC);
            sqlite3_step(update);
            changed += sqlite3_changes(db);
            sqlite3_reset(update);
        }
        sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
        if (changed != UpdateRows)
            state.SkipWithError("rows not found");
        ++round;
    }
    // Leave the names as the recordset benchmark expects them.
    if (round % 2)
        sqlite3_exec(db, "UPDATE narrow SET name = 'Item ' || id", nullptr, nullptr, nullptr);
    sqlite3_finalize(update);
    sqlite3_close(db);
}
BENCHMARK(BM_RawUpdate)->Unit(benchmark::kMillisecond);

void BM_RecordsetUpdateBatch(benchmark::State& state)
{
    std::shared_ptr<Connection> connection = OpenConnection();
    connection->Execute(QString::fromLatin1(SyncSetting));
    Recordset rs;
    rs.Open(Variant("SELECT id, name, qty FROM narrow"), Variant(static_cast<QObject*>(connection.get())), adOpenStatic,
            adLockBatchOptimistic);
    Field* name = rs.Fields()->Item(Variant("name"));
    Field* id = rs.Fields()->Item(Variant("id"));
    int round = 0;
    for (auto _ : state) {
        state.PauseTiming();
        for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext())
            name->SetValue(Variant(NameFor(CLng(id->Value()), round + 1)));
        state.ResumeTiming();
        try {
            rs.UpdateBatch();
        } catch (const Error& e) {
            state.SkipWithError(e.Description().toUtf8().constData());
            break;
        }
        ++round;
    }
    if (round % 2)
        connection->Execute(QStringLiteral("UPDATE narrow SET name = 'Item ' || id"));
}
BENCHMARK(BM_RecordsetUpdateBatch)->Unit(benchmark::kMillisecond);


}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    korvex::bench::CompareTime("open 100,000 rows x 10 columns from SQLite", "BM_RecordsetOpen", "BM_RawOpen", 1.1);
    korvex::bench::CompareTime("UpdateBatch 10,000 changed rows", "BM_RecordsetUpdateBatch", "BM_RawUpdate", 1.2);
    return korvex::bench::Main(argc, argv);
}
