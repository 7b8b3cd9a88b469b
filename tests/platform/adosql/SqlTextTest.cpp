// The two texts users hand the providers: connection strings (pairs, quoting, braces, errors)
// and the SELECT statements whose table and columns the reader works out when a driver does not.
#include "tests/support/ErrorOf.h"

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/platform/adosql/ConnectionString.h"
#include "korvex/platform/adosql/SelectParser.h"

#include <gtest/gtest.h>

using namespace korvex;
using namespace korvex::ado;
using korvex::test::ErrorOf;

namespace {

TEST(ConnectionStringText, PairsQuotesBracesAndErrors)
{
    const ConnectionString parsed = ConnectionString::Parse(QStringLiteral(
        " Provider = SQLite ; Password=\"a;b\"\"c\" ;Driver={SQLite3 ; x}}y}; Name='it''s'; empty=;;provider=PostgreSQL;"));
    EXPECT_EQ(QStringLiteral("PostgreSQL"), parsed.Value({QStringLiteral("PROVIDER")}));  // the last one given
    EXPECT_EQ(QStringLiteral("a;b\"c"), parsed.Value({QStringLiteral("password")}));
    EXPECT_EQ(QStringLiteral("SQLite3 ; x}y"), parsed.Value({QStringLiteral("Driver")}));
    EXPECT_EQ(QStringLiteral("it's"), parsed.Value({QStringLiteral("Name")}));
    EXPECT_TRUE(parsed.Has(QStringLiteral("Empty")));
    EXPECT_EQ(QString(), parsed.Value({QStringLiteral("Empty")}, QStringLiteral("fallback")));
    EXPECT_EQ(QStringLiteral("fallback"), parsed.Value({QStringLiteral("Missing")}, QStringLiteral("fallback")));
    // Pairs keep their text, so a driver gets its keywords as written.
    EXPECT_EQ(QStringLiteral("Driver={SQLite3 ; x}}y}"), parsed.TextWithout({QStringLiteral("Password"), QStringLiteral("Name"),
                                                                             QStringLiteral("Empty"), QStringLiteral("Provider")}));

    // A value set is quoted when it must be and reads back unchanged.
    ConnectionString set = ConnectionString::Parse(QStringLiteral("Data Source=x"));
    for (const QString& value : {QStringLiteral("p;w\"d"), QStringLiteral(" padded "), QStringLiteral("{brace}"), QStringLiteral("plain")}) {
        set.Set(QStringLiteral("Password"), value);
        EXPECT_EQ(value, ConnectionString::Parse(set.TextWithout({})).Value({QStringLiteral("Password")}));
    }

    for (const char* bad : {"novalue", "=x", "a=\"open", "a={open", "a=b;c"}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(adErrInvalidArgument, ErrorOf([&] { ConnectionString::Parse(QString::fromLatin1(bad)); }));
    }
}

TEST(SelectText, TablesColumnsAndWhatIsNotOneTable)
{
    struct Case {
        const char* sql;
        bool singleTable;
        bool rowPerTableRow;
        const char* schema;
        const char* table;
    };
    const Case cases[] = {
        {"SELECT id, name FROM people WHERE city = 'x' ORDER BY id", true, true, "", "people"},
        {"select p.* from public.\"Order Lines\" AS p", true, true, "public", "Order Lines"},
        {"SELECT DISTINCT city FROM people", true, false, "", "people"},
        {"SELECT city, count(*) FROM people GROUP BY city", true, false, "", "people"},
        {"SELECT count(*) FROM people", true, false, "", "people"},
        {"SELECT a.id FROM a JOIN b ON a.id = b.id", false, false, "", ""},
        {"SELECT a.id FROM a, b", false, false, "", ""},
        {"SELECT * FROM (SELECT * FROM t) s", false, false, "", ""},
        {"SELECT id FROM a UNION SELECT id FROM b", true, false, "", "a"},
        {"SELECT 1", false, false, "", ""},
        {"SELECT 1; DELETE FROM t", false, false, "", ""},
        {"SELECT id FROM t; DROP TABLE t", false, false, "", ""},
        {"UPDATE t SET a = 1", false, false, "", ""},
        // Joins inside subqueries do not matter; an aggregate anywhere in the list is taken,
        // cautiously, as grouping the rows.
        {"SELECT (SELECT max(x) FROM u) AS m, id FROM t WHERE id IN (SELECT id FROM v JOIN w ON 1=1)", true, false, "", "t"},
        {"SELECT id FROM t WHERE id IN (SELECT id FROM v JOIN w ON 1=1) ORDER BY id", true, true, "", "t"},
        // An empty quoted name names nothing, in any quoting style and in any part of the name.
        {"select * from \"\"l where ol.\"Line\" > 1", false, false, "", ""},
        {"SELECT p.*, 2 + 1 two FROM `` ``", false, false, "", ""},
        {"SELECT * FROM []", false, false, "", ""},
        {"SELECT * FROM \"\".t", false, false, "", ""},
        {"SELECT * FROM s.``", false, false, "", ""},
        {"SELECT * FROM t AS \"\"", false, false, "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sql);
        const SelectStatement select = ParseSelect(QString::fromLatin1(c.sql));
        EXPECT_EQ(c.singleTable, select.singleTable);
        EXPECT_EQ(c.rowPerTableRow, select.rowPerTableRow);
        EXPECT_EQ(QString::fromLatin1(c.schema), select.schema);
        EXPECT_EQ(QString::fromLatin1(c.table), select.table);
    }

    const SelectStatement select =
        ParseSelect(QStringLiteral("SELECT t.code, name AS \"Full Name\", price * 2 doubled, t.* FROM items t"));
    ASSERT_EQ(4u, select.items.size());
    EXPECT_EQ(QStringLiteral("t"), select.tableAlias);
    EXPECT_EQ(QStringLiteral("code"), select.ItemNamed(QStringLiteral("CODE"))->column);
    EXPECT_EQ(QStringLiteral("name"), select.ItemNamed(QStringLiteral("Full Name"))->column);
    EXPECT_FALSE(select.ItemNamed(QStringLiteral("doubled"))->isColumn);
    EXPECT_TRUE(select.HasStar());
    EXPECT_EQ(nullptr, select.ItemNamed(QStringLiteral("price")));
}

}  // namespace
