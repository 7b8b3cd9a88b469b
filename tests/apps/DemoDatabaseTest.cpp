// The demo's database: the generated items are made once, whole, the same every time and varied
// enough for typing to narrow them; the country lookup reaches new databases and older ones.
#include "DemoDatabase.h"
#include "ItemGenerator.h"

#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/runtime/Conversions.h"
#include "tests/support/TestFiles.h"

#include <QSet>

#include <gtest/gtest.h>

namespace demo {
namespace {

using korvex::Variant;

Variant Scalar(korvex::ado::Connection& db, const QString& sql, const Variant& parameters = {})
{
    auto rs = db.Execute(sql, parameters);
    return rs->Fields()->Item(Variant(std::int32_t{0}))->Value();
}

std::shared_ptr<korvex::ado::Connection> Reopen(const QString& path)
{
    auto db = std::make_shared<korvex::ado::Connection>();
    db->Open(QStringLiteral("Provider=SQLite;Data Source=") + path);
    return db;
}

TEST(ItemGenerator, ItemsAreFixedByTheirIndexAndVaried)
{
    EXPECT_EQ(MakeItem(0).code, "K0000001");
    EXPECT_EQ(MakeItem(ItemCount - 1).code, "K1000000");
    QSet<QString> names, towns;
    int outsideAscii = 0;
    for (int i = 0; i < 20000; ++i) {
        const Item item = MakeItem(i);
        const Item again = MakeItem(i);
        ASSERT_EQ(item.name, again.name) << i;
        ASSERT_EQ(item.town, again.town) << i;
        names.insert(item.name);
        towns.insert(item.town);
        const QString both = item.name + item.town;
        outsideAscii += std::any_of(both.begin(), both.end(), [](QChar c) { return c.unicode() > 0x7f; });
    }
    EXPECT_GT(names.size(), 8000) << "first names and surnames are combined, not drawn together";
    EXPECT_EQ(towns.size(), 89) << "every town is reached";
    EXPECT_GT(outsideAscii, 2000) << "letters outside ASCII are common enough to type";
    EXPECT_LT(outsideAscii, 18000);
}

TEST(DemoDatabase, ItemsAreGeneratedOnceAndWhole)
{
    korvex::test::TestFolder folder;
    const QString path = folder.Path(QStringLiteral("demo.db"));
    auto db = OpenDemoDatabase(path);
    ASSERT_TRUE(EnsureItems(*db));
    EXPECT_FALSE(EnsureItems(*db)) << "a database that has the items keeps them";

    auto other = Reopen(path);
    EXPECT_FALSE(EnsureItems(*other)) << "seen by another connection: the items were committed";
    EXPECT_EQ(korvex::CLng(Scalar(*other, QStringLiteral("SELECT COUNT(*) FROM items"))), ItemCount);
    EXPECT_EQ(korvex::CLng(Scalar(*other, QStringLiteral("SELECT COUNT(DISTINCT \"Code\") FROM items"))), ItemCount);
    const Item last = MakeItem(ItemCount - 1);
    auto row = other->Execute(QStringLiteral("SELECT \"Code\", \"Name\", \"Town\" FROM items WHERE \"ItemId\" = ?"),
                              Variant(std::int32_t{ItemCount}));
    EXPECT_EQ(korvex::CStr(row->Fields()->Item(Variant("Code"))->Value()), last.code);
    EXPECT_EQ(korvex::CStr(row->Fields()->Item(Variant("Name"))->Value()), last.name) << "stored as UTF-8, read back whole";
    EXPECT_EQ(korvex::CStr(row->Fields()->Item(Variant("Town"))->Value()), last.town);

    // Typing narrows: two letters leave a small share of the rows, a third fewer still.
    const auto startingWith = [&](const QString& prefix) {
        return korvex::CLng(Scalar(*other, QStringLiteral("SELECT COUNT(*) FROM items WHERE substr(\"Name\", 1, ?) = ?"),
                                   Variant::Array({Variant(std::int32_t(prefix.size())), Variant(prefix)})));
    };
    const int ma = startingWith(QStringLiteral("Ma")), mar = startingWith(QStringLiteral("Mar"));
    EXPECT_GT(ma, 1000);
    EXPECT_LT(ma, ItemCount / 10);
    EXPECT_GT(mar, 0);
    EXPECT_LT(mar, ma);
    EXPECT_GT(startingWith(QStringLiteral("Łu")), 0) << "names that begin outside ASCII exist";
}

TEST(DemoDatabase, CountriesReachNewAndOlderDatabases)
{
    korvex::test::TestFolder folder;
    auto fresh = OpenDemoDatabase(folder.Path(QStringLiteral("new.db")));
    EXPECT_EQ(korvex::CStr(Scalar(*fresh, QStringLiteral("SELECT \"Country\" FROM customers WHERE \"CustomerId\" = 3"))), "US");
    EXPECT_EQ(korvex::CStr(Scalar(*fresh, QStringLiteral("SELECT \"Name\" FROM countries WHERE \"Code\" = 'CI'"))),
              QStringLiteral("Côte d'Ivoire"));

    // A database of an earlier demo: customers without a country, no lookup table.
    const QString path = folder.Path(QStringLiteral("old.db"));
    {
        auto old = Reopen(path);
        old->Execute(QStringLiteral("CREATE TABLE customers (\"CustomerId\" INTEGER PRIMARY KEY, \"Name\" VARCHAR(40))"));
        old->Execute(QStringLiteral("INSERT INTO customers VALUES (1, 'Ada Lovelace')"));
    }
    auto upgraded = OpenDemoDatabase(path);
    EXPECT_EQ(korvex::CStr(Scalar(*upgraded, QStringLiteral("SELECT \"Country\" FROM customers WHERE \"CustomerId\" = 1"))), "GB");
    EXPECT_EQ(korvex::CLng(Scalar(*upgraded, QStringLiteral("SELECT COUNT(*) FROM countries"))), 26);
    auto again = OpenDemoDatabase(path);
    EXPECT_EQ(korvex::CLng(Scalar(*again, QStringLiteral("SELECT COUNT(*) FROM countries"))), 26) << "added once";
}

}  // namespace
}  // namespace demo
