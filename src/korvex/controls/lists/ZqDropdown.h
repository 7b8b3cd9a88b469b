// ZqDropdown: the multi-column combo. The closed part shows the selected item's text in up to
// two segments beside a drop button; the drop-down floats above the form as a frameless tool
// window (zqfraDropdown) holding an optional "Sorted By" header, an optional filter box and the
// list (fgDropdown). While it is open the combo owns the application's mouse and keyboard hooks,
// which close it on a press outside and on Enter, Escape and Tab. Typing filters the list
// through the recordset's own indexed Filter, a header choice sorts it, and every selection the
// user or the program makes raises Click and then Changed.
#pragma once

#include "korvex/controls/lists/ListControl.h"

#include <functional>
#include <optional>

namespace korvex {

class Grid;
class ZqDropdown_Header;
class ZqFrame;
class ZqSimpleButton;
class ZqText;

enum ZqDropdownButtonStyles : int {
    ddbsButtonNotVisible = -1,
    ddbsButtonRightAligned = 0,
    ddbsButtonLeftAligned = 1,
};

enum ZqDropdownFilterModes : int {
    ddfmStartsWith = 0,
    ddfmEndsWith = 1,
};

enum ZqDropdownClickReasons : int {
    ddcrChangedByCode = 1,
    ddcrChangedByUser = 2,
};

class ZqDropdown : public ListControl {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "ZqDropdown")
    Q_PROPERTY(bool AllowFilter READ AllowFilter WRITE SetAllowFilter)
    Q_PROPERTY(bool AllowSorting READ AllowSorting WRITE SetAllowSorting)
    Q_PROPERTY(int ButtonStyle READ ButtonStyle WRITE SetButtonStyle)
    Q_PROPERTY(int FilterMode READ FilterMode WRITE SetFilterMode)
    Q_PROPERTY(korvex::Variant SelectableItemsFilter READ SelectableItemsFilter WRITE SetSelectableItemsFilter)
    Q_PROPERTY(bool IsDropdownOpen READ IsDropdownOpen)

public:
    explicit ZqDropdown(QWidget* parent = nullptr);
    ~ZqDropdown() override;

    bool AllowFilter() const noexcept { return mAllowFilter; }
    void SetAllowFilter(bool allow);
    bool AllowSorting() const noexcept { return mAllowSorting; }
    void SetAllowSorting(bool allow);
    int ButtonStyle() const noexcept { return mButtonStyle; }
    void SetButtonStyle(int style);
    int FilterMode() const noexcept { return mFilterMode; }
    void SetFilterMode(int mode);
    // Enabled also goes to the drop button.
    void SetEnabled(bool enabled) override;
    Variant SelectableItemsFilter() const;
    void SetSelectableItemsFilter(const Variant& filter);
    bool IsDropdownOpen() const noexcept { return mOpen; }

    void SetColumnCaptions(const QString& captions) override;
    void SetColumnCaptionsLGS(const QString& ids) override;
    // Refused while AllowSorting is True (the header sorts then); clears the header's mark.
    void SetSort(const QString& sort) override;

    Q_INVOKABLE void DropdownShow();
    Q_INVOKABLE void DropdownHide();
    // The library's message box, shown without closing an open drop-down.
    Q_INVOKABLE int MsgBoxFromDropDown(const QString& Prompt, int Buttons = 0, const QString& Title = {});

    // The filter the typed text makes over the columns with these keys: Like terms, one a column
    // (and one more for the text's translated form when it has characters beyond 7-bit ASCII),
    // each within `filter` when that is not empty, joined with OR. Empty for no columns; nothing
    // when the text holds no more than the wildcards % and *.
    static std::optional<QString> TypedFilter(const QString& typed, int mode, const QStringList& keys, const QString& filter,
                                              const std::function<QString(const QString&)>& translate);
    // The sort a header choice of the index-th of these keys makes: that key, then up to two
    // more in their order.
    static QString HeaderSort(const QStringList& keys, int index);

    // Rows the drop-down shows at once, as last sized.
    int VisibleRows() const noexcept { return mVisibleRows; }
    // The closed part inside its frame, less the button, in pixels.
    QRect TextArea() const;

    Grid* fgDropdown() const noexcept { return mGrid; }
    ZqDropdown_Header* ZqDDHeader() const noexcept { return mHeader; }
    ZqText* zqtxtFilter() const noexcept { return mFilterBox; }
    ZqSimpleButton* zqsbDrop() const noexcept { return mButton; }
    ZqFrame* zqfraDropdown() const noexcept { return mFrame; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void Click(ZqDropdownClickReasons Reason);
    void Changed(ZqDropdownClickReasons Reason, const korvex::Variant& OldValue, const korvex::Variant& NewValue);

protected:
    const PropertyList& PersistedProperties() const override;
    void ApplyFont() override;
    void EnabledChanged() override;
    void ReadOnlyChanged() override;
    int CursorColumn() const override;
    void Resize() override;
    void Paint(QPainter& painter) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool FilterBoxShown() const { return mAllowFilter && !ReadOnly(); }
    void ShowFilterBox();
    // Keys of the shown columns from the first shown one, and their grid indexes.
    QStringList ShownKeys(QList<int>* cols = nullptr) const;

    void SizeAndPlace();
    void LayOutDropDown(int width, int height);
    void MeasureColumns(int& firstVisible, int& lastVisible, int& total);
    void InstallHooks();
    void RemoveHooks();
    bool MouseHook(QWidget* target, QMouseEvent* event);
    bool KeyboardHook(QWidget* target, QKeyEvent* event);
    // The top-level window a widget is in; the header's menu counts as the drop-down's.
    QWidget* TopOf(QWidget* widget) const;
    QWidget* FocusTop() const;
    bool FocusIsOurs() const;

    bool ListKey(QKeyEvent* event);
    void TypeIntoFilter(const QString& text);
    void ApplyTypedFilter();
    void HeaderChosen(short index);
    void ListClicked();
    void SelectRowByStep(int step);
    void SelectedByValue(int reason, const Variant& oldValue, const Variant& newValue);
    void SelectedFromDisplay(int reason, const Variant& oldValue);
    void RaiseSelectionEvents(int reason, const Variant& oldValue, const Variant& newValue);
    // The text of a column of the selection, formatted by its ColFormat.
    QString SegmentText(int col) const;
    int FrameWidth() const;

    ZqFrame* mFrame;
    ZqDropdown_Header* mHeader;
    ZqText* mFilterBox;
    Grid* mGrid;
    ZqSimpleButton* mButton;
    bool mAllowFilter{};
    bool mAllowSorting{};
    int mButtonStyle{};
    int mFilterMode{};
    bool mOpen = false;
    bool mClosing = false;
    int mVisibleRows = 1;
    int mCursorColumn = -1;  // -1: the first shown column
    bool mPressOnButton = false;
};

}  // namespace korvex
