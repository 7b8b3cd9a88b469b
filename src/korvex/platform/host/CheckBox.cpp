// CheckBox over QCheckBox. A user click moves unchecked to checked and anything else to
// unchecked; only code sets the grayed state. The control is never lower than its box, so a
// check box asked for no height reports the height its box needs.
#include "korvex/platform/host/CheckBox.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/LoadPicture.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"

#include <QCheckBox>
#include <QSignalBlocker>
#include <QStyle>

namespace korvex {
namespace {

class TwoWayCheckBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override { setCheckState(checkState() == Qt::Unchecked ? Qt::Checked : Qt::Unchecked); }
};

}  // namespace

KORVEX_REGISTER_CONTROL(CheckBox);

CheckBox::CheckBox(QWidget* parent) : StandardControl(parent, vbButtonFace, vbButtonText), mBox(new TwoWayCheckBox(this))
{
    mBox->setTristate(true);
    connect(mBox, &QCheckBox::stateChanged, this, GuardedSlot(this, [this] { emit Click(); }));
    SetInputWidget(mBox);
    setMinimumHeight(mBox->style()->pixelMetric(QStyle::PM_IndicatorHeight, nullptr, mBox));
    resize(100, 21);
    ApplyStyle();
}

void CheckBox::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    mBox->setGeometry(rect());
}

QString CheckBox::Caption() const
{
    return mBox->text();
}

void CheckBox::SetCaption(const QString& caption)
{
    mBox->setText(caption);
}

short CheckBox::Value() const
{
    switch (mBox->checkState()) {
    case Qt::Checked: return 1;
    case Qt::PartiallyChecked: return 2;
    default: return 0;
    }
}

void CheckBox::SetValue(short value)
{
    if (value < 0 || value > 2)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("CheckBox.Value"));
    const Qt::CheckState state = value == 1 ? Qt::Checked : value == 2 ? Qt::PartiallyChecked : Qt::Unchecked;
    if (state == mBox->checkState())
        return;
    {
        // As for a text box: the host's write raises Click itself, outside Qt's code.
        const QSignalBlocker quiet(mBox);
        mBox->setCheckState(state);
    }
    emit Click();
}

void CheckBox::SetAlignment(short alignment)
{
    if (alignment < 0 || alignment > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("CheckBox.Alignment"));
    mAlignment = alignment;
    mBox->setLayoutDirection(alignment == 1 ? Qt::RightToLeft : Qt::LeftToRight);
}

void CheckBox::SetAppearance(short appearance)
{
    if (appearance < 0 || appearance > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("CheckBox.Appearance"));
    mAppearance = appearance;
}

void CheckBox::SetPictureFile(PictureFile& picture, const QString& fileName, const char* property)
{
    picture.pixmap = LoadPicture(fileName, QStringLiteral("CheckBox.") + QLatin1String(property));
    picture.file = fileName;
}

void CheckBox::SetPicture(const QString& fileName)
{
    SetPictureFile(mPicture, fileName, "Picture");
}

void CheckBox::SetDownPicture(const QString& fileName)
{
    SetPictureFile(mDownPicture, fileName, "DownPicture");
}

void CheckBox::SetDisabledPicture(const QString& fileName)
{
    SetPictureFile(mDisabledPicture, fileName, "DisabledPicture");
}

void CheckBox::SetOLEDropMode(short mode)
{
    if (mode != vbOLEDropNone && mode != vbOLEDropManual)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("CheckBox.OLEDropMode"));
    mOLEDropMode = mode;
}

void CheckBox::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QString())));
    SetAlignment(CInt(bag.ReadProperty(QStringLiteral("Alignment"), 0)));
    SetAppearance(CInt(bag.ReadProperty(QStringLiteral("Appearance"), 1)));
    SetPicture(CStr(bag.ReadProperty(QStringLiteral("Picture"), QString())));
    SetDownPicture(CStr(bag.ReadProperty(QStringLiteral("DownPicture"), QString())));
    SetDisabledPicture(CStr(bag.ReadProperty(QStringLiteral("DisabledPicture"), QString())));
    SetMaskColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("MaskColor"), 0xC0C0C0))));
    SetUseMaskColor(CBool(bag.ReadProperty(QStringLiteral("UseMaskColor"), false)));
    SetOLEDropMode(CInt(bag.ReadProperty(QStringLiteral("OLEDropMode"), 0)));
    SetWhatsThisHelpID(CLng(bag.ReadProperty(QStringLiteral("WhatsThisHelpID"), 0)));
    const QSignalBlocker loading(mBox);  // loading a value is not a click
    SetValue(CInt(bag.ReadProperty(QStringLiteral("Value"), 0)));
}

void CheckBox::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("Caption"), Caption(), QString());
    bag.WriteProperty(QStringLiteral("Alignment"), mAlignment, std::int16_t{0});
    bag.WriteProperty(QStringLiteral("Appearance"), mAppearance, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("Picture"), Picture(), QString());
    bag.WriteProperty(QStringLiteral("DownPicture"), DownPicture(), QString());
    bag.WriteProperty(QStringLiteral("DisabledPicture"), DisabledPicture(), QString());
    bag.WriteProperty(QStringLiteral("MaskColor"), static_cast<std::int32_t>(mMaskColor), 0xC0C0C0);
    bag.WriteProperty(QStringLiteral("UseMaskColor"), mUseMaskColor, false);
    bag.WriteProperty(QStringLiteral("OLEDropMode"), mOLEDropMode, std::int16_t{0});
    bag.WriteProperty(QStringLiteral("WhatsThisHelpID"), mWhatsThisHelpID, 0);
    bag.WriteProperty(QStringLiteral("Value"), Value(), std::int16_t{0});
}

}  // namespace korvex
