// The database helper: the application's shared connection (gcn), the server's date and time
// (asked at most once a second), the kind of server behind the connection, and the small data
// routines the binding engine and the list controls share (type tests, Null conversions, value
// comparison, recordset clones that keep filter and sort).
#pragma once

#include "korvex/runtime/DateTime.h"
#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

#include <memory>

namespace korvex {

namespace ado {
class Connection;
class Recordset;
}  // namespace ado

// The kinds of server; SQLite and PostgreSQL come after the original three.
enum ServerTypes : int { ST_Unknown = 0, ST_SQLServer = 1, ST_Oracle = 2, ST_SQLite = 3, ST_PostgreSQL = 4 };

class clsDatabase : public QObject {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "clsDatabase")
    // The same members by name, for hosts that reach the helper through late binding.
    Q_PROPERTY(korvex::Variant gcn READ GcnVariant WRITE SetGcnVariant)
    Q_PROPERTY(korvex::Variant ServerDateTime READ ServerDateTimeVariant)
    Q_PROPERTY(int ServerType READ ServerTypeNumber)

public:
    // A new instance, registered as the thread's current one.
    static std::shared_ptr<clsDatabase> Create();
    // The implicit global instance of this thread, created (and registered) on first use.
    static clsDatabase& Global();
    // The thread's current instance; null until one has been created.
    static std::shared_ptr<clsDatabase> Current();

    // The shared connection (the thread's gcn slot).
    std::shared_ptr<ado::Connection> gcn() const;
    void SetGcn(std::shared_ptr<ado::Connection> connection);

    // The server's current date and time, read again at most once a second. Raises 3709 without
    // a connection or with a closed one, 3021 when the server returns no row.
    Date ServerDateTime();
    // ServerTypeOf(gcn); 3709 without a connection.
    ServerTypes ServerType() const;

protected:
    clsDatabase() = default;

private:
    Variant GcnVariant() const;
    void SetGcnVariant(const Variant& connection);
    Variant ServerDateTimeVariant() { return Variant(ServerDateTime()); }
    int ServerTypeNumber() const { return ServerType(); }
};

// The kind of server behind a connection, from its Provider (case-sensitive): "SQLOLEDB.1" and
// "MSDAORA.1"; under "MSDataShape.1" its "Data Provider" ("SQLOLEDB", "MSDAORA"). SQLite and
// PostgreSQL are told by their own provider names, also under MSDataShape, and under ODBC by
// the name the open connection's DBMS gives itself. 3709 for a missing connection.
ServerTypes ServerTypeOf(const ado::Connection* connection);
inline ServerTypes ServerTypeOf(const std::shared_ptr<ado::Connection>& connection)
{
    return ServerTypeOf(connection.get());
}

// ADO field type codes: numbers (integers, single, double, currency, decimal, numeric), texts,
// and texts including the long ones.
bool IsNumericFieldType(int TypeCode);
bool IsTextFieldType(int TypeCode);
bool IsTextFieldTypeLong(int TypeCode);

bool NullToBoolean(const Variant& Value);
std::int32_t NullToLong(const Variant& Value);
QString NullToString(const Variant& Value);

// Null equals only Null and Empty only Empty; values of one type compare exactly (text
// ignoring case unless CaseSensitive); values of different types compare as text.
bool ValuesEqual(const Variant& A, const Variant& B, bool CaseSensitive);

// A clone of the recordset (lock type kept) with its Filter and Sort.
std::shared_ptr<ado::Recordset> CloneRecordset(ado::Recordset& Rs);
inline std::shared_ptr<ado::Recordset> CloneRecordset(const std::shared_ptr<ado::Recordset>& Rs)
{
    return CloneRecordset(*Rs);
}

}  // namespace korvex
