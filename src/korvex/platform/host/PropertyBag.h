// The property bag a control reads its design-time settings from and writes them to: named
// values, each written with its default so that a value equal to the default is not stored.
// Stored as a JSON object in the form file; fonts are stored as objects of their attributes.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace korvex {

class PropertyBag {
public:
    PropertyBag() = default;
    explicit PropertyBag(QJsonObject values) : mValues(std::move(values)) {}

    // The stored value, or `defaultValue` when nothing is stored under the name. A stored
    // font comes back as a StdFont object that the bag keeps alive.
    Variant ReadProperty(const QString& name, const Variant& defaultValue = {});
    // Stores the value unless it equals `defaultValue` (fonts compare by attributes); with no
    // default (Empty) the value is always stored.
    void WriteProperty(const QString& name, const Variant& value, const Variant& defaultValue = {});

    bool Contains(const QString& name) const { return mValues.contains(name); }
    const QJsonObject& Values() const noexcept { return mValues; }
    // The name of the last property read: loading errors name it.
    const QString& LastRead() const noexcept { return mLastRead; }
    // Stored names no one has read: after loading, properties the control does not have.
    QStringList Unread() const;

    // Variant to and from the JSON kept in the bag; raises 13 for values that cannot be stored
    // and 380, saying what is wrong, for a marked value of the wrong shape.
    static QJsonValue ToJson(const Variant& value);
    Variant FromJson(const QJsonValue& json);

private:
    Variant ReadFont(const QJsonValue& json);

    QJsonObject mValues;
    QString mLastRead;
    QSet<QString> mRead;
    std::vector<std::shared_ptr<QObject>> mKeep;
};

}  // namespace korvex
