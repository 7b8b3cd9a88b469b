// The members both list controls take from the shared model.
#include "korvex/controls/lists/ListControl.h"

#include "korvex/platform/grid/Grid.h"

namespace korvex {

ListControl::ListControl(QWidget* parent) : UserControl(parent) {}

ListControl::~ListControl() = default;

void ListControl::UseGrid(Grid& grid)
{
    mModel = std::make_unique<ListModel>(*this, grid);
}

void ListControl::SetRowSourceVariant(const Variant& value)
{
    if (value.IsObject()) {
        auto recordset = std::dynamic_pointer_cast<ado::Recordset>(value.SharedObject());
        if (value.Object() && !recordset)
            throw Error(vbErrTypeMismatch, mModel->ErrorSource(".RowSource [PropertySet]"));
        mModel->SetRowSource(recordset);
        return;
    }
    mModel->LetRowSource(value);
}

void ListControl::AddItemsFromRS(QObject* rs, const QString& FieldList, bool ApplyCharTranslation)
{
    auto* recordset = qobject_cast<ado::Recordset*>(rs);
    if (!recordset)
        throw Error(vbErrTypeMismatch, mModel->ErrorSource(".AddItemsFromRS"));
    mModel->AddItemsFromRS(*recordset, FieldList, ApplyCharTranslation);
}

void ListControl::SetColumns(int columns)
{
    mModel->SetColumns(columns);
    PropertyChanged("Columns");
}

void ListControl::SetListSeparator(const QString& separator)
{
    mModel->SetListSeparator(separator);
    PropertyChanged("ListSeparator");
}

void ListControl::SetColumnCaptions(const QString& captions)
{
    mModel->SetColumnCaptions(captions);
    PropertyChanged("ColumnCaptions");
}

void ListControl::SetColumnCaptionsLGS(const QString& ids)
{
    mModel->SetColumnCaptionsLGS(ids);
    PropertyChanged("ColumnCaptionsLGS");
}

void ListControl::SetColumnList(const QString& list)
{
    mModel->SetColumnList(list);
    PropertyChanged("ColumnList");
}

void ListControl::SetAllowNullSelection(bool allow)
{
    mModel->SetAllowNullSelection(allow);
    PropertyChanged("AllowNullSelection");
}

}  // namespace korvex
