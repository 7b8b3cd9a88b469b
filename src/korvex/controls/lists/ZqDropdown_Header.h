// ZqDropdown_Header: the line at the top of the combo's drop-down. It shows one line, the words
// "Sorted By" and the caption of the column the list is sorted by, with a drop arrow after the
// text; a click on the line pops up a menu of every column caption, and choosing one reports
// that column's index (among the shown columns) to the combo, which sorts by it.
#pragma once

#include "korvex/controls/display/SurfaceFont.h"
#include "korvex/platform/host/UserControl.h"

#include <QStringList>

class QMenu;

namespace korvex {

class Label;

class ZqDropdown_Header : public UserControl {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "ZqDropdown_Header")
    Q_PROPERTY(short SortedColIndex READ SortedColIndex WRITE SetSortedColIndex)
    Q_PROPERTY(bool MenuVisible READ MenuVisible WRITE SetMenuVisible)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFont)
    Q_PROPERTY(qlonglong hwnd READ hWnd)

public:
    explicit ZqDropdown_Header(QWidget* parent = nullptr);
    ~ZqDropdown_Header() override;

    // The captions in shown-column order: one menu item each, the sorted one checked.
    void SetColumns(const QStringList& captions);
    const QStringList& Captions() const noexcept { return mCaptions; }
    // -1 for none. An index outside the captions is kept without touching the line.
    short SortedColIndex() const noexcept { return mSortedColIndex; }
    void SetSortedColIndex(short index);
    // Whether the column menu is up. Writing False takes a menu that is up down.
    bool MenuVisible() const noexcept { return mMenuVisible; }
    void SetMenuVisible(bool visible);
    StdFont* Font() const { return mFont.Get(); }
    QObject* FontObject() const { return mFont.Get(); }
    void SetFont(QObject* font);

    // " Sorted By " in the language of the day, taken once.
    const QString& Prefix() const noexcept { return mPrefix; }
    // Pops the column menu up under the end of the line's text, unless it is up already.
    void ShowMenu();

    Label* lbl() const noexcept { return mLine; }
    Label* lblDropArrow() const noexcept { return mArrow; }
    QMenu* mnuCols() const noexcept { return mMenu; }
    // Whether a widget is the header, part of it, or its menu.
    bool Owns(const QWidget* widget) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

signals:
    // The user chose the column of this index from the menu.
    void ColumnChosen(short Index);

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;

private:
    Variant FontValue() const { return Variant(FontObject()); }
    void ApplyFont();
    void PlaceArrow();
    int TextWidth() const;
    void Chosen(int index);

    Label* mLine;
    Label* mArrow;
    QMenu* mMenu;
    SurfaceFont mFont;
    QStringList mCaptions;
    short mSortedColIndex = -1;
    bool mMenuVisible = false;
    QString mPrefix;
};

}  // namespace korvex
