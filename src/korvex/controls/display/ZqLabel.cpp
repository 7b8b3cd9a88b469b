// ZqLabel: setters that store, then refresh and notify once the label is initialised; a drawing
// procedure shared by painting and automatic sizing; hover and press tracked with Qt's mouse
// tracking and leave events (a press grabs the mouse, so the leaving move still arrives).
#include "korvex/controls/display/ZqLabel.h"

#include "korvex/localisation/LGS.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/system/ColorConversion.h"
#include "korvex/platform/system/FontConversion.h"
#include "korvex/platform/system/Timers.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <QFontMetrics>
#include <QMouseEvent>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqLabel);

namespace {

short ButtonOf(Qt::MouseButton button)
{
    switch (button) {
    case Qt::RightButton: return vbRightButton;
    case Qt::MiddleButton: return vbMiddleButton;
    default: return vbLeftButton;
    }
}

// Path ellipsis: as much as possible of the text after the last separator stays; characters
// before it give way to "...".
QString PathElided(const QString& text, const QFontMetrics& metrics, int width)
{
    if (metrics.horizontalAdvance(text) <= width)
        return text;
    const qsizetype cut = std::max(text.lastIndexOf(QLatin1Char('\\')), text.lastIndexOf(QLatin1Char('/')));
    if (cut < 0)
        return metrics.elidedText(text, Qt::ElideMiddle, width);
    const QString tail = text.mid(cut);
    QString head = text.left(cut);
    while (!head.isEmpty() && metrics.horizontalAdvance(head + QStringLiteral("...") + tail) > width)
        head.chop(1);
    const QString shortened = head + QStringLiteral("...") + tail;
    return metrics.horizontalAdvance(shortened) <= width ? shortened : metrics.elidedText(shortened, Qt::ElideRight, width);
}

}  // namespace

ZqLabel::ZqLabel(QWidget* parent) : UserControl(parent)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    mSurfaceFont = &mFallbackFont;
    resize(100, 17);
}

// Fonts -------------------------------------------------------------------------------------

StdFont* ZqLabel::Font() const
{
    return mFont ? mFont.data() : const_cast<StdFont*>(&mFallbackFont);
}

StdFont* ZqLabel::LinkClickFont() const
{
    return mLinkClickFont ? mLinkClickFont.data() : Font();
}

StdFont* ZqLabel::LinkHoverFont() const
{
    return mLinkHoverFont ? mLinkHoverFont.data() : Font();
}

StdFont* ZqLabel::Adopt(QObject* font)
{
    auto* f = qobject_cast<StdFont*>(font);
    if (!f)
        Raise(vbErrTypeMismatch, QStringLiteral("ZqLabel.Font"));
    return f;
}

void ZqLabel::ListenTo(StdFont* font)
{
    if (mListened)
        disconnect(mListened, nullptr, this, nullptr);
    mListened = font;
    connect(font, &StdFont::FontChanged, this, [this] {
        mSizeValid = false;
        Refresh();
    });
}

void ZqLabel::SetFont(QObject* font)
{
    StdFont* f = Adopt(font);
    mFont = f;
    ListenTo(f);
    mSurfaceFont = f;
    SetLinkClickFont(f);
    SetLinkHoverFont(f);
    mSizeValid = false;
    Refresh();
    Notify("Font");
}

void ZqLabel::SetLinkClickFont(QObject* font)
{
    mLinkClickFont = Adopt(font);
    Refresh();
    Notify("LinkClickFont");
}

void ZqLabel::SetLinkHoverFont(QObject* font)
{
    mLinkHoverFont = Adopt(font);
    Refresh();
    Notify("LinkHoverFont");
}

// Setters -----------------------------------------------------------------------------------

void ZqLabel::Refresh()
{
    if (mInitialised)
        update();
}

void ZqLabel::Notify(const char* property)
{
    if (mInitialised)
        PropertyChanged(QString::fromLatin1(property));
}

void ZqLabel::SetEnabled(bool enabled)
{
    mEnabled = enabled;
    if (!mInitialised)
        return;
    if (enabled)
        mHovering = mPressed = false;
    ApplyLinkAppearance();
    Refresh();
    Notify("Enabled");
}

void ZqLabel::SetAlignmentH(int alignment)
{
    if (alignment < 0 || alignment > 2)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqLabel.AlignmentH"));
    mAlignmentH = alignment;
    Refresh();
    Notify("AlignmentH");
}

void ZqLabel::SetAlignmentV(int alignment)
{
    if (alignment < vaTop || alignment > vaBottom)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqLabel.AlignmentV"));
    mAlignmentV = alignment;
    Refresh();
    Notify("AlignmentV");
}

void ZqLabel::SetAutoSize(bool autoSize)
{
    mAutoSize = autoSize;
    Refresh();
    Notify("AutoSize");
}

