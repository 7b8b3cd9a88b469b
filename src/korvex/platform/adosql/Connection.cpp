// Opening, statements, transactions and the provider names of a Connection.
#include "korvex/platform/adosql/Connection.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/adosql/ConnectionString.h"
#include "korvex/platform/adosql/DriverError.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/adosql/SqlRecordsetLoader.h"
#include "korvex/platform/adosql/SqlSession.h"
#include "korvex/runtime/Conversions.h"

#include <QRegularExpression>
#include <QSqlDatabase>

namespace korvex::ado {
namespace {

const QString ConnectionSource = QStringLiteral("ADODB.Connection");

// A provider name without its version: "SQLOLEDB.1" -> "SQLOLEDB".
QString BaseName(const QString& provider)
{
    static const QRegularExpression version(QStringLiteral("\\.\\d+$"));
    return QString(provider).remove(version).trimmed();
}

bool Is(const QString& name, std::initializer_list<const char*> names)
{
    for (const char* n : names) {
        if (name.compare(QLatin1StringView(n), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

[[noreturn]] void RaiseProviderNotFound()
{
    throw Error(adErrProviderNotFound, ConnectionSource,
                QStringLiteral("Provider cannot be found. It may not be properly installed."));
}

std::vector<QVariant> ParametersOf(const SqlSession& session, const Variant& parameters)
{
    std::vector<QVariant> out;
    if (parameters.IsEmpty())
        return out;
    const QList<Variant> items = parameters.IsArray() ? parameters.Items() : QList<Variant>{parameters};
    for (const Variant& item : items)
        out.push_back(session.ToParameter(item, adVariant));
    return out;
}

}  // namespace

struct Connection::Resolved {
    SqlSession::Dialect dialect = SqlSession::Dialect::SQLite;
    QString provider;
    QString dataProvider;
    ado::ConnectionString settings;
    QString errorSource;
};

Connection::Connection()
{
    static const int registered = qRegisterMetaType<EventStatusEnum>("korvex::ado::EventStatusEnum&");
    Q_UNUSED(registered);
}

Connection::~Connection()
{
    // Recordsets may outlive the connection; they find its session closed (3709).
    if (mSession) {
        mSession->SetListener({});
        mSession->Close();
    }
}

void Connection::SetConnectionString(const QString& value)
{
    if (State() == adStateOpen)
        RaiseAdo(adErrObjectOpen, ConnectionSource);
    mConnectionString = value;
}

QString Connection::Provider() const
{
    return mProvider.isEmpty() ? QStringLiteral("SQLite.1") : mProvider;
}

void Connection::SetProvider(const QString& value)
{
    if (State() == adStateOpen)
        RaiseAdo(adErrObjectOpen, ConnectionSource);
    mProvider = value;
}

int Connection::State() const
{
    return mSession && mSession->IsOpen() ? adStateOpen : adStateClosed;
}

Properties* Connection::Properties() const
{
    if (mProperties)
        return mProperties;
    auto* self = const_cast<Connection*>(this);
    mProperties = new ado::Properties(self);
    mProperties->Add(
        QStringLiteral("Data Provider"), adBSTR, [self] { return Variant(self->mDataProvider); },
        [self](const Variant& value) { self->mDataProvider = CStr(value); });
    mProperties->Add(QStringLiteral("DBMS Name"), adBSTR,
                     [self] { return Variant(self->State() == adStateOpen ? self->mSession->DbmsName() : QString()); });
    mProperties->Add(QStringLiteral("DBMS Version"), adBSTR,
                     [self] { return Variant(self->State() == adStateOpen ? self->mSession->DbmsVersion() : QString()); });
    mProperties->Add(QStringLiteral("Data Source"), adBSTR, [self] {
        try {
            return Variant(ado::ConnectionString::Parse(self->mConnectionString)
                               .Value({QStringLiteral("Data Source"), QStringLiteral("Database"), QStringLiteral("Host"),
                                       QStringLiteral("Server"), QStringLiteral("DSN")}));
        } catch (const Error&) {
            return Variant(QString());
        }
    });
    return mProperties;
}

Connection::Resolved Connection::Resolve(const QString& connectionString) const
{
    Resolved r;
    r.settings = ado::ConnectionString::Parse(connectionString);
    QString name = r.settings.Value({QStringLiteral("Provider")}, mProvider);
    if (name.isEmpty())
        name = r.settings.Has(QStringLiteral("Driver")) || r.settings.Has(QStringLiteral("DSN")) ? QStringLiteral("MSDASQL")
                                                                                                 : QStringLiteral("SQLite");
    QString inner = BaseName(name);
    if (Is(inner, {"MSDataShape"})) {
        r.dataProvider = r.settings.Value({QStringLiteral("Data Provider")}, mDataProvider);
        inner = BaseName(r.dataProvider);
    }
    QString provider;
    if (Is(inner, {"SQLite", "SQLite3"})) {
        r.dialect = SqlSession::Dialect::SQLite;
        provider = QStringLiteral("SQLite.1");
        r.errorSource = QStringLiteral("Korvex Provider for SQLite");
    } else if (Is(inner, {"PostgreSQL", "Postgres", "PgSQL"})) {
        r.dialect = SqlSession::Dialect::PostgreSQL;
        provider = QStringLiteral("PostgreSQL.1");
        r.errorSource = QStringLiteral("Korvex Provider for PostgreSQL");
    } else if (Is(inner, {"MSDASQL", "ODBC"})) {
        r.dialect = SqlSession::Dialect::ODBC;
        provider = QStringLiteral("MSDASQL.1");
        r.errorSource = QStringLiteral("Korvex Provider for ODBC Drivers");
    } else {
        RaiseProviderNotFound();
    }
    r.provider = r.dataProvider.isEmpty() ? provider : QStringLiteral("MSDataShape.1");
    return r;
}

void Connection::Open(const QString& ConnectionString, const QString& UserID, const QString& Password, int)
{
    if (State() == adStateOpen)
        RaiseAdo(adErrObjectOpen, ConnectionSource);
    const QString text = ConnectionString.isEmpty() ? mConnectionString : ConnectionString;
    Resolved r = Resolve(text);
    if (!UserID.isEmpty())
        r.settings.Set(QStringLiteral("User ID"), UserID);
    if (!Password.isEmpty())
        r.settings.Set(QStringLiteral("Password"), Password);
    // Reopening keeps the session, so that recordsets opened before write through it again.
    std::shared_ptr<SqlSession> session =
        mSession && mSession->Kind() == r.dialect ? mSession : SqlSession::Create(r.dialect, r.errorSource);
    if (!QSqlDatabase::isDriverAvailable(session->QtDriverName()))
        RaiseProviderNotFound();
    session->Open(r.settings);
    session->SetListener({[this](const QString& source) { return Announce(source); },
                          [this](int rows, const Error* error) { Report(rows, error); }});
    mSession = std::move(session);
    mConnectionString = text;
    mProvider = r.provider;
    mDataProvider = r.dataProvider;
}

void Connection::Close()
{
    if (State() != adStateOpen)
        RaiseAdo(adErrObjectClosed, ConnectionSource);
    if (mSession->InTransaction())
        throw Error(adErrInTransaction, ConnectionSource,
                    QStringLiteral("Connection object cannot be explicitly closed while in a transaction."));
    mSession->Close();
}

SqlSession& Connection::Session() const
{
    if (State() != adStateOpen)
        RaiseAdo(adErrInvalidConnection, ConnectionSource);
    return *mSession;
}

QString Connection::Announce(const QString& source)
{
    QString text = source;
    EventStatusEnum status = adStatusOK;
    emit WillExecute(text, status, this);
    if (status == adStatusCancel) {
        const Error cancelled(adErrOperationCancelled, ConnectionSource, AdoErrorDescription(adErrOperationCancelled));
        EventStatusEnum after = adStatusErrorsOccurred;
        emit ExecuteComplete(-1, &cancelled, after, this);
        throw cancelled;
    }
    return text;
}

void Connection::Report(int rowsAffected, const Error* error)
{
    EventStatusEnum status = error ? adStatusErrorsOccurred : adStatusOK;
    emit ExecuteComplete(rowsAffected, error, status, this);
}

std::shared_ptr<Recordset> Connection::Execute(const QString& CommandText, const Variant& Parameters, int Options,
                                               int* RecordsAffected)
{
    SqlSession& session = Session();
    const std::vector<QVariant> parameters = ParametersOf(session, Parameters);
    const int type = Options < 0 ? adCmdText : Options & ~0xF0;  // without the execute options
    const SqlRecordsetLoader::Result result = SqlRecordsetLoader(mSession).Run(CommandText, type, parameters);
    auto recordset = std::make_shared<Recordset>();
    if (result.store)
        recordset->OpenStore(result.store, adOpenForwardOnly, adLockReadOnly);
    if (RecordsAffected)
        *RecordsAffected = result.rowsAffected;
    return recordset;
}

std::shared_ptr<RecordsetStore> Connection::OpenSource(const QString& source, int options)
{
    Session();
    const int type = options < 0 ? adCmdText : options & ~0xF0;
    return SqlRecordsetLoader(mSession).Run(source, type, {}).store;
}

int Connection::BeginTrans()
{
    Session().Begin();
    return 1;
}

void Connection::CommitTrans()
{
    Session().Commit();
}

void Connection::RollbackTrans()
{
    Session().Rollback();
}

}  // namespace korvex::ado
