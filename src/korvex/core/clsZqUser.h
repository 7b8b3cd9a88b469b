// The signed-on user as the host describes it to the library: four read-only properties. The
// host passes an object of its own class derived from this one; the library's own instance
// answers empty texts and Empty.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

namespace korvex {

class clsZqUser : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString UserName READ UserName)
    Q_PROPERTY(korvex::Variant UserId READ UserId)
    Q_PROPERTY(QString VyrUserId READ VyrUserId)
    Q_PROPERTY(QString VyrCompany READ VyrCompany)

public:
    using QObject::QObject;

    virtual QString UserName() const { return {}; }
    virtual Variant UserId() const { return {}; }
    virtual QString VyrUserId() const { return {}; }
    virtual QString VyrCompany() const { return {}; }
};

}  // namespace korvex
