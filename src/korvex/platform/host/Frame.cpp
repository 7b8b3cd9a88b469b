// Frame over QGroupBox; the group box itself holds the contained controls, so their positions
// count from the frame's top-left corner as they do in the host.
#include "korvex/platform/host/Frame.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <QGroupBox>

namespace korvex {

KORVEX_REGISTER_CONTROL(Frame);

Frame::Frame(QWidget* parent) : StandardControl(parent, vbButtonFace, vbButtonText), mBox(new QGroupBox(this))
{
    SetInputWidget(mBox);
    mBox->setFocusPolicy(Qt::NoFocus);
    resize(200, 120);
    ApplyStyle();
}

void Frame::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    mBox->setGeometry(rect());
}

QWidget* Frame::ContainerWidget()
{
    return mBox;
}

QString Frame::Caption() const { return mBox->title(); }
void Frame::SetCaption(const QString& caption) { mBox->setTitle(caption); }

void Frame::SetBorderStyle(short style)
{
    if (style < 0 || style > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Frame.BorderStyle"));
    mBorderStyle = style;
    mBox->setFlat(style == 0);
}

void Frame::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QString())));
    SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), 1)));
}

void Frame::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("Caption"), Caption(), QString());
    bag.WriteProperty(QStringLiteral("BorderStyle"), mBorderStyle, std::int16_t{1});
}

}  // namespace korvex
