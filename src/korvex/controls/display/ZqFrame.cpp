// ZqFrame and ZqFrameEx: a client widget inside the border holds the contained controls; the
// extended panel's scroll bars and corner square sit above it, outside what it holds, so they
// are neither moved by scrolling nor saved with the form.
#include "korvex/controls/display/ZqFrame.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <QScrollBar>

#include <algorithm>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqFrame);
KORVEX_REGISTER_CONTROL(ZqFrameEx);

namespace {

short ToShort(double value)
{
    return static_cast<short>(std::clamp(RoundHalfEven(value), -32768, 32767));
}

}  // namespace

// FrameBase -----------------------------------------------------------------------------------

FrameBase::FrameBase(QWidget* parent, int borderStyle)
    : UserControl(parent), mClient(new QWidget(this)), mBorderStyle(borderStyle), mFont(this, [this] {
          mClient->setFont(mFont.ToQFont());
          update();
      })
{
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    korvex::SetBorderStyle(this, borderStyle, false);
    mClient->setFont(mFont.ToQFont());
    resize(100, 100);
    PlaceClient();
}

void FrameBase::SetBorderStyle(int style)
{
    RequireValid(style == bsNone || style == bsRaisedLikeAButton || style == bsFlat || style == bsSunkLikeAPictureBox, "BorderStyle");
    if (mBorderStyle != bsNone)
        korvex::SetBorderStyle(this, mBorderStyle, true);
    if (style != bsNone)
        korvex::SetBorderStyle(this, style, false);
    mBorderStyle = style;
    PlaceClient();
    PropertyChanged("BorderStyle");
}

void FrameBase::SetFont(QObject* font)
{
    mFont.Set(font, TypeName() + QStringLiteral(".Font"));
    PropertyChanged("Font");
}

void FrameBase::LoadFont(const Variant& font)
{
    mFont.Load(font, TypeName() + QStringLiteral(".Font"));
    PropertyChanged("Font");
}

QList<Control*> FrameBase::ContainedControls() const
{
    QList<Control*> controls;
    for (QObject* child : mClient->children()) {
        if (auto* c = qobject_cast<Control*>(child))
            controls.append(c);
    }
    std::stable_sort(controls.begin(), controls.end(), [](const Control* a, const Control* b) { return a->CreationOrder() < b->CreationOrder(); });
    return controls;
}

void FrameBase::PlaceClient()
{
    mClient->setGeometry(contentsRect());
}

bool FrameBase::event(QEvent* event)
{
    if (event->type() == QEvent::ContentsRectChange || event->type() == QEvent::Resize)
        PlaceClient();
    return UserControl::event(event);
}

// ZqFrame -------------------------------------------------------------------------------------

ZqFrame::ZqFrame(QWidget* parent) : FrameBase(parent, bsRaisedLikeAButton) {}

void ZqFrame::SetBackStyle(int style)
{
    RequireValid(style == bsTransparent || style == bsOpaque, "BackStyle");
    Assign("BackStyle", mBackStyle, style, [this] { update(); });
}

void ZqFrame::SetBackColor(OleColor color)
{
    Assign("BackColor", mBackColor, color, [this] { update(); });
}

float ZqFrame::ScaleWidth() const
{
    const int w = Width();
    switch (BorderStyle()) {
    case bsNone: return static_cast<float>(w);
    case bsFlat: return static_cast<float>(w - 2 * BorderWidthTwips());
    case bsRaisedLikeAButton: return static_cast<float>(w - 2 * EdgeWidthTwips() - 2 * TwipsPerPixelX());
    default: return static_cast<float>(w - 2 * EdgeWidthTwips());
    }
}

float ZqFrame::ScaleHeight() const
{
    const int h = Height();
    switch (BorderStyle()) {
    case bsNone: return static_cast<float>(h);
    case bsFlat: return static_cast<float>(h - 2 * BorderHeightTwips());
    case bsRaisedLikeAButton: return static_cast<float>(h - 2 * EdgeHeightTwips() - 2 * TwipsPerPixelY());
    default: return static_cast<float>(h - 2 * EdgeHeightTwips());
    }
}

void ZqFrame::Paint(QPainter& painter)
{
    if (mBackStyle == bsOpaque)
        painter.fillRect(rect(), ToQColor(mBackColor));
}