void ZqLabel::SetWordWrap(bool wrap)
{
    mWordWrap = wrap;
    Refresh();
    Notify("WordWrap");
}

void ZqLabel::SetBackColor(OleColor color)
{
    mBackColor = color;
    if (mBackStyle == bsOpaque)
        Refresh();
    Notify("BackColor");
}

void ZqLabel::SetBackStyle(int style)
{
    if (style != bsTransparent && style != bsOpaque)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqLabel.BackStyle"));
    mBackStyle = style;
    Refresh();
    Notify("BackStyle");
}

void ZqLabel::SetCaption(const QString& caption)
{
    if (!mCaptionLangId.isEmpty())
        throw Error(ObjectErrorBase, QStringLiteral("ZqLabel.Caption"),
                    QStringLiteral("Caption may not be specified when CaptionLangId is specified."));
    mCaption = caption;
    mSizeValid = false;
    if (mShown)
        Refresh();
    else
        Draw(nullptr, true);  // a hidden label still sizes itself to its new text
    Notify("Caption");
}

void ZqLabel::SetCaptionLangId(const QString& id)
{
    mCaptionLangId = id;
    if (!id.isEmpty())
        mCaption = LGS(id, QString(), mCaptionSuffix);
    mSizeValid = false;
    Refresh();
    Notify("CaptionLangId");
}

void ZqLabel::SetCaptionSuffix(int suffix)
{
    if (suffix < tsNone || suffix > tsSpace)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqLabel.CaptionSuffix"));
    mCaptionSuffix = suffix;
    if (!mCaptionLangId.isEmpty())
        SetCaptionLangId(mCaptionLangId);
    Notify("CaptionSuffix");
}

void ZqLabel::SetEllipsis(int ellipsis)
{
    if (ellipsis < etNone || ellipsis > etPath)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqLabel.Ellipsis"));
    mEllipsis = ellipsis;
    mSizeValid = false;
    Refresh();
    Notify("Ellipsis");
}

void ZqLabel::SetForeColor(OleColor color)
{
    mForeColor = color;
    if (!mHovering || mStyle != lsHyperlink)
        mSurfaceForeColor = color;
    Refresh();
    Notify("ForeColor");
}

void ZqLabel::SetStyle(int style)
{
    if (style != lsNormal && style != lsHyperlink)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqLabel.Style"));
    mStyle = style;
    if (style == lsNormal && (mHovering || mPressed))
        SetState(false, false);
    Notify("Style");
}

void ZqLabel::SetLinkClickForeColor(OleColor color)
{
    mLinkClickForeColor = color;
    Refresh();
    Notify("LinkClickForeColor");
}

void ZqLabel::SetLinkHoverForeColor(OleColor color)
{
    mLinkHoverForeColor = color;
    Refresh();
    Notify("LinkHoverForeColor");
}

// Link appearance ---------------------------------------------------------------------------

void ZqLabel::SetState(bool hovering, bool pressed)
{
    mHovering = hovering;
    mPressed = pressed;
    ApplyLinkAppearance();
}

void ZqLabel::ApplyLinkAppearance()
{
    StdFont* font = Font();
    OleColor colour = mForeColor;
    if (mStyle == lsHyperlink && mHovering && mPressed) {
        font = LinkClickFont();
        colour = mLinkClickForeColor;
    } else if (mStyle == lsHyperlink && mHovering) {
        font = LinkHoverFont();
        colour = mLinkHoverForeColor;
    }
    // Greyed: the stored hover colour as it is (a system colour is not resolved first) mixed
    // with the grey-text colour.
    if (!mEnabled)
        colour = BlendColours(mLinkHoverForeColor, 25, SystemColorRGB(vbGrayText & 0xFF));
    if (mSurfaceFont != font || mSurfaceForeColor != colour) {
        mSurfaceFont = font;
        mSurfaceForeColor = colour;
        Refresh();
    }
}

// Drawing -----------------------------------------------------------------------------------

int ZqLabel::TextFlags() const
{
    int flags = Qt::TextDontClip;
    flags |= mAlignmentH == 1 ? Qt::AlignRight : mAlignmentH == 2 ? Qt::AlignHCenter : Qt::AlignLeft;
    if (mWordWrap)
        flags |= Qt::TextWordWrap | Qt::AlignTop;  // the vertical alignment is not used then
    else if (mAlignmentV == vaCenter)
        flags |= Qt::AlignVCenter | Qt::TextSingleLine;
    else if (mAlignmentV == vaBottom)
        flags |= Qt::AlignBottom | Qt::TextSingleLine;
    else
        flags |= Qt::AlignTop;
    return flags;
}

