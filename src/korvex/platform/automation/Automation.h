// Automation objects by programmatic identifier ("Outlook.Application"): a registry of
// factories standing in for the system's class registrations. Nothing is registered on this
// platform out of the box, so creating Outlook or Notes fails exactly as a component that is
// not installed does (error 429); tests and hosts register objects of their own.
#pragma once

#include <QString>

#include <functional>
#include <memory>

class QObject;

namespace korvex {

using AutomationFactory = std::function<std::shared_ptr<QObject>()>;

class AutomationRegistry {
public:
    // `create` makes a new instance; `running` returns the instance already running, or
    // nullptr when there is none (a missing `running` means the program is never running).
    static void Register(const QString& progId, AutomationFactory create, AutomationFactory running = {});
    static void Unregister(const QString& progId);
};

// A new instance; raises 429 when the identifier is not registered or the factory gives none.
std::shared_ptr<QObject> CreateObject(const QString& progId);
// The running instance; raises 429 when there is none.
std::shared_ptr<QObject> GetObject(const QString& progId);

// Registers objects for the life of a scope (a test) and removes them afterwards.
class ScopedAutomationRegistration {
public:
    ScopedAutomationRegistration(QString progId, AutomationFactory create, AutomationFactory running = {});
    ~ScopedAutomationRegistration();
    ScopedAutomationRegistration(const ScopedAutomationRegistration&) = delete;
    ScopedAutomationRegistration& operator=(const ScopedAutomationRegistration&) = delete;

private:
    QString mProgId;
};

}  // namespace korvex
