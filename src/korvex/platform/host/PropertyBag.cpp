// PropertyBag: JSON values with typed markers where JSON has no type of its own (fonts,
// dates, currency).
#include "korvex/platform/host/PropertyBag.h"

#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/StdFont.h"

#include <QJsonArray>

#include <cmath>

namespace korvex {
namespace {

bool SameValue(const Variant& a, const Variant& b)
{
    if (a.IsNull() || b.IsNull())
        return a.IsNull() && b.IsNull();
    if (a.IsObject() || b.IsObject()) {
        const auto* fa = qobject_cast<const StdFont*>(a.Object());
        const auto* fb = qobject_cast<const StdFont*>(b.Object());
        if (fa && fb)
            return fa->SameAs(*fb);
        return a.IsObject() && b.IsObject() && a.Object() == b.Object();
    }
    try {
        // Defaults are compared by value, as the host compares them: 0 as Integer equals 0 as Long.
        return Compare(a, b) == Comparison::Equal;
    } catch (const Error&) {
        return false;
    }
}

[[noreturn]] void BadValue(const QString& detail)
{
    Raise(vbErrInvalidPropertyValue, QStringLiteral("PropertyBag"), QStringLiteral("Invalid property value: ") + detail);
}

QString OneMarker()
{
    return QStringLiteral("an object value has exactly one of \"Currency\", \"Date\" or \"Font\"");
}

}  // namespace

Variant PropertyBag::ReadFont(const QJsonValue& json)
{
    static const QStringList keys = {QStringLiteral("Name"),      QStringLiteral("Size"),          QStringLiteral("Weight"),
                                     QStringLiteral("Italic"),    QStringLiteral("Underline"),     QStringLiteral("Strikethrough"),
                                     QStringLiteral("Charset")};
    const QJsonObject f = json.toObject();
    if (!json.isObject() || !f.value(keys[0]).isString() || !f.value(keys[1]).isDouble())
        BadValue(QStringLiteral("a font has at least \"Name\" (text) and \"Size\" (points)"));
    for (const QString& key : f.keys()) {
        if (!keys.contains(key))
            BadValue(QStringLiteral("a font has no \"%1\"; it has %2").arg(key, keys.join(QStringLiteral(", "))));
    }
    auto font = std::make_shared<StdFont>();
    font->SetName(f.value(QStringLiteral("Name")).toString());
    font->SetSize(f.value(QStringLiteral("Size")).toDouble());
    font->SetWeight(static_cast<short>(f.value(QStringLiteral("Weight")).toInt(StdFont::NormalWeight)));
    font->SetItalic(f.value(QStringLiteral("Italic")).toBool());
    font->SetUnderline(f.value(QStringLiteral("Underline")).toBool());
    font->SetStrikethrough(f.value(QStringLiteral("Strikethrough")).toBool());
    font->SetCharset(static_cast<short>(f.value(QStringLiteral("Charset")).toInt()));
    mKeep.push_back(font);
    return Variant(std::static_pointer_cast<QObject>(font));
}

QStringList PropertyBag::Unread() const
{
    QStringList unread;
    for (auto it = mValues.constBegin(); it != mValues.constEnd(); ++it) {
        if (!mRead.contains(it.key()))
            unread << it.key();
    }
    return unread;
}

QJsonValue PropertyBag::ToJson(const Variant& value)
{
    switch (value.VarType()) {
    case vbEmpty:
    case vbNull: return QJsonValue(QJsonValue::Null);
    case vbBoolean: return *value.As<bool>();
    case vbByte:
    case vbInteger:
    case vbLong: return CLng(value);
    case vbSingle:
    case vbDouble: return CDbl(value);
    case vbCurrency: return QJsonObject{{QStringLiteral("Currency"), value.As<Currency>()->ToInvariantString()}};
    case vbDate: return QJsonObject{{QStringLiteral("Date"), value.As<Date>()->serial}};
    case vbString: return *value.As<QString>();
    case vbObject: {
        const auto* font = qobject_cast<const StdFont*>(value.Object());
        if (!font)
            Raise(vbErrTypeMismatch);
        QJsonObject f{{QStringLiteral("Name"), font->Name()}, {QStringLiteral("Size"), font->Size()}};
        if (font->Weight() != StdFont::NormalWeight)
            f.insert(QStringLiteral("Weight"), font->Weight());
        if (font->Italic())
            f.insert(QStringLiteral("Italic"), true);
        if (font->Underline())
            f.insert(QStringLiteral("Underline"), true);
        if (font->Strikethrough())
            f.insert(QStringLiteral("Strikethrough"), true);
        if (font->Charset() != 0)
            f.insert(QStringLiteral("Charset"), font->Charset());
        return QJsonObject{{QStringLiteral("Font"), f}};
    }
    default: Raise(vbErrTypeMismatch);
    }
}

Variant PropertyBag::FromJson(const QJsonValue& json)
{
    switch (json.type()) {
    case QJsonValue::Null: return Variant::Null();
    case QJsonValue::Bool: return json.toBool();
    case QJsonValue::String: return json.toString();
    case QJsonValue::Double: {
        const double d = json.toDouble();
        if (d == std::trunc(d) && std::fabs(d) <= 2147483647.0)
            return static_cast<std::int32_t>(d);
        return d;
    }
    case QJsonValue::Object: {
        const QJsonObject o = json.toObject();
        // One marker a value: anything else is a mistake in a hand-written file, not a value.
        if (o.size() != 1)
            BadValue(OneMarker());
        if (o.contains(QStringLiteral("Currency"))) {
            // Written with "." whatever the locale, so read back the same way.
            const auto amount = Currency::FromInvariantString(o.value(QStringLiteral("Currency")).toString());
            if (!amount)
                BadValue(QStringLiteral("\"Currency\" is a decimal number as text, such as \"12.5\""));
            return *amount;
        }
        if (o.contains(QStringLiteral("Date"))) {
            if (!o.value(QStringLiteral("Date")).isDouble())
                BadValue(QStringLiteral("\"Date\" is a number of days"));
            return Date{o.value(QStringLiteral("Date")).toDouble()};
        }
        if (o.contains(QStringLiteral("Font")))
            return ReadFont(o.value(QStringLiteral("Font")));
        BadValue(OneMarker());
    }
    default: Raise(vbErrTypeMismatch);
    }
}

Variant PropertyBag::ReadProperty(const QString& name, const Variant& defaultValue)
{
    mRead.insert(name);
    mLastRead = name;
    auto it = mValues.constFind(name);
    if (it == mValues.constEnd())
        return defaultValue;
    return FromJson(*it);
}

void PropertyBag::WriteProperty(const QString& name, const Variant& value, const Variant& defaultValue)
{
    // Without a default (Empty) the value is always stored: a size of 0 is not "no size".
    if (!defaultValue.IsEmpty() && SameValue(value, defaultValue)) {
        mValues.remove(name);
        return;
    }
    mValues.insert(name, ToJson(value));
}

}  // namespace korvex
