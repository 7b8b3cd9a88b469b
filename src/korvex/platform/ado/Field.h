// One field of a recordset: its definition and the value it holds in the recordset's current
// record. The value is read from and written to the recordset, which knows the current record and
// any edit in progress.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

namespace korvex::ado {

class Recordset;
struct FieldDef;

class Field : public QObject {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Value")
    Q_PROPERTY(QString Name READ Name)
    Q_PROPERTY(int Type READ Type)
    Q_PROPERTY(int DefinedSize READ DefinedSize)
    Q_PROPERTY(int ActualSize READ ActualSize)
    Q_PROPERTY(int Attributes READ Attributes)
    Q_PROPERTY(int Precision READ Precision)
    Q_PROPERTY(int NumericScale READ NumericScale)
    Q_PROPERTY(korvex::Variant Value READ Value WRITE SetValue)
    Q_PROPERTY(korvex::Variant OriginalValue READ OriginalValue)
    Q_PROPERTY(korvex::Variant UnderlyingValue READ UnderlyingValue)
    Q_PROPERTY(int Status READ Status)
    Q_PROPERTY(korvex::ado::Properties* Properties READ Properties)

public:
    Field(Recordset* recordset, int index);

    QString Name() const;
    int Type() const;
    int DefinedSize() const;
    // Bytes the current value takes: characters for narrow text, twice that for wide text.
    int ActualSize() const;
    int Attributes() const;
    int Precision() const;
    int NumericScale() const;

    Variant Value() const;
    // Raises 3021 without a current record, 3704 when closed, the multiple-step error when the
    // field refuses the value (Status then says why).
    void SetValue(const Variant& value);
    Variant OriginalValue() const;
    Variant UnderlyingValue() const;
    int Status() const { return mStatus; }

    korvex::ado::Properties* Properties() const;

    // For the recordset.
    int Index() const { return mIndex; }
    void SetIndex(int index) { mIndex = index; }
    void SetStatus(int status) { mStatus = status; }

private:
    const FieldDef& Def() const;

    Recordset* mRecordset;
    int mIndex;
    int mStatus = adFieldOK;
    mutable korvex::ado::Properties* mProperties = nullptr;  // made on first use: clones stay cheap
};

}  // namespace korvex::ado
