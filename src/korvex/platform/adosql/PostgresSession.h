// PostgreSQL sessions through Qt's QPSQL driver: connection keys, SQLSTATE classes, savepoints
// (a failed statement spoils PostgreSQL's whole transaction), RETURNING for generated keys, and
// table descriptions from the system catalogs.
#pragma once

#include "korvex/platform/adosql/QtSqlSession.h"

namespace korvex::ado {

class PostgresSession : public QtSqlSession {
public:
    explicit PostgresSession(QString errorSource) : QtSqlSession(std::move(errorSource)) {}

    Dialect Kind() const override { return Dialect::PostgreSQL; }
    QString QtDriverName() const override { return QStringLiteral("QPSQL"); }
    bool FailureEndsTransaction() const override { return true; }
    bool SupportsSavepoints() const override { return true; }

    QVariant ToParameter(const Variant& value, DataTypeEnum type) const override;
    QString ReturningClause(const QStringList& quotedColumns) const override;

protected:
    void Configure(const ConnectionString& settings) override;
    void AfterOpen() override;
    TableInfo DescribeTable(const QString& schema, const QString& table) override;
    DriverError::Kind ClassifyQtError(const QSqlError& error) const override;
};

}  // namespace korvex::ado
