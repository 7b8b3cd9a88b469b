// PictureBox: paints its colour, border and picture, then raises Paint.
#include "korvex/platform/host/PictureBox.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/LoadPicture.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <QPainter>

namespace korvex {

KORVEX_REGISTER_CONTROL(PictureBox);

PictureBox::PictureBox(QWidget* parent) : StandardControl(parent, vbButtonFace, vbButtonText)
{
    SetInputWidget(this);
    setFocusPolicy(Qt::ClickFocus);
    resize(100, 100);
    ApplyStyle();
}

void PictureBox::SetBorderStyle(short style)
{
    if (style < 0 || style > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("PictureBox.BorderStyle"));
    mBorderStyle = style;
    update();
}

void PictureBox::SetPicture(const QString& fileName)
{
    QPixmap pixmap = LoadPicture(fileName, QStringLiteral("PictureBox.Picture"));
    mPicture = fileName;
    mPixmap = pixmap;
    update();
}

int PictureBox::ScaleWidth() const { return PixelsToTwipsX(width() - (mBorderStyle ? 4 : 0)); }
int PictureBox::ScaleHeight() const { return PixelsToTwipsY(height() - (mBorderStyle ? 4 : 0)); }

void PictureBox::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), ToQColor(BackColor()));
    if (!mPixmap.isNull())
        painter.drawPixmap(mBorderStyle ? 2 : 0, mBorderStyle ? 2 : 0, mPixmap);
    if (mBorderStyle) {
        painter.setPen(ToQColor(vbButtonShadow));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    painter.end();
    emit Paint();
}

void PictureBox::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), 1)));
    SetPicture(CStr(bag.ReadProperty(QStringLiteral("Picture"), QString())));
}

void PictureBox::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("BorderStyle"), mBorderStyle, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("Picture"), mPicture, QString());
}

}  // namespace korvex
