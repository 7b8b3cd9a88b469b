// The item store of a list control at a million rows: starts-with filter on an optimized field
// against SQLite's indexed prefix query over the same rows in memory, contains filter against a
// plain loop over QStrings, sort against std::stable_sort with the same comparison, clone at a
// million rows against clone at ten, and the bytes a row costs against its text payload.
#include "bench/support/BenchReport.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/ado/TextCompare.h"

#include <QString>

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <malloc.h>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace korvex;
using namespace korvex::ado;

constexpr int RowCount = 1'000'000;

// The rows as plain strings: the references loop over these.
struct Rows {
    std::vector<QString> codes, names, descriptions;
    double payloadBytes = 0;
};

QString RandomText(std::mt19937& random, int minLength, int maxLength)
{
    std::uniform_int_distribution<int> length(minLength, maxLength);
    std::uniform_int_distribution<int> letter(0, 25);
    std::uniform_int_distribution<int> space(0, 7);
    const int n = length(random);
    QString text(n, Qt::Uninitialized);
    for (int i = 0; i < n; ++i)
        text[i] = (i > 0 && i < n - 1 && space(random) == 0) ? QChar(u' ') : QChar(u'a' + letter(random));
    text[0] = text[0].toUpper();
    return text;
}

const Rows& Data()
{
    static const Rows rows = [] {
        Rows r;
        std::mt19937 random(4711);
        for (int i = 0; i < RowCount; ++i) {
            r.codes.push_back(QStringLiteral("C%1").arg(i, 7, 10, QChar(u'0')));
            r.names.push_back(RandomText(random, 10, 40));
            r.descriptions.push_back(RandomText(random, 20, 60));
            r.payloadBytes += 2.0 * (r.codes.back().size() + r.names.back().size() + r.descriptions.back().size());
        }
        return r;
    }();
    return rows;
}

std::size_t HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::shared_ptr<RecordsetStore> MakeStore(int rows)
{
    const Rows& data = Data();
    auto store = std::make_shared<RecordsetStore>(std::vector<FieldDef>{
        MakeFieldDef("Code", adVarWChar, 10, adFldIsNullable), MakeFieldDef("Name", adVarWChar, 40, adFldIsNullable),
        MakeFieldDef("Description", adVarWChar, 60, adFldIsNullable)});
    for (int i = 0; i < rows; ++i) {
        const Variant values[] = {Variant(data.codes[i]), Variant(data.names[i]), Variant(data.descriptions[i])};
        store->AppendRow(values);
    }
    return store;
}

struct ItemStore {
    std::shared_ptr<Recordset> big;
    std::shared_ptr<Recordset> small;
    double bytesPerRow = 0;
};

ItemStore& Store()
{
    static ItemStore s = [] {
        ItemStore is;
        Data();
        const std::size_t before = HeapInUse();
        is.big = std::make_shared<Recordset>();
        is.big->OpenStore(MakeStore(RowCount));
        is.big->Fields()->Item("Name")->Properties()->Item("Optimize")->SetValue(true);
        is.bytesPerRow = static_cast<double>(HeapInUse() - before) / RowCount;
        is.small = std::make_shared<Recordset>();
        is.small->OpenStore(MakeStore(10));
        return is;
    }();
    return s;
}

// Alternating patterns keep either side from answering a repeated question from a cache.
const char* const Prefixes[] = {"abc", "abd"};

void BM_StartsWithFilter(benchmark::State& state)
{
    Recordset& rs = *Store().big;
    int i = 0;
    for (auto _ : state) {
        rs.SetFilter(Variant(QStringLiteral("Name LIKE '%1*'").arg(QLatin1StringView(Prefixes[i++ & 1]))));
        benchmark::DoNotOptimize(rs.RecordCount());
    }
    rs.SetFilter(Variant(adFilterNone));
}

