// Timers over QTimer, kept by id; a killed timer is deleted later so that killing it from its
// own callback is safe.
#include "korvex/platform/system/Timers.h"

#include "korvex/runtime/EntryGuard.h"

#include <QCoreApplication>
#include <QHash>
#include <QPointer>
#include <QTimer>


namespace korvex {
namespace {

QHash<int, QPointer<QTimer>>& Running()
{
    thread_local QHash<int, QPointer<QTimer>> timers;
    return timers;
}

int Start(int interval, std::function<void()> callback, bool once)
{
    thread_local int nextId = 0;
    const int id = ++nextId;
    auto* timer = new QTimer;
    timer->setInterval(interval < 0 ? 0 : interval);
    QObject::connect(timer, &QTimer::timeout, timer, [id, once, callback = std::move(callback)] {
        if (once)
            KillTimer(id);
        Guarded(nullptr, callback);
    });
    Running().insert(id, timer);
    timer->start();
    return id;
}

}  // namespace

int SetTimer(int intervalMilliseconds, std::function<void()> callback)
{
    return Start(intervalMilliseconds, std::move(callback), false);
}

int SetSingleShotTimer(int intervalMilliseconds, std::function<void()> callback)
{
    return Start(intervalMilliseconds, std::move(callback), true);
}

bool KillTimer(int id)
{
    QPointer<QTimer> timer = Running().take(id);
    if (!timer)
        return false;
    timer->stop();
    timer->deleteLater();
    return true;
}

bool TimerIsRunning(int id)
{
    return Running().contains(id);
}

void DoEvents()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

}  // namespace korvex
