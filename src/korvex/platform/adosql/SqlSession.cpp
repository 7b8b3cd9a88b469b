// The session frame: opening and closing the Qt Sql connection, statement cache, transactions,
// table descriptions, and the defaults the session kinds build on.
#include "korvex/platform/adosql/SqlSession.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/adosql/OdbcSession.h"
#include "korvex/platform/adosql/PostgresSession.h"
#include "korvex/platform/adosql/SqliteSession.h"
#include "korvex/runtime/Conversions.h"

#include <QSqlDriver>

#include <atomic>

namespace korvex::ado {

const TableColumnInfo* TableInfo::Column(const QString& column) const
{
    for (const TableColumnInfo& c : columns) {
        if (c.name.compare(column, Qt::CaseInsensitive) == 0)
            return &c;
    }
    return nullptr;
}

QStringList TableInfo::KeyColumns() const
{
    std::vector<const TableColumnInfo*> keys;
    for (const TableColumnInfo& c : columns) {
        if (c.keyOrdinal > 0)
            keys.push_back(&c);
    }
    std::sort(keys.begin(), keys.end(), [](auto* a, auto* b) { return a->keyOrdinal < b->keyOrdinal; });
    QStringList names;
    for (const TableColumnInfo* c : keys)
        names << c->name;
    return names;
}

SqlSession::SqlSession(QString errorSource) : mErrorSource(std::move(errorSource)) {}

SqlSession::~SqlSession()
{
    Close();
}

std::shared_ptr<SqlSession> SqlSession::Create(Dialect dialect, const QString& errorSource)
{
    switch (dialect) {
    case Dialect::SQLite: return std::make_shared<SqliteSession>(errorSource);
    case Dialect::PostgreSQL: return std::make_shared<PostgresSession>(errorSource);
    case Dialect::ODBC: return std::make_shared<OdbcSession>(errorSource);
    }
    return nullptr;
}

void SqlSession::Open(const ConnectionString& settings)
{
    Close();
    static std::atomic<int> counter{0};
    mConnectionName = QStringLiteral("korvex-ado-%1").arg(++counter);
    mDb = QSqlDatabase::addDatabase(QtDriverName(), mConnectionName);
    Configure(settings);
    if (!mDb.open()) {
        const QSqlError error = mDb.lastError();
        mDb = QSqlDatabase();
        QSqlDatabase::removeDatabase(mConnectionName);
        QString text = error.databaseText().trimmed();
        if (text.isEmpty())
            text = error.driverText().trimmed();
        throw DriverError(DriverError::Kind::Connection, mErrorSource, text);
    }
    mOpen = true;
    try {
        AfterOpen();
    } catch (...) {
        Close();
        throw;
    }
}

void SqlSession::Close()
{
    if (!mOpen)
        return;
    DropStatements();
    ++mGeneration;
    mTables.clear();
    if (TransactionOpen()) {
        try {
            RollbackTransaction();
        } catch (const Error&) {
            // The connection goes anyway; the server rolls back what it still holds.
        }
    }
    mTransaction = false;
    mDb.close();
    mDb = QSqlDatabase();
    QSqlDatabase::removeDatabase(mConnectionName);
    mOpen = false;
}

void SqlSession::DropStatements()
{
    mStatements.clear();
}

void SqlSession::SetDbms(QString name, QString version)
{
    mDbmsName = std::move(name);
    mDbmsVersion = std::move(version);
}

std::unique_ptr<SqlStatement> SqlSession::Prepare(const QString& sql)
{
    if (!mOpen)
        RaiseAdo(adErrInvalidConnection, QStringLiteral("ADODB.Connection"));
    return PrepareStatement(sql);
}

SqlStatement& SqlSession::Cached(const QString& sql)
{
    if (auto it = mStatements.find(sql); it != mStatements.end())
        return **it;
    std::shared_ptr<SqlStatement> statement = Prepare(sql);
    mStatements.insert(sql, statement);
    return *statement;
}

void SqlSession::Run(const QString& sql)
{
    std::unique_ptr<SqlStatement> statement = Prepare(sql);
    statement->Execute({});
    statement->Finish();
}

QString SqlSession::QuoteName(const QString& name) const
{
    // The standard's double quotes, doubled inside: SQLite, PostgreSQL, and the ODBC drivers of
    // SQL Server and Oracle all take them (QODBC's own quoting mangles SQLite's quote character).
    return u'"' + QString(name).replace(u'"', QStringLiteral("\"\"")) + u'"';
}

QString SqlSession::QuoteTable(const QString& schema, const QString& table) const
{
    // Each part on its own: a dot inside a quoted name must not split it.
    return schema.isEmpty() ? QuoteName(table) : QuoteName(schema) + u'.' + QuoteName(table);
}

bool SqlSession::InTransaction() const
{
    return mOpen && TransactionOpen();
}

void SqlSession::Begin(bool forWriting)
{
    if (!mOpen)
        RaiseAdo(adErrInvalidConnection, QStringLiteral("ADODB.Connection"));
    if (TransactionOpen())
        RaiseAdo(adErrFeatureNotAvailable, QStringLiteral("ADODB.Connection"));
    BeginTransaction(forWriting);
    mTransaction = true;
}

void SqlSession::Commit()
{
    if (!InTransaction())
        RaiseAdo(adErrIllegalOperation, QStringLiteral("ADODB.Connection"));
    CommitTransaction();
    mTransaction = false;
}

void SqlSession::Rollback()
{
    if (!InTransaction())
        RaiseAdo(adErrIllegalOperation, QStringLiteral("ADODB.Connection"));
    mTransaction = false;
    RollbackTransaction();
}

void SqlSession::BeginTransaction(bool)
{
    if (!mDb.transaction())
        RaiseQtError(mDb.lastError());
}

void SqlSession::CommitTransaction()
{
    if (!mDb.commit())
        RaiseQtError(mDb.lastError());
}

void SqlSession::RollbackTransaction()
{
    if (!mDb.rollback())
        RaiseQtError(mDb.lastError());
}

const TableInfo& SqlSession::Table(const QString& schema, const QString& table)
{
    const QString key = schema.toLower() + u'\x1f' + table.toLower();
    if (auto it = mTables.find(key); it != mTables.end())
        return *it;
    return *mTables.insert(key, DescribeTable(schema, table));
}

QVariant SqlSession::ToParameter(const Variant& value, DataTypeEnum type) const
{
    if (value.IsNull() || value.IsEmpty()) {
        // A typed Null, so that drivers that bind by type know what kind of Null it is.
        switch (FieldTypeInfoOf(type) ? FieldTypeInfoOf(type)->storage : StorageKind::Text) {
        case StorageKind::Integer: return QVariant(QMetaType::fromType<qlonglong>());
        case StorageKind::Real:
        case StorageKind::Currency: return QVariant(QMetaType::fromType<double>());
        case StorageKind::Date: return QVariant(QMetaType::fromType<QDateTime>());
        case StorageKind::Boolean: return QVariant(QMetaType::fromType<bool>());
        case StorageKind::Text: return QVariant(QMetaType::fromType<QString>());
        }
    }
    if (const auto* text = value.As<QString>()) {
        // Drivers bind a null QString as SQL Null: an empty text must stay a text.
        return text->isNull() ? QVariant(QString(QLatin1StringView(""))) : QVariant(*text);
    }
    if (const auto* b = value.As<bool>())
        return *b;
    if (const auto* i = value.As<std::int16_t>())
        return static_cast<int>(*i);
    if (const auto* l = value.As<std::int32_t>())
        return static_cast<int>(*l);
    if (const auto* u = value.As<std::uint8_t>())
        return static_cast<int>(*u);
    if (const auto* f = value.As<float>())
        return *f;
    if (const auto* d = value.As<double>()) {
        // Whole numbers of integer columns go as integers, which every driver binds exactly.
        if (FieldTypeInfoOf(type) && FieldTypeInfoOf(type)->storage == StorageKind::Integer)
            return static_cast<qlonglong>(*d);
        return *d;
    }
    if (const auto* c = value.As<Currency>())
        return static_cast<double>(c->Scaled()) / Currency::Scale;
    if (const auto* date = value.As<Date>()) {
        const QDateTime stamp = ToQDateTime(*date);
        switch (type) {
        case adDBDate: return stamp.date();
        case adDBTime: return stamp.time();
        default: return stamp;
        }
    }
    return CStr(value);
}

QString SqlSession::DateMatch(const QString& quotedColumn) const
{
    return quotedColumn + QStringLiteral(" BETWEEN ? AND ?");
}

std::vector<QVariant> SqlSession::DateParameters(const Variant& value, DataTypeEnum type) const
{
    const QDateTime stamp = ToQDateTime(value.As<Date>() ? *value.As<Date>() : CDate(value));
    return {ToParameter(Variant(DateFromQDateTime(stamp.addMSecs(-1))), type),
            ToParameter(Variant(DateFromQDateTime(stamp.addMSecs(1))), type)};
}

QString SqlSession::ReturningClause(const QStringList&) const
{
    return {};
}

std::optional<Variant> SqlSession::LastGeneratedKey()
{
    return std::nullopt;
}

QString SqlSession::WillExecute(const QString& source) const
{
    return mListener.willExecute ? mListener.willExecute(source) : source;
}

void SqlSession::ExecuteComplete(int rowsAffected, const Error* error) const
{
    if (mListener.executeComplete)
        mListener.executeComplete(rowsAffected, error);
}

void SqlSession::RaiseQtError(const QSqlError& error) const
{
    QString text = error.databaseText().trimmed();
    if (text.isEmpty())
        text = error.driverText().trimmed();
    throw DriverError(ClassifyQtError(error), mErrorSource, text);
}

DriverError::Kind SqlSession::ClassifyQtError(const QSqlError& error) const
{
    return error.type() == QSqlError::ConnectionError ? DriverError::Kind::Connection : DriverError::Kind::Statement;
}

}  // namespace korvex::ado
