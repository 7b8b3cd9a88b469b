// SQLite statements over the sqlite3 handle of Qt's driver, and SQLite's ways with dates,
// transactions and table descriptions.
#include "korvex/platform/adosql/SqliteSession.h"

#include "korvex/runtime/Conversions.h"

#include <QSqlDriver>

#include <sqlite3.h>

#include <cmath>

namespace korvex::ado {
namespace {

// Day 0 of the recordset's dates (1899-12-30) as a Julian day number.
constexpr double JulianDayOfEpoch = 2415018.5;

QString FromUtf8(const char* text)
{
    return text ? QString::fromUtf8(text) : QString();
}

Variant IntegerValue(sqlite3_int64 v)
{
    if (v >= INT32_MIN && v <= INT32_MAX)
        return Variant(static_cast<std::int32_t>(v));
    return Variant(static_cast<double>(v));
}

class SqliteStatement : public SqlStatement {
public:
    SqliteStatement(const SqliteSession& session, sqlite3_stmt* statement) : mSession(session), mStatement(statement) {}
    ~SqliteStatement() override { sqlite3_finalize(mStatement); }

    void Execute(std::span<const QVariant> parameters) override
    {
        // The parameters outlive the run, so SQLite may read texts where they lie.
        Rewind();
        for (std::size_t i = 0; i < parameters.size(); ++i)
            BindParameter(static_cast<int>(i) + 1, parameters[i], SQLITE_STATIC);
        Run();
    }

    void Bind(int position, const QVariant& value) override
    {
        // The caller's QVariant may be gone by the time the statement runs: SQLite keeps a copy.
        Rewind();
        BindParameter(position, value, SQLITE_TRANSIENT);
    }

    void BindText(int position, QStringView text) override
    {
        Rewind();
        // A null view is an empty text here: SQLite would bind a null pointer as Null.
        const void* characters = text.isNull() ? static_cast<const void*>(u"") : text.data();
        const int rc = sqlite3_bind_text16(mStatement, position, characters, static_cast<int>(text.size() * 2), SQLITE_STATIC);
        if (rc != SQLITE_OK)
            mSession.RaiseSqlite(rc);
    }

    void BindInt(int position, int value) override { BindInt64(position, value); }

    void BindInt64(int position, qlonglong value) override
    {
        Rewind();
        const int rc = sqlite3_bind_int64(mStatement, position, value);
        if (rc != SQLITE_OK)
            mSession.RaiseSqlite(rc);
    }

    void BindDouble(int position, double value) override
    {
        Rewind();
        const int rc = sqlite3_bind_double(mStatement, position, value);
        if (rc != SQLITE_OK)
            mSession.RaiseSqlite(rc);
    }

    void Run() override
    {
        Rewind();
        mReset = false;
        mPending = false;
        mDone = false;
        mChanges = 0;
        Step(true);
    }

    int RowsAffected() const override { return mChanges; }
    int ColumnCount() const override { return sqlite3_column_count(mStatement); }

    ResultColumn Column(int index) const override
    {
        ResultColumn column;
        column.name = FromUtf8(sqlite3_column_name(mStatement, index));
        column.baseTable = FromUtf8(sqlite3_column_table_name(mStatement, index));
        column.baseColumn = FromUtf8(sqlite3_column_origin_name(mStatement, index));
        column.type = ColumnTypeOfDeclared(FromUtf8(sqlite3_column_decltype(mStatement, index)));
        if (column.type.type == adWChar)
            column.type.type = adVarWChar;  // SQLite keeps CHAR(n) texts as written, unpadded
        if (!column.baseTable.isEmpty()) {
            int notNull = 0;
            int key = 0;
            int increment = 0;
            if (sqlite3_table_column_metadata(sqlite3_db_handle(mStatement), sqlite3_column_database_name(mStatement, index),
                                              sqlite3_column_table_name(mStatement, index),
                                              sqlite3_column_origin_name(mStatement, index), nullptr, nullptr, &notNull,
                                              &key, &increment) == SQLITE_OK)
                column.nullable = notNull ? 0 : 1;
        }
        return column;
    }

    bool Next() override
    {
        if (mPending) {
            mPending = false;
            return true;
        }
        if (mDone)
            return false;
        return Step(false);
    }

