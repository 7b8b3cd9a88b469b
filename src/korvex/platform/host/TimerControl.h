// The standard timer (type name "Timer"; its event has the same name, so the class cannot): raises Timer every Interval milliseconds while enabled and the interval
// is not 0. Invisible, and idle on a form under design.
#pragma once

#include "korvex/platform/host/Control.h"

#include <QTimer>

namespace korvex {

class TimerControl : public Control {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "Timer")
    Q_PROPERTY(int Interval READ Interval WRITE SetInterval)

public:
    explicit TimerControl(QWidget* parent = nullptr);

    int Interval() const noexcept { return mInterval; }
    // Raises 380 for a negative interval.
    void SetInterval(int milliseconds);
    void SetEnabled(bool enabled) override;
    bool Visible() const override { return false; }
    void SetVisible(bool) override {}

    bool HasExtenderGeometry() const override { return false; }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

signals:
    void Timer();

private:
    void Restart();

    QTimer mTimer;
    int mInterval = 0;
};

}  // namespace korvex
