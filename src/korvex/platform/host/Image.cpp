// Image: a pixmap painted at its size (the control then takes that size) or stretched.
#include "korvex/platform/host/Image.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/LoadPicture.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"

#include <QPainter>

namespace korvex {

KORVEX_REGISTER_CONTROL(Image);

Image::Image(QWidget* parent) : Control(parent)
{
    SetInputWidget(this);
    resize(32, 32);
}

void Image::SetPicture(const QString& fileName)
{
    QPixmap pixmap = LoadPicture(fileName, QStringLiteral("Image.Picture"));
    SetPixmap(pixmap);
    mPicture = fileName;
}

void Image::SetPixmap(const QPixmap& pixmap)
{
    mPicture.clear();
    mPixmap = pixmap;
    if (!mStretch && !mPixmap.isNull())
        resize(mPixmap.size());
    update();
}

void Image::SetStretch(bool stretch)
{
    mStretch = stretch;
    if (!mStretch && !mPixmap.isNull())
        resize(mPixmap.size());
    update();
}

void Image::paintEvent(QPaintEvent*)
{
    if (mPixmap.isNull())
        return;
    QPainter painter(this);
    if (mStretch)
        painter.drawPixmap(rect(), mPixmap);
    else
        painter.drawPixmap(0, 0, mPixmap);
}

void Image::ReadProperties(PropertyBag& bag)
{
    mStretch = CBool(bag.ReadProperty(QStringLiteral("Stretch"), false));
    SetPicture(CStr(bag.ReadProperty(QStringLiteral("Picture"), QString())));
}

void Image::WriteProperties(PropertyBag& bag)
{
    bag.WriteProperty(QStringLiteral("Stretch"), mStretch, false);
    bag.WriteProperty(QStringLiteral("Picture"), mPicture, QString());
}

}  // namespace korvex
