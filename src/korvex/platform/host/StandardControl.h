// What the host's standard controls share: back and fore colours, a font of their own (a copy
// of the form's to begin with), the DataField a binding reads, the mouse pointer with its custom
// icon, and their persistence.
#pragma once

#include "korvex/platform/host/Control.h"
#include "korvex/runtime/StdFont.h"

#include <QPixmap>

namespace korvex {

class StandardControl : public Control {
    Q_OBJECT
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFontObject)
    Q_PROPERTY(QString DataField READ DataField WRITE SetDataField)
    Q_PROPERTY(int MousePointer READ MousePointer WRITE SetMousePointer)
    Q_PROPERTY(QString MouseIcon READ MouseIcon WRITE SetMouseIcon)

public:
    explicit StandardControl(QWidget* parent, OleColor backColor, OleColor foreColor);

    OleColor BackColor() const noexcept { return mBackColor; }
    void SetBackColor(OleColor color);
    OleColor ForeColor() const noexcept { return mForeColor; }
    void SetForeColor(OleColor color);
    StdFont* Font() const noexcept { return mFont; }
    QObject* FontObject() const { return mFont; }
    // Copies the given font's attributes (the control keeps its own font object).
    void SetFontObject(QObject* font);
    const QString& DataField() const noexcept { return mDataField; }
    void SetDataField(const QString& field) { mDataField = field; }
    int MousePointer() const noexcept { return mMousePointer; }
    // Raises 380 for a value that is no MousePointer constant.
    void SetMousePointer(int pointer);
    // The custom pointer's picture file (shown while MousePointer is vbCustom); "" for none.
    // Raises 481 for a file that is not a picture.
    const QString& MouseIcon() const noexcept { return mMouseIcon; }
    void SetMouseIcon(const QString& fileName);

    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    // Where colours, font and cursor are shown: the inner widget, or the control itself.
    virtual QWidget* StyledWidget() { return InputWidget() ? InputWidget() : this; }
    // Shows the colours and font on the styled widget; a control whose colours depend on its
    // state (a negative number in its own colour) adds to it.
    virtual void ApplyStyle();

private:
    void ApplyCursor();

    OleColor mBackColor;
    OleColor mForeColor;
    const OleColor mDefaultBackColor;
    const OleColor mDefaultForeColor;
    StdFont* mFont;
    QString mDataField;
    int mMousePointer = 0;
    QString mMouseIcon;
    QPixmap mMouseIconPixmap;
};

}  // namespace korvex
