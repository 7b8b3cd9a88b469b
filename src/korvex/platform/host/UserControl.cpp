// UserControl: ambient properties through the form, property-changed notifications.
#include "korvex/platform/host/UserControl.h"

#include "korvex/platform/host/Form.h"
#include "korvex/platform/desktop/WindowStyles.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <utility>

namespace korvex {

AmbientProperties::AmbientProperties(UserControl* control) : mControl(control) {}

StdFont* AmbientProperties::Font() const
{
    if (Form* form = mControl->ParentForm())
        return form->Font();
    static StdFont fallback;
    return &fallback;
}

bool AmbientProperties::UserMode() const
{
    Form* form = mControl->ParentForm();
    return !form || !form->DesignMode();
}

QString AmbientProperties::DisplayName() const
{
    return mControl->Name();
}

OleColor AmbientProperties::BackColor() const
{
    Form* form = mControl->ParentForm();
    return form ? form->BackColor() : vbButtonFace;
}

OleColor AmbientProperties::ForeColor() const
{
    Form* form = mControl->ParentForm();
    return form ? form->ForeColor() : vbButtonText;
}

UserControl::UserControl(QWidget* parent) : Control(parent) {}

UserControl::~UserControl()
{
    // What an inner control says while Qt deletes it (a lost focus) must not reach the part of
    // this object that is already gone.
    for (const QPointer<Control>& inner : std::as_const(mInner)) {
        if (inner)
            disconnect(inner, nullptr, this, nullptr);
    }
}

const PropertyList& UserControl::PersistedProperties() const
{
    static const PropertyList none;
    return none;
}

void UserControl::LoadDeclaredDefaults()
{
    for (const PersistedProperty& p : PersistedProperties())
        p.load(*this, p.readDefault(*this));
}

void UserControl::InitProperties()
{
    InitDeclared(*this, PersistedProperties());
}

void UserControl::ReadProperties(PropertyBag& bag)
{
    ReadDeclared(*this, PersistedProperties(), bag);
}

void UserControl::WriteProperties(PropertyBag& bag)
{
    WriteDeclared(*this, PersistedProperties(), bag);
}

void UserControl::RequireValid(bool valid, const char* propertyName) const
{
    if (!valid)
        Raise(vbErrInvalidPropertyValue, TypeName() + QLatin1Char('.') + QLatin1String(propertyName));
}

void UserControl::WrapInner(Control* inner, InnerEvents events)
{
    mInner.append(inner);
    if (events & InnerEvent::Keys) {
        connect(inner, &Control::KeyDown, this, &Control::KeyDown);
        connect(inner, &Control::KeyPress, this, &Control::KeyPress);
        connect(inner, &Control::KeyUp, this, &Control::KeyUp);
    }
    if (events & InnerEvent::Mouse) {
        connect(inner, &Control::MouseDown, this, &Control::MouseDown);
        connect(inner, &Control::MouseMove, this, &Control::MouseMove);
        connect(inner, &Control::MouseUp, this, &Control::MouseUp);
    }
    if (events & InnerEvent::Click)
        connect(inner, &Control::Click, this, &Control::Click);
    if (events & InnerEvent::DblClick)
        connect(inner, &Control::DblClick, this, &Control::DblClick);
    if (events & InnerEvent::Validate)
        connect(inner, &Control::Validate, this, &Control::Validate);
    if (events & InnerEvent::Focus) {
        connect(inner, &Control::GotFocus, this, [this] {
            InnerFocusChanged(true);
            emit GotFocus();
        });
        connect(inner, &Control::LostFocus, this, [this] {
            InnerFocusChanged(false);
            emit LostFocus();
        });
    }
}

void UserControl::SetInvisibleAtRunTime()
{
    mInvisibleAtRunTime = true;
    if (UserMode())
        hide();
}

bool UserControl::Visible() const
{
    return mInvisibleAtRunTime ? mExtenderVisible : Control::Visible();
}

void UserControl::SetVisible(bool visible)
{
    mExtenderVisible = visible;
    Control::SetVisible(visible && !(mInvisibleAtRunTime && UserMode()));
}

bool UserControl::event(QEvent* event)
{
    if (mInvisibleAtRunTime && event->type() == QEvent::ParentChange && UserMode())
        hide();
    return Control::event(event);
}

void UserControl::PropertyChanged(const QString& propertyName)
{
    emit PropertyChangedNotification(propertyName);
    if (Form* form = ParentForm(); form && form->DesignMode())
        form->SetModified(true);
}

int UserControl::ScaleWidth() const
{
    return PixelsToTwipsX(contentsRect().width());
}

int UserControl::ScaleHeight() const
{
    return PixelsToTwipsY(contentsRect().height());
}

void UserControl::Paint(QPainter&) {}

void UserControl::resizeEvent(QResizeEvent* event)
{
    Control::resizeEvent(event);
    Guarded(this, [this] { ReportSize(); });
}

void UserControl::GeometryChanged()
{
    ReportSize();
}

void UserControl::ReportSize()
{
    if (size() == mReportedSize)
        return;
    mReportedSize = size();
    Resize();
}

void UserControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    Guarded(this, [&] { Paint(painter); });
    // The border set through the style bits is drawn over the edge of the surface, where a
    // window's non-client frame would be.
    DrawWindowFrame(painter, this);
}

}  // namespace korvex
