// ListModel: the column and row-source model both list controls share. The rows always live in a
// recordset, the item store (a clone of the caller's recordset, or one built from a string of
// items); the grid shows a second clone of it, the display copy; the selected row is the item
// store's current record. Selection, value and search are therefore recordset operations, and a
// search by value goes through the store's field index, not a scan.
//
// The model owns no widget: it works on the control's grid and reports selections to the control
// through two callbacks, so that each control raises its own events.
#pragma once

#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Variant.h"

#include <QLoggingCategory>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace korvex {

class Grid;
class UserControl;

Q_DECLARE_LOGGING_CATEGORY(lcLists)

enum ZqDropdownRowSourceModes : int {
    ddrsUnknown = 0,
    ddrsDataBound = 1,
    ddrsFree = 2,
};

class ListModel {
public:
    // Reason 0: selected by code without an event; other values are the control's click reasons.
    using SelectedByValue = std::function<void(int reason, const Variant& oldValue, const Variant& newValue)>;
    using SelectedFromDisplay = std::function<void(int reason, const Variant& oldValue)>;

    // Text fields per free-mode column, and the longest item they take.
    static constexpr int FreeFieldSize = 250;

    ListModel(UserControl& control, Grid& grid);
    ~ListModel();
    ListModel(const ListModel&) = delete;
    ListModel& operator=(const ListModel&) = delete;

    void OnSelectedByValue(SelectedByValue handler) { mSelectedByValue = std::move(handler); }
    void OnSelectedFromDisplay(SelectedFromDisplay handler) { mSelectedFromDisplay = std::move(handler); }

    ZqDropdownRowSourceModes Mode() const noexcept { return mMode; }
    const std::shared_ptr<ado::Recordset>& ItemStore() const noexcept { return mStore; }
    const std::shared_ptr<ado::Recordset>& DisplayCopy() const noexcept { return mDisplay; }

    // RowSource: Let takes a string (or Null), Set a recordset (nullptr clears).
    Variant RowSource() const;
    void LetRowSource(const Variant& value);
    void SetRowSource(const std::shared_ptr<ado::Recordset>& recordset);
    // The free-mode list as one string (every value, separator between each two).
    QString FreeListString() const;

    void AddItem(const QString& item);
    void AddItemsFromRS(ado::Recordset& rs, const QString& fieldList, bool applyCharTranslation = false);
    void Clear();

    int Columns() const noexcept { return mColumns; }
    void SetColumns(int columns);
    QString ColKey(int index) const;
    void SetColKey(int index, const QString& key);
    QString ColFormat(const QString& column) const;
    void SetColFormat(const QString& column, const QString& format);
    // The format of a grid column by index; empty when none.
    QString FormatOfColumn(int col) const;

    const QString& ListSeparator() const noexcept { return mListSeparator; }
    void SetListSeparator(const QString& separator) { mListSeparator = separator; }
    const QString& ColumnCaptions() const noexcept { return mColumnCaptions; }
    void SetColumnCaptions(const QString& captions) { mColumnCaptions = captions; }
    const QString& ColumnCaptionsLGS() const noexcept { return mColumnCaptionsLGS; }
    void SetColumnCaptionsLGS(const QString& ids) { mColumnCaptionsLGS = ids; }
    const QString& ColumnList() const noexcept { return mColumnList; }
    void SetColumnList(const QString& list);
    bool ColHidden(const QString& column) const;
    void SetColHidden(const QString& column, bool hidden);
    int FirstVisibleColumn() const;
    void MarkFirstVisibleStale() noexcept { mFirstVisibleStale = true; }

    Variant ColValue(const QString& column) const;
    void SetColValue(const QString& column, const Variant& value);
    const QString& BoundColumn() const noexcept { return mBoundColumn; }
    void SetBoundColumn(const QString& column) { mBoundColumn = column; }
    int BoundColumnPosition() const;
    Variant BoundValue() const;
    void SetBoundValue(const Variant& value);
    bool AllowNullSelection() const noexcept { return mAllowNullSelection; }
    void SetAllowNullSelection(bool allow) { mAllowNullSelection = allow; }

    int ListCount() const;
    int ListIndex();
    void SetListIndex(int index);
    Variant Filter() const;
    void SetFilter(const Variant& filter);
    const QString& FilterText() const noexcept { return mFilterText; }
    QString Sort() const;
    void SetSort(const QString& sort);
    // A filter of the display copy alone: the list offers only these rows, while the selection
    // (the item store) may still be any row. Kept as text and given to every new display copy.
    const QString& SelectableItemsFilter() const noexcept { return mSelectableText; }
    void SetSelectableItemsFilter(const Variant& filter);
    // The display copy's filter and sort, changed in place: the grid follows its recordset, so
    // its columns stay as they are. The display is brought in step with the selection; after a
    // filter, with no row of it current, the first row is highlighted (the selection stays).
    // False when the display copy had that filter (sort) already, compared case-sensitively.
    bool ReplaceDisplayFilter(const QString& filter);
    bool ReplaceDisplaySort(const QString& sort);
    // The display copy's filter as text, empty for none.
    QString DisplayFilterText() const;

    // The algorithms the controls call.
    void SetGridFromValue(const Variant& value, int reason);
    void SelectFromDisplay(int reason);
    void BringDisplayInStep();
    void BindGrid();
    // -1 for an empty string, the index for digits only, else the grid's ColIndex of the key.
    int ColumnPosition(const QString& column) const;
    // The key of the column whose index the string begins with, or the string itself.
    QString ColumnFieldName(const QString& column) const;
    // Through the current character translation in recordset mode; unchanged otherwise.
    Variant TranslateValue(const Variant& value, bool savingToDB) const;
    QString TranslateText(const QString& text) const;
    // Application title + "." + the control's name + suffix.
    QString ErrorSource(const char* suffix) const;
    bool NothingSelected() const;

    static void MoveToNothing(ado::Recordset& rs);

private:
    [[noreturn]] void Fail(const char* suffix, const QString& description) const;
    void BuildFreeStore(const QStringList& items);
    void FindByValue(const QString& field, const Variant& value);
    void Reselect(const Variant& remembered);
    void ApplyColumnList(const QString& list, bool rebind);
    void ResizeColumnArrays(int count);
    void AttachToForm();
    // Makes the store answer equality searches on the field from its index.
    void IndexField(const QString& field);
    // After the display copy's rows started over.
    void HighlightAfterReorder();

    UserControl& mControl;
    Grid& mGrid;
    SelectedByValue mSelectedByValue;
    SelectedFromDisplay mSelectedFromDisplay;

    ZqDropdownRowSourceModes mMode = ddrsUnknown;
    std::shared_ptr<ado::Recordset> mStore;
    std::shared_ptr<ado::Recordset> mDisplay;
    int mColumns = 1;
    std::vector<QString> mKeys = std::vector<QString>(1);
    std::vector<QString> mFormats = std::vector<QString>(1);
    QString mListSeparator = QStringLiteral(";");
    QString mColumnCaptions;
    QString mColumnCaptionsLGS;
    QString mColumnList;
    QString mBoundColumn;
    bool mAllowNullSelection = false;
    mutable int mFirstVisible = -1;
    mutable bool mFirstVisibleStale = true;
    QString mFilterText;
    QString mSelectableText;
    bool mAttached = false;
};

}  // namespace korvex
