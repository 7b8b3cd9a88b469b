// Folder mapping. On this platform:
//   Windows folder        -> /usr (the operating system's installation)
//   System folder         -> /usr/lib (its shared libraries)
//   personal documents    -> the user's documents location
//   desktop directory     -> the user's desktop location
//   fonts                 -> the user's fonts location
//   application data      -> the user's generic data location (~/.local/share)
//   program files         -> /opt (where separately installed programs live)
//   common program files  -> /usr/share (files shared between programs)
#include "korvex/platform/system/SystemFolders.h"

#include <QDir>
#include <QStandardPaths>

namespace korvex {
namespace {

QString Standard(QStandardPaths::StandardLocation location)
{
    return QDir::toNativeSeparators(QStandardPaths::writableLocation(location));
}

}  // namespace

QString SystemFolders::Temp()
{
    QString path = QDir::toNativeSeparators(QDir::tempPath());
    while (path.size() > 1 && path.endsWith(QDir::separator()))
        path.chop(1);
    return path;
}

QString SystemFolders::Windows()
{
    return QStringLiteral("/usr");
}

QString SystemFolders::System()
{
    return QStringLiteral("/usr/lib");
}

QString SystemFolders::Shell(int csidl)
{
    switch (csidl) {
    case CSIDL_PERSONAL: return Standard(QStandardPaths::DocumentsLocation);
    case CSIDL_DESKTOPDIRECTORY: return Standard(QStandardPaths::DesktopLocation);
    case CSIDL_FONTS: return Standard(QStandardPaths::FontsLocation);
    case CSIDL_APPDATA: return Standard(QStandardPaths::GenericDataLocation);
    case CSIDL_PROGRAM_FILES: return QStringLiteral("/opt");
    case CSIDL_PROGRAM_FILES_COMMON: return QStringLiteral("/usr/share");
    default: return {};
    }
}

}  // namespace korvex
