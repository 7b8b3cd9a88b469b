// The library's flat push button: a plain face, a combo-box arrow, a help or a close picture,
// with a caption in the middle and a small caption in the bottom-right corner. It is drawn
// pushed in while the primary button is held down inside it and raises Click when that button
// comes up inside.
#pragma once

#include "korvex/platform/host/UserControl.h"

namespace korvex {

class Label;

enum ZqSimpleButtonStyles : int { sbsButton = 0, sbsComboBoxButton = 1, sbsHelpButton = 2, sbsCloseButton = 3 };

class ZqSimpleButton : public UserControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Caption")
    Q_PROPERTY(int ButtonStyle READ ButtonStyle WRITE SetButtonStyle)
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(QString CornerCaption READ CornerCaption WRITE SetCornerCaption)
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled)

public:
    explicit ZqSimpleButton(QWidget* parent = nullptr);

    int ButtonStyle() const noexcept { return mButtonStyle; }
    void SetButtonStyle(int style);
    const QString& Caption() const noexcept { return mCaption; }
    void SetCaption(const QString& caption);
    QString CornerCaption() const;
    void SetCornerCaption(const QString& caption);
    void SetEnabled(bool enabled) override;
    // Gives up the mouse: a drop-down that opens its list on the press takes the pointer over.
    Q_INVOKABLE void ReleaseMouseCapture();

    bool DrawnPressed() const noexcept { return mDrawnPressed; }
    // Where the corner caption goes, in pixels.
    QRect CornerCaptionRect() const;

    QSize sizeHint() const override { return {75, 23}; }
    QSize minimumSizeHint() const override { return {8, 8}; }

protected:
    const PropertyList& PersistedProperties() const override;
    void Paint(QPainter& painter) override;
    void Resize() override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    bool Inside(const QMouseEvent* event) const;
    void Redraw();
    void RaiseMouse(void (Control::*signal)(short&, short&, float&, float&), const QMouseEvent* event);

    int mButtonStyle = sbsButton;
    QString mCaption;
    Label* mCorner;
    bool mMouseDown = false;
    bool mDrawnPressed = false;
};

// The flat frame-control pictures the button is made of, also for anyone who draws a button
// of the same look: a face with a one-pixel frame, and the arrow, question mark or cross.
void DrawFlatFramePicture(QPainter& painter, const QRect& rect, int buttonStyle, bool pushed, bool inactive);

}  // namespace korvex