const PropertyList& ZqFrame::PersistedProperties() const
{
    static const PropertyList list =
        Declare<ZqFrame>()
            .Property("BackColor", &ZqFrame::BackColor, &ZqFrame::SetBackColor, vbButtonFace)
            .Property("BackStyle", &ZqFrame::BackStyle, &ZqFrame::SetBackStyle, int{bsOpaque})
            .Property("BorderStyle", &ZqFrame::BorderStyle, &ZqFrame::SetBorderStyle, int{bsRaisedLikeAButton})
            .Property("Font", &ZqFrame::FontValue, [](ZqFrame& c, const Variant& f) { c.LoadFont(f); }, AmbientFont);
    return list;
}

// ZqFrameEx -----------------------------------------------------------------------------------

ZqFrameEx::ZqFrameEx(QWidget* parent)
    : FrameBase(parent, bsSunkLikeAPictureBox),
      hsc(new QScrollBar(Qt::Horizontal, this)),
      vsc(new QScrollBar(Qt::Vertical, this)),
      zqfraCorner(new ZqFrame(this))
{
    hsc->resize(100, SystemInfo::SystemMetric(SM_CYHSCROLL));
    vsc->resize(SystemInfo::SystemMetric(SM_CXVSCROLL), 100);
    zqfraCorner->SetBorderStyle(bsNone);
    hsc->hide();
    vsc->hide();
    zqfraCorner->hide();
    connect(hsc, &QScrollBar::valueChanged, this, GuardedSlot(this, [this] { Reposition(); }));
    connect(vsc, &QScrollBar::valueChanged, this, GuardedSlot(this, [this] { Reposition(); }));
    PaintBackground();
}

void ZqFrameEx::SetAllowScrollHoriz(bool allow)
{
    Assign("AllowScrollHoriz", mAllowScrollHoriz, allow);
}

void ZqFrameEx::SetAllowScrollVert(bool allow)
{
    Assign("AllowScrollVert", mAllowScrollVert, allow);
}

void ZqFrameEx::SetBackColor(OleColor color)
{
    for (OleColor* corner : {&mBackColorTR, &mBackColorBL, &mBackColorBR}) {
        if (*corner == mBackColor)
            *corner = color;
    }
    mBackColor = color;
    PaintBackground();
    PropertyChanged("BackColor");
}

// The corners wait for the next background paint: a caller setting all of them repaints once.
void ZqFrameEx::SetBackColorTR(OleColor color)
{
    Assign("BackColorTR", mBackColorTR, color);
}

void ZqFrameEx::SetBackColorBL(OleColor color)
{
    Assign("BackColorBL", mBackColorBL, color);
}

void ZqFrameEx::SetBackColorBR(OleColor color)
{
    Assign("BackColorBR", mBackColorBR, color);
}

QPoint ZqFrameEx::ToWidget(int leftTwips, int topTwips) const
{
    return contentsRect().topLeft() + QPoint(TwipsToPixelsX(leftTwips), TwipsToPixelsY(topTwips));
}

void ZqFrameEx::LayOutBars()
{
    int maxRight = 0, maxBottom = 0;
    for (const Control* c : ContainedControls()) {
        if (mAllowScrollHoriz)
            maxRight = std::max(maxRight, c->Left() + c->Width());
        if (mAllowScrollVert)
            maxBottom = std::max(maxBottom, c->Top() + c->Height());
    }
    int w = UserControl::ScaleWidth();
    int h = UserControl::ScaleHeight();
    const int barHeight = PixelsToTwipsY(hsc->height());
    const int barWidth = PixelsToTwipsX(vsc->width());
    bool needH = false, needV = false;
    if (maxRight > w) {
        needH = true;
        h -= barHeight;
    }
    if (maxBottom > h) {
        needV = true;
        w -= barWidth;
    }
    if (mAllowScrollVert && !needV && needH && maxBottom > h) {
        needV = true;
        w -= barWidth;
    }
    if (mAllowScrollHoriz && !needH && needV && maxRight > w) {
        needH = true;
        h -= barHeight;
    }
    if (needH) {
        hsc->setMaximum(ToShort((maxRight - w) / TwipsPerPixelX()));
        hsc->setPageStep(ToShort(w / TwipsPerPixelX()));
        hsc->setGeometry(QRect(ToWidget(0, h), QSize(TwipsToPixelsX(w), hsc->height())));
        hsc->raise();
    }
    hsc->setVisible(needH);
    if (needV) {
        vsc->setMaximum(ToShort((maxBottom - h) / TwipsPerPixelY()));
        vsc->setPageStep(ToShort(h / TwipsPerPixelY()));
        vsc->setGeometry(QRect(ToWidget(w, 0), QSize(vsc->width(), TwipsToPixelsY(h))));
        vsc->raise();
    }
    vsc->setVisible(needV);
    if (needH && needV) {
        zqfraCorner->setGeometry(QRect(ToWidget(w, h), QSize(vsc->width(), hsc->height())));
        zqfraCorner->raise();
        zqfraCorner->show();
    } else {
        zqfraCorner->hide();
    }
}

