// StandardControl: colours and font applied to the styled widget, persisted with defaults.
#include "korvex/platform/host/StandardControl.h"

#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/system/ColorConversion.h"
#include "korvex/platform/system/FontConversion.h"
#include "korvex/runtime/Conversions.h"

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
    mMousePointer = pointer;
    if (pointer == 0)
        StyledWidget()->unsetCursor();
    else
        StyledWidget()->setCursor(pointer == 3 ? Qt::IBeamCursor : pointer == 11 ? Qt::WaitCursor : Qt::ArrowCursor);
}

void StandardControl::ApplyStyle()
{
    QWidget* target = StyledWidget();
    ApplyColors(target, mBackColor, mForeColor);
    target->setFont(ToQFont(*mFont));
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
}

}  // namespace korvex
