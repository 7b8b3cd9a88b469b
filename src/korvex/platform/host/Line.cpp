// Line: the widget covers the segment's bounding box (plus the pen) and paints the segment.
#include "korvex/platform/host/Line.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <QPainter>

namespace korvex {

KORVEX_REGISTER_CONTROL(Line);

Line::Line(QWidget* parent) : Control(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    Place();
}

void Line::SetX1(int twips) { SetPoints(twips, mY1, mX2, mY2); }
void Line::SetY1(int twips) { SetPoints(mX1, twips, mX2, mY2); }
void Line::SetX2(int twips) { SetPoints(mX1, mY1, twips, mY2); }
void Line::SetY2(int twips) { SetPoints(mX1, mY1, mX2, twips); }

void Line::SetPoints(int x1, int y1, int x2, int y2)
{
    mX1 = x1, mY1 = y1, mX2 = x2, mY2 = y2;
    Place();
}

void Line::SetBorderColor(OleColor color)
{
    mBorderColor = color;
    update();
}

void Line::SetBorderWidth(short width)
{
    if (width < 1 || width > 8192)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Line.BorderWidth"));
    mBorderWidth = width;
    Place();
}

void Line::SetBorderStyle(short style)
{
    if (style < 0 || style > 6)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Line.BorderStyle"));
    mBorderStyle = style;
    update();
}

void Line::Place()
{
    const int pad = mBorderWidth;
    const int left = TwipsToPixelsX(std::min(mX1, mX2)) - pad;
    const int top = TwipsToPixelsY(std::min(mY1, mY2)) - pad;
    const int right = TwipsToPixelsX(std::max(mX1, mX2)) + pad;
    const int bottom = TwipsToPixelsY(std::max(mY1, mY2)) + pad;
    setGeometry(left, top, right - left + 1, bottom - top + 1);
    update();
}

void Line::paintEvent(QPaintEvent*)
{
    if (mBorderStyle == 0)
        return;
    static const Qt::PenStyle styles[] = {Qt::NoPen,       Qt::SolidLine,      Qt::DashLine, Qt::DotLine,
                                          Qt::DashDotLine, Qt::DashDotDotLine, Qt::SolidLine};
    QPainter painter(this);
    painter.setPen(QPen(ToQColor(mBorderColor), mBorderWidth, styles[mBorderStyle], Qt::FlatCap));
    const QPoint origin = pos();
    painter.drawLine(QPoint(TwipsToPixelsX(mX1), TwipsToPixelsY(mY1)) - origin,
                     QPoint(TwipsToPixelsX(mX2), TwipsToPixelsY(mY2)) - origin);
}

void Line::ReadProperties(PropertyBag& bag)
{
    mBorderColor = static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("BorderColor"), static_cast<std::int32_t>(vbWindowText))));
    SetBorderWidth(CInt(bag.ReadProperty(QStringLiteral("BorderWidth"), 1)));
    SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), 1)));
    SetPoints(CLng(bag.ReadProperty(QStringLiteral("X1"), 0)), CLng(bag.ReadProperty(QStringLiteral("Y1"), 0)),
              CLng(bag.ReadProperty(QStringLiteral("X2"), 0)), CLng(bag.ReadProperty(QStringLiteral("Y2"), 0)));
}

void Line::WriteProperties(PropertyBag& bag)
{
    bag.WriteProperty(QStringLiteral("BorderColor"), static_cast<std::int32_t>(mBorderColor), static_cast<std::int32_t>(vbWindowText));
    bag.WriteProperty(QStringLiteral("BorderWidth"), mBorderWidth, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("BorderStyle"), mBorderStyle, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("X1"), mX1, 0);
    bag.WriteProperty(QStringLiteral("Y1"), mY1, 0);
    bag.WriteProperty(QStringLiteral("X2"), mX2, 0);
    bag.WriteProperty(QStringLiteral("Y2"), mY2, 0);
}

}  // namespace korvex