struct Sqlite {
    sqlite3* db = nullptr;
    Sqlite()
    {
        const Rows& data = Data();
        sqlite3_open(":memory:", &db);
        sqlite3_exec(db,
                     "CREATE TABLE t(id INTEGER PRIMARY KEY, code TEXT, name TEXT COLLATE NOCASE, descr TEXT);"
                     "BEGIN;",
                     nullptr, nullptr, nullptr);
        sqlite3_stmt* insert = nullptr;
        sqlite3_prepare_v2(db, "INSERT INTO t(code, name, descr) VALUES (?1, ?2, ?3)", -1, &insert, nullptr);
        for (int i = 0; i < RowCount; ++i) {
            sqlite3_bind_text16(insert, 1, data.codes[i].utf16(), static_cast<int>(data.codes[i].size() * 2), SQLITE_STATIC);
            sqlite3_bind_text16(insert, 2, data.names[i].utf16(), static_cast<int>(data.names[i].size() * 2), SQLITE_STATIC);
            sqlite3_bind_text16(insert, 3, data.descriptions[i].utf16(),
                                static_cast<int>(data.descriptions[i].size() * 2), SQLITE_STATIC);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        sqlite3_exec(db, "COMMIT; CREATE INDEX ix_name ON t(name COLLATE NOCASE);", nullptr, nullptr, nullptr);
        // Show that the reference really uses its index.
        sqlite3_stmt* plan = nullptr;
        sqlite3_prepare_v2(db, "EXPLAIN QUERY PLAN SELECT id FROM t WHERE name LIKE 'abc%'", -1, &plan, nullptr);
        while (sqlite3_step(plan) == SQLITE_ROW)
            std::printf("sqlite plan: %s\n", reinterpret_cast<const char*>(sqlite3_column_text(plan, 3)));
        sqlite3_finalize(plan);
    }
    ~Sqlite() { sqlite3_close(db); }
};

Sqlite& Database()
{
    static Sqlite sqlite;
    return sqlite;
}

std::size_t SqliteCount(const char* prefix)
{
    const QByteArray sql = QByteArrayLiteral("SELECT count(*) FROM t WHERE name LIKE '") + prefix + "%'";
    sqlite3_stmt* query = nullptr;
    sqlite3_prepare_v2(Database().db, sql.constData(), -1, &query, nullptr);
    sqlite3_step(query);
    const auto count = static_cast<std::size_t>(sqlite3_column_int64(query, 0));
    sqlite3_finalize(query);
    return count;
}

void BM_SqlitePrefixQuery(benchmark::State& state)
{
    Sqlite& sqlite = Database();
    int i = 0;
    std::vector<sqlite3_int64> ids;
    for (auto _ : state) {
        // Like the filter, the query is read from text each time.
        const QByteArray sql = QByteArrayLiteral("SELECT id FROM t WHERE name LIKE '") + Prefixes[i++ & 1] + "%'";
        sqlite3_stmt* query = nullptr;
        sqlite3_prepare_v2(sqlite.db, sql.constData(), -1, &query, nullptr);
        ids.clear();
        while (sqlite3_step(query) == SQLITE_ROW)
            ids.push_back(sqlite3_column_int64(query, 0));
        sqlite3_finalize(query);
        benchmark::DoNotOptimize(ids.size());
    }
}

void BM_ContainsFilter(benchmark::State& state)
{
    Recordset& rs = *Store().big;
    int i = 0;
    for (auto _ : state) {
        rs.SetFilter(Variant(QStringLiteral("Name LIKE '*%1*'").arg(QLatin1StringView(Prefixes[i++ & 1]))));
        benchmark::DoNotOptimize(rs.RecordCount());
    }
    rs.SetFilter(Variant(adFilterNone));
}

void BM_ContainsLoop(benchmark::State& state)
{
    const std::vector<QString>& names = Data().names;
    int i = 0;
    std::vector<std::uint32_t> matches;
    for (auto _ : state) {
        const QString needle = QString::fromLatin1(Prefixes[i++ & 1]);
        matches.clear();
        for (std::size_t r = 0; r < names.size(); ++r) {
            if (names[r].contains(needle, Qt::CaseInsensitive))
                matches.push_back(static_cast<std::uint32_t>(r));
        }
        benchmark::DoNotOptimize(matches.size());
    }
}

void BM_SortByName(benchmark::State& state)
{
    Recordset& rs = *Store().big;
    for (auto _ : state) {
        rs.SetSort(QStringLiteral("Name"));
        benchmark::DoNotOptimize(rs.RecordCount());
    }
    rs.SetSort(QString());
}

void BM_StableSortIndexes(benchmark::State& state)
{
    const std::vector<QString>& names = Data().names;
    std::vector<std::uint32_t> order(names.size());
    for (auto _ : state) {
        std::iota(order.begin(), order.end(), 0u);
        std::stable_sort(order.begin(), order.end(),
                         [&](std::uint32_t a, std::uint32_t b) { return CompareNoCase(names[a], names[b]) < 0; });
        benchmark::DoNotOptimize(order.data());
    }
}

void BM_CloneMillionRows(benchmark::State& state)
{
    Recordset& rs = *Store().big;
    for (auto _ : state)
        benchmark::DoNotOptimize(rs.Clone());
}

void BM_CloneTenRows(benchmark::State& state)
{
    Recordset& rs = *Store().small;
    for (auto _ : state)
        benchmark::DoNotOptimize(rs.Clone());
}

BENCHMARK(BM_StartsWithFilter)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SqlitePrefixQuery)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ContainsFilter)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ContainsLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortByName)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StableSortIndexes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CloneMillionRows)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CloneTenRows)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv)
{
    using namespace korvex::bench;
    CompareTimeAbsolute("recordset starts-with filter, optimized, 1M rows", "BM_StartsWithFilter",
                        "BM_SqlitePrefixQuery", 16, "ms");
    CompareTime("recordset starts-with filter vs SQLite indexed prefix query", "BM_StartsWithFilter",
                "BM_SqlitePrefixQuery", 1.0);
    CompareTime("recordset contains filter, 1M rows", "BM_ContainsFilter", "BM_ContainsLoop", 1.5);
    CompareTime("recordset sort by name, 1M rows", "BM_SortByName", "BM_StableSortIndexes", 1.5);
    CompareTimeAbsolute("recordset clone, 1M rows", "BM_CloneMillionRows", "BM_CloneTenRows", 10, "us");
    const ItemStore& store = Store();
    // Both sides of each comparison must find the same rows, or the times mean nothing.
    for (const char* prefix : Prefixes) {
        Recordset& rs = *store.big;
        rs.SetFilter(Variant(QStringLiteral("Name LIKE '%1*'").arg(QLatin1StringView(prefix))));
        const int startsWith = rs.RecordCount();
        rs.SetFilter(Variant(QStringLiteral("Name LIKE '*%1*'").arg(QLatin1StringView(prefix))));
        const int contains = rs.RecordCount();
        rs.SetFilter(Variant(adFilterNone));
        const QString needle = QString::fromLatin1(prefix);
        const auto loop = std::count_if(Data().names.begin(), Data().names.end(),
                                        [&](const QString& name) { return name.contains(needle, Qt::CaseInsensitive); });
        std::printf("check %s: starts with %d rows (SQLite %zu), contains %d rows (loop %zd)\n", prefix, startsWith,
                    SqliteCount(prefix), contains, static_cast<std::ptrdiff_t>(loop));
    }
    ReportFigure("recordset memory per row, 1M rows of three texts", store.bytesPerRow, "B", "text payload",
                 Data().payloadBytes / RowCount, "B", 2.0);
    return Main(argc, argv);
}
