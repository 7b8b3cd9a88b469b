// Variant storage and its bridge to QVariant.
#include "korvex/runtime/Variant.h"

#include <QDateTime>

namespace korvex {

Variant Variant::Array(QList<Variant> items)
{
    Variant v;
    v.mValue = std::make_shared<const QList<Variant>>(std::move(items));
    return v;
}

VbVarType Variant::VarType() const noexcept
{
    static constexpr VbVarType types[] = {vbEmpty, vbNull,    vbInteger, vbLong, vbSingle,
                                          vbDouble, vbCurrency, vbDate, vbString, vbBoolean,
                                          vbByte,  vbObject,  static_cast<VbVarType>(vbArray | vbVariant)};
    return types[mValue.index()];
}

bool Variant::IsNumber() const noexcept
{
    switch (VarType()) {
    case vbInteger:
    case vbLong:
    case vbSingle:
    case vbDouble:
    case vbCurrency:
    case vbByte:
    case vbBoolean:
        return true;
    default:
        return false;
    }
}

QObject* Variant::Object() const noexcept
{
    const auto* ref = std::get_if<ObjectRef>(&mValue);
    return ref ? ref->object.data() : nullptr;
}

std::shared_ptr<QObject> Variant::SharedObject() const noexcept
{
    const auto* ref = std::get_if<ObjectRef>(&mValue);
    return ref ? ref->keepAlive : nullptr;
}

QList<Variant> Variant::Items() const
{
    const auto* ref = std::get_if<ArrayRef>(&mValue);
    return ref && *ref ? **ref : QList<Variant>{};
}

QVariant Variant::ToQVariant() const
{
    return QVariant::fromValue(*this);
}

Variant Variant::FromQVariant(const QVariant& value)
{
    if (!value.isValid())
        return {};
    const QMetaType type = value.metaType();
    if (type == QMetaType::fromType<Variant>())
        return value.value<Variant>();
    if (value.isNull() && type.id() != QMetaType::QString)
        return Variant::Null();
    switch (type.id()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Short:
        return static_cast<std::int16_t>(value.toInt());
    case QMetaType::UChar:
        return static_cast<std::uint8_t>(value.toUInt());
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UShort:
    case QMetaType::Int:
        return static_cast<std::int32_t>(value.toInt());
    case QMetaType::UInt:
        // Unsigned 32-bit values (colours) are held as Long, bit for bit.
        return static_cast<std::int32_t>(value.toUInt());
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        qlonglong wide = value.toLongLong();
        if (wide >= INT32_MIN && wide <= INT32_MAX)
            return static_cast<std::int32_t>(wide);
        return static_cast<double>(wide);
    }
    case QMetaType::Float:
        return value.toFloat();
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QByteArray:
        return QString::fromUtf8(value.toByteArray());
    case QMetaType::QDateTime:
        return DateFromQDateTime(value.toDateTime());
    case QMetaType::QDate:
        return DateFromQDateTime(value.toDate().startOfDay());
    case QMetaType::QTime:
        return Date{value.toTime().msecsSinceStartOfDay() / 86400000.0};
    case QMetaType::QVariantList: {
        QList<Variant> items;
        for (const QVariant& item : value.toList())
            items.append(FromQVariant(item));
        return Array(std::move(items));
    }
    default:
        break;
    }
    if (type.flags() & QMetaType::PointerToQObject)
        return value.value<QObject*>();
    if (value.canConvert<QString>())
        return value.toString();
    return {};
}

bool operator==(const Variant& a, const Variant& b)
{
    if (a.IsArray() && b.IsArray())
        return a.Items() == b.Items();
    return a.mValue == b.mValue;
}

namespace {
const int variantMetaTypeId = qRegisterMetaType<Variant>();
}

}  // namespace korvex
