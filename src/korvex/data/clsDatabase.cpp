#include "korvex/data/clsDatabase.h"

#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/DateTime.h"

#include <QDateTime>

namespace korvex {

namespace {
thread_local clsDatabase* gCurrent = nullptr;
}

clsDatabase::clsDatabase() { gCurrent = this; }
clsDatabase::~clsDatabase()
{
    if (gCurrent == this)
        gCurrent = nullptr;
}
clsDatabase* clsDatabase::Current() { return gCurrent; }

Variant clsDatabase::ServerDateTime() const { return CDate(Variant(QDateTime::currentDateTime().toString(Qt::ISODate))); }

bool IsNumericFieldType(int t)
{
    switch (t) {
    case 2: case 3: case 4: case 5: case 6: case 14: case 16: case 17: case 18: case 19: case 20: case 21:
    case 131: case 139: return true;
    default: return false;
    }
}
bool IsTextFieldType(int t) { return t == 8 || t == 129 || t == 130 || t == 200 || t == 202; }
bool NullToBoolean(const Variant& v) { return v.IsNull() ? false : CBool(v); }
int NullToLong(const Variant& v) { return v.IsNull() ? 0 : CLng(v); }
QString NullToString(const Variant& v) { return v.IsNull() ? QString() : CStr(v); }
bool ValuesEqual(const Variant& a, const Variant& b, bool cs)
{
    if (a.IsNull() || b.IsNull())
        return a.IsNull() && b.IsNull();
    if (a.IsEmpty() || b.IsEmpty())
        return a.IsEmpty() && b.IsEmpty();
    if (a.VarType() == b.VarType()) {
        if (a.IsString() && !cs)
            return CStr(a).compare(CStr(b), Qt::CaseInsensitive) == 0;
        return a.IsString() ? CStr(a) == CStr(b) : Compare(a, b) == Comparison::Equal;
    }
    return CStr(a) == CStr(b);
}

}  // namespace korvex
