// The field collection: lookup, and appending or deleting definitions while closed.
#include "korvex/platform/ado/Fields.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/ado/FieldDef.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Conversions.h"

namespace korvex::ado {

Fields::Fields(Recordset* recordset) : QObject(recordset), mRecordset(recordset) {}

int Fields::IndexOf(const Variant& index) const
{
    if (const auto* name = index.As<QString>()) {
        for (int i = 0; i < Count(); ++i) {
            if (mRecordset->FieldDefs()[static_cast<std::size_t>(i)].Name.compare(*name, Qt::CaseInsensitive) == 0)
                return i;
        }
    } else if (index.IsNumber()) {
        const double position = CDbl(index);
        if (position >= 0 && position < Count())
            return static_cast<int>(position);
    }
    RaiseAdo(adErrItemNotFound, FieldsSource);
}

Field* Fields::Item(const Variant& Index) const
{
    return mItems[IndexOf(Index)];
}

Field* Fields::Item(int index) const
{
    if (index < 0 || index >= Count())
        RaiseAdo(adErrItemNotFound, FieldsSource);
    return mItems[index];
}

void Fields::Append(const QString& Name, int Type, int DefinedSize, int Attrib)
{
    mRecordset->AppendFieldDef(MakeFieldDef(Name, Type, DefinedSize, Attrib));
    Rebuild(static_cast<int>(mRecordset->FieldDefs().size()));
}

void Fields::Delete(const Variant& Index)
{
    const int index = IndexOf(Index);
    mRecordset->DeleteFieldDef(index);
    delete mItems.takeAt(index);
    Rebuild(static_cast<int>(mRecordset->FieldDefs().size()));
}

void Fields::Rebuild(int count)
{
    while (mItems.size() > count)
        delete mItems.takeLast();
    for (int i = 0; i < mItems.size(); ++i)
        mItems[i]->SetIndex(i);
    while (mItems.size() < count)
        mItems.append(new Field(mRecordset, static_cast<int>(mItems.size())));
}

}  // namespace korvex::ado
