// The base of the library's own controls: a Control that also sees its container's ambient
// properties (font, run or design mode, display name, colours), reports property changes to
// it, and gets the Resize and Paint calls of the control frame.
#pragma once

#include "korvex/platform/host/Control.h"
#include "korvex/platform/host/PersistedProperties.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/StdFont.h"

#include <QList>
#include <QPainter>
#include <QPointer>

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

// The events of an inner control a wrapper raises again as its own.
enum class InnerEvent : int {
    Keys = 1,       // KeyDown, KeyPress, KeyUp
    Mouse = 2,      // MouseDown, MouseMove, MouseUp
    Click = 4,
    DblClick = 8,
    Validate = 16,
    Focus = 32,     // GotFocus, LostFocus, after InnerFocusChanged
};
Q_DECLARE_FLAGS(InnerEvents, InnerEvent)
Q_DECLARE_OPERATORS_FOR_FLAGS(InnerEvents)

class UserControl : public Control {
    Q_OBJECT

public:
    explicit UserControl(QWidget* parent = nullptr);
    ~UserControl() override;

    AmbientProperties* Ambient() { return &mAmbient; }
    const AmbientProperties* Ambient() const { return &mAmbient; }
    // The extender is the Control part of this object.
    Control* Extender() { return this; }
    bool UserMode() const { return mAmbient.UserMode(); }

    // Tells the container that a persisted property changed, so that the form under design is
    // marked as modified.
    void PropertyChanged(const QString& propertyName);
    void PropertyChanged(const char* propertyName) { PropertyChanged(QString::fromLatin1(propertyName)); }

    // The declared persisted properties drive the three lifecycle steps; a control that needs
    // more overrides a step and calls this one around its own work.
    void InitProperties() override;
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

    // The inner size in twips (inside any border).
    int ScaleWidth() const;
    int ScaleHeight() const;

    // What the host set; a control invisible at run time keeps it and stays hidden.
    bool Visible() const override;
    void SetVisible(bool visible) override;

signals:
    void PropertyChangedNotification(const QString& PropertyName);

protected:
    // The persisted properties in the order they are read and written; none by default.
    virtual const PropertyList& PersistedProperties() const;
    // Gives every declared property its read default: the one place a default stands. A control
    // calls it at the end of its constructor (the declaration is its own, so the base cannot).
    void LoadDeclaredDefaults();

    // The one shape of a setter. The caller checks first (RequireValid: 380, nothing changed);
    // then the value is stored and, when it differs, applied; then the container hears of the
    // write under the persistence name, changed or not.
    void RequireValid(bool valid, const char* propertyName) const;
    template <class T, class Apply>
    void Assign(const char* name, T& member, const T& value, Apply apply)
    {
        const bool changed = !(member == value);
        member = value;
        if (changed)
            apply();
        PropertyChanged(name);
    }
    template <class T>
    void Assign(const char* name, T& member, const T& value)
    {
        Assign(name, member, value, [] {});
    }

    // The same shape for a property that lives in an inner control: its setter runs (and may
    // refuse the value) when the value differs; the container hears of every write.
    template <class Inner, class Value, class Getter, class Setter>
    void WriteInner(const char* name, Inner* inner, const Value& value, Getter get, Setter set)
    {
        if (!(std::invoke(get, inner) == value))
            std::invoke(set, inner, value);
        PropertyChanged(name);
    }

    // Wraps an inner control: the chosen events are raised again as this control's, with the
    // same by-reference arguments, and the inner control stops talking to this one when this
    // one goes (Qt deletes children after the wrapper's own part is gone).
    void WrapInner(Control* inner, InnerEvents events);
    // Called when the wrapped inner control gains or loses the focus, before GotFocus or
    // LostFocus is raised.
    virtual void InnerFocusChanged(bool /*hasFocus*/) {}

    // A control that shows nothing at run time (a binding source, a timer): hidden as soon as it
    // is on a form at run time, and whenever it moves onto one.
    void SetInvisibleAtRunTime();
    bool event(QEvent* event) override;

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
    QList<QPointer<Control>> mInner;
    bool mInvisibleAtRunTime = false;
    bool mExtenderVisible = true;
};

}  // namespace korvex
