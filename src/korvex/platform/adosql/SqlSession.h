// One open database behind a Connection: its Qt Sql connection (a unique connection name a
// session), its prepared statements, its transaction, descriptions of its tables, and the few
// things in which the databases differ (quoting, values on their way in and out, generated keys).
// Recordsets opened on the connection share the session, so that they keep working when the
// connection is closed and opened again.
#pragma once

#include "korvex/platform/adosql/ConnectionString.h"
#include "korvex/platform/adosql/DriverError.h"
#include "korvex/platform/ado/FieldDef.h"
#include "korvex/platform/adosql/SqlStatement.h"
#include "korvex/platform/adosql/SqlTypes.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace korvex::ado {

struct TableColumnInfo {
    QString name;
    ColumnType type;
    bool notNull = false;
    bool autoIncrement = false;  // the database fills it in when an insert leaves it out
    int keyOrdinal = 0;          // position in the primary key from 1; 0 when not part of it
};

struct TableInfo {
    bool exists = false;
    QString schema;
    QString name;
    std::vector<TableColumnInfo> columns;
    bool hasRowId = false;  // SQLite: rows are found by rowid when the key is not in the result

    const TableColumnInfo* Column(const QString& name) const;
    QStringList KeyColumns() const;  // in key order
};

class SqlSession {
public:
    enum class Dialect { SQLite, PostgreSQL, ODBC };

    virtual ~SqlSession();
    SqlSession(const SqlSession&) = delete;
    SqlSession& operator=(const SqlSession&) = delete;

    // A session of the kind; its errors carry `errorSource`.
    static std::shared_ptr<SqlSession> Create(Dialect dialect, const QString& errorSource);

    virtual Dialect Kind() const = 0;
    // Opens the database the settings name (each kind reads its own keys); throws DriverError
    // with the driver's words. Opening an open session closes it first.
    void Open(const ConnectionString& settings);
    void Close();
    bool IsOpen() const { return mOpen; }
    // Changes whenever the session closes: statements from an earlier generation are gone.
    std::uint64_t Generation() const { return mGeneration; }
    const QString& ErrorSource() const { return mErrorSource; }
    // What the server calls itself ("SQLite", "PostgreSQL", "Microsoft SQL Server" ...).
    const QString& DbmsName() const { return mDbmsName; }
    const QString& DbmsVersion() const { return mDbmsVersion; }

    // A statement prepared for this call only, and one kept for every later call with the same
    // text (until Close). Both throw DriverError.
    std::unique_ptr<SqlStatement> Prepare(const QString& sql);
    SqlStatement& Cached(const QString& sql);
    // Runs a statement that returns no rows.
    void Run(const QString& sql);

    QString QuoteName(const QString& name) const;
    QString QuoteTable(const QString& schema, const QString& table) const;

    // The session's own transaction; Begin inside one raises 3251.
    bool InTransaction() const;
    // `forWriting`: take the write lock now rather than at the first write (SQLite), so that a
    // busy database is found before anything is sent.
    void Begin(bool forWriting = false);
    void Commit();
    void Rollback();
    // Whether a failed statement spoils the whole transaction (PostgreSQL), so that the batch
    // writer must guard each row with a savepoint.
    virtual bool FailureEndsTransaction() const { return false; }
    virtual bool SupportsSavepoints() const { return false; }

    // Columns, key and rowid of a table; cached until Close. `exists` is false for a name the
    // database does not know.
    const TableInfo& Table(const QString& schema, const QString& table);

    // A value on its way into a statement for a column of the given type, and a column's value
    // on its way into a field of that type.
    virtual QVariant ToParameter(const Variant& value, DataTypeEnum type) const;
    virtual Variant FromColumn(Variant value, DataTypeEnum) const { return value; }
    // The condition that a column holds a date within a millisecond of "?" (or the two "?"
    // this text needs, see DateParameters): dates pass through drivers at millisecond grain.
    virtual QString DateMatch(const QString& quotedColumn) const;
    virtual std::vector<QVariant> DateParameters(const Variant& value, DataTypeEnum type) const;

    // Inserting: the text after "INSERT ... VALUES (...)" that returns the generated key columns
    // (RETURNING), when the database can; otherwise the keys are asked for afterwards.
    virtual QString ReturningClause(const QStringList& quotedColumns) const;
    // After an insert without a RETURNING clause: the value of a generated key (rowid, identity),
    // when the database can tell.
    virtual std::optional<Variant> LastGeneratedKey();

    // The Qt driver's name (QSQLITE, QPSQL, QODBC).
    virtual QString QtDriverName() const = 0;

    // Who hears of the statements that recordsets run (the Connection, for its events): before,
    // with the chance to change the text or cancel by throwing, and after, with the outcome.
    struct Listener {
        std::function<QString(const QString&)> willExecute;
        std::function<void(int rowsAffected, const Error* error)> executeComplete;
    };
    void SetListener(Listener listener) { mListener = std::move(listener); }
    QString WillExecute(const QString& source) const;
    void ExecuteComplete(int rowsAffected, const Error* error) const;

protected:
    explicit SqlSession(QString errorSource);

    QSqlDatabase& Database() { return mDb; }
    const QSqlDatabase& Database() const { return mDb; }
    void SetDbms(QString name, QString version);
    // The session's error for a failure Qt reports.
    [[noreturn]] void RaiseQtError(const QSqlError& error) const;
    virtual DriverError::Kind ClassifyQtError(const QSqlError& error) const;

    virtual void Configure(const ConnectionString& settings) = 0;  // host, options ... before open
    virtual void AfterOpen() {}
    virtual std::unique_ptr<SqlStatement> PrepareStatement(const QString& sql) = 0;
    virtual TableInfo DescribeTable(const QString& schema, const QString& table) = 0;
    virtual void BeginTransaction(bool forWriting);
    virtual void CommitTransaction();
    virtual void RollbackTransaction();
    virtual bool TransactionOpen() const { return mTransaction; }

private:
    void DropStatements();

    QString mErrorSource;
    QString mConnectionName;
    QSqlDatabase mDb;
    bool mOpen = false;
    bool mTransaction = false;
    std::uint64_t mGeneration = 0;
    QString mDbmsName;
    QString mDbmsVersion;
    QHash<QString, std::shared_ptr<SqlStatement>> mStatements;
    QHash<QString, TableInfo> mTables;
    Listener mListener;
};

}  // namespace korvex::ado
