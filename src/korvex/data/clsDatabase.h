// Stand-in for the database helper while the providers branch builds the real one: the data
// routines the binding engine shares, and a current-database object with the server kind and time.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/runtime/Variant.h"

#include <QObject>

namespace korvex {

namespace ado {
class Recordset;
}

enum ServerTypes : int { ST_Unknown = 0, ST_SQLServer = 1, ST_Oracle = 2 };

class clsDatabase : public QObject {
    Q_OBJECT
public:
    clsDatabase();
    ~clsDatabase() override;
    static clsDatabase* Current();

    ServerTypes ServerType() const { return mServerType; }
    void SetServerTypeForTests(ServerTypes type) { mServerType = type; }
    Variant ServerDateTime() const;

private:
    ServerTypes mServerType = ST_Unknown;
};

bool IsNumericFieldType(int TypeCode);
bool IsTextFieldType(int TypeCode);
bool NullToBoolean(const Variant& Value);
int NullToLong(const Variant& Value);
QString NullToString(const Variant& Value);
bool ValuesEqual(const Variant& A, const Variant& B, bool CaseSensitive);

}  // namespace korvex