void ZqFrameEx::Reposition()
{
    const int newX = hsc->isHidden() ? 0 : RoundHalfEven(hsc->value() * TwipsPerPixelX());
    const int newY = vsc->isHidden() ? 0 : RoundHalfEven(vsc->value() * TwipsPerPixelY());
    if (newX != mOffSetX || newY != mOffSetY) {
        for (Control* c : ContainedControls())
            c->Move(c->Left() - newX + mOffSetX, c->Top() - newY + mOffSetY);
    }
    mOffSetX = newX;
    mOffSetY = newY;
}

void ZqFrameEx::PaintBackground()
{
    const QSize size = contentsRect().size().expandedTo({1, 1});
    if (mSurface.size() != size)
        mSurface = QPixmap(size);
    if (mBackColor != mBackColorTR || mBackColorTR != mBackColorBL || mBackColorBL != mBackColorBR) {
        try {
            QPainter painter(&mSurface);
            DrawGradient(painter, 0, 0, RoundHalfEven(UserControl::ScaleWidth() / TwipsPerPixelX()),
                         RoundHalfEven(UserControl::ScaleHeight() / TwipsPerPixelY()), GetRGBColor(mBackColor), GetRGBColor(mBackColorTR),
                         GetRGBColor(mBackColorBL), GetRGBColor(mBackColorBR));
        } catch (const Error&) {
            // A colour that cannot be resolved leaves the background as it was.
        }
    } else {
        mSurface.fill(ToQColor(mBackColor));
    }
    ++mBackgroundPaints;
    if (isVisible())
        update();
}

void ZqFrameEx::Paint(QPainter& painter)
{
    painter.drawPixmap(contentsRect().topLeft(), mSurface);
}

void ZqFrameEx::Resize()
{
    PlaceClient();
    LayOutBars();
    Reposition();
    PaintBackground();
    emit Resized();
}

bool ZqFrameEx::event(QEvent* event)
{
    if (event->type() == QEvent::Show)
        Guarded(this, [this] { LayOutBars(); });
    return FrameBase::event(event);
}

void ZqFrameEx::InitProperties()
{
    FrameBase::InitProperties();
    PaintBackground();
}

void ZqFrameEx::ReadProperties(PropertyBag& bag)
{
    FrameBase::ReadProperties(bag);
    PaintBackground();
}

const PropertyList& ZqFrameEx::PersistedProperties() const
{
    const auto backColor = [](const ZqFrameEx& c) { return static_cast<std::int32_t>(c.BackColor()); };
    static const PropertyList list =
        Declare<ZqFrameEx>()
            .Property("AllowScrollHoriz", &ZqFrameEx::AllowScrollHoriz, &ZqFrameEx::SetAllowScrollHoriz, false)
            .Property("AllowScrollVert", &ZqFrameEx::AllowScrollVert, &ZqFrameEx::SetAllowScrollVert, false)
            .Property("BackColor", &ZqFrameEx::BackColor, &ZqFrameEx::SetBackColor, vbButtonFace)
            .Property("BackColorTR", &ZqFrameEx::BackColorTR, &ZqFrameEx::SetBackColorTR, vbButtonFace)
            .Initially(backColor)
            .Property("BackColorBL", &ZqFrameEx::BackColorBL, &ZqFrameEx::SetBackColorBL, vbButtonFace)
            .Initially(backColor)
            .Property("BackColorBR", &ZqFrameEx::BackColorBR, &ZqFrameEx::SetBackColorBR, vbButtonFace)
            .Initially(backColor)
            .Property("BorderStyle", &ZqFrameEx::BorderStyle, &ZqFrameEx::SetBorderStyle, int{bsSunkLikeAPictureBox})
            .Property("Font", &ZqFrameEx::FontValue, [](ZqFrameEx& c, const Variant& f) { c.LoadFont(f); }, AmbientFont);
    return list;
}

}  // namespace korvex
