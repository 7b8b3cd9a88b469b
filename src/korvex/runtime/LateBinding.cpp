// CallByName and friends: members found by name through QMetaObject, values converted between
// Variant and the member's declared type.
#include "korvex/runtime/LateBinding.h"

#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <QHash>
#include <QMetaMethod>
#include <QMetaProperty>

#include <cmath>
#include <vector>

namespace korvex {
namespace {

struct MemberKey {
    const QMetaObject* meta;
    QString name;
    friend bool operator==(const MemberKey& a, const MemberKey& b) { return a.meta == b.meta && a.name == b.name; }
};

size_t qHash(const MemberKey& key, size_t seed = 0)
{
    return ::qHash(key.name, seed) ^ ::qHash(static_cast<const void*>(key.meta), seed);
}

// Property lookup ignoring case, cached per class: controls are asked for the same few names
// on every record shown. The most derived class's property wins, so a control's "Width" (in
// twips) hides the widget's own "width" (in pixels) whatever case the caller writes.
int FindProperty(const QMetaObject* meta, const QString& name)
{
    thread_local QHash<MemberKey, int> cache;
    MemberKey key{meta, name.toLower()};
    auto it = cache.constFind(key);
    if (it != cache.cend())
        return *it;
    int found = -1;
    for (int i = meta->propertyCount() - 1; found < 0 && i >= 0; --i) {
        if (QString::fromLatin1(meta->property(i).name()).compare(name, Qt::CaseInsensitive) == 0)
            found = i;
    }
    cache.insert(key, found);
    return found;
}

std::vector<QMetaMethod> FindMethods(const QMetaObject* meta, const QString& name)
{
    std::vector<QMetaMethod> methods;
    for (int i = meta->methodCount() - 1; i >= 0; --i) {
        QMetaMethod m = meta->method(i);
        if ((m.methodType() == QMetaMethod::Method || m.methodType() == QMetaMethod::Slot) &&
            m.access() == QMetaMethod::Public && QString::fromLatin1(m.name()).compare(name, Qt::CaseInsensitive) == 0)
            methods.push_back(m);
    }
    return methods;
}

QMetaType BaseTypeOf(QByteArray typeName)
{
    if (typeName.endsWith('&'))
        typeName.chop(1);
    if (typeName.startsWith("const "))
        typeName.remove(0, 6);
    return QMetaType::fromName(typeName);
}

// A Variant converted to a member's declared type, raising Type mismatch when it cannot be.
QVariant ToDeclaredType(const Variant& value, QMetaType target)
{
    if (target == QMetaType::fromType<Variant>())
        return QVariant::fromValue(value);
    switch (target.id()) {
    case QMetaType::Bool: return QVariant(CBool(value));
    case QMetaType::Short: return QVariant::fromValue(static_cast<short>(CInt(value)));
    case QMetaType::UChar: return QVariant::fromValue(static_cast<uchar>(CByte(value)));
    case QMetaType::Int: return QVariant(static_cast<int>(CLng(value)));
    case QMetaType::UInt: {
        // Colours travel as unsigned values but the host holds them as Long: take the bits.
        if (value.VarType() == vbLong || value.VarType() == vbInteger)
            return QVariant(static_cast<uint>(CLng(value)));
        const double d = CDbl(value);
        if (!(d >= 0 && d <= 4294967295.0))
            Raise(vbErrOverflow);
        return QVariant(static_cast<uint>(std::nearbyint(d)));
    }
    case QMetaType::LongLong: {
        const double d = CDbl(value);
        if (!(std::fabs(d) < 9.2e18))
            Raise(vbErrOverflow);
        return QVariant(static_cast<qlonglong>(std::nearbyint(d)));
    }
    case QMetaType::Float: return QVariant(CSng(value));
    case QMetaType::Double: return QVariant(CDbl(value));
    case QMetaType::QString: return QVariant(CStr(value));
    case QMetaType::QDateTime: return QVariant(ToQDateTime(CDate(value)));
    case QMetaType::QDate: return QVariant(ToQDateTime(CDate(value)).date());
    case QMetaType::QVariant: return QVariant::fromValue(value);
    default: break;
    }
    if (target.flags() & QMetaType::PointerToQObject) {
        if (!value.IsObject())
            Raise(vbErrTypeMismatch);
        QObject* object = value.Object();
        if (object && target.metaObject() && !object->metaObject()->inherits(target.metaObject()))
            Raise(vbErrTypeMismatch);
        QVariant out(target);
        *static_cast<QObject**>(out.data()) = object;
        return out;
    }
    if (target.flags() & QMetaType::IsEnumeration) {
        QVariant out(static_cast<int>(CLng(value)));
        if (out.convert(target))
            return out;
    }
    Raise(vbErrTypeMismatch);
}

Variant FromDeclaredType(const QVariant& value)
{
    return Variant::FromQVariant(value);
}

Variant Invoke(QObject* object, const QMetaMethod& method, QList<Variant>& args)
{
    const int count = method.parameterCount();
    std::vector<QVariant> storage(static_cast<std::size_t>(count) + 1);
    std::vector<void*> argv(static_cast<std::size_t>(count) + 1, nullptr);
    const QMetaType returnType = method.returnMetaType();
    if (returnType.isValid() && returnType.id() != QMetaType::Void) {
        storage[0] = QVariant(returnType);
        argv[0] = storage[0].data();
    }
    for (int i = 0; i < count; ++i) {
        const QMetaType type = BaseTypeOf(method.parameterTypeName(i));
        if (!type.isValid())
            Raise(vbErrTypeMismatch);
        storage[static_cast<std::size_t>(i) + 1] = ToDeclaredType(args[i], type);
        argv[static_cast<std::size_t>(i) + 1] = storage[static_cast<std::size_t>(i) + 1].data();
    }
    QMetaObject::metacall(object, QMetaObject::InvokeMetaMethod, method.methodIndex(), argv.data());
    for (int i = 0; i < count; ++i) {
        if (method.parameterTypeName(i).endsWith('&') && !method.parameterTypeName(i).startsWith("const "))
            args[i] = FromDeclaredType(storage[static_cast<std::size_t>(i) + 1]);
    }
    return argv[0] ? FromDeclaredType(storage[0]) : Variant{};
}

Variant CallMethod(QObject* object, const QString& name, QList<Variant>& args)
{
    const std::vector<QMetaMethod> methods = FindMethods(object->metaObject(), name);
    if (methods.empty())
        Raise(vbErrObjectDoesntSupport);
    for (const QMetaMethod& m : methods) {
        if (m.parameterCount() == args.size())
            return Invoke(object, m, args);
    }
    Raise(vbErrWrongNumberOfArguments);
}

}  // namespace

Variant CallByName(QObject* object, const QString& name, VbCallType callType, QList<Variant>& args)
{
    if (!object)
        Raise(vbErrObjectNotSet);
    const QMetaObject* meta = object->metaObject();
    const int index = FindProperty(meta, name);
    if (index >= 0) {
        const QMetaProperty property = meta->property(index);
        if (callType == VbGet && args.isEmpty()) {
            if (!property.isReadable())
                Raise(vbErrPropertyWriteOnly);
            return FromDeclaredType(property.read(object));
        }
        if ((callType == VbLet || callType == VbSet) && args.size() == 1) {
            if (!property.isWritable())
                Raise(vbErrPropertyReadOnly);
            if (!property.write(object, ToDeclaredType(args[0], property.metaType())))
                Raise(vbErrTypeMismatch);
            return {};
        }
    }
    if (callType == VbLet || callType == VbSet) {
        // Assignments with index arguments go to the setter method, SetName(index..., value).
        if (!FindMethods(meta, QStringLiteral("Set") + name).empty())
            return CallMethod(object, QStringLiteral("Set") + name, args);
        Raise(vbErrObjectDoesntSupport);
    }
    return CallMethod(object, name, args);
}

Variant CallByName(QObject* object, const QString& name, VbCallType callType)
{
    QList<Variant> args;
    return CallByName(object, name, callType, args);
}

Variant CallByName(QObject* object, const QString& name, VbCallType callType, const Variant& arg)
{
    QList<Variant> args{arg};
    return CallByName(object, name, callType, args);
}

Variant GetProperty(QObject* object, const QString& name)
{
    return CallByName(object, name, VbGet);
}

void SetProperty(QObject* object, const QString& name, const Variant& value)
{
    CallByName(object, name, VbLet, value);
}

bool HasMember(QObject* object, const QString& name)
{
    if (!object)
        return false;
    return FindProperty(object->metaObject(), name) >= 0 || !FindMethods(object->metaObject(), name).empty();
}

QString TypeNameOf(const QObject* object)
{
    if (!object)
        return QStringLiteral("Nothing");
    return TypeNameOfClass(object->metaObject());
}

QString TypeNameOfClass(const QMetaObject* meta)
{
    // Only the class's own class info counts: a subclass is a type of its own.
    const int info = meta->indexOfClassInfo("TypeName");
    if (info >= meta->classInfoOffset())
        return QString::fromLatin1(meta->classInfo(info).value());
    QString name = QString::fromLatin1(meta->className());
    const qsizetype scope = name.lastIndexOf(QLatin1String("::"));
    return scope >= 0 ? name.mid(scope + 2) : name;
}

Variant DefaultValue(QObject* object)
{
    if (!object)
        Raise(vbErrObjectNotSet);
    const QMetaObject* meta = object->metaObject();
    const int info = meta->indexOfClassInfo("DefaultProperty");
    if (info < 0)
        Raise(vbErrObjectDoesntSupport);
    return GetProperty(object, QString::fromLatin1(meta->classInfo(info).value()));
}

}  // namespace korvex
