// Helpers for the provider tests: the three ways to reach a database (SQLite directly, PostgreSQL,
// SQLite through ODBC), connections opened on them, recordsets opened from a statement, and the
// values of one column read straight from the database through a separate connection.
#pragma once

#include "tests/platform/adosql/TestServers.h"

#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Conversions.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace korvex::ado::test {

enum class Backend { SQLite, PostgreSQL, ODBC };

inline const char* NameOf(Backend backend)
{
    switch (backend) {
    case Backend::SQLite: return "SQLite";
    case Backend::PostgreSQL: return "PostgreSQL";
    case Backend::ODBC: return "ODBC";
    }
    return "";
}

// One database of a backend: the connection string every user of it opens.
class TestDatabase {
public:
    // Empty string and the reason in `whyNot` when the backend is not available here.
    QString Open(Backend backend, QString* whyNot)
    {
        switch (backend) {
        case Backend::SQLite: return QStringLiteral("Provider=SQLite;Data Source=") + mFolder.File(QStringLiteral("test.db"));
        case Backend::ODBC: return QStringLiteral("Driver={SQLite3};Database=") + mFolder.File(QStringLiteral("test.db")) + u';';
        case Backend::PostgreSQL: {
            korvex::test::PostgresServer* server = korvex::test::PostgresServer::Instance(whyNot);
            return server ? server->ConnectionString() : QString();
        }
        }
        return {};
    }
    QString File(const QString& name) const { return mFolder.File(name); }

private:
    korvex::test::PrivateFolder mFolder;
};

inline std::shared_ptr<Connection> Connect(const QString& connectionString)
{
    auto connection = std::make_shared<Connection>();
    connection->Open(connectionString);
    return connection;
}

// Tests run once per backend: a database of the backend and a first connection to it; skipped
// with the reason where the backend is missing.
class BackendTest : public ::testing::TestWithParam<Backend> {
protected:
    void SetUp() override
    {
        QString whyNot;
        mText = mDatabase.Open(GetParam(), &whyNot);
        if (mText.isEmpty())
            GTEST_SKIP() << whyNot.toStdString();
        mConnection = Connect(mText);
    }

    TestDatabase mDatabase;
    QString mText;
    std::shared_ptr<Connection> mConnection;
};

inline std::string BackendName(const ::testing::TestParamInfo<Backend>& info)
{
    return NameOf(info.param);
}

#define KORVEX_ON_EVERY_BACKEND(Suite)                                                                             \
    INSTANTIATE_TEST_SUITE_P(Backends, Suite,                                                                      \
                             ::testing::Values(::korvex::ado::test::Backend::SQLite,                               \
                                               ::korvex::ado::test::Backend::PostgreSQL,                           \
                                               ::korvex::ado::test::Backend::ODBC),                                \
                             ::korvex::ado::test::BackendName)

inline std::shared_ptr<Recordset> OpenBatch(const std::shared_ptr<Connection>& connection, const QString& sql)
{
    auto rs = std::make_shared<Recordset>();
    rs->Open(Variant(sql), Variant(static_cast<QObject*>(connection.get())), adOpenStatic, adLockBatchOptimistic);
    return rs;
}

inline Variant ValueOf(const std::shared_ptr<Recordset>& rs, const char* field)
{
    return rs->Fields()->Item(Variant(field))->Value();
}

inline void SetValueOf(const std::shared_ptr<Recordset>& rs, const char* field, const Variant& value)
{
    rs->Fields()->Item(Variant(field))->SetValue(value);
}

// Moves to the record whose `field` shows `value` (as text); fails the test when there is none.
inline bool Seek(const std::shared_ptr<Recordset>& rs, const char* field, const QString& value)
{
    for (rs->MoveFirst(); !rs->IsEOF(); rs->MoveNext()) {
        if (CStr(ValueOf(rs, field)) == value)
            return true;
    }
    return false;
}

// The column's values in the order of `sql`'s rows, as texts ("<Null>" for Null), read afresh.
inline QStringList ReadColumn(const std::shared_ptr<Connection>& connection, const QString& sql)
{
    QStringList values;
    std::shared_ptr<Recordset> rs = connection->Execute(sql);
    for (; !rs->IsEOF(); rs->MoveNext()) {
        const Variant v = rs->Fields()->Item(0)->Value();
        values << (v.IsNull() ? QStringLiteral("<Null>") : CStr(v));
    }
    return values;
}

}  // namespace korvex::ado::test
