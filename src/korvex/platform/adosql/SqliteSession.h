// SQLite sessions: Qt's QSQLITE driver opens the file (or ":memory:"), and statements then run on
// its sqlite3 handle directly, because reading a large result through QSqlQuery costs more than
// the whole of SQLite's own work. SQLite also tells each result column's table and column, its
// declared type and its rowid, so that no query text needs to be read.
#pragma once

#include "korvex/platform/adosql/SqlSession.h"

struct sqlite3;

namespace korvex::ado {

class SqliteSession : public SqlSession {
public:
    explicit SqliteSession(QString errorSource) : SqlSession(std::move(errorSource)) {}

    Dialect Kind() const override { return Dialect::SQLite; }
    QString QtDriverName() const override { return QStringLiteral("QSQLITE"); }
    bool SupportsSavepoints() const override { return true; }

    QVariant ToParameter(const Variant& value, DataTypeEnum type) const override;
    Variant FromColumn(Variant value, DataTypeEnum type) const override;
    QString DateMatch(const QString& quotedColumn) const override;
    std::optional<Variant> LastGeneratedKey() override;

    sqlite3* Handle() const { return mHandle; }
    // Throws the session's error for a failed SQLite call.
    [[noreturn]] void RaiseSqlite(int code) const;

protected:
    void Configure(const ConnectionString& settings) override;
    void AfterOpen() override;
    std::unique_ptr<SqlStatement> PrepareStatement(const QString& sql) override;
    TableInfo DescribeTable(const QString& schema, const QString& table) override;
    void BeginTransaction(bool forWriting) override;
    void CommitTransaction() override;
    void RollbackTransaction() override;
    bool TransactionOpen() const override;

private:
    sqlite3* mHandle = nullptr;
};

}  // namespace korvex::ado
