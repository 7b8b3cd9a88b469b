// Form: controls collected from the client area in creation order, the load and unload
// sequence, validation of the active control.
#include "korvex/platform/host/Form.h"

#include "korvex/platform/desktop/FontConversion.h"
#include "korvex/platform/host/Control.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Twips.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontMetricsF>
#include <QMdiSubWindow>
#include <QScopedValueRollback>

#include <algorithm>

namespace korvex {
namespace {

QList<QPointer<Form>>& AllForms()
{
    static QList<QPointer<Form>> forms;
    return forms;
}

// Depth first through containers; the inner controls of a user control belong to it.
void Collect(const QWidget* widget, QList<Control*>& out)
{
    for (QObject* child : widget->children()) {
        auto* w = qobject_cast<QWidget*>(child);
        if (!w)
            continue;
        auto* control = qobject_cast<Control*>(w);
        if (control)
            out.append(control);
        if (qobject_cast<UserControl*>(w) && !(control && control->IsContainer()))
            continue;
        if (!qobject_cast<Form*>(w))
            Collect(w, out);
    }
}

}  // namespace

Form::Form(QWidget* parent) : QMainWindow(parent), mFont(new StdFont(this)), mClient(new QWidget(this))
{
    setCentralWidget(mClient);
    setAttribute(Qt::WA_DeleteOnClose, false);
    SetBackColor(vbButtonFace);
    AllForms().append(this);
}

Form::~Form()
{
    AllForms().removeAll(this);
}

QList<Form*> Form::Forms()
{
    QList<Form*> forms;
    for (const auto& f : AllForms()) {
        if (f)
            forms.append(f);
    }
    return forms;
}

void Form::SetName(const QString& name)
{
    mName = name;
    setObjectName(name);
}

int Form::Left() const { return PixelsToTwipsX(x()); }
int Form::Top() const { return PixelsToTwipsY(y()); }
int Form::Width() const { return PixelsToTwipsX(width()); }
int Form::Height() const { return PixelsToTwipsY(height()); }
void Form::SetLeft(int twips) { move(TwipsToPixelsX(twips), y()); }
void Form::SetTop(int twips) { move(x(), TwipsToPixelsY(twips)); }
void Form::SetWidth(int twips) { resize(std::max(1, TwipsToPixelsX(twips)), height()); }
void Form::SetHeight(int twips) { resize(width(), std::max(1, TwipsToPixelsY(twips))); }
int Form::ScaleWidth() const { return PixelsToTwipsX(mClient->width()); }
double Form::TextWidth(const QString& Text) const
{
    return QFontMetricsF(ToQFont(*mFont)).horizontalAdvance(Text) * TwipsPerPixelX();
}

int Form::ScaleHeight() const { return PixelsToTwipsY(mClient->height()); }

void Form::SetBackColor(OleColor color)
{
    mBackColor = color;
    QPalette p = mClient->palette();
    const OleColor rgb = ResolveColor(color);
    p.setColor(QPalette::Window, QColor(RedOf(rgb), GreenOf(rgb), BlueOf(rgb)));
    mClient->setPalette(p);
    mClient->setAutoFillBackground(true);
}

void Form::SetVisible(bool visible)
{
    if (visible)
        Show();
    else
        hide();
}

QList<Control*> Form::Controls() const
{
    QList<Control*> controls;
    Collect(mClient, controls);
    std::stable_sort(controls.begin(), controls.end(),
                     [](const Control* a, const Control* b) { return a->CreationOrder() < b->CreationOrder(); });
    return controls;
}

Control* Form::FindControl(const QString& name, short index) const
{
    for (Control* c : Controls()) {
        if (c->Name().compare(name, Qt::CaseInsensitive) == 0 && c->Index() == index)
            return c;
    }
    return nullptr;
}

QObject* Form::ControlByName(const QString& name, int index) const
{
    return FindControl(name, static_cast<short>(index));
}

QList<Control*> Form::ControlArray(const QString& name) const
{
    QList<Control*> elements;
    for (Control* c : Controls()) {
        if (c->Index() >= 0 && c->Name().compare(name, Qt::CaseInsensitive) == 0)
            elements.append(c);
    }
    std::sort(elements.begin(), elements.end(), [](Control* a, Control* b) { return a->Index() < b->Index(); });
    return elements;
}

Control* Form::ActiveControl() const
{
    QWidget* focus = QApplication::focusWidget();
    if (!focus || !isAncestorOf(focus))
        return nullptr;
    // The inner box of a user control is not a control of the form; a control in a frame is.
    return FormLevelControl(focus);
}

QObject* Form::ActiveControlObject() const
{
    return ActiveControl();
}

void Form::LoadForm()
{
    if (mLoaded)
        return;
    mLoaded = true;
    emit Load();
}

void Form::Show(int modal)
{
    LoadForm();
    if (mMDIChild) {
        if (MDIForm* mdi = MDIForm::Instance()) {
            mdi->AddChild(this);
            return;
        }
    }
    if (modal) {
        setWindowModality(Qt::ApplicationModal);
        show();
        while (isVisible())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return;
    }
    show();
}

void Form::ZOrder(int position)
{
    QWidget* window = qobject_cast<QMdiSubWindow*>(parentWidget()) ? parentWidget() : this;
    if (position == 0)
        window->raise();
    else
        window->lower();
}

bool Form::UnloadForm(int unloadMode)
{
    if (mUnloading)
        return false;
    short cancel = 0;
    short mode = static_cast<short>(unloadMode);
    emit QueryUnload(cancel, mode);
    if (cancel)
        return false;
    emit Unload(cancel);
    if (cancel)
        return false;
    const QScopedValueRollback unloading(mUnloading, true);
    for (Control* c : Controls())
        c->Terminate();
    mLoaded = false;
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
        sub->hide();
    hide();
    return true;
}

void Form::ValidateControls()
{
    Control* active = ActiveControl();
    if (active && !active->RunValidate())
        Raise(vbErrInvalidPropertyValue, mName + QStringLiteral(".ValidateControls"));
}

void Form::closeEvent(QCloseEvent* event)
{
    if (mUnloading || !mLoaded) {
        event->accept();
        return;
    }
    // The host's QueryUnload and Unload handlers run here, called by Qt.
    if (Guarded(this, [this] { return UnloadForm(vbFormControlMenu); }, false))
        event->accept();
    else
        event->ignore();
}

void Form::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    Guarded(this, [this] { emit Resize(); });
}

void Form::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange)
        return;
    Guarded(this, [this] {
        if (isActiveWindow())
            emit Activate();
        else
            emit Deactivate();
    });
}

}  // namespace korvex
