// The hooks as an application event filter, installed only while an owner holds them.
#include "korvex/platform/desktop/ThreadHooks.h"

#include "korvex/runtime/EntryGuard.h"

#include <QCoreApplication>
#include <QPointer>


namespace korvex {
namespace {

// Eats the release of one button, then goes: the second half of a press a hook consumed.
class ReleaseEater : public QObject {
public:
    explicit ReleaseEater(Qt::MouseButton button) : mButton(button) {}

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != QEvent::MouseButtonRelease || static_cast<QMouseEvent*>(event)->button() != mButton)
            return false;
        if (!mDone) {
            mDone = true;
            QCoreApplication::instance()->removeEventFilter(this);
            deleteLater();
        }
        return true;
    }

private:
    Qt::MouseButton mButton;
    bool mDone = false;
};

void EatReleaseOf(Qt::MouseButton button)
{
    QCoreApplication::instance()->installEventFilter(new ReleaseEater(button));
}

class HookFilter : public QObject {
public:
    QPointer<QObject> owner;
    ThreadHooks::MouseProc mouse;
    ThreadHooks::KeyboardProc keyboard;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (!owner || !watched->isWidgetType())
            return false;
        auto* widget = static_cast<QWidget*>(watched);
        // A propagated event reaches the filter again at each parent; the hook sees it once.
        // (The same address may also be reused by the next event, so only an arrival at an
        // ancestor of the last receiver counts as propagation.)
        if (event == mLastEvent && mLastTarget && widget != mLastTarget && widget->isAncestorOf(mLastTarget))
            return false;
        // No error may leave a hook call: the event goes on as if unhooked.
        return Guarded(owner.data(), [&] {
            switch (event->type()) {
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonDblClick:
            case QEvent::NonClientAreaMouseButtonPress:
                mLastEvent = event;
                mLastTarget = widget;
                if (mouse && mouse(widget, static_cast<QMouseEvent*>(event))) {
                    EatReleaseOf(static_cast<QMouseEvent*>(event)->button());
                    return true;
                }
                return false;
            case QEvent::KeyPress:
                mLastEvent = event;
                mLastTarget = widget;
                return keyboard && keyboard(widget, static_cast<QKeyEvent*>(event));
            default:
                return false;
            }
        }, false);
    }

private:
    const QEvent* mLastEvent = nullptr;
    QPointer<QWidget> mLastTarget;
};

HookFilter*& Filter()
{
    thread_local HookFilter* filter = nullptr;
    return filter;
}

}  // namespace

void ThreadHooks::Install(QObject* owner, MouseProc mouse, KeyboardProc keyboard)
{
    Remove();
    auto* filter = new HookFilter;
    filter->owner = owner;
    filter->mouse = std::move(mouse);
    filter->keyboard = std::move(keyboard);
    QCoreApplication::instance()->installEventFilter(filter);
    Filter() = filter;
}

void ThreadHooks::Remove()
{
    HookFilter*& filter = Filter();
    if (!filter)
        return;
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(filter);
    // Removal may happen inside the filter's own call: delete once control has left it.
    filter->owner = nullptr;
    filter->deleteLater();
    filter = nullptr;
}

QObject* ThreadHooks::Owner()
{
    HookFilter* filter = Filter();
    return filter ? filter->owner.data() : nullptr;
}

}  // namespace korvex
