// ODBC's connection string, server name, error classes and table descriptions.
#include "korvex/platform/adosql/OdbcSession.h"

#include "korvex/runtime/Conversions.h"

#include <QSqlDriver>
#include <QSqlField>
#include <QSqlIndex>
#include <QSqlRecord>

#include <sql.h>
#include <sqlext.h>

namespace korvex::ado {
namespace {

bool IsDbms(const QString& name, const char* which)
{
    return name.contains(QLatin1StringView(which), Qt::CaseInsensitive);
}

}  // namespace

void OdbcSession::Configure(const ConnectionString& settings)
{
    // ADO's own keys stay here; everything else is the driver manager's.
    ConnectionString odbc = settings;
    const QString user = settings.Value({QStringLiteral("User ID")});
    const QString password = settings.Value({QStringLiteral("Password")});
    if (!user.isEmpty())
        odbc.Set(QStringLiteral("UID"), user);
    if (!password.isEmpty())
        odbc.Set(QStringLiteral("PWD"), password);
    Database().setDatabaseName(odbc.TextWithout({QStringLiteral("Provider"), QStringLiteral("Data Provider"),
                                                 QStringLiteral("User ID"), QStringLiteral("Password")}));
}

void OdbcSession::AfterOpen()
{
    const QVariant handle = Database().driver()->handle();
    QString name;
    QString version;
    if (handle.isValid()) {
        auto connection = *static_cast<const SQLHANDLE*>(handle.constData());
        SQLWCHAR buffer[256] = {};
        SQLSMALLINT length = 0;
        if (SQL_SUCCEEDED(SQLGetInfoW(connection, SQL_DBMS_NAME, buffer, sizeof buffer, &length)))
            name = QString::fromUtf16(reinterpret_cast<const char16_t*>(buffer), length / 2);
        if (SQL_SUCCEEDED(SQLGetInfoW(connection, SQL_DBMS_VER, buffer, sizeof buffer, &length)))
            version = QString::fromUtf16(reinterpret_cast<const char16_t*>(buffer), length / 2);
    }
    SetDbms(name, version);
}

QString OdbcSession::CleanTableName(const QString& name) const
{
    // QODBC hands over the driver's whole buffer: the name ends at the first NUL.
    const qsizetype end = name.indexOf(QChar(0));
    return end < 0 ? name : name.left(end);
}

DriverError::Kind OdbcSession::ClassifyQtError(const QSqlError& error) const
{
    using Kind = DriverError::Kind;
    // QODBC reports the driver's native error number; the SQLSTATE classes are in the text.
    const QString text = error.databaseText() + u' ' + error.driverText();
    if (error.type() == QSqlError::ConnectionError || text.contains(QStringLiteral("08S01")) ||
        text.contains(QStringLiteral("08003")))
        return Kind::Connection;
    if (text.contains(QStringLiteral("23000")) || text.contains(QStringLiteral("constraint"), Qt::CaseInsensitive))
        return Kind::Integrity;
    if (text.contains(QStringLiteral("22001")) || text.contains(QStringLiteral("22003")))
        return Kind::Schema;
    if (text.contains(QStringLiteral("locked"), Qt::CaseInsensitive) || text.contains(QStringLiteral("busy"), Qt::CaseInsensitive) ||
        text.contains(QStringLiteral("HYT00")) || text.contains(QStringLiteral("40001")))
        return Kind::Busy;
    if (text.contains(QStringLiteral("disk"), Qt::CaseInsensitive) || text.contains(QStringLiteral("full"), Qt::CaseInsensitive))
        return Kind::Resource;
    return Kind::Statement;
}

QVariant OdbcSession::ToParameter(const Variant& value, DataTypeEnum type) const
{
    // SQLite's ODBC driver stores dates as the text it is given; others take typed values.
    if (value.As<Date>() && IsDbms(DbmsName(), "SQLite")) {
        const QDateTime stamp = ToQDateTime(*value.As<Date>());
        switch (type) {
        case adDBDate: return stamp.date().toString(Qt::ISODate);
        case adDBTime: return stamp.time().toString(QStringLiteral("HH:mm:ss"));
        default: return stamp.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        }
    }
    return QtSqlSession::ToParameter(value, type);
}

QString OdbcSession::ReturningClause(const QStringList& quotedColumns) const
{
    if (IsDbms(DbmsName(), "PostgreSQL") && !quotedColumns.isEmpty())
        return QStringLiteral(" RETURNING ") + quotedColumns.join(QStringLiteral(", "));
    return {};
}

std::optional<Variant> OdbcSession::LastGeneratedKey()
{
    // Each server's way of naming the key it just generated; other servers leave it unknown.
    QString query;
    if (IsDbms(DbmsName(), "SQLite"))
        query = QStringLiteral("SELECT last_insert_rowid()");
    else if (IsDbms(DbmsName(), "SQL Server"))
        query = QStringLiteral("SELECT @@IDENTITY");
    if (query.isEmpty())
        return std::nullopt;
    std::unique_ptr<SqlStatement> statement = Prepare(query);
    statement->Execute({});
    std::optional<Variant> key;
    if (statement->Next() && !statement->Value(0).IsNull())
        key = statement->Value(0);
    statement->Finish();
    return key;
}

TableInfo OdbcSession::DescribeTable(const QString& schema, const QString& table)
{
    TableInfo info;
    info.schema = schema;
    info.name = table;
    const QString name = schema.isEmpty() ? table : schema + u'.' + table;
    const QSqlRecord record = Database().record(name);
    const QSqlIndex key = Database().primaryIndex(name);
    for (int i = 0; i < record.count(); ++i) {
        const QSqlField field = record.field(i);
        TableColumnInfo column;
        column.name = field.name();
        column.type = ColumnTypeOfQt(field.metaType(), field.length(), field.precision());
        column.notNull = field.requiredStatus() == QSqlField::Required;
        column.autoIncrement = field.isAutoValue();
        const int position = key.indexOf(field.name());
        column.keyOrdinal = position >= 0 ? position + 1 : 0;
        info.columns.push_back(std::move(column));
    }
    info.exists = !info.columns.empty();
    return info;
}

}  // namespace korvex::ado
