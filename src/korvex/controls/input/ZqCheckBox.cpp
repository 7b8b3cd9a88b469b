// ZqCheckBox: the click guard and next-value cycle over the inner check box, the caption-less
// square with its focus rectangle, and the pass-through properties in their persisted order.
#include "korvex/controls/input/ZqCheckBox.h"

#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/system/ColorConversion.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <QScopedValueRollback>

#include <algorithm>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqCheckBox);

ZqCheckBox::ZqCheckBox(QWidget* parent)
    : UserControl(parent), chkBox(new CheckBox(this)),
      mMarginX(static_cast<short>(RoundHalfEven(3 * TwipsPerPixelX()))),
      mMarginY(static_cast<short>(RoundHalfEven(3 * TwipsPerPixelY())))
{
    chkBox->SetName(QStringLiteral("chkBox"));
    chkBox->SetCaption(QStringLiteral("ZqCheckBox"));
    setFocusProxy(chkBox);
    setAutoFillBackground(true);

    connect(chkBox, &Control::Click, this, &ZqCheckBox::InnerBoxClicked);
    connect(chkBox, &Control::KeyDown, this, &Control::KeyDown);
    connect(chkBox, &Control::KeyPress, this, &Control::KeyPress);
    connect(chkBox, &Control::KeyUp, this, &Control::KeyUp);
    connect(chkBox, &Control::MouseDown, this, &Control::MouseDown);
    connect(chkBox, &Control::MouseMove, this, &Control::MouseMove);
    connect(chkBox, &Control::MouseUp, this, &Control::MouseUp);
    connect(chkBox, &Control::Validate, this, &Control::Validate);
    connect(chkBox, &Control::GotFocus, this, [this] {
        mHasFocus = true;
        update();
        emit GotFocus();
    });
    connect(chkBox, &Control::LostFocus, this, [this] {
        mHasFocus = false;
        update();
        emit LostFocus();
    });

    ApplyOwnColors();
    resize(100, 21);
    Resize();
    ComputeNextValue();
}

ZqCheckBox::~ZqCheckBox()
{
    // The inner box outlives this object's own part while Qt deletes the children; what it
    // says then (a lost focus) must not reach a half-destroyed control.
    disconnect(chkBox, nullptr, this, nullptr);
}

void ZqCheckBox::ComputeNextValue()
{
    switch (chkBox->Value()) {
    case vbUnchecked: mNextValue = mThreeState ? vbGrayed : vbChecked; break;
    case vbGrayed: mNextValue = vbChecked; break;
    case vbChecked: mNextValue = vbUnchecked; break;
    default: break;
    }
}

void ZqCheckBox::InnerBoxClicked()
{
    if (mClickGuard)
        return;
    {
        // The platform has already moved the box on; the control's own cycle decides instead.
        const QScopedValueRollback guard(mClickGuard, true);
        chkBox->SetValue(mNextValue);
    }
    ComputeNextValue();
    emit Click(zqchkChangedByUser);
}

void ZqCheckBox::SetValue(short value)
{
    {
        const QScopedValueRollback guard(mClickGuard, true);
        chkBox->SetValue(value);
    }
    ComputeNextValue();
    PropertyChanged(QStringLiteral("Value"));
    emit Click(zqchkChangedByCode);
}

void ZqCheckBox::SetThreeState(bool threeState)
{
    if (threeState == mThreeState)
        return;
    mThreeState = threeState;
    PropertyChanged(QStringLiteral("ThreeState"));
}

bool ZqCheckBox::HasCaption() const
{
    const QString caption = Caption();
    return std::any_of(caption.cbegin(), caption.cend(), [](QChar c) { return c != QLatin1Char(' '); });
}

void ZqCheckBox::Resize()
{
    if (HasCaption()) {
        chkBox->Move(0, 0, ScaleWidth(), ScaleHeight());
        return;
    }
    // Without a caption the control is a square around the box, with room for the focus
    // rectangle on every side. The box reports the least height it can have.
    chkBox->SetHeight(0);
    const int h = chkBox->Height();
    SetHeight(h + 2 * mMarginY);
    SetWidth(Height());
    chkBox->Move(mMarginX, mMarginY, h, h);
}

void ZqCheckBox::Paint(QPainter& painter)
{
    if (HasCaption() || !mHasFocus)
        return;
    const int left = RoundHalfEven((chkBox->Left() - mMarginX) / TwipsPerPixelX());
    const int top = RoundHalfEven((chkBox->Top() - mMarginY) / TwipsPerPixelY());
    const int right = RoundHalfEven((chkBox->Left() + chkBox->Width() + mMarginX) / TwipsPerPixelX());
    const int bottom = RoundHalfEven((chkBox->Top() + chkBox->Height() + mMarginY) / TwipsPerPixelY());
    DrawFocusRect(painter, left, top, right, bottom);
}

void ZqCheckBox::Refresh()
{
    chkBox->Refresh();
}

