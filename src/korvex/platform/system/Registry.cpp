// Registry keys as QSettings groups; each backslash-separated part is looked up ignoring case.
#include "korvex/platform/system/Registry.h"

#include "korvex/runtime/Conversions.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

#include <memory>

namespace korvex {
namespace {

QString& UserFile()
{
    static QString file;
    return file;
}

QString& MachineFile()
{
    static QString file;
    return file;
}

std::unique_ptr<QSettings> SettingsFor(RegistryRoot root)
{
    if (root == HKEY_LOCAL_MACHINE) {
        if (!MachineFile().isEmpty())
            return std::make_unique<QSettings>(MachineFile(), QSettings::IniFormat);
        return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::SystemScope, QStringLiteral("Korvex"),
                                           QStringLiteral("registry"));
    }
    if (!UserFile().isEmpty())
        return std::make_unique<QSettings>(UserFile(), QSettings::IniFormat);
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Korvex"),
                                       QStringLiteral("registry"));
}

// The registry's default value has no name; INI keys need one.
QString KeyOf(const QString& valueName)
{
    return valueName.isEmpty() ? QStringLiteral("@") : valueName;
}

QString Find(const QStringList& names, const QString& wanted)
{
    for (const QString& n : names) {
        if (n.compare(wanted, Qt::CaseInsensitive) == 0)
            return n;
    }
    return {};
}

// The stored spelling of a group path, or nullopt when some part is missing.
std::optional<QString> ResolveGroup(QSettings& settings, const QString& path)
{
    QString resolved;
    for (const QString& part : path.split(QLatin1Char('\\'), Qt::SkipEmptyParts)) {
        settings.beginGroup(resolved);
        const QString found = Find(settings.childGroups(), part);
        settings.endGroup();
        if (found.isEmpty())
            return std::nullopt;
        resolved = resolved.isEmpty() ? found : resolved + QLatin1Char('/') + found;
    }
    return resolved;
}

}  // namespace

RegistryKey::RegistryKey(RegistryRoot root, QString path, QString group, bool writable)
    : mRoot(root), mPath(std::move(path)), mGroup(std::move(group)), mWritable(writable)
{
}

std::optional<RegistryKey> RegistryKey::Open(RegistryRoot root, const QString& path, bool forWriting)
{
    if (forWriting && root != HKEY_CURRENT_USER)
        return std::nullopt;
    auto settings = SettingsFor(root);
    auto group = ResolveGroup(*settings, path);
    if (!group)
        return std::nullopt;
    return RegistryKey(root, path, *group, forWriting);
}

RegistryKey RegistryKey::Create(const QString& path)
{
    auto settings = SettingsFor(HKEY_CURRENT_USER);
    QString resolved;
    for (const QString& part : path.split(QLatin1Char('\\'), Qt::SkipEmptyParts)) {
        settings->beginGroup(resolved);
        QString found = Find(settings->childGroups(), part);
        settings->endGroup();
        resolved = (resolved.isEmpty() ? QString() : resolved + QLatin1Char('/')) + (found.isEmpty() ? part : found);
    }
    return RegistryKey(HKEY_CURRENT_USER, path, resolved, true);
}

std::optional<Variant> RegistryKey::Value(const QString& name) const
{
    auto settings = SettingsFor(mRoot);
    settings->beginGroup(mGroup);
    const QString key = Find(settings->childKeys(), KeyOf(name));
    if (key.isEmpty())
        return std::nullopt;
    const QVariant value = settings->value(key);
    // INI files keep every value as text; whole numbers written as DWORDs come back as Long.
    if (value.metaType().id() == QMetaType::QString) {
        const QString text = value.toString();
        if (text.startsWith(QLatin1String("dword:"))) {
            bool ok = false;
            const uint number = text.mid(6).toUInt(&ok, 16);
            if (ok)
                return Variant(static_cast<std::int32_t>(number));
        }
        return Variant(text);
    }
    return Variant::FromQVariant(value);
}

RegistryValueType RegistryKey::ValueType(const QString& name) const
{
    const auto value = Value(name);
    if (!value)
        return REG_NONE;
    return value->VarType() == vbLong ? REG_DWORD : REG_SZ;
}

bool RegistryKey::SetValue(const QString& name, const Variant& value)
{
    if (!mWritable)
        return false;
    auto settings = SettingsFor(mRoot);
    settings->beginGroup(mGroup);
    const QString existing = Find(settings->childKeys(), KeyOf(name));
    const QString key = existing.isEmpty() ? KeyOf(name) : existing;
    if (value.VarType() == vbLong || value.VarType() == vbInteger || value.VarType() == vbBoolean)
        settings->setValue(key, QStringLiteral("dword:%1").arg(static_cast<std::uint32_t>(CLng(value)), 8, 16,
                                                               QLatin1Char('0')));
    else
        settings->setValue(key, CStr(value));
    settings->endGroup();
    settings->sync();
    return settings->status() == QSettings::NoError;
}

bool RegistryKey::DeleteValue(const QString& name)
{
    if (!mWritable)
        return false;
    auto settings = SettingsFor(mRoot);
    settings->beginGroup(mGroup);
    const QString key = Find(settings->childKeys(), KeyOf(name));
    if (key.isEmpty())
        return false;
    settings->remove(key);
    settings->endGroup();
    settings->sync();
    return true;
}

QStringList RegistryKey::SubKeyNames() const
{
    auto settings = SettingsFor(mRoot);
    settings->beginGroup(mGroup);
    return settings->childGroups();
}

QStringList RegistryKey::ValueNames() const
{
    auto settings = SettingsFor(mRoot);
    settings->beginGroup(mGroup);
    QStringList names = settings->childKeys();
    for (QString& n : names) {
        if (n == QLatin1String("@"))
            n.clear();
    }
    return names;
}

void RegistryKey::SetLocations(const QString& userFile, const QString& machineFile)
{
    UserFile() = userFile;
    MachineFile() = machineFile;
}

}  // namespace korvex
