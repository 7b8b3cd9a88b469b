// UserControl: ambient properties through the form, property-changed notifications.
#include "korvex/platform/host/UserControl.h"

#include "korvex/platform/host/Form.h"
#include "korvex/platform/system/WindowStyles.h"
#include "korvex/runtime/Twips.h"

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
    ReportSize();
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
    Paint(painter);
    // The border set through the style bits is drawn over the edge of the surface, where a
    // window's non-client frame would be.
    DrawWindowFrame(painter, this);
}

}  // namespace korvex
