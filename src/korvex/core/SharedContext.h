// What the host hands the library at start-up, kept once per thread: the signed-on user, the
// host's Screen and MDI main form, the current instance of each global service class, and the
// development-environment flag. Controls and services read these slots instead of being
// handed the objects one by one.
#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

namespace korvex {

class clsLanguage;
class clsCharTranslation;
class clsPublic;
class clsDatabase;
namespace ado {
class Connection;
}

struct SharedContext {
    // Host objects: not owned; they read as Nothing once the host destroys them.
    QPointer<QObject> User;
    QPointer<QObject> ParentScreen;
    QPointer<QObject> ParentMDIForm;

    // The current instance of each global service class: the last one created on this thread.
    // Held strongly, as the host's own reference would hold it; nothing clears a slot.
    std::shared_ptr<clsLanguage> CurrentLanguage;
    std::shared_ptr<clsCharTranslation> CurrentCharTranslation;
    std::shared_ptr<clsPublic> CurrentPublic;
    std::shared_ptr<clsDatabase> CurrentDatabase;

    // The application's shared database connection (clsDatabase.gcn); null until the host sets it.
    std::shared_ptr<ado::Connection> gcn;

    // 0 not yet known, 1 not in the development environment, 2 inside it.
    short DevelopmentEnvironment = 0;

    // The calling thread's context (created empty on first use).
    static SharedContext& ForThisThread();
};

}  // namespace korvex
