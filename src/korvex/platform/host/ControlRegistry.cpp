// The registry: a map from type name (any case) to factory.
#include "korvex/platform/host/ControlRegistry.h"

#include <QMap>

namespace korvex {
namespace {

QMap<QString, std::pair<QString, ControlRegistry::Factory>>& Types()
{
    static QMap<QString, std::pair<QString, ControlRegistry::Factory>> types;
    return types;
}

}  // namespace

void ControlRegistry::Register(const QString& typeName, Factory factory)
{
    Types().insert(typeName.toLower(), {typeName, std::move(factory)});
}

Control* ControlRegistry::Create(const QString& typeName, QWidget* parent)
{
    auto it = Types().constFind(typeName.toLower());
    return it == Types().cend() ? nullptr : it->second(parent);
}

bool ControlRegistry::Contains(const QString& typeName)
{
    return Types().contains(typeName.toLower());
}

QStringList ControlRegistry::TypeNames()
{
    QStringList names;
    for (const auto& entry : Types())
        names.append(entry.first);
    return names;
}

}  // namespace korvex