    Variant Value(int index) const override
    {
        switch (sqlite3_column_type(mStatement, index)) {
        case SQLITE_NULL: return Null;
        case SQLITE_INTEGER: return IntegerValue(sqlite3_column_int64(mStatement, index));
        case SQLITE_FLOAT: return Variant(sqlite3_column_double(mStatement, index));
        case SQLITE_BLOB: {
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(mStatement, index));
            const QByteArray data(bytes, sqlite3_column_bytes(mStatement, index));
            return Variant(QStringLiteral("0x") + QString::fromLatin1(data.toHex()));
        }
        default: {
            const auto* text = static_cast<const QChar*>(sqlite3_column_text16(mStatement, index));
            return Variant(QString(text, sqlite3_column_bytes16(mStatement, index) / 2));
        }
        }
    }

    Variant PeekValue(int index) const override
    {
        if (sqlite3_column_type(mStatement, index) != SQLITE_TEXT)
            return Value(index);
        const auto* text = static_cast<const QChar*>(sqlite3_column_text16(mStatement, index));
        return Variant(QString::fromRawData(text, sqlite3_column_bytes16(mStatement, index) / 2));
    }

    void Finish() override
    {
        // A statement left in the middle of its rows keeps the database's read lock.
        sqlite3_reset(mStatement);
        mReset = true;
        mPending = false;
        mDone = true;
    }

private:
    // Before the first binding of a run: the last run ends, unless Finish ended it already.
    // Every parameter is bound again, so the old bindings need no clearing.
    void Rewind()
    {
        if (mReset)
            return;
        sqlite3_reset(mStatement);
        mReset = true;
    }

    void BindParameter(int position, const QVariant& value, sqlite3_destructor_type keep)
    {
        int rc = SQLITE_OK;
        if (value.isNull()) {
            rc = sqlite3_bind_null(mStatement, position);
        } else {
            switch (value.metaType().id()) {
            // The types a session's parameters mostly have, read without QVariant's conversions.
            case QMetaType::Int: rc = sqlite3_bind_int64(mStatement, position, *static_cast<const int*>(value.constData())); break;
            case QMetaType::LongLong:
                rc = sqlite3_bind_int64(mStatement, position, *static_cast<const qlonglong*>(value.constData()));
                break;
            case QMetaType::Double: rc = sqlite3_bind_double(mStatement, position, *static_cast<const double*>(value.constData())); break;
            case QMetaType::Bool:
            case QMetaType::UInt:
            case QMetaType::ULongLong:
            case QMetaType::Short:
            case QMetaType::UShort:
            case QMetaType::Char:
            case QMetaType::UChar: rc = sqlite3_bind_int64(mStatement, position, value.toLongLong()); break;
            case QMetaType::Float: rc = sqlite3_bind_double(mStatement, position, value.toDouble()); break;
            case QMetaType::QString: {
                const auto* text = static_cast<const QString*>(value.constData());
                rc = sqlite3_bind_text16(mStatement, position, text->utf16(), static_cast<int>(text->size() * 2), keep);
                break;
            }
            default: {
                const QString text = value.toString();
                rc = sqlite3_bind_text16(mStatement, position, text.utf16(), static_cast<int>(text.size() * 2),
                                         SQLITE_TRANSIENT);
            }
            }
        }
        if (rc != SQLITE_OK)
            mSession.RaiseSqlite(rc);
    }

    bool Step(bool first)
    {
        const int rc = sqlite3_step(mStatement);
        if (rc == SQLITE_ROW) {
            mPending = first;
            return true;
        }
        mDone = true;
        if (rc == SQLITE_DONE) {
            mChanges = sqlite3_changes(sqlite3_db_handle(mStatement));
            return false;
        }
        sqlite3_reset(mStatement);
        mReset = true;
        mSession.RaiseSqlite(rc);
    }

