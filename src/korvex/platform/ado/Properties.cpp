// Looking properties up by name or position.
#include "korvex/platform/ado/Properties.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/runtime/Conversions.h"

namespace korvex::ado {

Property* Properties::Item(const Variant& Index) const
{
    if (const auto* name = Index.As<QString>()) {
        for (Property* p : mItems) {
            if (p->Name().compare(*name, Qt::CaseInsensitive) == 0)
                return p;
        }
    } else if (Index.IsNumber()) {
        const double position = CDbl(Index);
        if (position >= 0 && position < mItems.size())
            return mItems[static_cast<qsizetype>(position)];
    }
    RaiseAdo(adErrItemNotFound, PropertiesSource);
}

Property* Properties::Add(const QString& name, DataTypeEnum type, Property::Getter getter, Property::Setter setter)
{
    auto* property = new Property(name, type, std::move(getter), std::move(setter), this);
    mItems.append(property);
    return property;
}

}  // namespace korvex::ado
