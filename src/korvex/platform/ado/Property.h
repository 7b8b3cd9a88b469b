// One dynamic property of a recordset or field ("Optimize", "Unique Table", "BASETABLENAME" ...):
// a name, a type and a value that its owner reads and writes through the functions it gives.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

#include <functional>

namespace korvex::ado {

class Property : public QObject {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Value")
    Q_PROPERTY(QString Name READ Name)
    Q_PROPERTY(korvex::Variant Value READ Value WRITE SetValue)
    Q_PROPERTY(int Type READ Type)
    Q_PROPERTY(int Attributes READ Attributes)

public:
    using Getter = std::function<Variant()>;
    using Setter = std::function<void(const Variant&)>;

    // Without a setter the property is read-only.
    Property(QString name, DataTypeEnum type, Getter getter, Setter setter, QObject* parent);

    QString Name() const { return mName; }
    Variant Value() const { return mGetter(); }
    // A read-only property refuses with 3251.
    void SetValue(const Variant& value);
    int Type() const { return mType; }
    int Attributes() const { return mSetter ? adPropRead | adPropWrite : adPropRead; }

private:
    QString mName;
    DataTypeEnum mType;
    Getter mGetter;
    Setter mSetter;
};

}  // namespace korvex::ado
