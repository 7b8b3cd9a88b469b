// The control types a form file can name, by type name: the standard controls and every
// control of the library register themselves here, so that loading a form needs no list of
// them.
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>

namespace korvex {

class Control;
QString TypeNameOfClass(const QMetaObject* meta);

class ControlRegistry {
public:
    using Factory = std::function<Control*(QWidget* parent)>;

    static void Register(const QString& typeName, Factory factory);
    template <class T>
    static bool Register()
    {
        Register(TypeNameOfClass(&T::staticMetaObject), [](QWidget* parent) -> Control* { return new T(parent); });
        return true;
    }

    // A new control of the type, or nullptr when the type is not registered.
    static Control* Create(const QString& typeName, QWidget* parent);
    static bool Contains(const QString& typeName);
    static QStringList TypeNames();
};

}  // namespace korvex

// Registers a control class when the library loads.
#define KORVEX_REGISTER_CONTROL(Class) \
    [[maybe_unused]] static const bool korvexRegistered##Class = ::korvex::ControlRegistry::Register<Class>()