QString ZqLabel::ShownText(const QFontMetrics& metrics, const QRect& client) const
{
    QString text = mCaption;
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (mEllipsis == etNone || mWordWrap)
        return text;
    QStringList lines = text.split(QLatin1Char('\n'));
    if (!mWordWrap && mAlignmentV != vaTop)
        lines = QStringList{lines.join(QLatin1Char(' '))};
    for (QString& line : lines)
        line = mEllipsis == etPath ? PathElided(line, metrics, client.width())
                                   : metrics.elidedText(line, Qt::ElideRight, client.width());
    return lines.join(QLatin1Char('\n'));
}

bool ZqLabel::Draw(QPainter* painter, bool sizeOnly)
{
    if (!mInitialised)
        return true;
    const QRect client = rect();
    const QFont font = ToQFont(*(mSurfaceFont ? mSurfaceFont.data() : Font()));
    const QFontMetrics metrics(font);
    const int flags = TextFlags();
    QString text = mCaption;
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));

    if (mAutoSize && !mSizeValid) {
        const QRect measured = metrics.boundingRect(client, flags & ~Qt::TextDontClip, text);
        if (mWordWrap) {
            const int bottom = text.isEmpty() ? 0 : measured.height();
            if (bottom != client.height()) {
                const int before = Height();
                SetHeight(RoundHalfEven(bottom * TwipsPerPixelY()));
                if (Height() != before) {
                    ScheduleContainerRepaint();
                    return false;
                }
            }
        } else {
            const int right = text.isEmpty() ? 0 : measured.width();
            if (right != client.width()) {
                const int before = Width();
                SetWidth(RoundHalfEven(right * TwipsPerPixelX()));
                if (Width() != before) {
                    ScheduleContainerRepaint();
                    return false;
                }
            }
        }
        mSizeValid = true;
    }
    if (sizeOnly || !painter)
        return true;
    painter->setFont(font);
    painter->setPen(ToQColor(mSurfaceForeColor));
    painter->drawText(client, flags, ShownText(metrics, client));
    return true;
}

void ZqLabel::ScheduleContainerRepaint()
{
    QPointer<QWidget> container = parentWidget();
    if (!container)
        return;
    // The area a shrunken transparent label leaves behind is repainted once, a little later.
    SetSingleShotTimer(50, [container] {
        if (!container)
            return;
        container->update();
        for (QWidget* child : container->findChildren<QWidget*>())
            child->update();
    });
}

void ZqLabel::AutoSizeControl()
{
    Draw(nullptr, true);
}

void ZqLabel::Paint()
{
    if (Draw(nullptr, true))
        repaint();
}

void ZqLabel::Paint(QPainter& painter)
{
    if (mBackStyle == bsOpaque)
        painter.fillRect(rect(), ToQColor(mBackColor));
    Draw(&painter, false);
}

void ZqLabel::Resize()
{
    if (mInitialised)
        mSizeValid = false;
}

// Mouse -------------------------------------------------------------------------------------

bool ZqLabel::event(QEvent* e)
{
    switch (e->type()) {
    case QEvent::Show: mShown = true; break;
    case QEvent::Hide: mShown = false; break;
    case QEvent::Leave:
        if (mEnabled)
            MoveTo(QPointF(-1, -1));
        break;
    default: break;
    }
    return UserControl::event(e);
}

void ZqLabel::MoveTo(const QPointF& p)
{
    const bool inside = p.x() >= 0 && p.y() >= 0 && p.x() <= width() && p.y() <= height();
    if (inside) {
        if (mStyle == lsHyperlink)
            setCursor(Qt::PointingHandCursor);
        if (!mHovering)
            SetState(true, mPressed);
    } else {
        if (mStyle == lsHyperlink)
            setCursor(Qt::ArrowCursor);
        if (mHovering)
            SetState(false, mPressed);
    }
}

void ZqLabel::mouseMoveEvent(QMouseEvent* event)
{
    if (mEnabled)
        MoveTo(event->position());
}

void ZqLabel::mousePressEvent(QMouseEvent*)
{
    if (mEnabled)
        SetState(mHovering, true);
}

void ZqLabel::mouseDoubleClickEvent(QMouseEvent*)
{
    if (mEnabled)
        SetState(mHovering, true);
}

void ZqLabel::mouseReleaseEvent(QMouseEvent* event)
{
    if (!mEnabled)
        return;
    const bool wasHovering = mHovering;
    SetState(false, false);
    if (wasHovering)
        emit Click(ButtonOf(event->button()));
}

// Persistence -------------------------------------------------------------------------------

void ZqLabel::InitProperties()
{
    mInitialised = false;
    SetAlignmentH(0);
    SetAlignmentV(vaCenter);
    SetAutoSize(false);
    SetBackColor(vbButtonFace);
    SetBackStyle(bsTransparent);
    SetCaption(Ambient()->DisplayName());
    SetCaptionLangId(QString());
    SetCaptionSuffix(tsNone);
    SetEllipsis(etNone);
    SetEnabled(true);
    SetFont(Ambient()->Font());
    SetForeColor(vbButtonText);
    SetStyle(lsNormal);
    SetLinkClickForeColor(vbButtonText);
    SetLinkHoverForeColor(vbButtonText);
    SetWordWrap(false);
    mInitialised = true;
    ApplyLinkAppearance();
    update();
}

