// The Properties collection of a recordset or field: its dynamic properties, found by name
// (ignoring case) or by 0-based position.
#pragma once

#include "korvex/platform/ado/Property.h"
#include "korvex/runtime/Variant.h"

#include <QList>
#include <QObject>

namespace korvex::ado {

class Properties : public QObject {
    Q_OBJECT
    Q_PROPERTY(int Count READ Count)

public:
    explicit Properties(QObject* parent) : QObject(parent) {}

    int Count() const { return static_cast<int>(mItems.size()); }
    // By name or position; 3265 when there is no such property.
    Q_INVOKABLE korvex::ado::Property* Item(const korvex::Variant& Index) const;
    Q_INVOKABLE void Refresh() {}

    // For the owner: adds a property (the collection takes it as a child).
    Property* Add(const QString& name, DataTypeEnum type, Property::Getter getter, Property::Setter setter = {});

private:
    QList<Property*> mItems;
};

}  // namespace korvex::ado
