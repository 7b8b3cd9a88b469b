// ZqProgress: a step draws the unfilled strip (the bar went back) or the filled strip (it went
// on) and asks Qt to show just that; everything else draws the whole bar.
#include "korvex/controls/display/ZqProgress.h"

#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/runtime/Error.h"

#include <QFontMetrics>

#include <cmath>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqProgress);

ZqProgress::ZqProgress(QWidget* parent) : UserControl(parent), mFont(this)
{
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    resize(200, 20);
}

void ZqProgress::DrawAndNotify(const char* name, bool incremental)
{
    Draw(incremental);
    PropertyChanged(name);
}

void ZqProgress::SetAlignment(int alignment)
{
    RequireValid(alignment >= 0 && alignment <= 2, "Alignment");
    mAlignment = alignment;
    mCaptionX = mCaptionY = 0;  // worked out again for the new place
    DrawAndNotify("Alignment");
}

void ZqProgress::SetCaption(const QString& caption)
{
    mCaption = caption;
    mCaptionX = mCaptionY = 0;
    DrawAndNotify("Caption");
}

void ZqProgress::SetButtonFace(OleColor color)
{
    mButtonFace = color;
    DrawAndNotify("ButtonFace");
}

void ZqProgress::SetButtonText(OleColor color)
{
    mButtonText = color;
    DrawAndNotify("ButtonText");
}

void ZqProgress::SetHighlightBackground(OleColor color)
{
    mHighlightBackground = color;
    DrawAndNotify("HighlightBackground");
}

void ZqProgress::SetHighlightText(OleColor color)
{
    mHighlightText = color;
    DrawAndNotify("HighlightText");
}

void ZqProgress::SetFont(QObject* font)
{
    mFont.Set(font, QStringLiteral("ZqProgress.Font"));
    mSurfaceValid = false;  // shown with the next paint
    PropertyChanged("Font");
}

void ZqProgress::SetMax(int max)
{
    mMax = max;
    DrawAndNotify("Max");
}

void ZqProgress::SetValue(int value)
{
    mValue = value;
    DrawAndNotify("Value", true);
}

void ZqProgress::Draw(bool incremental)
{
    if (!mShown)
        return;
    try {
        update(Render(incremental));
    } catch (const Error&) {
        // A colour that cannot be resolved leaves the picture as it was.
    }
}

QRegion ZqProgress::Render(bool incremental)
{
    if (mSurface.size() != size()) {
        mSurface = QPixmap(size().expandedTo({1, 1}));
        incremental = false;
    }
    const int w = width();
    const int h = height();
    const double ratio = mMax == 0 ? 0.0 : static_cast<double>(mValue) / mMax;
    const int barEnd = static_cast<int>(std::lrint(w * ratio));  // the FPU rounds halves to even

    QPainter painter(&mSurface);
    const QFont font = mFont.ToQFont();
    painter.setFont(font);
    if (mCaptionX + mCaptionY == 0 && !mCaption.isEmpty()) {
        const QFontMetrics metrics(font);
        const int cw = metrics.horizontalAdvance(mCaption);
        const int ch = metrics.height();
        mCaptionX = mAlignment == 0 ? 2 : mAlignment == 1 ? w - cw - 2 : (w - cw) / 2;
        mCaptionY = (h - ch) / 2;
    }

    mLastStrips.clear();
    if (!(incremental && barEnd >= mLastBarEnd))
        Strip(painter, barEnd, incremental ? mLastBarEnd : w, mButtonFace, mButtonText);
    if (ratio > 0 && !(incremental && barEnd <= mLastBarEnd))
        Strip(painter, incremental ? mLastBarEnd : 0, barEnd, mHighlightBackground, mHighlightText);
    mLastBarEnd = barEnd;
    mSurfaceValid = true;

    QRegion drawn;
    for (const QRect& r : std::as_const(mLastStrips))
        drawn += r;
    return drawn;
}

void ZqProgress::Strip(QPainter& painter, int from, int to, OleColor back, OleColor text)
{
    const QRect strip = QRect(QPoint(std::min(from, to), 0), QPoint(std::max(from, to) - 1, height() - 1)) & mSurface.rect();
    if (strip.isEmpty())
        return;
    // Filled and written in one go, the caption only inside the strip.
    painter.save();
    painter.setClipRect(strip);
    painter.fillRect(strip, ToQColor(GetRGBColor(back)));
    if (!mCaption.isEmpty()) {
        painter.setPen(ToQColor(GetRGBColor(text)));
        painter.drawText(QPoint(mCaptionX, mCaptionY + painter.fontMetrics().ascent()), mCaption);
    }
    painter.restore();
    mLastStrips.append(strip);
    mPixelsDrawn += static_cast<qint64>(strip.width()) * strip.height();
}

void ZqProgress::Paint(QPainter& painter)
{
    // Qt's paints show the surface; only a surface that is out of date is drawn whole first.
    if (!mSurfaceValid || mSurface.size() != size())
        Render(false);
    painter.drawPixmap(0, 0, mSurface);
}

void ZqProgress::Resize()
{
    mCaptionX = mCaptionY = 0;
    mSurfaceValid = false;
    Draw(false);
}

bool ZqProgress::event(QEvent* e)
{
    if (e->type() == QEvent::Show) {
        mShown = true;
        mSurfaceValid = false;  // what changed while hidden was never drawn
    } else if (e->type() == QEvent::Hide) {
        mShown = false;
    }
    return UserControl::event(e);
}

const PropertyList& ZqProgress::PersistedProperties() const
{
    static const PropertyList list =
        Declare<ZqProgress>()
            .Property("Max", &ZqProgress::Max, &ZqProgress::SetMax, 100)
            .Property("Value", &ZqProgress::Value, &ZqProgress::SetValue, 0)
            .Property("ButtonFace", &ZqProgress::ButtonFace, &ZqProgress::SetButtonFace, vbButtonFace)
            .Property("ButtonText", &ZqProgress::ButtonText, &ZqProgress::SetButtonText, vbButtonText)
            .Property("HighlightBackground", &ZqProgress::HighlightBackground, &ZqProgress::SetHighlightBackground, vbHighlight)
            .Property("HighlightText", &ZqProgress::HighlightText, &ZqProgress::SetHighlightText, vbHighlightText)
            .Property("Caption", &ZqProgress::Caption, &ZqProgress::SetCaption, QString())
            .Property("Alignment", &ZqProgress::Alignment, &ZqProgress::SetAlignment, 0)
            .Property("Font", &ZqProgress::FontValue, [](ZqProgress& c, const Variant& f) {
                c.mFont.Load(f, QStringLiteral("ZqProgress.Font"));
                c.mSurfaceValid = false;
                c.PropertyChanged("Font");
            }, AmbientFont);
    return list;
}

}  // namespace korvex