void ZqCheckBox::SetTabStop(bool tabStop)
{
    UserControl::SetTabStop(tabStop);
    chkBox->SetTabStop(tabStop);
}

void ZqCheckBox::ApplyOwnColors()
{
    ApplyColors(this, chkBox->BackColor(), chkBox->ForeColor());
    update();
}

void ZqCheckBox::SetBackColor(OleColor color)
{
    WriteInner(QStringLiteral("BackColor"), chkBox, color, &CheckBox::BackColor, &CheckBox::SetBackColor);
    ApplyOwnColors();
}

void ZqCheckBox::SetForeColor(OleColor color)
{
    WriteInner(QStringLiteral("ForeColor"), chkBox, color, &CheckBox::ForeColor, &CheckBox::SetForeColor);
    ApplyOwnColors();
}

void ZqCheckBox::SetEnabled(bool enabled)
{
    if (enabled == chkBox->Enabled() && enabled == UserControl::Enabled())
        return;
    chkBox->SetEnabled(enabled);
    UserControl::SetEnabled(enabled);
    PropertyChanged(QStringLiteral("Enabled"));
}

void ZqCheckBox::SetFontObject(QObject* font)
{
    auto* stdFont = qobject_cast<StdFont*>(font);
    if (!stdFont)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqCheckBox.Font"));
    if (stdFont->SameAs(*chkBox->Font()))
        return;
    chkBox->SetFontObject(font);
    PropertyChanged(QStringLiteral("Font"));
}

void ZqCheckBox::SetAlignment(short alignment)
{
    WriteInner(QStringLiteral("Alignment"), chkBox, alignment, &CheckBox::Alignment, &CheckBox::SetAlignment);
}

void ZqCheckBox::SetAppearance(short appearance)
{
    WriteInner(QStringLiteral("Appearance"), chkBox, appearance, &CheckBox::Appearance, &CheckBox::SetAppearance);
}

void ZqCheckBox::SetCaption(const QString& caption)
{
    WriteInner(QStringLiteral("Caption"), chkBox, caption, &CheckBox::Caption, &CheckBox::SetCaption);
    update();  // the focus rectangle belongs to caption-less boxes only
}

void ZqCheckBox::SetCausesValidation(bool causes)
{
    if (causes == chkBox->CausesValidation() && causes == UserControl::CausesValidation())
        return;
    chkBox->SetCausesValidation(causes);
    // The form asks the control it holds, this one, when the focus comes in.
    UserControl::SetCausesValidation(causes);
    PropertyChanged(QStringLiteral("CausesValidation"));
}

void ZqCheckBox::SetDataField(const QString& field)
{
    if (field == mDataField)
        return;
    mDataField = field;
    PropertyChanged(QStringLiteral("DataField"));
}

void ZqCheckBox::SetDisabledPicture(const QString& fileName)
{
    WriteInner(QStringLiteral("DisabledPicture"), chkBox, fileName, &CheckBox::DisabledPicture, &CheckBox::SetDisabledPicture);
}

void ZqCheckBox::SetDownPicture(const QString& fileName)
{
    WriteInner(QStringLiteral("DownPicture"), chkBox, fileName, &CheckBox::DownPicture, &CheckBox::SetDownPicture);
}

void ZqCheckBox::SetMaskColor(OleColor color)
{
    WriteInner(QStringLiteral("MaskColor"), chkBox, color, &CheckBox::MaskColor, &CheckBox::SetMaskColor);
}

void ZqCheckBox::SetMouseIcon(const QString& fileName)
{
    WriteInner(QStringLiteral("MouseIcon"), chkBox, fileName, &CheckBox::MouseIcon, &CheckBox::SetMouseIcon);
}

void ZqCheckBox::SetMousePointer(int pointer)
{
    WriteInner(QStringLiteral("MousePointer"), chkBox, pointer, &CheckBox::MousePointer, &CheckBox::SetMousePointer);
}

void ZqCheckBox::SetOLEDropMode(short mode)
{
    WriteInner(QStringLiteral("OLEDropMode"), chkBox, mode, &CheckBox::OLEDropMode, &CheckBox::SetOLEDropMode);
}

void ZqCheckBox::SetPicture(const QString& fileName)
{
    WriteInner(QStringLiteral("Picture"), chkBox, fileName, &CheckBox::Picture, &CheckBox::SetPicture);
}

void ZqCheckBox::SetToolTipText(const QString& text)
{
    WriteInner(QStringLiteral("ToolTipText"), chkBox, text, &CheckBox::ToolTipText, &CheckBox::SetToolTipText);
}

void ZqCheckBox::SetUseMaskColor(bool use)
{
    WriteInner(QStringLiteral("UseMaskColor"), chkBox, use, &CheckBox::UseMaskColor, &CheckBox::SetUseMaskColor);
}

