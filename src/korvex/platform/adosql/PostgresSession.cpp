// PostgreSQL's connection keys, error classes, parameters and catalog queries.
#include "korvex/platform/adosql/PostgresSession.h"

#include "korvex/runtime/Conversions.h"

namespace korvex::ado {

void PostgresSession::Configure(const ConnectionString& settings)
{
    QSqlDatabase& db = Database();
    db.setHostName(settings.Value({QStringLiteral("Host"), QStringLiteral("Server"), QStringLiteral("Data Source"),
                                   QStringLiteral("Address")}));
    if (const QString port = settings.Value({QStringLiteral("Port")}); !port.isEmpty())
        db.setPort(port.toInt());
    db.setDatabaseName(settings.Value({QStringLiteral("Database"), QStringLiteral("Initial Catalog"),
                                       QStringLiteral("DBName")}));
    db.setUserName(settings.Value({QStringLiteral("User ID"), QStringLiteral("UID"), QStringLiteral("User"),
                                   QStringLiteral("Username"), QStringLiteral("User Name")}));
    db.setPassword(settings.Value({QStringLiteral("Password"), QStringLiteral("PWD")}));
    QStringList options;
    if (const QString timeout = settings.Value({QStringLiteral("Connect Timeout"), QStringLiteral("Timeout")});
        !timeout.isEmpty())
        options << QStringLiteral("connect_timeout=%1").arg(timeout.toInt());
    db.setConnectOptions(options.join(u';'));
}

void PostgresSession::AfterOpen()
{
    std::unique_ptr<SqlStatement> version = Prepare(QStringLiteral("SHOW server_version"));
    version->Execute({});
    SetDbms(QStringLiteral("PostgreSQL"), version->Next() ? CStr(version->Value(0)) : QString());
    version->Finish();
}

DriverError::Kind PostgresSession::ClassifyQtError(const QSqlError& error) const
{
    using Kind = DriverError::Kind;
    const QString state = error.nativeErrorCode();
    if (state.startsWith(u"23"))
        return Kind::Integrity;
    if (state.startsWith(u"22"))
        return Kind::Schema;
    if (state == u"40001" || state == u"40P01" || state == u"55P03" || state == u"57014")
        return Kind::Busy;
    if (state.startsWith(u"08") || state.startsWith(u"57P"))
        return Kind::Connection;
    if (state.startsWith(u"53") || state.startsWith(u"58"))
        return Kind::Resource;
    if (state.isEmpty() && (error.type() == QSqlError::ConnectionError ||
                            error.databaseText().contains(QStringLiteral("connection"), Qt::CaseInsensitive)))
        return Kind::Connection;  // the server went away: libpq has no SQLSTATE to give
    return Kind::Statement;
}

QVariant PostgresSession::ToParameter(const Variant& value, DataTypeEnum type) const
{
    // Dates go as text, read in the column's own type: a QDateTime would be sent as UTC, which a
    // column without time zone would take as local time. Currency goes as exact text.
    if (const auto* date = value.As<Date>()) {
        const QDateTime stamp = ToQDateTime(*date);
        switch (type) {
        case adDBDate: return stamp.date().toString(Qt::ISODate);
        case adDBTime: return stamp.time().toString(QStringLiteral("HH:mm:ss.zzz"));
        default: return stamp.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
        }
    }
    if (const auto* c = value.As<Currency>())
        return QString::number(static_cast<double>(c->Scaled()) / Currency::Scale, 'f', 4);
    return QtSqlSession::ToParameter(value, type);
}

QString PostgresSession::ReturningClause(const QStringList& quotedColumns) const
{
    return quotedColumns.isEmpty() ? QString() : QStringLiteral(" RETURNING ") + quotedColumns.join(QStringLiteral(", "));
}

TableInfo PostgresSession::DescribeTable(const QString& schema, const QString& table)
{
    TableInfo info;
    info.schema = schema;
    info.name = table;
    std::unique_ptr<SqlStatement> columns = Prepare(QStringLiteral(
        "SELECT a.attname, format_type(a.atttypid, a.atttypmod), a.attnotnull, "
        "COALESCE(pg_get_expr(d.adbin, d.adrelid) LIKE 'nextval(%', false) OR a.attidentity <> '', "
        // int2vector counts from 0: the key ordinal counts from 1.
        "COALESCE(array_position(i.indkey::int2[], a.attnum) - array_lower(i.indkey::int2[], 1) + 1, 0) "
        "FROM pg_attribute a JOIN pg_class c ON c.oid = a.attrelid "
        "JOIN pg_namespace n ON n.oid = c.relnamespace "
        "LEFT JOIN pg_attrdef d ON d.adrelid = a.attrelid AND d.adnum = a.attnum "
        "LEFT JOIN pg_index i ON i.indrelid = c.oid AND i.indisprimary "
        "WHERE c.relname = ? AND (n.nspname = ? OR (COALESCE(?::text, '') = '' AND pg_table_is_visible(c.oid))) "
        "AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum"));
    const QVariant parameters[] = {table, schema, schema};
    columns->Execute(parameters);
    while (columns->Next()) {
        TableColumnInfo column;
        column.name = CStr(columns->Value(0));
        column.type = ColumnTypeOfDeclared(CStr(columns->Value(1)));
        column.notNull = CBool(columns->Value(2));
        column.autoIncrement = CBool(columns->Value(3));
        column.keyOrdinal = CLng(columns->Value(4));
        info.columns.push_back(std::move(column));
    }
    columns->Finish();
    info.exists = !info.columns.empty();
    return info;
}

}  // namespace korvex::ado
