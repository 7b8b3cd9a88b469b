// ODBC sessions through Qt's QODBC driver: the connection string goes to the driver manager as
// written (without the keys meant for us), the server is named by the driver (SQLGetInfo), and
// generated keys are read back in the server's own way where we know it.
#pragma once

#include "korvex/platform/adosql/QtSqlSession.h"

namespace korvex::ado {

class OdbcSession : public QtSqlSession {
public:
    explicit OdbcSession(QString errorSource) : QtSqlSession(std::move(errorSource)) {}

    Dialect Kind() const override { return Dialect::ODBC; }
    QString QtDriverName() const override { return QStringLiteral("QODBC"); }

    QVariant ToParameter(const Variant& value, DataTypeEnum type) const override;
    QString ReturningClause(const QStringList& quotedColumns) const override;
    std::optional<Variant> LastGeneratedKey() override;

protected:
    void Configure(const ConnectionString& settings) override;
    void AfterOpen() override;
    TableInfo DescribeTable(const QString& schema, const QString& table) override;
    DriverError::Kind ClassifyQtError(const QSqlError& error) const override;
    QString CleanTableName(const QString& name) const override;
};

}  // namespace korvex::ado
