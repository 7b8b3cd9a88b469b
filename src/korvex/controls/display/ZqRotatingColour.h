// A busy indicator: a caption centred on a four-corner gradient whose corner colours keep
// sliding between two colours while it is enabled, so that the gradient seems to turn.
#pragma once

#include "korvex/platform/host/UserControl.h"

namespace korvex {

class Label;
class TimerControl;
class ZqFrameEx;

class ZqRotatingColour : public UserControl {
    Q_OBJECT
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(uint Colour1 READ Colour1 WRITE SetColour1)
    Q_PROPERTY(uint Colour2 READ Colour2 WRITE SetColour2)
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)

public:
    explicit ZqRotatingColour(QWidget* parent = nullptr);

    // The setters tell the container nothing: the animation is not a design-time setting.
    QString Caption() const;
    void SetCaption(const QString& caption);
    OleColor Colour1() const noexcept { return mColour1; }
    void SetColour1(OleColor color) { mColour1 = color; }
    OleColor Colour2() const noexcept { return mColour2; }
    void SetColour2(OleColor color) { mColour2 = color; }
    // Whether the animation runs; stopping it also sends the sweep back to its start.
    bool Enabled() const override;
    void SetEnabled(bool enabled) override;
    OleColor ForeColor() const;
    void SetForeColor(OleColor color);

    // One step of the animation, as the timer makes it (only while the control is visible).
    void Tick();
    int PositionA() const noexcept { return mPositionA; }
    int PositionB() const noexcept { return mPositionB; }
    ZqFrameEx* Background() const { return zqfrax; }
    TimerControl* Timer() const { return tmrAnimate; }

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;

private:
    OleColor mColour1 = 0;
    OleColor mColour2 = 65535;
    int mPositionA = 0, mStepA = 0;
    int mPositionB = 0, mStepB = 0;
    ZqFrameEx* zqfrax;
    Label* lbl;
    TimerControl* tmrAnimate;
};

}  // namespace korvex
