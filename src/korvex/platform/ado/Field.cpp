// Field members read the definition and the current record through the recordset.
#include "korvex/platform/ado/Field.h"

#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Conversions.h"

namespace korvex::ado {

Field::Field(Recordset* recordset, int index) : QObject(recordset), mRecordset(recordset), mIndex(index) {}

const FieldDef& Field::Def() const
{
    return mRecordset->FieldDefs()[static_cast<std::size_t>(mIndex)];
}

QString Field::Name() const
{
    return Def().Name;
}

int Field::Type() const
{
    return Def().Type;
}

int Field::DefinedSize() const
{
    return Def().DefinedSize;
}

int Field::ActualSize() const
{
    return ActualSizeOf(Value(), Def());
}

int Field::Attributes() const
{
    return Def().Attributes;
}

int Field::Precision() const
{
    return Def().Precision;
}

int Field::NumericScale() const
{
    return Def().NumericScale;
}

Variant Field::Value() const
{
    return mRecordset->FieldValue(mIndex);
}

void Field::SetValue(const Variant& value)
{
    mRecordset->SetFieldValue(mIndex, value);
}

Variant Field::OriginalValue() const
{
    return mRecordset->FieldOriginalValue(mIndex);
}

Variant Field::UnderlyingValue() const
{
    return mRecordset->FieldUnderlyingValue(mIndex);
}

Properties* Field::Properties() const
{
    if (mProperties)
        return mProperties;
    auto* self = const_cast<Field*>(this);
    mProperties = new ado::Properties(self);
    Recordset* rs = mRecordset;
    mProperties->Add(
        QStringLiteral("Optimize"), adBoolean, [rs, self] { return Variant(rs->FieldOptimized(self->Index())); },
        [rs, self](const Variant& on) { rs->SetFieldOptimized(self->Index(), CBool(on)); });
    auto def = [rs, self]() -> const FieldDef& { return rs->FieldDefs()[static_cast<std::size_t>(self->Index())]; };
    mProperties->Add(QStringLiteral("BASECATALOGNAME"), adBSTR, [def] { return Variant(def().BaseCatalog); });
    mProperties->Add(QStringLiteral("BASESCHEMANAME"), adBSTR, [def] { return Variant(def().BaseSchema); });
    mProperties->Add(QStringLiteral("BASETABLENAME"), adBSTR, [def] { return Variant(def().BaseTable); });
    mProperties->Add(QStringLiteral("BASECOLUMNNAME"), adBSTR, [def] { return Variant(def().BaseColumn); });
    mProperties->Add(QStringLiteral("KEYCOLUMN"), adBoolean, [def] { return Variant(def().KeyColumn); });
    mProperties->Add(QStringLiteral("ISAUTOINCREMENT"), adBoolean, [def] { return Variant(def().AutoIncrement); });
    return mProperties;
}

}  // namespace korvex::ado
