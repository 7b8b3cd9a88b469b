// The hooks as an application event filter, installed only while an owner holds them.
#include "korvex/platform/system/ThreadHooks.h"

#include <QCoreApplication>
#include <QPointer>

#include <exception>

namespace korvex {
namespace {

class HookFilter : public QObject {
public:
    QPointer<QObject> owner;
    ThreadHooks::MouseProc mouse;
    ThreadHooks::KeyboardProc keyboard;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (!owner || !watched->isWidgetType())
            return false;
        // A propagated event reaches the filter once per receiver; the hook sees it once.
        if (event == mLastEvent)
            return false;
        auto* widget = static_cast<QWidget*>(watched);
        try {
            switch (event->type()) {
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonDblClick:
            case QEvent::NonClientAreaMouseButtonPress:
                mLastEvent = event;
                return mouse && mouse(widget, static_cast<QMouseEvent*>(event));
            case QEvent::KeyPress:
                mLastEvent = event;
                return keyboard && keyboard(widget, static_cast<QKeyEvent*>(event));
            default:
                return false;
            }
        } catch (const std::exception&) {
            // No error may leave a hook call: the event goes on as if unhooked.
            return false;
        }
    }

private:
    const QEvent* mLastEvent = nullptr;
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
