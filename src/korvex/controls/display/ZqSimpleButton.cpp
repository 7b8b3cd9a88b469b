// ZqSimpleButton: painting from the style and the pressed state; the mouse cycle of a push
// button done by hand, since Click is raised only for a primary-button release inside and the
// move events only while the button is down on the control.
#include "korvex/controls/display/ZqSimpleButton.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/FontConversion.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"

#include <QMouseEvent>
#include <QPainterPath>

#include <algorithm>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqSimpleButton);

namespace {

short ButtonsOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::LeftButton: return vbLeftButton;
    case Qt::RightButton: return vbRightButton;
    case Qt::MiddleButton: return vbMiddleButton;
    default: return 0;
    }
}

// A glyph's pen: thicker on larger buttons and on denser screens alike, since it scales with
// the rectangle in device-independent pixels.
QPen GlyphPen(const QColor& colour, const QRect& rect)
{
    const qreal width = std::max<qreal>(1.5, std::min(rect.width(), rect.height()) / 8.0);
    return QPen(colour, width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin);
}

}  // namespace

void DrawFlatFramePicture(QPainter& painter, const QRect& rect, int buttonStyle, bool pushed, bool inactive)
{
    painter.save();
    // The flat face: the button face with a one-pixel frame, darker while pushed in.
    painter.fillRect(rect, ToQColor(pushed ? vbButtonShadow : vbButtonFace));
    if (pushed)
        painter.fillRect(rect.adjusted(1, 1, -1, -1), ToQColor(vbButtonFace));
    painter.setPen(ToQColor(pushed ? vb3DDKShadow : vbButtonShadow));
    painter.drawRect(rect.adjusted(0, 0, -1, -1));

    // The glyph is centred and moves one pixel down and right while pushed, as a pressed
    // picture does.
    const QColor ink = ToQColor(inactive ? vbGrayText : vbButtonText);
    const int side = std::max(3, std::min(rect.width(), rect.height()) / 2);
    QRect glyph(0, 0, side, side);
    glyph.moveCenter(rect.center());
    if (pushed)
        glyph.translate(1, 1);
    painter.setRenderHint(QPainter::Antialiasing, true);
    switch (buttonStyle) {
    case 1: {  // a combo-box arrow: a filled triangle pointing down
        const qreal w = glyph.width() * 0.7;
        const QPointF centre = QRectF(glyph).center();
        QPainterPath arrow;
        arrow.moveTo(centre.x() - w / 2, centre.y() - w / 4);
        arrow.lineTo(centre.x() + w / 2, centre.y() - w / 4);
        arrow.lineTo(centre.x(), centre.y() + w / 4);
        arrow.closeSubpath();
        painter.fillPath(arrow, ink);
        break;
    }
    case 2: {  // help: a question mark
        QFont font = painter.font();
        font.setBold(true);
        font.setPixelSize(std::max(6, glyph.height()));
        painter.setFont(font);
        painter.setPen(ink);
        painter.drawText(glyph.adjusted(-side, -side, side, side), Qt::AlignCenter, QStringLiteral("?"));
        break;
    }
    case 3: {  // close: a cross
        painter.setPen(GlyphPen(ink, glyph));
        const QRectF r = QRectF(glyph).adjusted(1, 1, -1, -1);
        painter.drawLine(r.topLeft(), r.bottomRight());
        painter.drawLine(r.topRight(), r.bottomLeft());
        break;
    }
    default: break;  // a plain push button has no glyph
    }
    painter.restore();
}

ZqSimpleButton::ZqSimpleButton(QWidget* parent) : UserControl(parent), mCorner(new Label(this))
{
    // The corner caption's label only keeps the text and, by its geometry, where it is drawn.
    mCorner->hide();
    mCorner->resize(16, 13);
    setFocusPolicy(Qt::NoFocus);
    resize(75, 23);
}

QString ZqSimpleButton::CornerCaption() const
{
    return mCorner->Caption();
}

QRect ZqSimpleButton::CornerCaptionRect() const
{
    // Worked out from the present size as well, so that a size not yet reported counts.
    return QRect(QPoint(width() - mCorner->width(), height() - mCorner->height()), mCorner->size());
}

void ZqSimpleButton::Redraw()
{
    if (isVisible())
        repaint();
}

void ZqSimpleButton::SetButtonStyle(int style)
{
    RequireValid(style >= sbsButton && style <= sbsCloseButton, "ButtonStyle");
    mButtonStyle = style;
    Redraw();
    PropertyChanged("ButtonStyle");
}

void ZqSimpleButton::SetCaption(const QString& caption)
{
    mCaption = caption;
    Redraw();
    PropertyChanged("Caption");
}

void ZqSimpleButton::SetCornerCaption(const QString& caption)
{
    mCorner->SetCaption(caption);
    Redraw();
    PropertyChanged("CornerCaption");
}

void ZqSimpleButton::SetEnabled(bool enabled)
{
    UserControl::SetEnabled(enabled);
    Redraw();
    PropertyChanged("Enabled");
}

