// ZqDropdownList: a multi-column pick list, a grid (fgList) inside a frame (zqfraList). It has no
// text entry of its own: a host uses it as the drop-down of its own text box, shows and hides it
// and forwards its key strokes to KeyDown and KeyUp. While shown at run time it floats above its
// form as a frameless tool window at the same screen place, so that it may reach past the form's
// edges; hidden, it goes back to its place on the form.
#pragma once

#include "korvex/controls/lists/ListControl.h"

#include <QPointer>

namespace korvex {

class Grid;
class ZqFrame;

enum ZqDDListClickReasons : int {
    ddlcrChangedByCode = 1,
    ddlcrChangedByUser_Mouse = 2,
    ddlcrChangedByUser_Keybd = 3,
};

class ZqDropdownList : public ListControl {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "ZqDropdownList")
    Q_PROPERTY(bool AllowDeepRows READ AllowDeepRows WRITE SetAllowDeepRows)
    Q_PROPERTY(QString AutoExtendCol READ AutoExtendCol WRITE SetAutoExtendCol)

public:
    explicit ZqDropdownList(QWidget* parent = nullptr);
    ~ZqDropdownList() override;

    bool AllowDeepRows() const noexcept { return mAllowDeepRows; }
    void SetAllowDeepRows(bool allow);
    const QString& AutoExtendCol() const noexcept { return mAutoExtendCol; }
    void SetAutoExtendCol(const QString& key);

    // The first row whose text in a keyed, shown column begins with the string; it becomes the
    // selection without Click. False, and no row current, when none does.
    Q_INVOKABLE bool Find(const QString& FindString);
    // Keys the host forwards from its own text box. A handled key is consumed (KeyCode 0).
    void KeyDown(short& KeyCode, short Shift);
    Q_INVOKABLE void KeyUp(short KeyCode, short Shift);
    Q_INVOKABLE void ApplyGridSettings();

    void setVisible(bool visible) override;
    // Whether the list floats above its form now.
    bool IsFloating() const noexcept { return mFloating; }

    Grid* fgList() const noexcept { return mGrid; }
    ZqFrame* zqfraList() const noexcept { return mFrame; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void Click(ZqDDListClickReasons Reason);

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void ApplyFont() override;
    void Float();
    void ReturnToForm();
    void GridClick();

    ZqFrame* mFrame;
    Grid* mGrid;
    bool mAllowDeepRows{};
    QString mAutoExtendCol;
    bool mHasFocus = false;
    short mLastKeyDown = 0;
    bool mFloating = false;
    int mFormLeft = 0;
    int mFormTop = 0;
};

}  // namespace korvex
