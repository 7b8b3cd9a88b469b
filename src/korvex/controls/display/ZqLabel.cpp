// ZqLabel: setters that store, then refresh and notify once the label is initialised; a drawing
// procedure shared by painting and automatic sizing; hover and press tracked with Qt's mouse
// tracking and leave events (a press grabs the mouse, so the leaving move still arrives).
#include "korvex/controls/display/ZqLabel.h"

#include "korvex/localisation/LGS.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/FontConversion.h"
#include "korvex/platform/system/Timers.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
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
    LoadDeclaredDefaults();
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
    updateGeometry();
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
    RequireValid(alignment >= 0 && alignment <= 2, "AlignmentH");
    mAlignmentH = alignment;
    Refresh();
    Notify("AlignmentH");
}

void ZqLabel::SetAlignmentV(int alignment)
{
    RequireValid(alignment >= vaTop && alignment <= vaBottom, "AlignmentV");
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
    updateGeometry();
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
    RequireValid(style == bsTransparent || style == bsOpaque, "BackStyle");
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
    updateGeometry();
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
    updateGeometry();
    Refresh();
    Notify("CaptionLangId");
}

void ZqLabel::SetCaptionSuffix(int suffix)
{
    RequireValid(suffix >= tsNone && suffix <= tsSpace, "CaptionSuffix");
    mCaptionSuffix = suffix;
    if (!mCaptionLangId.isEmpty())
        SetCaptionLangId(mCaptionLangId);
    Notify("CaptionSuffix");
}

void ZqLabel::SetEllipsis(int ellipsis)
{
    RequireValid(ellipsis >= etNone && ellipsis <= etPath, "Ellipsis");
    mEllipsis = ellipsis;
    mSizeValid = false;
    updateGeometry();
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
    RequireValid(style == lsNormal || style == lsHyperlink, "Style");
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
            Guarded(this, [this] { MoveTo(QPointF(-1, -1)); });
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
        Guarded(this, [&] { MoveTo(event->position()); });
}

void ZqLabel::mousePressEvent(QMouseEvent*)
{
    if (mEnabled)
        Guarded(this, [this] { SetState(mHovering, true); });
}

void ZqLabel::mouseDoubleClickEvent(QMouseEvent*)
{
    if (mEnabled)
        Guarded(this, [this] { SetState(mHovering, true); });
}

void ZqLabel::mouseReleaseEvent(QMouseEvent* event)
{
    if (!mEnabled)
        return;
    Guarded(this, [&] {
        const bool wasHovering = mHovering;
        SetState(false, false);
        if (wasHovering)
            emit Click(ButtonOf(event->button()));
    });
}

// Persistence -------------------------------------------------------------------------------

void ZqLabel::InitProperties()
{
    mInitialised = false;
    UserControl::InitProperties();
    FinishInitialising();
}

void ZqLabel::ReadProperties(PropertyBag& bag)
{
    mInitialised = false;
    UserControl::ReadProperties(bag);
    FinishInitialising();
}

void ZqLabel::FinishInitialising()
{
    mInitialised = true;
    ApplyLinkAppearance();
    update();
}

// A font read or defaulted while loading is kept alive as long as the label: the label keeps
// fonts by reference.
StdFont* ZqLabel::KeepFont(const Variant& font)
{
    if (auto shared = font.SharedObject())
        mKeptFonts.push_back(shared);
    return Adopt(font.Object());
}

const PropertyList& ZqLabel::PersistedProperties() const
{
    const auto font = [](auto get) { return [get](const ZqLabel& c) { return Variant(static_cast<QObject*>((c.*get)())); }; };
    static const PropertyList list =
        Declare<ZqLabel>()
            .Property("AlignmentH", &ZqLabel::AlignmentH, &ZqLabel::SetAlignmentH, 0)
            .Property("AlignmentV", &ZqLabel::AlignmentV, &ZqLabel::SetAlignmentV, int{vaCenter})
            .Property("AutoSize", &ZqLabel::AutoSize, &ZqLabel::SetAutoSize, false)
            .Property("BackColor", &ZqLabel::BackColor, &ZqLabel::SetBackColor, vbButtonFace)
            .Property("BackStyle", &ZqLabel::BackStyle, &ZqLabel::SetBackStyle, int{bsTransparent})
            .Property("Caption", &ZqLabel::Caption, &ZqLabel::SetCaption, QString())
            .Initially([](const ZqLabel& c) { return c.Ambient()->DisplayName(); })
            .Property("CaptionLangId", &ZqLabel::CaptionLangId, &ZqLabel::SetCaptionLangId, QString())
            .Property("CaptionSuffix", &ZqLabel::CaptionSuffix, &ZqLabel::SetCaptionSuffix, int{tsNone})
            .Property("Ellipsis", &ZqLabel::Ellipsis, &ZqLabel::SetEllipsis, int{etNone})
            .Property("Enabled", &ZqLabel::Enabled, &ZqLabel::SetEnabled, true)
            .Property("Font", font(&ZqLabel::Font), [](ZqLabel& c, const Variant& f) { c.SetFont(c.KeepFont(f)); }, AmbientFont)
            .Property("ForeColor", &ZqLabel::ForeColor, &ZqLabel::SetForeColor, vbButtonText)
            .Property("Style", &ZqLabel::Style, &ZqLabel::SetStyle, int{lsNormal})
            .Property("LinkClickFont", font(&ZqLabel::LinkClickFont),
                      [](ZqLabel& c, const Variant& f) { c.SetLinkClickFont(c.KeepFont(f)); }, AmbientFont)
            .Initially(font(&ZqLabel::Font))  // a new label's three fonts are one object
            .Property("LinkClickForeColor", &ZqLabel::LinkClickForeColor, &ZqLabel::SetLinkClickForeColor, vbButtonText)
            .Property("LinkHoverFont", font(&ZqLabel::LinkHoverFont),
                      [](ZqLabel& c, const Variant& f) { c.SetLinkHoverFont(c.KeepFont(f)); }, AmbientFont)
            .Initially(font(&ZqLabel::Font))
            .Property("LinkHoverForeColor", &ZqLabel::LinkHoverForeColor, &ZqLabel::SetLinkHoverForeColor, vbButtonText)
            .Property("WordWrap", &ZqLabel::WordWrap, &ZqLabel::SetWordWrap, false);
    return list;
}

QSize ZqLabel::sizeHint() const
{
    // The caption's extent in the label's font; a wrapped caption keeps the present width.
    const QFontMetrics metrics(ToQFont(*Font()));
    QString text = mCaption;
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    if (mWordWrap && width() > 0)
        return metrics.boundingRect(QRect(0, 0, width(), 0), TextFlags() & ~Qt::TextDontClip, text).size().expandedTo({1, metrics.height()});
    return metrics.size(0, text).expandedTo({1, metrics.height()});
}

QSize ZqLabel::minimumSizeHint() const
{
    return mEllipsis == etNone ? sizeHint() : QSize(0, sizeHint().height());
}

}  // namespace korvex