void ZqLabel::ReadProperties(PropertyBag& bag)
{
    mInitialised = false;
    auto readFont = [&](const char* name) {
        const Variant font = bag.ReadProperty(QString::fromLatin1(name), Variant(static_cast<QObject*>(Ambient()->Font())));
        if (auto shared = font.SharedObject())
            mKeptFonts.push_back(shared);  // a font from the file lives as long as the label
        return font.Object();
    };
    SetAlignmentH(CInt(bag.ReadProperty(QStringLiteral("AlignmentH"), 0)));
    SetAlignmentV(CInt(bag.ReadProperty(QStringLiteral("AlignmentV"), vaCenter)));
    SetAutoSize(CBool(bag.ReadProperty(QStringLiteral("AutoSize"), false)));
    SetBackColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(vbButtonFace)))));
    SetBackStyle(CInt(bag.ReadProperty(QStringLiteral("BackStyle"), bsTransparent)));
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QString())));
    SetCaptionLangId(CStr(bag.ReadProperty(QStringLiteral("CaptionLangId"), QString())));
    SetCaptionSuffix(CInt(bag.ReadProperty(QStringLiteral("CaptionSuffix"), tsNone)));
    SetEllipsis(CInt(bag.ReadProperty(QStringLiteral("Ellipsis"), etNone)));
    SetEnabled(CBool(bag.ReadProperty(QStringLiteral("Enabled"), true)));
    SetFont(readFont("Font"));
    SetForeColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(vbButtonText)))));
    SetStyle(CInt(bag.ReadProperty(QStringLiteral("Style"), lsNormal)));
    SetLinkClickFont(readFont("LinkClickFont"));
    SetLinkClickForeColor(
        static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("LinkClickForeColor"), static_cast<std::int32_t>(vbButtonText)))));
    SetLinkHoverFont(readFont("LinkHoverFont"));
    SetLinkHoverForeColor(
        static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("LinkHoverForeColor"), static_cast<std::int32_t>(vbButtonText)))));
    SetWordWrap(CBool(bag.ReadProperty(QStringLiteral("WordWrap"), false)));
    mInitialised = true;
    ApplyLinkAppearance();
    update();
}

void ZqLabel::WriteProperties(PropertyBag& bag)
{
    const Variant ambient(static_cast<QObject*>(Ambient()->Font()));
    auto colour = [](OleColor c) { return static_cast<std::int32_t>(c); };
    bag.WriteProperty(QStringLiteral("AlignmentH"), mAlignmentH, 0);
    bag.WriteProperty(QStringLiteral("AlignmentV"), mAlignmentV, vaCenter);
    bag.WriteProperty(QStringLiteral("AutoSize"), mAutoSize, false);
    bag.WriteProperty(QStringLiteral("BackColor"), colour(mBackColor), colour(vbButtonFace));
    bag.WriteProperty(QStringLiteral("BackStyle"), mBackStyle, bsTransparent);
    bag.WriteProperty(QStringLiteral("Caption"), mCaption, QString());
    bag.WriteProperty(QStringLiteral("CaptionLangId"), mCaptionLangId, QString());
    bag.WriteProperty(QStringLiteral("CaptionSuffix"), mCaptionSuffix, tsNone);
    bag.WriteProperty(QStringLiteral("Ellipsis"), mEllipsis, etNone);
    bag.WriteProperty(QStringLiteral("Enabled"), mEnabled, true);
    bag.WriteProperty(QStringLiteral("Font"), Variant(static_cast<QObject*>(Font())), ambient);
    bag.WriteProperty(QStringLiteral("ForeColor"), colour(mForeColor), colour(vbButtonText));
    bag.WriteProperty(QStringLiteral("Style"), mStyle, lsNormal);
    bag.WriteProperty(QStringLiteral("LinkClickFont"), Variant(static_cast<QObject*>(LinkClickFont())), ambient);
    bag.WriteProperty(QStringLiteral("LinkClickForeColor"), colour(mLinkClickForeColor), colour(vbButtonText));
    bag.WriteProperty(QStringLiteral("LinkHoverFont"), Variant(static_cast<QObject*>(LinkHoverFont())), ambient);
    bag.WriteProperty(QStringLiteral("LinkHoverForeColor"), colour(mLinkHoverForeColor), colour(vbButtonText));
    bag.WriteProperty(QStringLiteral("WordWrap"), mWordWrap, false);
}

}  // namespace korvex
