// Small routines over the operating system and texts: special folders, environment values,
// the temporary folder, path pieces, registry strings, the user's locale settings, counting
// occurrences, digit tests and shortening a text to a width. Where paths are involved the
// platform's separator stands where the host's backslash would.
#pragma once

#include "korvex/platform/system/Registry.h"

#include <QFont>
#include <QString>

namespace korvex {

// Folder codes: 0 Windows folder, 1 system folder, 2 fonts, 10 program files, 11 common program
// files, 100 documents, 110 desktop, 150 application data. The path ends in a separator; ""
// for other codes or a folder that cannot be found.
QString GetSpecialFolder(int code);
// The environment variable's value; "" when it is not set.
QString GetEnvironmentValue(const QString& name);
// The temporary folder without a trailing separator.
QString GetTempFolder();
// The part after the last separator; "" when there is none.
QString FileNameOfPath(const QString& path);
// The path with a separator appended unless it already ends with one.
QString AddBackslash(const QString& path);
// A text value of an open key; "" when missing, empty or not text. A trailing zero character is
// dropped.
QString RegQueryString(const RegistryKey& key, const QString& valueName, int valueType = REG_SZ);
// The user's locale setting by its code; `defaultText` when the system has none.
QString GetLocaleString(int code, const QString& defaultText);
// How often `find` occurs in `text`, searching on from just behind each hit (so "aa" occurs
// three times in "aaaa"); compare mode 1 ignores case.
int CountOccurrences(const QString& text, const QString& find, int compareMode = 0);
// True when every character is 0 to 9 (so for the empty text).
bool IsAllDigits(const QString& text);
// The text, or "..." followed by its start, short enough for `maxWidth` pixels in the font;
// never shorter than five characters after the ellipsis.
QString TruncateWithEllipsis(const QFont& font, const QString& text, int maxWidth);

}  // namespace korvex
