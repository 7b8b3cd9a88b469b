// The host's toolbox object, a global application object: the host may call its members
// without creating it (one implicit instance per thread), and every instance created becomes
// the current one. This holds the initialisation members that hand the library its shared
// objects.
#pragma once

#include <QObject>

#include <memory>

namespace korvex {

class clsPublic : public QObject {
    Q_OBJECT

public:
    // A new instance, registered as the current one.
    static std::shared_ptr<clsPublic> Create();
    // The implicit instance of this thread (created, and so made current, on first use).
    static clsPublic& Global();
    // The current instance; nullptr when none was created on this thread.
    static std::shared_ptr<clsPublic> Current();

    // Hands over the user (a clsZqUser), the host's Screen and its MDI main form; a missing
    // (nullptr) argument leaves its slot as it is. An object of the wrong kind raises Type
    // mismatch (13) and changes nothing.
    Q_INVOKABLE void InitZqControls(QObject* objZqUser = nullptr, QObject* objParentScreen = nullptr,
                                    QObject* objParentMDIForm = nullptr);
    // Forgets the user, the screen and the MDI form; the connection and the current instances
    // stay.
    Q_INVOKABLE void UninitVyrInvControls();

protected:
    clsPublic() = default;
};

}  // namespace korvex
