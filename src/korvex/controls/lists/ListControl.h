// ListControl: what both list controls show of the shared model, under the names hosts call by
// (RowSource, Columns, ColKey, BoundValue, ListIndex, Filter, ...), and the grid notices both
// answer alike. A list control builds its grid, hands it to UseGrid and adds its own properties,
// layout and events.
#pragma once

#include "korvex/controls/display/SurfaceFont.h"
#include "korvex/controls/lists/ListModel.h"
#include "korvex/platform/host/UserControl.h"

#include <memory>

namespace korvex {

class ListControl : public UserControl {
    Q_OBJECT
    Q_PROPERTY(korvex::Variant RowSource READ RowSource WRITE SetRowSourceVariant)
    Q_PROPERTY(int Columns READ Columns WRITE SetColumns)
    Q_PROPERTY(QString ListSeparator READ ListSeparator WRITE SetListSeparator)
    Q_PROPERTY(QString ColumnCaptions READ ColumnCaptions WRITE SetColumnCaptions)
    Q_PROPERTY(QString ColumnCaptionsLGS READ ColumnCaptionsLGS WRITE SetColumnCaptionsLGS)
    Q_PROPERTY(QString ColumnList READ ColumnList WRITE SetColumnList)
    Q_PROPERTY(QString BoundColumn READ BoundColumn WRITE SetBoundColumn)
    Q_PROPERTY(korvex::Variant BoundValue READ BoundValue WRITE SetBoundValue)
    Q_PROPERTY(bool AllowNullSelection READ AllowNullSelection WRITE SetAllowNullSelection)
    Q_PROPERTY(int FirstVisibleColumn READ FirstVisibleColumn)
    Q_PROPERTY(int ListCount READ ListCount)
    Q_PROPERTY(int ListIndex READ ListIndex WRITE SetListIndex)
    Q_PROPERTY(korvex::Variant Filter READ Filter WRITE SetFilter)
    Q_PROPERTY(QString Sort READ Sort WRITE SetSort)
    Q_PROPERTY(QString Text READ Text)
    Q_PROPERTY(QString DataField READ DataField WRITE SetDataField)
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled)
    Q_PROPERTY(bool ReadOnly READ ReadOnly WRITE SetReadOnly)
    Q_PROPERTY(int MaxItemsToDisplay READ MaxItemsToDisplay WRITE SetMaxItemsToDisplay)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFont)

