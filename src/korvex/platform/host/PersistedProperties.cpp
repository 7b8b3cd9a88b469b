// The lifecycle steps over a control's declared properties.
#include "korvex/platform/host/PersistedProperties.h"

#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/UserControl.h"

#include <memory>

namespace korvex {

void InitDeclared(Control& control, const PropertyList& list)
{
    for (const PersistedProperty& p : list)
        p.load(control, p.initialValue ? p.initialValue(control) : p.readDefault(control));
}

void ReadDeclared(Control& control, const PropertyList& list, PropertyBag& bag)
{
    for (const PersistedProperty& p : list)
        p.load(control, bag.ReadProperty(p.name, p.readDefault(control)));
}

void WriteDeclared(const Control& control, const PropertyList& list, PropertyBag& bag)
{
    for (const PersistedProperty& p : list)
        bag.WriteProperty(p.name, p.get(control), p.readDefault(control));
}

Variant AmbientFont(const Control& control)
{
    auto copy = std::make_shared<StdFont>();
    if (const auto* user = qobject_cast<const UserControl*>(&control))
        copy->CopyFrom(*user->Ambient()->Font());
    return std::shared_ptr<QObject>(std::move(copy));
}

}  // namespace korvex
