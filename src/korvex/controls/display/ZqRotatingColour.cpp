// ZqRotatingColour: a ZqFrameEx for the gradient, a transparent label on it, and a 15 ms timer
// that moves two blend positions through 0..100 and back, the second following the first.
#include "korvex/controls/display/ZqRotatingColour.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/host/TimerControl.h"
#include "korvex/runtime/EntryGuard.h"

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqRotatingColour);

namespace {

// One point further on, turning round at either end.
void Advance(int& position, int& step)
{
    position += step;
    if (position <= 0 || position >= 100)
        step = -step;
}

}  // namespace

ZqRotatingColour::ZqRotatingColour(QWidget* parent)
    : UserControl(parent), zqfrax(new ZqFrameEx(this)), lbl(new Label(zqfrax->ContainerWidget())), tmrAnimate(new TimerControl(this))
{
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    zqfrax->SetBorderStyle(bsNone);
    lbl->SetBackStyle(0);
    lbl->SetAutoSize(true);
    lbl->SetCaption(QString());
    lbl->SetForeColor(0);
    tmrAnimate->SetInterval(15);
    tmrAnimate->SetEnabled(false);
    connect(tmrAnimate, &TimerControl::Timer, this, GuardedSlot(this, [this] {
                if (isVisible())
                    Tick();
            }));
    resize(150, 40);
}

QString ZqRotatingColour::Caption() const
{
    return lbl->Caption();
}

void ZqRotatingColour::SetCaption(const QString& caption)
{
    lbl->SetCaption(caption);
    Resize();
}

OleColor ZqRotatingColour::ForeColor() const
{
    return lbl->ForeColor();
}

void ZqRotatingColour::SetForeColor(OleColor color)
{
    lbl->SetForeColor(color);
}

bool ZqRotatingColour::Enabled() const
{
    return tmrAnimate->Enabled();
}

void ZqRotatingColour::SetEnabled(bool enabled)
{
    tmrAnimate->SetEnabled(enabled);
    if (!enabled)
        mPositionA = mStepA = mPositionB = mStepB = 0;
}

void ZqRotatingColour::Tick()
{
    if (!UserMode())
        tmrAnimate->SetInterval(5000);  // a form under design only shows that it would move
    // The top-left colour repaints the frame, so each picture shows the other three corners of
    // the step before.
    zqfrax->SetBackColor(BlendColours(mColour1, static_cast<short>(mPositionA), mColour2));
    zqfrax->SetBackColorBL(BlendColours(mColour1, static_cast<short>(mPositionB), mColour2));
    zqfrax->SetBackColorTR(BlendColours(mColour2, static_cast<short>(mPositionB), mColour1));
    zqfrax->SetBackColorBR(BlendColours(mColour2, static_cast<short>(mPositionA), mColour1));
    if (mStepA == 0)
        mStepA = 1;
    else if (mStepB == 0 && mPositionA == 15)
        mStepB = 1;
    Advance(mPositionA, mStepA);
    if (mStepB != 0)
        Advance(mPositionB, mStepB);
}

void ZqRotatingColour::Resize()
{
    zqfrax->Move(0, 0, ScaleWidth(), ScaleHeight());
    lbl->move((width() - lbl->width()) / 2, (height() - lbl->height()) / 2);
}

const PropertyList& ZqRotatingColour::PersistedProperties() const
{
    static const PropertyList list = Declare<ZqRotatingColour>()
                                         .Property("Caption", &ZqRotatingColour::Caption, &ZqRotatingColour::SetCaption, QString())
                                         .Property("Colour1", &ZqRotatingColour::Colour1, &ZqRotatingColour::SetColour1, OleColor{0})
                                         .Property("Colour2", &ZqRotatingColour::Colour2, &ZqRotatingColour::SetColour2, OleColor{65535})
                                         .Property("Enabled", &ZqRotatingColour::Enabled, &ZqRotatingColour::SetEnabled, false)
                                         .Property("ForeColor", &ZqRotatingColour::ForeColor, &ZqRotatingColour::SetForeColor, OleColor{0});
    return list;
}

}  // namespace korvex