public:
    explicit ListControl(QWidget* parent = nullptr);
    ~ListControl() override;

    ListModel& Model() { return *mModel; }
    const ListModel& Model() const { return *mModel; }

    // Let with a string or Null; Set with a recordset (nullptr clears). Late binding passes a
    // recordset object to Set and anything else to Let.
    Variant RowSource() const { return mModel->RowSource(); }
    void SetRowSource(const Variant& value) { mModel->LetRowSource(value); }
    void SetRowSource(const std::shared_ptr<ado::Recordset>& recordset) { mModel->SetRowSource(recordset); }
    void SetRowSourceVariant(const Variant& value);

    Q_INVOKABLE void AddItem(const QString& Item) { mModel->AddItem(Item); }
    Q_INVOKABLE void AddItemsFromRS(QObject* rs, const QString& FieldList, bool ApplyCharTranslation = false);
    Q_INVOKABLE void Clear() { mModel->Clear(); }

    int Columns() const { return mModel->Columns(); }
    void SetColumns(int columns);
    Q_INVOKABLE QString ColKey(int Index) const { return mModel->ColKey(Index); }
    Q_INVOKABLE void SetColKey(int Index, const QString& key) { mModel->SetColKey(Index, key); }
    Q_INVOKABLE QString ColFormat(const QString& Column) const { return mModel->ColFormat(Column); }
    Q_INVOKABLE void SetColFormat(const QString& Column, const QString& format) { mModel->SetColFormat(Column, format); }
    Q_INVOKABLE bool ColHidden(const QString& Column) const { return mModel->ColHidden(Column); }
    Q_INVOKABLE void SetColHidden(const QString& Column, bool hidden) { mModel->SetColHidden(Column, hidden); }
    Q_INVOKABLE korvex::Variant ColValue(const QString& Column) const { return mModel->ColValue(Column); }
    Q_INVOKABLE void SetColValue(const QString& Column, const korvex::Variant& value) { mModel->SetColValue(Column, value); }

    const QString& ListSeparator() const { return mModel->ListSeparator(); }
    void SetListSeparator(const QString& separator);
    const QString& ColumnCaptions() const { return mModel->ColumnCaptions(); }
    virtual void SetColumnCaptions(const QString& captions);
    const QString& ColumnCaptionsLGS() const { return mModel->ColumnCaptionsLGS(); }
    virtual void SetColumnCaptionsLGS(const QString& ids);
    const QString& ColumnList() const { return mModel->ColumnList(); }
    void SetColumnList(const QString& list);
    const QString& BoundColumn() const { return mModel->BoundColumn(); }
    void SetBoundColumn(const QString& column) { mModel->SetBoundColumn(column); }
    Variant BoundValue() const { return mModel->BoundValue(); }
    void SetBoundValue(const Variant& value) { mModel->SetBoundValue(value); }
    bool AllowNullSelection() const { return mModel->AllowNullSelection(); }
    void SetAllowNullSelection(bool allow);
    int FirstVisibleColumn() const { return mModel->FirstVisibleColumn(); }
    int ListCount() const { return mModel->ListCount(); }
    int ListIndex() { return mModel->ListIndex(); }
    void SetListIndex(int index) { mModel->SetListIndex(index); }
    Variant Filter() const { return mModel->Filter(); }
    virtual void SetFilter(const Variant& filter) { mModel->SetFilter(filter); }
    QString Sort() const { return mModel->Sort(); }
    virtual void SetSort(const QString& sort) { mModel->SetSort(sort); }
    // At run time the selection's text in the first shown column (empty when nothing is
    // selected); at design time the control's display name.
    QString Text() const;

    // The settings both controls keep alike. Enabled also enables the control itself; the font
    // is the control's, handed to its inner controls by ApplyFont.
    const QString& DataField() const noexcept { return mDataField; }
    void SetDataField(const QString& field);
    bool Enabled() const override { return mEnabled; }
    void SetEnabled(bool enabled) override;
    bool ReadOnly() const noexcept { return mReadOnly; }
    void SetReadOnly(bool readOnly);
    int MaxItemsToDisplay() const noexcept { return mMaxItemsToDisplay; }
    void SetMaxItemsToDisplay(int count);
    StdFont* Font() const { return mFont.Get(); }
    QObject* FontObject() const { return mFont.Get(); }
    void SetFont(QObject* font);

protected:
    // Called once by the control's constructor with the grid that shows the rows. The grid's
    // notices are answered from then on: the mouse moves the highlight and the user's row
    // changes go through only while UserMayChange, the current cell stays in CursorColumn, and
    // cell texts are translated and formatted.
    void UseGrid(Grid& grid);
    bool UserMayChange() const { return mEnabled && !mReadOnly; }
    virtual int CursorColumn() const { return FirstVisibleColumn(); }
    // The free-mode list string as the form file keeps it (empty in the other modes).
    QString PersistedRowSource() const { return mModel->FreeListString(); }
    // The font as the form file keeps it, and its loader.
    Variant FontValue() const { return Variant(FontObject()); }
    void LoadFont(const Variant& font);
    QFont SurfaceQFont() const { return mFont.ToQFont(); }
    // What a control does beyond storing these settings.
    virtual void ApplyFont() {}
    virtual void EnabledChanged() {}
    virtual void ReadOnlyChanged() {}

    // Stored as they stand while a form loads.
    QString mDataField;
    int mMaxItemsToDisplay{};

private:
    void GridMouseMove(short button, short shift, float x, float y);
    void GridAfterRowColChange(int newRow, int newCol);
    void GridCellText(int col, QString& text) const;

    std::unique_ptr<ListModel> mModel;
    Grid* mGrid = nullptr;
    SurfaceFont mFont;
    bool mEnabled{};
    bool mReadOnly{};
    struct MouseState {
        short button = 0;
        short shift = 0;
        float x = 0;
        float y = 0;
        bool operator==(const MouseState&) const = default;
    } mLastMouse;
};

}  // namespace korvex
