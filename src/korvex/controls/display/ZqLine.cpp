// ZqLine: the two lines are placed in the control's own twips from its scale size; one pixel
// is the screen's twips per pixel of the axis across the line.
#include "korvex/controls/display/ZqLine.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Line.h"
#include "korvex/runtime/Twips.h"

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqLine);

ZqLine::ZqLine(QWidget* parent) : UserControl(parent), mDark(new Line(this)), mLight(new Line(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    mDark->SetBorderColor(vbButtonShadow);
    mLight->SetBorderColor(vb3DHighlight);
    resize(100, 2);
    LayOut();
}

OleColor ZqLine::ColourDarkLine() const
{
    return mDark->BorderColor();
}

OleColor ZqLine::ColourLightLine() const
{
    return mLight->BorderColor();
}

void ZqLine::SetLineStyle(int style)
{
    RequireValid(style >= LS_Horizontal && style <= LS_VerticalFlat, "LineStyle");
    mLineStyle = style;
    mDark->SetBorderWidth(Flat() ? FlatLineSize() : short{1});
    LayOut();
    PropertyChanged("LineStyle");
}

void ZqLine::SetColourDarkLine(OleColor color)
{
    mDark->SetBorderColor(color);
    PropertyChanged("ColourDarkLine");
}

void ZqLine::SetColourLightLine(OleColor color)
{
    mLight->SetBorderColor(color);
    PropertyChanged("ColourLightLine");
}

void ZqLine::SetFlatLineSize(short size)
{
    RequireValid(size >= 0, "FlatLineSize");
    mFlatLineSize = size;
    if (Flat())
        mDark->SetBorderWidth(FlatLineSize());
    PropertyChanged("FlatLineSize");
}

void ZqLine::Resize()
{
    LayOut();
}

void ZqLine::LayOut()
{
    const int w = ScaleWidth();
    const int h = ScaleHeight();
    const int pxY = RoundHalfEven(TwipsPerPixelY());
    const int pxX = RoundHalfEven(TwipsPerPixelX());
    switch (mLineStyle) {
    case LS_Horizontal:
        mDark->SetPoints(0, 0, w, 0);
        mLight->SetPoints(0, pxY, w, pxY);
        break;
    case LS_HorizontalInverted:
        mDark->SetPoints(0, pxY, w, pxY);
        mLight->SetPoints(0, 0, w, 0);
        break;
    case LS_HorizontalFlat: mDark->SetPoints(0, 0, w, 0); break;
    case LS_Vertical:
        mDark->SetPoints(0, 0, 0, h);
        mLight->SetPoints(pxX, 0, pxX, h);
        break;
    case LS_VerticalInverted:
        mDark->SetPoints(pxX, 0, pxX, h);
        mLight->SetPoints(0, 0, 0, h);
        break;
    case LS_VerticalFlat: mDark->SetPoints(0, 0, 0, h); break;
    default: break;
    }
    mLight->setVisible(!Flat());
}

const PropertyList& ZqLine::PersistedProperties() const
{
    static const PropertyList list = Declare<ZqLine>()
                                         .Property("ColourDarkLine", &ZqLine::ColourDarkLine, &ZqLine::SetColourDarkLine, vbButtonShadow)
                                         .Property("ColourLightLine", &ZqLine::ColourLightLine, &ZqLine::SetColourLightLine, vb3DHighlight)
                                         .Property("LineStyle", &ZqLine::LineStyle, &ZqLine::SetLineStyle, int{LS_Horizontal})
                                         .Property("FlatLineSize", &ZqLine::FlatLineSize, &ZqLine::SetFlatLineSize, std::int16_t{1});
    return list;
}

}  // namespace korvex
