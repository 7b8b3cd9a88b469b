// Late binding over Qt's meta-object system: properties and methods reached by name at run
// time, the way the library's rules address controls ("ctl.Text", "ctl.Parent") whose type
// they only know by name. Names match ignoring case; an unknown member raises 438.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QList>
#include <QString>

namespace korvex {

enum VbCallType : int { VbMethod = 1, VbGet = 2, VbLet = 4, VbSet = 8 };

// Reads or writes a property, or calls a method. Arguments that the callee takes by reference
// (a non-const Variant& or int& parameter) are written back into `args`.
Variant CallByName(QObject* object, const QString& name, VbCallType callType, QList<Variant>& args);
Variant CallByName(QObject* object, const QString& name, VbCallType callType);
Variant CallByName(QObject* object, const QString& name, VbCallType callType, const Variant& arg);

// Shorthands for the common cases.
Variant GetProperty(QObject* object, const QString& name);
void SetProperty(QObject* object, const QString& name, const Variant& value);
bool HasMember(QObject* object, const QString& name);

// The type name the library compares against ("TextBox", "ZqNumber"): the class's
// "TypeName" class info when it declares one, otherwise its class name without namespace.
QString TypeNameOf(const QObject* object);
QString TypeNameOfClass(const QMetaObject* meta);

// The value of an object's default member (class info "DefaultProperty"); what an object
// stands for where a plain value is expected. Raises 91 for Nothing and 438 when the class
// declares none.
Variant DefaultValue(QObject* object);

}  // namespace korvex
