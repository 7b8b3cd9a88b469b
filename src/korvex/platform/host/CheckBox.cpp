// CheckBox over QCheckBox. A user click moves unchecked to checked and anything else to
// unchecked; only code sets the grayed state.
#include "korvex/platform/host/CheckBox.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <QCheckBox>

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
    connect(mBox, &QCheckBox::stateChanged, this, [this] { emit Click(); });
    SetInputWidget(mBox);
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
    mBox->setCheckState(value == 1 ? Qt::Checked : value == 2 ? Qt::PartiallyChecked : Qt::Unchecked);
}

void CheckBox::SetAlignment(short alignment)
{
    if (alignment < 0 || alignment > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("CheckBox.Alignment"));
    mAlignment = alignment;
    mBox->setLayoutDirection(alignment == 1 ? Qt::RightToLeft : Qt::LeftToRight);
}

void CheckBox::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QString())));
    SetAlignment(CInt(bag.ReadProperty(QStringLiteral("Alignment"), 0)));
    SetAppearance(CInt(bag.ReadProperty(QStringLiteral("Appearance"), 1)));
    const QSignalBlocker loading(mBox);  // loading a value is not a click
    SetValue(CInt(bag.ReadProperty(QStringLiteral("Value"), 0)));
}

void CheckBox::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("Caption"), Caption(), QString());
    bag.WriteProperty(QStringLiteral("Alignment"), mAlignment, std::int16_t{0});
    bag.WriteProperty(QStringLiteral("Appearance"), mAppearance, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("Value"), Value(), std::int16_t{0});
}

}  // namespace korvex
