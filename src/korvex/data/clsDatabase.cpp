// The database helper's connection slot, server clock and kind, and the shared data routines.
#include "korvex/data/clsDatabase.h"

#include "korvex/core/SharedContext.h"
#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/Property.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/system/Timers.h"
#include "korvex/runtime/Conversions.h"

namespace korvex {
namespace {

using namespace korvex::ado;

// The server's clock as last read, per thread: the recordset stays open and is requeried when
// the one-second timer has marked it stale.
struct ServerClock {
    std::shared_ptr<Recordset> recordset;
    bool refresh = false;
};

ServerClock& Clock()
{
    thread_local ServerClock clock;
    return clock;
}

void StartRefreshTimer()
{
    SetSingleShotTimer(1000, [] { Clock().refresh = true; });
}

// The statement that reads the server's local date and time.
QString ServerTimeQuery(ServerTypes type)
{
    switch (type) {
    case ST_SQLServer: return QStringLiteral("Select GetDate()");
    // Days since 1899-12-30 with the fraction of the day: the recordset's own date numbers.
    case ST_SQLite: return QStringLiteral("SELECT julianday('now', 'localtime') - 2415018.5");
    // The moment of the statement, not of its transaction (which LOCALTIMESTAMP would give).
    case ST_PostgreSQL: return QStringLiteral("SELECT CAST(clock_timestamp() AS timestamp(3))");
    default: return QStringLiteral("Select SysDate From Dual");
    }
}

ServerTypes TypeOfName(const QString& name)
{
    if (name == u"SQLite")
        return ST_SQLite;
    if (name == u"PostgreSQL")
        return ST_PostgreSQL;
    return ST_Unknown;
}

const std::shared_ptr<Connection>& RequireConnection()
{
    const std::shared_ptr<Connection>& connection = SharedContext::ForThisThread().gcn;
    if (!connection)
        RaiseAdo(adErrInvalidConnection, QStringLiteral("clsDatabase"));
    return connection;
}

}  // namespace

std::shared_ptr<clsDatabase> clsDatabase::Create()
{
    struct Instance : clsDatabase {};
    auto instance = std::make_shared<Instance>();
    SharedContext::ForThisThread().CurrentDatabase = instance;
    return instance;
}

clsDatabase& clsDatabase::Global()
{
    thread_local std::shared_ptr<clsDatabase> implicit = Create();
    return *implicit;
}

std::shared_ptr<clsDatabase> clsDatabase::Current()
{
    return SharedContext::ForThisThread().CurrentDatabase;
}

std::shared_ptr<Connection> clsDatabase::gcn() const
{
    return SharedContext::ForThisThread().gcn;
}

void clsDatabase::SetGcn(std::shared_ptr<Connection> connection)
{
    if (connection != SharedContext::ForThisThread().gcn) {
        // The server's clock was read through the old connection: read it afresh through the new.
        Clock().recordset.reset();
        Clock().refresh = false;
    }
    SharedContext::ForThisThread().gcn = std::move(connection);
}

Variant clsDatabase::GcnVariant() const
{
    const auto connection = gcn();
    return connection ? Variant(std::static_pointer_cast<QObject>(connection)) : Variant::Nothing();
}

void clsDatabase::SetGcnVariant(const Variant& connection)
{
    if (!connection.IsObject())
        Raise(vbErrTypeMismatch);
    if (!connection.Object()) {
        SetGcn(nullptr);
        return;
    }
    // Only a connection held by a shared owner can be kept as the shared connection.
    auto shared = std::dynamic_pointer_cast<Connection>(connection.SharedObject());
    if (!shared)
        Raise(vbErrTypeMismatch);
    SetGcn(std::move(shared));
}

ServerTypes clsDatabase::ServerType() const
{
    return ServerTypeOf(RequireConnection().get());
}

Date clsDatabase::ServerDateTime()
{
    ServerClock& clock = Clock();
    if (!clock.recordset)
        clock.recordset = std::make_shared<Recordset>();
    Recordset& rs = *clock.recordset;
    if (rs.State() == adStateOpen) {
        if (clock.refresh) {
            rs.Requery();
            clock.refresh = false;
            StartRefreshTimer();
        }
    } else {
        const std::shared_ptr<Connection>& connection = RequireConnection();
        rs.SetCursorLocation(adUseServer);
        rs.Open(Variant(ServerTimeQuery(ServerTypeOf(connection.get()))), Variant(static_cast<QObject*>(connection.get())),
                adOpenForwardOnly, adLockReadOnly, adCmdText);
        clock.refresh = false;
        StartRefreshTimer();
    }
    return CDate(rs.Fields()->Item(0)->Value());
}

ServerTypes ServerTypeOf(const Connection* connection)
{
    if (!connection)
        RaiseAdo(adErrInvalidConnection, QStringLiteral("clsDatabase"));
    const QString provider = connection->Provider();
    if (provider == u"SQLOLEDB.1")
        return ST_SQLServer;
    if (provider == u"MSDAORA.1")
        return ST_Oracle;
    if (provider == u"MSDataShape.1") {
        const QString data = CStr(connection->Properties()->Item(Variant("Data Provider"))->Value());
        if (data == u"SQLOLEDB")
            return ST_SQLServer;
        if (data == u"MSDAORA")
            return ST_Oracle;
        return TypeOfName(data);
    }
    if (provider == u"SQLite.1")
        return ST_SQLite;
    if (provider == u"PostgreSQL.1")
        return ST_PostgreSQL;
    if (provider == u"MSDASQL.1" && connection->State() == adStateOpen)
        return TypeOfName(CStr(connection->Properties()->Item(Variant("DBMS Name"))->Value()));
    return ST_Unknown;
}

bool IsNumericFieldType(int TypeCode)
{
    switch (TypeCode) {
    case adSmallInt:
    case adInteger:
    case adSingle:
    case adDouble:
    case adCurrency:
    case adDecimal:
    case adTinyInt:
    case adUnsignedTinyInt:
    case adUnsignedSmallInt:
    case adUnsignedInt:
    case adBigInt:
    case adUnsignedBigInt:
    case adNumeric:
    case adVarNumeric: return true;
    default: return false;
    }
}

bool IsTextFieldType(int TypeCode)
{
    switch (TypeCode) {
    case adBSTR:
    case adChar:
    case adWChar:
    case adVarChar:
    case adVarWChar: return true;
    default: return false;
    }
}

bool IsTextFieldTypeLong(int TypeCode)
{
    return IsTextFieldType(TypeCode) || TypeCode == adLongVarChar || TypeCode == adLongVarWChar;
}

bool NullToBoolean(const Variant& Value)
{
    return Value.IsNull() ? false : CBool(Value);
}

std::int32_t NullToLong(const Variant& Value)
{
    return Value.IsNull() ? 0 : CLng(Value);
}

QString NullToString(const Variant& Value)
{
    return Value.IsNull() ? QString() : CStr(Value);
}

bool ValuesEqual(const Variant& A, const Variant& B, bool CaseSensitive)
{
    if (A.IsNull() || B.IsNull())
        return A.IsNull() && B.IsNull();
    if (A.IsEmpty() || B.IsEmpty())
        return A.IsEmpty() && B.IsEmpty();
    if (A.VarType() == B.VarType()) {
        if (A.IsString() && !CaseSensitive)
            return A.As<QString>()->compare(*B.As<QString>(), Qt::CaseInsensitive) == 0;
        return A == B;
    }
    return CStr(A) == CStr(B);
}

std::shared_ptr<Recordset> CloneRecordset(Recordset& Rs)
{
    std::shared_ptr<Recordset> clone = Rs.Clone(adLockUnspecified);
    const Variant filter = Rs.Filter();
    if (!(filter.IsNumber() && CLng(filter) == 0))
        clone->SetFilter(filter);
    if (!Rs.Sort().isEmpty())
        clone->SetSort(Rs.Sort());
    return clone;
}

}  // namespace korvex
