// The members both list controls take from the shared model, and the grid notices they answer
// alike.
#include "korvex/controls/lists/ListControl.h"

#include "korvex/data/clsDatabase.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Format.h"

#include <QTimer>

namespace korvex {

ListControl::ListControl(QWidget* parent) : UserControl(parent), mFont(this, [this] { ApplyFont(); }) {}

ListControl::~ListControl() = default;

void ListControl::UseGrid(Grid& grid)
{
    mModel = std::make_unique<ListModel>(*this, grid);
    mGrid = &grid;
    connect(mGrid, &Control::MouseMove, this, [this](short& button, short& shift, float& x, float& y) {
        Guarded(this, [&] { GridMouseMove(button, shift, x, y); });
    });
    connect(mGrid, &Grid::BeforeRowColChange, this, [this](int, int, int, int, bool& cancel) {
        Guarded(this, [&] {
            if (!UserMayChange())
                cancel = true;
        });
    });
    connect(mGrid, &Grid::AfterRowColChange, this, GuardedSlot(this, [this](int, int, int newRow, int newCol) {
                GridAfterRowColChange(newRow, newCol);
            }));
    connect(mGrid, &Grid::CellDisplayText, this, [this](int, int col, QString& text) {
        Guarded(this, [&] { GridCellText(col, text); });
    });
}

QString ListControl::Text() const
{
    if (!UserMode())
        return Ambient()->DisplayName();
    if (BoundValue().IsNull())
        return {};
    return NullToString(ColValue(QString::number(FirstVisibleColumn())));
}

void ListControl::SetDataField(const QString& field)
{
    Assign("DataField", mDataField, field);
}

void ListControl::SetEnabled(bool enabled)
{
    Assign("Enabled", mEnabled, enabled, [this] { EnabledChanged(); });
    UserControl::SetEnabled(enabled);
}

void ListControl::SetReadOnly(bool readOnly)
{
    Assign("ReadOnly", mReadOnly, readOnly, [this] { ReadOnlyChanged(); });
}

void ListControl::SetMaxItemsToDisplay(int count)
{
    Assign("MaxItemsToDisplay", mMaxItemsToDisplay, count);
}

void ListControl::SetFont(QObject* font)
{
    mFont.Set(font, TypeName() + QStringLiteral(".Font"));
    PropertyChanged("Font");
}

void ListControl::LoadFont(const Variant& font)
{
    mFont.Load(font, TypeName() + QStringLiteral(".Font"));
    PropertyChanged("Font");
}

// The mouse moves the highlight, not the selection; repeated notices at one place are not moves.
void ListControl::GridMouseMove(short button, short shift, float x, float y)
{
    if (!UserMayChange())
        return;
    const MouseState now{button, shift, x, y};
    if (now == mLastMouse)
        return;
    mLastMouse = now;
    const int row = mGrid->MouseRow();
    if (row >= mGrid->FixedRows() && mGrid->Rows() > mGrid->FixedRows() && row != mGrid->Row())
        mGrid->SetRow(row);
}

// A move to another column of a row takes the row and puts the cell back in the cursor column,
// once the view has finished with the mouse (moving the cell while the view handles the press
// costs the click its release).
void ListControl::GridAfterRowColChange(int newRow, int newCol)
{
    const int cursor = CursorColumn();
    if (newRow >= mGrid->FixedRows() && cursor >= 0 && newCol != cursor) {
        QTimer::singleShot(0, this, GuardedSlot(this, [this] {
            const int col = CursorColumn();
            if (col >= 0 && col < mGrid->Cols() && mGrid->Row() >= mGrid->FixedRows() && mGrid->Col() != col)
                mGrid->SetCol(col);
        }));
    }
}

void ListControl::GridCellText(int col, QString& text) const
{
    text = mModel->TranslateText(text);
    const QString format = mModel->FormatOfColumn(col);
    if (!format.isEmpty())
        text = Format(Variant(text), format);
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
