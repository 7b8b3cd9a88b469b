// A control's persisted properties, declared once: persistence name, default, and how a loaded
// value reaches the control. InitProperties, ReadProperties and WriteProperties are derived from
// the declaration, so a default stands in one place and reading and writing cannot drift apart.
#pragma once

#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/OleColor.h"
#include "korvex/runtime/StdFont.h"
#include "korvex/runtime/Variant.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

namespace korvex {

class Control;
class PropertyBag;

// How a value of a property's type is kept in a property bag: numbers at their stored width,
// colours as 32-bit integers, fonts as objects. Booleans read any number, so a stored -1 (the
// host's True) reads as True.
template <class T>
struct StoredAs;
template <>
struct StoredAs<bool> {
    static Variant To(bool v) { return v; }
    static bool From(const Variant& v) { return CBool(v); }
};
template <>
struct StoredAs<std::int16_t> {
    static Variant To(std::int16_t v) { return v; }
    static std::int16_t From(const Variant& v) { return CInt(v); }
};
template <>
struct StoredAs<std::int32_t> {
    static Variant To(std::int32_t v) { return v; }
    static std::int32_t From(const Variant& v) { return CLng(v); }
};
template <>
struct StoredAs<std::uint8_t> {
    static Variant To(std::uint8_t v) { return v; }
    static std::uint8_t From(const Variant& v) { return CByte(v); }
};
template <>
struct StoredAs<OleColor> {
    static Variant To(OleColor v) { return static_cast<std::int32_t>(v); }
    static OleColor From(const Variant& v) { return static_cast<OleColor>(CLng(v)); }
};
template <>
struct StoredAs<QString> {
    static Variant To(const QString& v) { return v; }
    static QString From(const Variant& v) { return CStr(v); }
};
template <>
struct StoredAs<QObject*> {
    static Variant To(QObject* v) { return v; }
    static QObject* From(const Variant& v) { return v.Object(); }
};
template <>
struct StoredAs<Variant> {
    static Variant To(const Variant& v) { return v; }
    static Variant From(const Variant& v) { return v; }
};

// One declared property; the functions take the control they were declared for.
struct PersistedProperty {
    QString name;
    std::function<Variant(const Control&)> get;
    std::function<void(Control&, const Variant&)> load;
    std::function<Variant(const Control&)> readDefault;
    // What a control new on a form takes, where it differs from the read default.
    std::function<Variant(const Control&)> initialValue;
};

using PropertyList = std::vector<PersistedProperty>;

// The three lifecycle steps over a declaration, in declaration order.
void InitDeclared(Control& control, const PropertyList& list);
void ReadDeclared(Control& control, const PropertyList& list, PropertyBag& bag);
void WriteDeclared(const Control& control, const PropertyList& list, PropertyBag& bag);

// A copy of the container's ambient font, as a default: the container's font object itself is
// never shared. The Variant keeps the copy alive; a control that keeps a font by reference
// keeps that Variant's object.
Variant AmbientFont(const Control& control);

// Builds a declaration for control class C:
//   static const PropertyList list = Declare<ZqThing>()
//       .Property("Caption", &ZqThing::Caption, &ZqThing::SetCaption, QString())
//       .Stored("Value", &ZqThing::Value, &ZqThing::LoadValue, std::int16_t{0});
// The getter's type decides how the value is stored. A default is a value or a function of the
// control (an ambient font, a colour that depends on another property).
template <class C>
class Declare {
public:
    // Loaded through the setter: loading is a write like any other.
    template <class Get, class Set, class Default>
    Declare&& Property(const char* name, Get get, Set set, Default def) &&
    {
        Add(name, get, set, def);
        return std::move(*this);
    }

    // Loaded straight into the control's state, without the setter's side effects (events,
    // re-formatting that must wait until related properties are read).
    template <class Get, class Store, class Default>
    Declare&& Stored(const char* name, Get get, Store store, Default def) &&
    {
        Add(name, get, store, def);
        return std::move(*this);
    }

    // Gives the property declared last another value on a control new on a form.
    template <class Initial>
    Declare&& Initially(Initial initial) &&
    {
        mList.back().initialValue = mValueOfLast(std::function<Variant(const Control&)>(
            [initial](const Control& c) { return Variant(std::invoke(initial, static_cast<const C&>(c))); }));
        return std::move(*this);
    }

    operator PropertyList() && { return std::move(mList); }

private:
    // The type a getter's result is kept as: any object pointer is kept as QObject*.
    template <class Get>
    using ValueOf = std::conditional_t<std::is_pointer_v<std::decay_t<std::invoke_result_t<Get, const C&>>>, QObject*,
                                       std::decay_t<std::invoke_result_t<Get, const C&>>>;

    // A default given as a function of the control, or as a value; either is stored the way
    // the property's own values are.
    template <class T, class Default>
    static std::function<Variant(const Control&)> DefaultOf(Default def)
    {
        if constexpr (std::is_invocable_v<Default, const C&>) {
            return [def](const Control& c) { return Normalised<T>(std::invoke(def, static_cast<const C&>(c))); };
        } else {
            return [stored = Normalised<T>(def)](const Control&) { return stored; };
        }
    }

    template <class T, class V>
    static Variant Normalised(const V& value)
    {
        if constexpr (std::is_same_v<V, Variant>)
            return value;
        else
            return StoredAs<T>::To(T(value));
    }

    template <class Get, class Load, class Default>
    void Add(const char* name, Get get, Load load, Default def)
    {
        using T = ValueOf<Get>;
        PersistedProperty p;
        p.name = QString::fromLatin1(name);
        p.get = [get](const Control& c) { return StoredAs<T>::To(T(std::invoke(get, static_cast<const C&>(c)))); };
        p.load = [load](Control& c, const Variant& v) { std::invoke(load, static_cast<C&>(c), StoredAs<T>::From(v)); };
        p.readDefault = DefaultOf<T>(def);
        mValueOfLast = [](std::function<Variant(const Control&)> f) -> std::function<Variant(const Control&)> {
            return [f](const Control& c) { return StoredAs<T>::To(StoredAs<T>::From(f(c))); };
        };
        mList.push_back(std::move(p));
    }

    PropertyList mList;
    std::function<std::function<Variant(const Control&)>(std::function<Variant(const Control&)>)> mValueOfLast;
};

}  // namespace korvex
