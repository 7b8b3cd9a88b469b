// StandardControl: colours and font applied to the styled widget, persisted with defaults.
#include "korvex/platform/host/StandardControl.h"

#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/LoadPicture.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/FontConversion.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

namespace korvex {

StandardControl::StandardControl(QWidget* parent, OleColor backColor, OleColor foreColor)
    : Control(parent), mBackColor(backColor), mForeColor(foreColor), mDefaultBackColor(backColor),
      mDefaultForeColor(foreColor), mFont(new StdFont(this))
{
    if (Form* form = ParentForm())
        mFont->CopyFrom(*form->Font());
    connect(mFont, &StdFont::FontChanged, this, [this] { ApplyStyle(); });
}

void StandardControl::SetBackColor(OleColor color)
{
    mBackColor = color;
    ApplyStyle();
}

void StandardControl::SetForeColor(OleColor color)
{
    mForeColor = color;
    ApplyStyle();
}

void StandardControl::SetFontObject(QObject* font)
{
    if (auto* f = qobject_cast<StdFont*>(font))
        mFont->CopyFrom(*f);
}

void StandardControl::SetMousePointer(int pointer)
{
    if (!IsMousePointerConstant(pointer))
        Raise(vbErrInvalidPropertyValue, TypeName() + QStringLiteral(".MousePointer"));
    mMousePointer = pointer;
    ApplyCursor();
}

void StandardControl::SetMouseIcon(const QString& fileName)
{
    mMouseIconPixmap = LoadPicture(fileName, TypeName() + QStringLiteral(".MouseIcon"));
    mMouseIcon = fileName;
    ApplyCursor();
}

void StandardControl::ApplyCursor()
{
    QWidget* target = StyledWidget();
    if (mMousePointer == vbDefault)
        target->unsetCursor();
    else if (mMousePointer == vbCustom && !mMouseIconPixmap.isNull())
        target->setCursor(QCursor(mMouseIconPixmap));
    else
        target->setCursor(CursorShapeOf(mMousePointer));
}

void StandardControl::ApplyStyle()
{
    QWidget* target = StyledWidget();
    ApplyColors(target, mBackColor, mForeColor);
    target->setFont(ToQFont(*mFont));
    ApplyCursor();
}

void StandardControl::ReadProperties(PropertyBag& bag)
{
    mBackColor = static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(mDefaultBackColor))));
    mForeColor = static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(mDefaultForeColor))));
    Form* form = ParentForm();
    StdFont fallback;
    const Variant font = bag.ReadProperty(QStringLiteral("Font"), Variant(form ? form->Font() : &fallback));
    SetFontObject(font.Object());
    mDataField = CStr(bag.ReadProperty(QStringLiteral("DataField"), QString()));
    SetMousePointer(CLng(bag.ReadProperty(QStringLiteral("MousePointer"), 0)));
    SetMouseIcon(CStr(bag.ReadProperty(QStringLiteral("MouseIcon"), QString())));
    ApplyStyle();
}

void StandardControl::WriteProperties(PropertyBag& bag)
{
    bag.WriteProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(mBackColor), static_cast<std::int32_t>(mDefaultBackColor));
    bag.WriteProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(mForeColor), static_cast<std::int32_t>(mDefaultForeColor));
    Form* form = ParentForm();
    StdFont fallback;
    bag.WriteProperty(QStringLiteral("Font"), Variant(static_cast<QObject*>(mFont)), Variant(form ? form->Font() : &fallback));
    bag.WriteProperty(QStringLiteral("DataField"), mDataField, QString());
    bag.WriteProperty(QStringLiteral("MousePointer"), mMousePointer, 0);
    bag.WriteProperty(QStringLiteral("MouseIcon"), mMouseIcon, QString());
}

}  // namespace korvex
