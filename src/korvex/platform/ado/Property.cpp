// A dynamic property's value goes through its owner.
#include "korvex/platform/ado/Property.h"

#include "korvex/platform/ado/AdoError.h"

namespace korvex::ado {

Property::Property(QString name, DataTypeEnum type, Getter getter, Setter setter, QObject* parent)
    : QObject(parent), mName(std::move(name)), mType(type), mGetter(std::move(getter)), mSetter(std::move(setter))
{
}

void Property::SetValue(const Variant& value)
{
    if (!mSetter)
        RaiseAdo(adErrFeatureNotAvailable, PropertySource);
    mSetter(value);
}

}  // namespace korvex::ado