    const SqliteSession& mSession;
    sqlite3_stmt* mStatement;
    bool mPending = false;
    bool mDone = true;
    bool mReset = true;  // reset since it last ran
    int mChanges = 0;
};

// A text that SQLite left blank after a statement: nothing to run.
class EmptyStatement : public SqlStatement {
public:
    void Execute(std::span<const QVariant>) override {}
    int RowsAffected() const override { return 0; }
    int ColumnCount() const override { return 0; }
    ResultColumn Column(int) const override { return {}; }
    bool Next() override { return false; }
    Variant Value(int) const override { return Null; }
    void Finish() override {}
};

QString IsoText(const Variant& value, DataTypeEnum type)
{
    const QDateTime stamp = ToQDateTime(*value.As<Date>());
    const bool fraction = stamp.time().msec() != 0;
    switch (type) {
    case adDBDate: return stamp.date().toString(Qt::ISODate);
    case adDBTime: return stamp.time().toString(fraction ? QStringLiteral("HH:mm:ss.zzz") : QStringLiteral("HH:mm:ss"));
    default:
        return stamp.toString(fraction ? QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz") : QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    }
}

}  // namespace

void SqliteSession::Configure(const ConnectionString& settings)
{
    Database().setDatabaseName(
        settings.Value({QStringLiteral("Data Source"), QStringLiteral("Database"), QStringLiteral("DataSource"),
                        QStringLiteral("Filename")}));
    QStringList options;
    options << QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1")
                   .arg(settings.Value({QStringLiteral("Busy Timeout")}, QStringLiteral("5000")).toInt());
    if (settings.Value({QStringLiteral("Mode")}).compare(QStringLiteral("Read"), Qt::CaseInsensitive) == 0)
        options << QStringLiteral("QSQLITE_OPEN_READONLY");
    Database().setConnectOptions(options.join(u';'));
}

void SqliteSession::AfterOpen()
{
    const QVariant handle = Database().driver()->handle();
    mHandle = handle.isValid() ? *static_cast<sqlite3* const*>(handle.constData()) : nullptr;
    SetDbms(QStringLiteral("SQLite"), QString::fromLatin1(sqlite3_libversion()));
}

void SqliteSession::RaiseSqlite(int code) const
{
    using Kind = DriverError::Kind;
    const int primary = (mHandle ? sqlite3_extended_errcode(mHandle) : code) & 0xff;
    Kind kind = Kind::Statement;
    switch (primary) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED: kind = Kind::Busy; break;
    case SQLITE_CONSTRAINT: kind = Kind::Integrity; break;
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG: kind = Kind::Schema; break;
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_NOMEM:
    case SQLITE_READONLY:
    case SQLITE_CORRUPT:
    case SQLITE_CANTOPEN:
    case SQLITE_NOTADB:
    case SQLITE_PROTOCOL:
    case SQLITE_PERM: kind = Kind::Resource; break;
    default: break;
    }
    const QString text = mHandle ? QString::fromUtf8(sqlite3_errmsg(mHandle)) : QString::fromUtf8(sqlite3_errstr(code));
    throw DriverError(kind, ErrorSource(), text);
}

std::unique_ptr<SqlStatement> SqliteSession::PrepareStatement(const QString& sql)
{
    sqlite3_stmt* statement = nullptr;
    const void* tail = nullptr;
    const int rc = sqlite3_prepare16_v2(mHandle, sql.utf16(), static_cast<int>(sql.size() * 2), &statement, &tail);
    if (rc != SQLITE_OK)
        RaiseSqlite(rc);
    const auto consumed = (static_cast<const char16_t*>(tail) - reinterpret_cast<const char16_t*>(sql.utf16()));
    if (!QStringView(sql).mid(consumed).trimmed().isEmpty()) {
        sqlite3_finalize(statement);
        throw DriverError(DriverError::Kind::Statement, ErrorSource(),
                          QStringLiteral("Only one statement can be run at a time."));
    }
    if (!statement)
        return std::make_unique<EmptyStatement>();
    return std::make_unique<SqliteStatement>(*this, statement);
}

TableInfo SqliteSession::DescribeTable(const QString& schema, const QString& table)
{
    TableInfo info;
    info.schema = schema;
    info.name = table;
    const QString prefix = schema.isEmpty() ? QString() : QuoteName(schema) + u'.';
    std::unique_ptr<SqlStatement> pragma = Prepare(QStringLiteral("PRAGMA %1table_info(%2)").arg(prefix, QuoteName(table)));
    pragma->Execute({});
    int keys = 0;
    while (pragma->Next()) {
        TableColumnInfo column;
        column.name = CStr(pragma->Value(1));
        const QString declared = pragma->Value(2).IsNull() ? QString() : CStr(pragma->Value(2));
        column.type = ColumnTypeOfDeclared(declared);
        if (column.type.type == adWChar)
            column.type.type = adVarWChar;
        column.notNull = CLng(pragma->Value(3)) != 0;
        column.keyOrdinal = CLng(pragma->Value(5));
        // An INTEGER PRIMARY KEY is the rowid itself: SQLite numbers new rows.
        column.autoIncrement = column.keyOrdinal > 0 && declared.trimmed().compare(u"INTEGER", Qt::CaseInsensitive) == 0;
        keys += column.keyOrdinal > 0 ? 1 : 0;
        info.columns.push_back(std::move(column));
    }
    pragma->Finish();
    info.exists = !info.columns.empty();
    if (keys > 1) {
        for (TableColumnInfo& column : info.columns)
            column.autoIncrement = false;
    }
    if (info.exists) {
        try {
            Prepare(QStringLiteral("SELECT rowid FROM %1%2 LIMIT 0").arg(prefix, QuoteName(table)));
            info.hasRowId = true;
        } catch (const DriverError&) {
            info.hasRowId = false;  // a view, or a table WITHOUT ROWID
        }
    }
    return info;
}

void SqliteSession::BeginTransaction(bool forWriting)
{
    const int rc = sqlite3_exec(mHandle, forWriting ? "BEGIN IMMEDIATE" : "BEGIN", nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK)
        RaiseSqlite(rc);
}

void SqliteSession::CommitTransaction()
{
    const int rc = sqlite3_exec(mHandle, "COMMIT", nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK)
        RaiseSqlite(rc);
}

void SqliteSession::RollbackTransaction()
{
    if (sqlite3_get_autocommit(mHandle))
        return;  // SQLite rolled back already (a full disk, an I/O error)
    const int rc = sqlite3_exec(mHandle, "ROLLBACK", nullptr, nullptr, nullptr);
    if (rc != SQLITE_OK)
        RaiseSqlite(rc);
}

bool SqliteSession::TransactionOpen() const
{
    return mHandle && !sqlite3_get_autocommit(mHandle);
}

QVariant SqliteSession::ToParameter(const Variant& value, DataTypeEnum type) const
{
    // SQLite keeps dates as ISO texts and Booleans as 0 and 1.
    if (value.As<Date>())
        return IsoText(value, type);
    if (const auto* b = value.As<bool>())
        return *b ? 1 : 0;
    return SqlSession::ToParameter(value, type);
}

Variant SqliteSession::FromColumn(Variant value, DataTypeEnum type) const
{
    const FieldTypeInfo* info = FieldTypeInfoOf(type);
    if (!info || value.IsNull())
        return value;
    if (info->storage == StorageKind::Date) {
        if (const auto* text = value.As<QString>()) {
            QDateTime stamp = QDateTime::fromString(*text, Qt::ISODateWithMs);
            if (!stamp.isValid())
                stamp = QDateTime::fromString(*text, QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
            if (!stamp.isValid()) {
                if (const QDate day = QDate::fromString(*text, Qt::ISODate); day.isValid())
                    stamp = QDateTime(day, QTime(0, 0));
            }
            if (!stamp.isValid()) {
                if (const QTime time = QTime::fromString(*text, Qt::ISODateWithMs); time.isValid())
                    stamp = QDateTime(QDate(1899, 12, 30), time);
            }
            return stamp.isValid() ? Variant(DateFromQDateTime(stamp)) : value;
        }
        if (const auto* d = value.As<double>())
            return Variant(Date{*d - JulianDayOfEpoch});  // SQLite's julianday()
        if (const auto* l = value.As<std::int32_t>())
            return Variant(DateFromQDateTime(QDateTime::fromSecsSinceEpoch(*l)));  // unixepoch()
    }
    return value;
}

QString SqliteSession::DateMatch(const QString& quotedColumn) const
{
    // Texts written with or without "T", fractions or seconds compare as the instants they are.
    return QStringLiteral("julianday(%1) BETWEEN julianday(?) AND julianday(?)").arg(quotedColumn);
}

std::optional<Variant> SqliteSession::LastGeneratedKey()
{
    return IntegerValue(sqlite3_last_insert_rowid(mHandle));
}

}  // namespace korvex::ado
