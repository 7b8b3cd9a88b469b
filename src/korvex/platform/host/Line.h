// The standard line: a segment between two points given in twips in its container's
// coordinates, drawn with a colour, width and dash style. It takes no input.
#pragma once

#include "korvex/platform/host/Control.h"

namespace korvex {

class Line : public Control {
    Q_OBJECT
    Q_PROPERTY(int X1 READ X1 WRITE SetX1)
    Q_PROPERTY(int Y1 READ Y1 WRITE SetY1)
    Q_PROPERTY(int X2 READ X2 WRITE SetX2)
    Q_PROPERTY(int Y2 READ Y2 WRITE SetY2)
    Q_PROPERTY(uint BorderColor READ BorderColor WRITE SetBorderColor)
    Q_PROPERTY(short BorderWidth READ BorderWidth WRITE SetBorderWidth)
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)

public:
    explicit Line(QWidget* parent = nullptr);

    int X1() const noexcept { return mX1; }
    int Y1() const noexcept { return mY1; }
    int X2() const noexcept { return mX2; }
    int Y2() const noexcept { return mY2; }
    void SetX1(int twips);
    void SetY1(int twips);
    void SetX2(int twips);
    void SetY2(int twips);
    // All four end-point coordinates at once.
    void SetPoints(int x1, int y1, int x2, int y2);
    OleColor BorderColor() const noexcept { return mBorderColor; }
    void SetBorderColor(OleColor color);
    short BorderWidth() const noexcept { return mBorderWidth; }
    void SetBorderWidth(short width);
    short BorderStyle() const noexcept { return mBorderStyle; }
    void SetBorderStyle(short style);

    bool HasExtenderGeometry() const override { return false; }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void Place();

    int mX1 = 0, mY1 = 0, mX2 = 0, mY2 = 0;
    OleColor mBorderColor = vbWindowText;
    short mBorderWidth = 1;
    short mBorderStyle = 1;
};

}  // namespace korvex