void ZqCheckBox::SetWhatsThisHelpID(int id)
{
    WriteInner(QStringLiteral("WhatsThisHelpID"), chkBox, id, &CheckBox::WhatsThisHelpID, &CheckBox::SetWhatsThisHelpID);
}

void ZqCheckBox::InitProperties()
{
    mThreeState = true;
    ComputeNextValue();
}

void ZqCheckBox::ReadProperties(PropertyBag& bag)
{
    SetAppearance(CInt(bag.ReadProperty(QStringLiteral("Appearance"), 1)));
    SetBackColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(vbButtonFace)))));
    SetForeColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(vbButtonText)))));
    SetEnabled(CBool(bag.ReadProperty(QStringLiteral("Enabled"), true)));
    SetFontObject(bag.ReadProperty(QStringLiteral("Font"), Variant(Ambient()->FontObject())).Object());
    SetAlignment(CInt(bag.ReadProperty(QStringLiteral("Alignment"), 0)));
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QStringLiteral("ZqCheckBox"))));
    SetCausesValidation(CBool(bag.ReadProperty(QStringLiteral("CausesValidation"), true)));
    SetDataField(CStr(bag.ReadProperty(QStringLiteral("DataField"), QString())));
    SetDisabledPicture(CStr(bag.ReadProperty(QStringLiteral("DisabledPicture"), QString())));
    SetDownPicture(CStr(bag.ReadProperty(QStringLiteral("DownPicture"), QString())));
    SetMaskColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("MaskColor"), 0xC0C0C0))));
    SetMouseIcon(CStr(bag.ReadProperty(QStringLiteral("MouseIcon"), QString())));
    SetMousePointer(CLng(bag.ReadProperty(QStringLiteral("MousePointer"), 0)));
    SetOLEDropMode(CInt(bag.ReadProperty(QStringLiteral("OLEDropMode"), 0)));
    SetPicture(CStr(bag.ReadProperty(QStringLiteral("Picture"), QString())));
    SetToolTipText(CStr(bag.ReadProperty(QStringLiteral("ToolTipText"), QString())));
    SetUseMaskColor(CBool(bag.ReadProperty(QStringLiteral("UseMaskColor"), false)));
    SetWhatsThisHelpID(CLng(bag.ReadProperty(QStringLiteral("WhatsThisHelpID"), 0)));
    SetThreeState(CBool(bag.ReadProperty(QStringLiteral("ThreeState"), true)));
    {
        // A loaded value is no change of value: no Click.
        const QScopedValueRollback guard(mClickGuard, true);
        chkBox->SetValue(CInt(bag.ReadProperty(QStringLiteral("Value"), 0)));
    }
    ComputeNextValue();
}

void ZqCheckBox::WriteProperties(PropertyBag& bag)
{
    bag.WriteProperty(QStringLiteral("Appearance"), Appearance(), std::int16_t{1});
    bag.WriteProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(BackColor()), static_cast<std::int32_t>(vbButtonFace));
    bag.WriteProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(ForeColor()), static_cast<std::int32_t>(vbButtonText));
    bag.WriteProperty(QStringLiteral("Enabled"), chkBox->Enabled(), true);
    bag.WriteProperty(QStringLiteral("Font"), Variant(FontObject()), Variant(Ambient()->FontObject()));
    bag.WriteProperty(QStringLiteral("Alignment"), Alignment(), std::int16_t{0});
    bag.WriteProperty(QStringLiteral("Caption"), Caption(), QStringLiteral("ZqCheckBox"));
    bag.WriteProperty(QStringLiteral("CausesValidation"), CausesValidation(), true);
    bag.WriteProperty(QStringLiteral("DataField"), mDataField, QString());
    bag.WriteProperty(QStringLiteral("DisabledPicture"), DisabledPicture(), QString());
    bag.WriteProperty(QStringLiteral("DownPicture"), DownPicture(), QString());
    bag.WriteProperty(QStringLiteral("MaskColor"), static_cast<std::int32_t>(MaskColor()), 0xC0C0C0);
    bag.WriteProperty(QStringLiteral("MouseIcon"), MouseIcon(), QString());
    bag.WriteProperty(QStringLiteral("MousePointer"), MousePointer(), 0);
    bag.WriteProperty(QStringLiteral("OLEDropMode"), OLEDropMode(), std::int16_t{0});
    bag.WriteProperty(QStringLiteral("Picture"), Picture(), QString());
    bag.WriteProperty(QStringLiteral("ToolTipText"), ToolTipText(), QString());
    bag.WriteProperty(QStringLiteral("UseMaskColor"), UseMaskColor(), false);
    bag.WriteProperty(QStringLiteral("WhatsThisHelpID"), WhatsThisHelpID(), 0);
    bag.WriteProperty(QStringLiteral("ThreeState"), mThreeState, true);
    bag.WriteProperty(QStringLiteral("Value"), Value(), std::int16_t{0});
}

}  // namespace korvex
