// Environment routines over the system services.
#include "korvex/core/Environment.h"

#include "korvex/platform/system/SystemFolders.h"
#include "korvex/runtime/RegionalSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QFontMetrics>

namespace korvex {

QString GetSpecialFolder(int code)
{
    QString path;
    switch (code) {
    case 0: path = SystemFolders::Windows(); break;
    case 1: path = SystemFolders::System(); break;
    case 2: path = SystemFolders::Shell(CSIDL_FONTS); break;
    case 10: path = SystemFolders::Shell(CSIDL_PROGRAM_FILES); break;
    case 11: path = SystemFolders::Shell(CSIDL_PROGRAM_FILES_COMMON); break;
    case 100: path = SystemFolders::Shell(CSIDL_PERSONAL); break;
    case 110: path = SystemFolders::Shell(CSIDL_DESKTOPDIRECTORY); break;
    case 150: path = SystemFolders::Shell(CSIDL_APPDATA); break;
    default: return {};
    }
    // A folder that does not exist counts as not found; program files then come from the
    // machine's registry, as they did where the shell could not say.
    if (code == 10 && (path.isEmpty() || !QFileInfo(path).isDir())) {
        path.clear();
        if (auto key = RegistryKey::Open(HKEY_LOCAL_MACHINE, QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion")))
            path = RegQueryString(*key, QStringLiteral("ProgramFilesDir"));
    }
    const qsizetype zero = path.indexOf(QChar(0));
    if (zero >= 0)
        path.truncate(zero);
    if (path.isEmpty())
        return {};
    return AddBackslash(path);
}

QString GetEnvironmentValue(const QString& name)
{
    return qEnvironmentVariable(name.toLocal8Bit().constData());
}

QString GetTempFolder()
{
    return SystemFolders::Temp();
}

QString FileNameOfPath(const QString& path)
{
    const qsizetype separator = path.lastIndexOf(QDir::separator());
    return separator < 0 ? QString() : path.mid(separator + 1);
}

QString AddBackslash(const QString& path)
{
    return path.endsWith(QDir::separator()) ? path : path + QDir::separator();
}

QString RegQueryString(const RegistryKey& key, const QString& valueName, int valueType)
{
    // The type argument is the caller's expectation, not a filter: a string value is read
    // whatever it says.
    Q_UNUSED(valueType);
    const auto value = key.Value(valueName);
    if (!value || !value->IsString())
        return {};
    QString text = *value->As<QString>();
    if (text.endsWith(QChar(0)))
        text.chop(1);
    return text;
}

QString GetLocaleString(int code, const QString& defaultText)
{
    const QString value = RegionalSettings::Current().LocaleInfo(code);
    return value.isEmpty() ? defaultText : value;
}

int CountOccurrences(const QString& text, const QString& find, int compareMode)
{
    if (text.isEmpty() || find.isEmpty())
        return 0;
    const Qt::CaseSensitivity cs = compareMode == 1 ? Qt::CaseInsensitive : Qt::CaseSensitive;
    int count = 0;
    for (qsizetype at = text.indexOf(find, 0, cs); at >= 0; at = text.indexOf(find, at + 1, cs))
        ++count;
    return count;
}

bool IsAllDigits(const QString& text)
{
    for (QChar c : text) {
        if (c.unicode() < '0' || c.unicode() > '9')
            return false;
    }
    return true;
}

QString TruncateWithEllipsis(const QFont& font, const QString& text, int maxWidth)
{
    const QFontMetrics metrics(font);
    QString shortened = text;
    int width = metrics.horizontalAdvance(shortened);
    bool dropped = false;
    while (width > maxWidth && shortened.size() >= 6) {
        shortened.chop(1);
        dropped = true;
        width = metrics.horizontalAdvance(QStringLiteral("...") + shortened);
    }
    return dropped ? QStringLiteral("...") + shortened : text;
}

}  // namespace korvex
