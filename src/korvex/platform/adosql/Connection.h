// ADO's Connection over Qt Sql: a connection string names the provider and the database, and
// the connection runs statements, transactions and the sources of the recordsets opened on it.
//
// Connection strings ("Key=Value;...", see ConnectionString.h):
//   Provider=SQLite;Data Source=/path/file.db      (or ":memory:"; Busy Timeout=ms; Mode=Read)
//   Provider=PostgreSQL;Host=/socket/dir or name;Port=5432;Database=db;User ID=u;Password=p
//   Provider=ODBC;Driver={SQLite3};Database=/path  (MSDASQL is the same; the pairs other than
//                                                   Provider go to the ODBC driver manager)
//   Provider=MSDataShape;Data Provider=SQLite;...   (the shaping provider over one of the above)
// Without Provider, a string with Driver or DSN is ODBC's and any other SQLite's. Provider then
// reads "SQLite.1", "PostgreSQL.1", "MSDASQL.1" or "MSDataShape.1", as ADO gives provider names.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/RowSource.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

#include <memory>

namespace korvex::ado {

class Recordset;
class SqlSession;

class Connection : public QObject, public RowSource {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "Connection")
    Q_PROPERTY(QString ConnectionString READ ConnectionString WRITE SetConnectionString)
    Q_PROPERTY(QString Provider READ Provider WRITE SetProvider)
    Q_PROPERTY(int State READ State)
    Q_PROPERTY(korvex::ado::Properties* Properties READ Properties)

public:
    Connection();
    ~Connection() override;

    QString ConnectionString() const { return mConnectionString; }
    // 3705 while open.
    void SetConnectionString(const QString& value);
    // The provider's name with its version ("SQLite.1"); what was set while closed, otherwise.
    QString Provider() const;
    // 3705 while open; any name is taken, an unknown one fails only when opening (3706).
    void SetProvider(const QString& value);
    int State() const;
    // "Data Provider" (the provider under MSDataShape), "DBMS Name", "DBMS Version",
    // "Data Source".
    korvex::ado::Properties* Properties() const;

    // Opens with the given connection string (or the one set before); UserID and Password,
    // when given, override the string's. The driver's error (its own words) when it fails.
    Q_INVOKABLE void Open(const QString& ConnectionString = {}, const QString& UserID = {}, const QString& Password = {},
                          int Options = -1);
    // Any transaction still open is rolled back by the server; 3246 while one is open here.
    Q_INVOKABLE void Close();

    // Runs a statement; "?" placeholders take Parameters in order (one value or an array).
    // A statement that returns rows gives an open, read-only recordset over them; any other a
    // closed recordset, and RecordsAffected the rows it changed. Raises the driver's error.
    std::shared_ptr<Recordset> Execute(const QString& CommandText, const Variant& Parameters = {},
                                       int Options = adCmdText, int* RecordsAffected = nullptr);

    // One level of transaction: returns 1; 3251 inside a transaction. Commit and Rollback
    // without one: 3219.
    Q_INVOKABLE int BeginTrans();
    Q_INVOKABLE void CommitTrans();
    Q_INVOKABLE void RollbackTrans();

    // RowSource: the rows of a statement or table for Recordset.Open.
    std::shared_ptr<RecordsetStore> OpenSource(const QString& source, int options) override;

    // The open session (3709 when closed); for the library's own helpers.
    SqlSession& Session() const;

signals:
    // Before and after every statement the connection runs, for recordsets too. A WillExecute
    // handler may change Source or cancel (adStatusCancel: error 3712).
    void WillExecute(QString& Source, korvex::ado::EventStatusEnum& adStatus, korvex::ado::Connection* pConnection);
    void ExecuteComplete(int RecordsAffected, const korvex::Error* pError, korvex::ado::EventStatusEnum& adStatus,
                         korvex::ado::Connection* pConnection);

private:
    struct Resolved;
    Resolved Resolve(const QString& connectionString) const;
    QString Announce(const QString& source);
    void Report(int rowsAffected, const Error* error);

    QString mConnectionString;
    QString mProvider;      // as set, or as resolved when opened
    QString mDataProvider;  // under MSDataShape
    std::shared_ptr<SqlSession> mSession;
    mutable korvex::ado::Properties* mProperties = nullptr;
};

}  // namespace korvex::ado
