// ZqCheckBox: the click guard and next-value cycle over the inner check box, the caption-less
// square with its focus rectangle, and the pass-through properties in their persisted order.
#include "korvex/controls/input/ZqCheckBox.h"

#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/desktop/ColorConversion.h"
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
    setFocusProxy(chkBox);
    setAutoFillBackground(true);

    connect(chkBox, &Control::Click, this, &ZqCheckBox::InnerBoxClicked);
    WrapInner(chkBox, InnerEvent::Keys | InnerEvent::Mouse | InnerEvent::Validate | InnerEvent::Focus);

    ApplyOwnColors();
    resize(100, 21);
    LoadDeclaredDefaults();
    Resize();
}

void ZqCheckBox::InnerFocusChanged(bool hasFocus)
{
    mHasFocus = hasFocus;
    update();
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
    PropertyChanged("Value");
    emit Click(zqchkChangedByCode);
}

void ZqCheckBox::SetThreeState(bool threeState)
{
    Assign("ThreeState", mThreeState, threeState);
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

QSize ZqCheckBox::sizeHint() const
{
    if (HasCaption())
        return UserControl::sizeHint();
    // The square around the box, with room for the focus rectangle.
    const int side = chkBox->minimumSizeHint().height() + 2 * RoundHalfEven(mMarginY / TwipsPerPixelY());
    return {side, side};
}

QSize ZqCheckBox::minimumSizeHint() const
{
    return HasCaption() ? UserControl::minimumSizeHint() : sizeHint();
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
    WriteInner("BackColor", chkBox, color, &CheckBox::BackColor, &CheckBox::SetBackColor);
    ApplyOwnColors();
}

void ZqCheckBox::SetForeColor(OleColor color)
{
    WriteInner("ForeColor", chkBox, color, &CheckBox::ForeColor, &CheckBox::SetForeColor);
    ApplyOwnColors();
}

void ZqCheckBox::SetEnabled(bool enabled)
{
    chkBox->SetEnabled(enabled);
    UserControl::SetEnabled(enabled);
    PropertyChanged("Enabled");
}

void ZqCheckBox::SetFontObject(QObject* font)
{
    RequireValid(qobject_cast<StdFont*>(font) != nullptr, "Font");
    chkBox->SetFontObject(font);
    PropertyChanged("Font");
}

void ZqCheckBox::SetAlignment(short alignment)
{
    WriteInner("Alignment", chkBox, alignment, &CheckBox::Alignment, &CheckBox::SetAlignment);
}

void ZqCheckBox::SetAppearance(short appearance)
{
    WriteInner("Appearance", chkBox, appearance, &CheckBox::Appearance, &CheckBox::SetAppearance);
}

void ZqCheckBox::SetCaption(const QString& caption)
{
    WriteInner("Caption", chkBox, caption, &CheckBox::Caption, &CheckBox::SetCaption);
    update();  // the focus rectangle belongs to caption-less boxes only
    updateGeometry();
}

void ZqCheckBox::SetCausesValidation(bool causes)
{
    chkBox->SetCausesValidation(causes);
    // The form asks the control it holds, this one, when the focus comes in.
    UserControl::SetCausesValidation(causes);
    PropertyChanged("CausesValidation");
}

void ZqCheckBox::SetDataField(const QString& field)
{
    Assign("DataField", mDataField, field);
}

void ZqCheckBox::SetDisabledPicture(const QString& fileName)
{
    WriteInner("DisabledPicture", chkBox, fileName, &CheckBox::DisabledPicture, &CheckBox::SetDisabledPicture);
}

void ZqCheckBox::SetDownPicture(const QString& fileName)
{
    WriteInner("DownPicture", chkBox, fileName, &CheckBox::DownPicture, &CheckBox::SetDownPicture);
}

void ZqCheckBox::SetMaskColor(OleColor color)
{
    WriteInner("MaskColor", chkBox, color, &CheckBox::MaskColor, &CheckBox::SetMaskColor);
}

void ZqCheckBox::SetMouseIcon(const QString& fileName)
{
    WriteInner("MouseIcon", chkBox, fileName, &CheckBox::MouseIcon, &CheckBox::SetMouseIcon);
}

void ZqCheckBox::SetMousePointer(int pointer)
{
    WriteInner("MousePointer", chkBox, pointer, &CheckBox::MousePointer, &CheckBox::SetMousePointer);
}

void ZqCheckBox::SetOLEDropMode(short mode)
{
    WriteInner("OLEDropMode", chkBox, mode, &CheckBox::OLEDropMode, &CheckBox::SetOLEDropMode);
}

void ZqCheckBox::SetPicture(const QString& fileName)
{
    WriteInner("Picture", chkBox, fileName, &CheckBox::Picture, &CheckBox::SetPicture);
}

void ZqCheckBox::SetToolTipText(const QString& text)
{
    WriteInner("ToolTipText", chkBox, text, &CheckBox::ToolTipText, &CheckBox::SetToolTipText);
}

void ZqCheckBox::SetUseMaskColor(bool use)
{
    WriteInner("UseMaskColor", chkBox, use, &CheckBox::UseMaskColor, &CheckBox::SetUseMaskColor);
}

void ZqCheckBox::SetWhatsThisHelpID(int id)
{
    WriteInner("WhatsThisHelpID", chkBox, id, &CheckBox::WhatsThisHelpID, &CheckBox::SetWhatsThisHelpID);
}

void ZqCheckBox::LoadValue(short value)
{
    {
        // A loaded value is no change of value: no Click.
        const QScopedValueRollback guard(mClickGuard, true);
        chkBox->SetValue(value);
    }
    ComputeNextValue();
}

const PropertyList& ZqCheckBox::PersistedProperties() const
{
    static const PropertyList list =
        Declare<ZqCheckBox>()
            .Property("Appearance", &ZqCheckBox::Appearance, &ZqCheckBox::SetAppearance, std::int16_t{1})
            .Property("BackColor", &ZqCheckBox::BackColor, &ZqCheckBox::SetBackColor, vbButtonFace)
            .Property("ForeColor", &ZqCheckBox::ForeColor, &ZqCheckBox::SetForeColor, vbButtonText)
            .Property("Enabled", [](const ZqCheckBox& c) { return c.chkBox->Enabled(); }, &ZqCheckBox::SetEnabled, true)
            .Property("Font", &ZqCheckBox::FontObject, &ZqCheckBox::SetFontObject, AmbientFont)
            .Property("Alignment", &ZqCheckBox::Alignment, &ZqCheckBox::SetAlignment, std::int16_t{0})
            .Property("Caption", &ZqCheckBox::Caption, &ZqCheckBox::SetCaption, QStringLiteral("ZqCheckBox"))
            .Property("CausesValidation", &ZqCheckBox::CausesValidation, &ZqCheckBox::SetCausesValidation, true)
            .Property("DataField", &ZqCheckBox::DataField, &ZqCheckBox::SetDataField, QString())
            .Property("DisabledPicture", &ZqCheckBox::DisabledPicture, &ZqCheckBox::SetDisabledPicture, QString())
            .Property("DownPicture", &ZqCheckBox::DownPicture, &ZqCheckBox::SetDownPicture, QString())
            .Property("MaskColor", &ZqCheckBox::MaskColor, &ZqCheckBox::SetMaskColor, OleColor{0xC0C0C0})
            .Property("MouseIcon", &ZqCheckBox::MouseIcon, &ZqCheckBox::SetMouseIcon, QString())
            .Property("MousePointer", &ZqCheckBox::MousePointer, &ZqCheckBox::SetMousePointer, 0)
            .Property("OLEDropMode", &ZqCheckBox::OLEDropMode, &ZqCheckBox::SetOLEDropMode, std::int16_t{0})
            .Property("Picture", &ZqCheckBox::Picture, &ZqCheckBox::SetPicture, QString())
            .Property("ToolTipText", &ZqCheckBox::ToolTipText, &ZqCheckBox::SetToolTipText, QString())
            .Property("UseMaskColor", &ZqCheckBox::UseMaskColor, &ZqCheckBox::SetUseMaskColor, false)
            .Property("WhatsThisHelpID", &ZqCheckBox::WhatsThisHelpID, &ZqCheckBox::SetWhatsThisHelpID, 0)
            .Property("ThreeState", &ZqCheckBox::ThreeState, &ZqCheckBox::SetThreeState, true)
            .Stored("Value", &ZqCheckBox::Value, &ZqCheckBox::LoadValue, std::int16_t{0});
    return list;
}

}  // namespace korvex
