// The value type every public member of the library exchanges: a tagged union that keeps the
// distinctions the data-entry rules depend on (Empty against Null, Integer against Long,
// Currency as exact fixed point, dates as day serials). Conversions live in Conversions.h.
#pragma once

#include "korvex/runtime/Currency.h"
#include "korvex/runtime/DateTime.h"

#include <QList>
#include <QMetaType>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <memory>
#include <variant>

namespace korvex {

enum VbVarType : int {
    vbEmpty = 0,
    vbNull = 1,
    vbInteger = 2,
    vbLong = 3,
    vbSingle = 4,
    vbDouble = 5,
    vbCurrency = 6,
    vbDate = 7,
    vbString = 8,
    vbObject = 9,
    vbError = 10,
    vbBoolean = 11,
    vbVariant = 12,
    vbByte = 17,
    vbArray = 8192,
};

class Variant {
public:
    struct NullTag {
        friend bool operator==(NullTag, NullTag) = default;
    };

    Variant() noexcept = default;  // Empty
    Variant(NullTag) noexcept : mValue(NullTag{}) {}
    Variant(std::int16_t v) noexcept : mValue(v) {}
    Variant(std::int32_t v) noexcept : mValue(v) {}
    Variant(float v) noexcept : mValue(v) {}
    Variant(double v) noexcept : mValue(v) {}
    Variant(Currency v) noexcept : mValue(v) {}
    Variant(Date v) noexcept : mValue(v) {}
    Variant(bool v) noexcept : mValue(v) {}
    Variant(std::uint8_t v) noexcept : mValue(v) {}
    Variant(QString v) noexcept : mValue(std::move(v)) {}
    Variant(const char* utf8) : mValue(QString::fromUtf8(utf8)) {}
    Variant(const char16_t* utf16) : mValue(QString::fromUtf16(utf16)) {}
    // A reference to an object that lives elsewhere (a control, a form); reads as Nothing once
    // the object is gone.
    Variant(QObject* object) noexcept : mValue(ObjectRef{object, {}}) {}
    // A reference that keeps the object alive, like a counted COM reference.
    Variant(std::shared_ptr<QObject> object) noexcept : mValue(ObjectRef{object.get(), object}) {}

    static Variant Null() noexcept { return Variant(NullTag{}); }
    static Variant Nothing() noexcept { return Variant(static_cast<QObject*>(nullptr)); }
    static Variant Array(QList<Variant> items);

    VbVarType VarType() const noexcept;
    bool IsEmpty() const noexcept { return mValue.index() == 0; }
    bool IsNull() const noexcept { return std::holds_alternative<NullTag>(mValue); }
    bool IsString() const noexcept { return std::holds_alternative<QString>(mValue); }
    bool IsObject() const noexcept { return std::holds_alternative<ObjectRef>(mValue); }
    bool IsArray() const noexcept { return std::holds_alternative<ArrayRef>(mValue); }
    // Integer, Long, Single, Double, Currency, Byte and Boolean: the types arithmetic accepts.
    bool IsNumber() const noexcept;

    // The stored value when it has exactly this type, otherwise nullptr; no conversion.
    template <class T>
    const T* As() const noexcept { return std::get_if<T>(&mValue); }

    // The referenced object; nullptr for Nothing and for anything that is not an object.
    QObject* Object() const noexcept;
    // The shared owner when the variant keeps its object alive.
    std::shared_ptr<QObject> SharedObject() const noexcept;
    // The elements of an array; empty for anything else.
    QList<Variant> Items() const;

    // Bridges to Qt's property system.
    QVariant ToQVariant() const;
    static Variant FromQVariant(const QVariant& value);

    // Identity: the same type holding the same value (text compared exactly, objects by
    // reference). This is not the language's "=" operator, which converts; see Compare.
    friend bool operator==(const Variant& a, const Variant& b);

private:
    struct ObjectRef {
        QPointer<QObject> object;
        std::shared_ptr<QObject> keepAlive;
        friend bool operator==(const ObjectRef& a, const ObjectRef& b) { return a.object == b.object; }
    };
    using ArrayRef = std::shared_ptr<const QList<Variant>>;

    std::variant<std::monostate, NullTag, std::int16_t, std::int32_t, float, double, Currency, Date,
                 QString, bool, std::uint8_t, ObjectRef, ArrayRef>
        mValue;
};

// Readable shorthand for call sites and tests.
inline const Variant Null = Variant::Null();
inline const Variant Empty{};

}  // namespace korvex

Q_DECLARE_METATYPE(korvex::Variant)
