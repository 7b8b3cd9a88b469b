// The library's separator line: horizontal or vertical, engraved (a dark and a light line side
// by side, either way round) or flat (one dark line of a chosen thickness). Two standard lines
// do the drawing; the control only places them.
#pragma once

#include "korvex/platform/host/UserControl.h"

namespace korvex {

class Line;

enum ZqLineStylesEnum : int {
    LS_Horizontal = 0,
    LS_HorizontalInverted = 1,
    LS_Vertical = 2,
    LS_VerticalInverted = 3,
    LS_HorizontalFlat = 4,
    LS_VerticalFlat = 5,
};

class ZqLine : public UserControl {
    Q_OBJECT
    Q_PROPERTY(int LineStyle READ LineStyle WRITE SetLineStyle)
    Q_PROPERTY(uint ColourDarkLine READ ColourDarkLine WRITE SetColourDarkLine)
    Q_PROPERTY(uint ColourLightLine READ ColourLightLine WRITE SetColourLightLine)
    Q_PROPERTY(short FlatLineSize READ FlatLineSize WRITE SetFlatLineSize)

public:
    explicit ZqLine(QWidget* parent = nullptr);

    int LineStyle() const noexcept { return mLineStyle; }
    void SetLineStyle(int style);
    OleColor ColourDarkLine() const;
    void SetColourDarkLine(OleColor color);
    OleColor ColourLightLine() const;
    void SetColourLightLine(OleColor color);
    // A stored 0 reads as 1: a line is never thinner than a pixel.
    short FlatLineSize() const noexcept { return mFlatLineSize == 0 ? short{1} : mFlatLineSize; }
    void SetFlatLineSize(short size);

    // The two lines, for those who look at what is drawn.
    const Line* DarkLine() const { return mDark; }
    const Line* LightLine() const { return mLight; }

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;

private:
    bool Flat() const { return mLineStyle == LS_HorizontalFlat || mLineStyle == LS_VerticalFlat; }
    void LayOut();

    int mLineStyle = LS_Horizontal;
    short mFlatLineSize = 1;
    Line* mDark;
    Line* mLight;
};

}  // namespace korvex
