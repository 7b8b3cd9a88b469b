// The base of the library's own controls: a Control that also sees its container's ambient
// properties (font, run or design mode, display name, colours), reports property changes to
// it, and gets the Resize and Paint calls of the control frame.
#pragma once

#include "korvex/platform/host/Control.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/StdFont.h"

#include <QPainter>

#include <functional>

namespace korvex {

class UserControl;

class AmbientProperties : public QObject {
    Q_OBJECT
    Q_PROPERTY(QObject* Font READ FontObject)
    Q_PROPERTY(bool UserMode READ UserMode)
    Q_PROPERTY(QString DisplayName READ DisplayName)
    Q_PROPERTY(uint BackColor READ BackColor)
    Q_PROPERTY(uint ForeColor READ ForeColor)

public:
    explicit AmbientProperties(UserControl* control);

    // The container's font: the form's, or a shared default off any form. Copy it, do not
    // keep it.
    StdFont* Font() const;
    QObject* FontObject() const { return Font(); }
    // True at run time, False while the form is being designed.
    bool UserMode() const;
    QString DisplayName() const;
    OleColor BackColor() const;
    OleColor ForeColor() const;

private:
    UserControl* mControl;
};

class UserControl : public Control {
    Q_OBJECT

public:
    explicit UserControl(QWidget* parent = nullptr);

    AmbientProperties* Ambient() { return &mAmbient; }
    const AmbientProperties* Ambient() const { return &mAmbient; }
    // The extender is the Control part of this object.
    Control* Extender() { return this; }
    bool UserMode() const { return mAmbient.UserMode(); }

    // Tells the container that a persisted property changed, so that the form under design is
    // marked as modified.
    void PropertyChanged(const QString& propertyName);

    // The inner size in twips (inside any border).
    int ScaleWidth() const;
    int ScaleHeight() const;

signals:
    void PropertyChangedNotification(const QString& PropertyName);

protected:
    // A property a wrapper control passes straight through to its inner control: nothing
    // happens when the inner control has the value already; otherwise its setter runs (and may
    // refuse the value), then the container hears of the change under `name`.
    template <class Inner, class Value, class Getter, class Setter>
    void WriteInner(const QString& name, Inner* inner, const Value& value, Getter get, Setter set)
    {
        if (std::invoke(get, inner) == value)
            return;
        std::invoke(set, inner, value);
        PropertyChanged(name);
    }

    // Lay out the inner controls to the new size.
    virtual void Resize() {}
    // Owner-drawn controls paint their surface here.
    virtual void Paint(QPainter& painter);

    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void GeometryChanged() override;

private:
    // Resize once for each new size, whether it arrived while hidden or shown.
    void ReportSize();

    AmbientProperties mAmbient{this};
    QSize mReportedSize{-1, -1};
};

}  // namespace korvex
