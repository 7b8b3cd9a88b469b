// Screen: active form through the application's active window, pointer through the override
// cursor.
#include "korvex/platform/host/Screen.h"

#include "korvex/platform/host/Control.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/runtime/Twips.h"

#include <QApplication>
#include <QPointer>

namespace korvex {
namespace {

QPointer<Form>& Override()
{
    static QPointer<Form> form;
    return form;
}

bool& OverrideCursorSet()
{
    static bool set = false;
    return set;
}

}  // namespace

bool IsMousePointerConstant(int pointer)
{
    return (pointer >= vbDefault && pointer <= vbSizeAll) || pointer == vbCustom;
}

Qt::CursorShape CursorShapeOf(int pointer)
{
    switch (pointer) {
    case vbCrosshair: return Qt::CrossCursor;
    case vbIbeam: return Qt::IBeamCursor;
    case vbSizePointer:
    case vbSizeAll: return Qt::SizeAllCursor;
    case vbSizeNESW: return Qt::SizeBDiagCursor;
    case vbSizeNS: return Qt::SizeVerCursor;
    case vbSizeNWSE: return Qt::SizeFDiagCursor;
    case vbSizeWE: return Qt::SizeHorCursor;
    case vbUpArrow: return Qt::UpArrowCursor;
    case vbHourglass: return Qt::WaitCursor;
    case vbNoDrop: return Qt::ForbiddenCursor;
    case vbArrowHourglass: return Qt::BusyCursor;
    case vbArrowQuestion: return Qt::WhatsThisCursor;
    default: return Qt::ArrowCursor;
    }
}

Screen::Screen(QObject* parent) : QObject(parent) {}

Screen* Screen::Instance()
{
    static Screen* screen = new Screen(QCoreApplication::instance());
    return screen;
}

void Screen::SetActiveFormOverride(Form* form)
{
    Override() = form;
}

Form* Screen::ActiveForm() const
{
    Form* form = Override();
    if (!form)
        form = qobject_cast<Form*>(QApplication::activeWindow());
    if (auto* mdi = qobject_cast<MDIForm*>(form); mdi && mdi->ActiveForm())
        return mdi->ActiveForm();
    return form;
}

QObject* Screen::ActiveFormObject() const
{
    return ActiveForm();
}

Control* Screen::ActiveControl() const
{
    Form* form = ActiveForm();
    return form ? form->ActiveControl() : nullptr;
}

QObject* Screen::ActiveControlObject() const
{
    return ActiveControl();
}

void Screen::SetMousePointer(int pointer)
{
    mMousePointer = pointer;
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return;
    if (pointer == vbDefault) {
        if (OverrideCursorSet())
            QGuiApplication::restoreOverrideCursor();
        OverrideCursorSet() = false;
        return;
    }
    if (OverrideCursorSet())
        QGuiApplication::changeOverrideCursor(QCursor(CursorShapeOf(pointer)));
    else
        QGuiApplication::setOverrideCursor(QCursor(CursorShapeOf(pointer)));
    OverrideCursorSet() = true;
}

double Screen::TwipsPerPixelX() const { return korvex::TwipsPerPixelX(); }
double Screen::TwipsPerPixelY() const { return korvex::TwipsPerPixelY(); }
int Screen::Width() const { return PixelsToTwipsX(SystemInfo::WorkArea().width()); }
int Screen::Height() const { return PixelsToTwipsY(SystemInfo::WorkArea().height()); }

}  // namespace korvex
