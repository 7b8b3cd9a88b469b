// A registry over QSettings INI files: a per-user scope that programs may write and a
// read-only machine scope, both addressed with the registry's backslash paths and matched
// ignoring case as the registry matches. Tests point both scopes at files of their own.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace korvex {

enum RegistryRoot : std::uint32_t {
    HKEY_CLASSES_ROOT = 0x80000000u,
    HKEY_CURRENT_USER = 0x80000001u,
    HKEY_LOCAL_MACHINE = 0x80000002u,
};

enum RegistryValueType : int { REG_NONE = 0, REG_SZ = 1, REG_EXPAND_SZ = 2, REG_BINARY = 3, REG_DWORD = 4 };

class RegistryKey {
public:
    // Opens an existing key; nullopt when it does not exist, or when `forWriting` is asked of
    // the read-only machine scope.
    static std::optional<RegistryKey> Open(RegistryRoot root, const QString& path, bool forWriting = false);
    // Opens a key of the user scope for writing, creating it when missing.
    static RegistryKey Create(const QString& path);

    RegistryRoot Root() const noexcept { return mRoot; }
    const QString& Path() const noexcept { return mPath; }

    // A value by name ("" is the key's default value); nullopt when missing.
    std::optional<Variant> Value(const QString& name) const;
    // The value's type: REG_SZ for text, REG_DWORD for whole numbers, REG_NONE when missing.
    RegistryValueType ValueType(const QString& name) const;
    // Writes a value; false on a key opened for reading.
    bool SetValue(const QString& name, const Variant& value);
    bool DeleteValue(const QString& name);
    QStringList SubKeyNames() const;
    QStringList ValueNames() const;

    // Where the two scopes live (INI files); empty paths restore the defaults under the user's
    // and the system's configuration folders.
    static void SetLocations(const QString& userFile, const QString& machineFile);

private:
    RegistryKey(RegistryRoot root, QString path, QString group, bool writable);

    RegistryRoot mRoot;
    QString mPath;
    QString mGroup;  // the QSettings group, in the file's own spelling
    bool mWritable;
};

}  // namespace korvex
