// Sessions whose statements run through QSqlQuery: PostgreSQL and ODBC. Result columns are
// described from QSqlRecord, whose table names some drivers give and others do not.
#pragma once

#include "korvex/platform/adosql/SqlSession.h"

namespace korvex::ado {

class QtSqlSession : public SqlSession {
public:
    // A driver's value as the recordset holds it: Null, text, Long or Double, Date, Boolean.
    static Variant FromQVariant(const QVariant& value);

    // What the session makes of a failed query; the statements raise through it.
    [[noreturn]] void Raise(const QSqlError& error) const { RaiseQtError(error); }

protected:
    using SqlSession::SqlSession;

    std::unique_ptr<SqlStatement> PrepareStatement(const QString& sql) override;
    // Table names in result columns: some drivers pad them with NUL characters.
    virtual QString CleanTableName(const QString& name) const { return name; }

    friend class QtSqlStatement;
};

}  // namespace korvex::ado
