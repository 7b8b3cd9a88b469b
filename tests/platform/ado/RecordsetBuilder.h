// Helpers for the recordset tests: a fabricated recordset from a list of fields and rows (sent with
// UpdateBatch, so they stand as rows read, not pending inserts), and the values of one field read
// record by record, so that a test states the rows it expects in one line.
#pragma once

#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Conversions.h"

#include <QStringList>

#include <initializer_list>
#include <memory>
#include <vector>

namespace korvex::ado::test {

struct TestField {
    const char* name;
    int type;
    int size = 0;
    int attributes = adFldIsNullable;
};

inline std::shared_ptr<Recordset> MakeRecordset(std::initializer_list<TestField> fields,
                                                std::initializer_list<std::vector<Variant>> rows = {},
                                                int lockType = adLockBatchOptimistic)
{
    auto rs = std::make_shared<Recordset>();
    for (const TestField& f : fields)
        rs->Fields()->Append(QString::fromUtf8(f.name), f.type, f.size, f.attributes);
    rs->Open(Variant(), Variant(), adOpenStatic, lockType);
    for (const std::vector<Variant>& row : rows) {
        rs->AddNew();
        for (std::size_t i = 0; i < row.size(); ++i)
            rs->Fields()->Item(static_cast<int>(i))->SetValue(row[i]);
        rs->Update();
    }
    rs->UpdateBatch();
    if (rows.size())
        rs->MoveFirst();
    return rs;
}

// The field's values from the first record to the last, Null as "<null>"; leaves the cursor at EOF.
inline QStringList Values(Recordset& rs, const char* field)
{
    QStringList out;
    if (rs.RecordCount() == 0)
        return out;
    for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext()) {
        const Variant v = rs.Fields()->Item(field)->Value();
        out << (v.IsNull() ? QStringLiteral("<null>") : CStr(v));
    }
    return out;
}

// The value of a field in the current record as text.
inline QString Text(Recordset& rs, const char* field)
{
    const Variant v = rs.Fields()->Item(field)->Value();
    return v.IsNull() ? QStringLiteral("<null>") : CStr(v);
}

}  // namespace korvex::ado::test
