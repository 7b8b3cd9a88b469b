// The library's two container panels. ZqFrame is a plain panel with a choice of border, a back
// colour and style, and a font for what it holds. ZqFrameEx paints a background that blends
// four corner colours, kept in its own memory, and scrolls what it holds with a horizontal and
// a vertical bar when the contents reach beyond it.
#pragma once

#include "korvex/controls/display/SurfaceFont.h"
#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/platform/host/UserControl.h"

#include <QPixmap>

class QScrollBar;

namespace korvex {

// What both panels share: the border through the window's style bits, the surface font, and
// the client area that holds the contained controls, inside the border, so that their
// positions count from its top-left corner.
class FrameBase : public UserControl {
    Q_OBJECT
    Q_PROPERTY(int BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFont)
    Q_PROPERTY(qlonglong hwnd READ hWnd)

public:
    int BorderStyle() const noexcept { return mBorderStyle; }
    void SetBorderStyle(int style);
    StdFont* Font() const { return mFont.Get(); }
    QObject* FontObject() const { return mFont.Get(); }
    void SetFont(QObject* font);
    // The font as a form file keeps it (a Variant, so that a loaded font stays owned).
    Variant FontValue() const { return Variant(FontObject()); }

    QWidget* ContainerWidget() override { return mClient; }
    bool IsContainer() const override { return true; }
    // The controls placed on the panel, in the order they were created.
    QList<Control*> ContainedControls() const;

protected:
    FrameBase(QWidget* parent, int borderStyle);
    void LoadFont(const Variant& font);
    bool event(QEvent* event) override;
    // The client area follows the size and the border.
    virtual void PlaceClient();

    QWidget* mClient;

private:
    int mBorderStyle;
    SurfaceFont mFont;
};

class ZqFrame : public FrameBase {
    Q_OBJECT
    Q_PROPERTY(int BackStyle READ BackStyle WRITE SetBackStyle)
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(float ScaleWidth READ ScaleWidth)
    Q_PROPERTY(float ScaleHeight READ ScaleHeight)

public:
    explicit ZqFrame(QWidget* parent = nullptr);

    int BackStyle() const noexcept { return mBackStyle; }
    void SetBackStyle(int style);
    OleColor BackColor() const noexcept { return mBackColor; }
    void SetBackColor(OleColor color);
    // The inner size in twips: the size less what the border takes by the system's metrics.
    float ScaleWidth() const;
    float ScaleHeight() const;

protected:
    const PropertyList& PersistedProperties() const override;
    void Paint(QPainter& painter) override;

private:
    int mBackStyle = bsOpaque;
    OleColor mBackColor = vbButtonFace;
};

class ZqFrameEx : public FrameBase {
    Q_OBJECT
    Q_PROPERTY(bool AllowScrollHoriz READ AllowScrollHoriz WRITE SetAllowScrollHoriz)
    Q_PROPERTY(bool AllowScrollVert READ AllowScrollVert WRITE SetAllowScrollVert)
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(uint BackColorTR READ BackColorTR WRITE SetBackColorTR)
    Q_PROPERTY(uint BackColorBL READ BackColorBL WRITE SetBackColorBL)
    Q_PROPERTY(uint BackColorBR READ BackColorBR WRITE SetBackColorBR)
    Q_PROPERTY(int OffSetX READ OffSetX)
    Q_PROPERTY(int OffSetY READ OffSetY)

public:
    explicit ZqFrameEx(QWidget* parent = nullptr);

    // The surface the background is kept on; who draws on it calls update() afterwards.
    QPaintDevice* hDC() { return &mSurface; }
    bool AllowScrollHoriz() const noexcept { return mAllowScrollHoriz; }
    void SetAllowScrollHoriz(bool allow);
    bool AllowScrollVert() const noexcept { return mAllowScrollVert; }
    void SetAllowScrollVert(bool allow);
    OleColor BackColor() const noexcept { return mBackColor; }
    // Corners that followed the back colour go on following it.
    void SetBackColor(OleColor color);
    OleColor BackColorTR() const noexcept { return mBackColorTR; }
    void SetBackColorTR(OleColor color);
    OleColor BackColorBL() const noexcept { return mBackColorBL; }
    void SetBackColorBL(OleColor color);
    OleColor BackColorBR() const noexcept { return mBackColorBR; }
    void SetBackColorBR(OleColor color);
    // The scroll offsets now applied to the contained controls, in twips.
    int OffSetX() const noexcept { return mOffSetX; }
    int OffSetY() const noexcept { return mOffSetY; }

    QScrollBar* HorizontalBar() const { return hsc; }
    QScrollBar* VerticalBar() const { return vsc; }
    ZqFrame* Corner() const { return zqfraCorner; }
    // How often the background has been drawn into the surface.
    int BackgroundPaints() const noexcept { return mBackgroundPaints; }

    void InitProperties() override;
    void ReadProperties(PropertyBag& bag) override;

signals:
    // The host's Resize event: after layout, repositioning and painting. (Resize() itself is
    // the control frame's call into the panel.)
    void Resized();

protected:
    const PropertyList& PersistedProperties() const override;
    void Paint(QPainter& painter) override;
    void Resize() override;
    bool event(QEvent* event) override;

private:
    void LayOutBars();
    void Reposition();
    void PaintBackground();
    // Twips of the panel's inner area to pixels of the widget.
    QPoint ToWidget(int leftTwips, int topTwips) const;

    bool mAllowScrollHoriz = false;
    bool mAllowScrollVert = false;
    OleColor mBackColor = vbButtonFace;
    OleColor mBackColorTR = vbButtonFace;
    OleColor mBackColorBL = vbButtonFace;
    OleColor mBackColorBR = vbButtonFace;
    int mOffSetX = 0;
    int mOffSetY = 0;
    QScrollBar* hsc;
    QScrollBar* vsc;
    ZqFrame* zqfraCorner;
    QPixmap mSurface;
    int mBackgroundPaints = 0;
};

}  // namespace korvex
