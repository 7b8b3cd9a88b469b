// The Fields collection of a recordset: the fields in order, found by name (ignoring case) or by
// 0-based position. Fields are appended and deleted only while the recordset is closed.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/runtime/Variant.h"

#include <QList>
#include <QObject>

namespace korvex::ado {

class Recordset;

class Fields : public QObject {
    Q_OBJECT
    Q_PROPERTY(int Count READ Count)

public:
    explicit Fields(Recordset* recordset);

    int Count() const { return static_cast<int>(mItems.size()); }
    // By name or position; 3265 when there is no such field.
    Q_INVOKABLE korvex::ado::Field* Item(const korvex::Variant& Index) const;
    korvex::ado::Field* Item(int index) const;
    // Defines a field of a fabricated recordset. 3219 while open, 3367 for a name already there,
    // 3001 for a type the engine does not store or a text type without a size.
    Q_INVOKABLE void Append(const QString& Name, int Type, int DefinedSize = 0, int Attrib = adFldUnspecified);
    Q_INVOKABLE void Delete(const korvex::Variant& Index);
    Q_INVOKABLE void Refresh() {}

    // For the recordset: the Field objects follow its definitions.
    void Rebuild(int count);

private:
    int IndexOf(const Variant& index) const;

    Recordset* mRecordset;
    QList<Field*> mItems;
};

}  // namespace korvex::ado