void ZqSimpleButton::ReleaseMouseCapture()
{
    if (QWidget::mouseGrabber() == this)
        releaseMouse();
    mMouseDown = false;
}

void ZqSimpleButton::Resize()
{
    mCorner->move(width() - mCorner->width(), height() - mCorner->height());
}

void ZqSimpleButton::Paint(QPainter& painter)
{
    const QRect whole = rect();
    DrawFlatFramePicture(painter, whole, mButtonStyle, mDrawnPressed, !Enabled());

    const int edgeX = SystemInfo::SystemMetric(SM_CXEDGE);
    const int edgeY = SystemInfo::SystemMetric(SM_CYEDGE);
    const QRect inner = whole.adjusted(edgeX, edgeY, -edgeX, -edgeY);
    QFont font = ToQFont(*Ambient()->Font());
    painter.setFont(font);
    painter.setPen(ToQColor(Enabled() ? vbButtonText : vbGrayText));
    if (!mCaption.isEmpty()) {
        // Centred as a whole: the measured block sits halfway down the rectangle.
        const QRect measured = painter.boundingRect(inner, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, mCaption);
        const int innerBottom = inner.top() + inner.height();
        const int top = RoundHalfEven(innerBottom / 2.0 - (inner.top() + measured.height()) / 2.0);
        painter.drawText(QRect(inner.left(), top, inner.width(), innerBottom - top), Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
                         mCaption);
    }
    const QString corner = CornerCaption();
    if (!corner.isEmpty()) {
        font.setPointSizeF(std::max(1.0, font.pointSizeF() - 2));
        painter.setFont(font);
        painter.setPen(ToQColor(vb3DDKShadow));
        painter.drawText(CornerCaptionRect(), Qt::AlignHCenter | Qt::AlignTop, corner);
    }
}

bool ZqSimpleButton::Inside(const QMouseEvent* event) const
{
    // A move counts while the primary button is held; a press or release only for that button.
    const QPointF p = event->position();
    const bool primary =
        event->type() == QEvent::MouseMove ? (event->buttons() & Qt::LeftButton) != 0 : event->button() == Qt::LeftButton;
    return primary && p.x() >= 0 && p.y() >= 0 && p.x() <= width() && p.y() <= height();
}

void ZqSimpleButton::RaiseMouse(void (Control::*signal)(short&, short&, float&, float&), const QMouseEvent* event)
{
    short button = event->type() == QEvent::MouseMove ? 0 : ButtonsOf(event->button());
    if (event->type() == QEvent::MouseMove) {
        if (event->buttons() & Qt::LeftButton)
            button |= vbLeftButton;
        if (event->buttons() & Qt::RightButton)
            button |= vbRightButton;
        if (event->buttons() & Qt::MiddleButton)
            button |= vbMiddleButton;
    }
    short shift = ShiftOf(event->modifiers());
    float x = static_cast<float>(event->position().x() * TwipsPerPixelX());
    float y = static_cast<float>(event->position().y() * TwipsPerPixelY());
    (this->*signal)(button, shift, x, y);
}

void ZqSimpleButton::mousePressEvent(QMouseEvent* event)
{
    Guarded(this, [&] {
        if (event->button() == Qt::LeftButton) {
            mMouseDown = true;
            mDrawnPressed = true;
            Redraw();
        }
        RaiseMouse(&Control::MouseDown, event);
    });
}

void ZqSimpleButton::mouseMoveEvent(QMouseEvent* event)
{
    if (!mMouseDown)
        return;
    Guarded(this, [&] {
        const bool inside = Inside(event);
        if (inside != mDrawnPressed) {
            mDrawnPressed = inside;
            Redraw();
        }
        RaiseMouse(&Control::MouseMove, event);
    });
}

void ZqSimpleButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (!mMouseDown)
        return;
    Guarded(this, [&] {
        mMouseDown = false;
        if (Inside(event))
            emit Click();
        mDrawnPressed = false;
        Redraw();
        RaiseMouse(&Control::MouseUp, event);
    });
}

void ZqSimpleButton::mouseDoubleClickEvent(QMouseEvent*)
{
    // The second press of a double click is a click of its own, shown as a short push.
    if (mDrawnPressed)
        return;
    Guarded(this, [&] {
        mDrawnPressed = true;
        Redraw();
        emit Click();
        mDrawnPressed = false;
        Redraw();
    });
}

const PropertyList& ZqSimpleButton::PersistedProperties() const
{
    static const PropertyList list =
        Declare<ZqSimpleButton>()
            .Property("ButtonStyle", &ZqSimpleButton::ButtonStyle, &ZqSimpleButton::SetButtonStyle, int{sbsButton})
            .Property("Caption", &ZqSimpleButton::Caption, &ZqSimpleButton::SetCaption, QString())
            .Property("CornerCaption", &ZqSimpleButton::CornerCaption, &ZqSimpleButton::SetCornerCaption, QString())
            .Property("Enabled", &ZqSimpleButton::Enabled, &ZqSimpleButton::SetEnabled, true);
    return list;
}

}  // namespace korvex
