// The registry is per thread, like the rest of the library's shared state.
#include "korvex/platform/automation/Automation.h"

#include "korvex/runtime/Error.h"

#include <QHash>
#include <QObject>

namespace korvex {
namespace {

struct Entry {
    AutomationFactory create;
    AutomationFactory running;
};

QHash<QString, Entry>& Entries()
{
    thread_local QHash<QString, Entry> entries;
    return entries;
}

// Identifiers are matched ignoring case, as class registrations are.
QString KeyOf(const QString& progId)
{
    return progId.toLower();
}

std::shared_ptr<QObject> Make(const QString& progId, AutomationFactory Entry::*which, const char* source)
{
    const auto it = Entries().constFind(KeyOf(progId));
    std::shared_ptr<QObject> object;
    if (it != Entries().constEnd() && (it.value().*which))
        object = (it.value().*which)();
    if (!object)
        Raise(vbErrCantCreateObject, QString::fromLatin1(source));
    return object;
}

}  // namespace

void AutomationRegistry::Register(const QString& progId, AutomationFactory create, AutomationFactory running)
{
    Entries().insert(KeyOf(progId), Entry{std::move(create), std::move(running)});
}

void AutomationRegistry::Unregister(const QString& progId)
{
    Entries().remove(KeyOf(progId));
}

std::shared_ptr<QObject> CreateObject(const QString& progId)
{
    return Make(progId, &Entry::create, "CreateObject");
}

std::shared_ptr<QObject> GetObject(const QString& progId)
{
    return Make(progId, &Entry::running, "GetObject");
}

ScopedAutomationRegistration::ScopedAutomationRegistration(QString progId, AutomationFactory create,
                                                           AutomationFactory running)
    : mProgId(std::move(progId))
{
    AutomationRegistry::Register(mProgId, std::move(create), std::move(running));
}

ScopedAutomationRegistration::~ScopedAutomationRegistration()
{
    AutomationRegistry::Unregister(mProgId);
}

}  // namespace korvex
