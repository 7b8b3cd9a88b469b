// The folders the library asks the system for (temporary, system, fonts, programs, documents,
// desktop, application data), by the shell's folder identifiers, mapped onto this platform's
// standard locations.
#pragma once

#include <QString>

namespace korvex {

enum ShellFolder : int {
    CSIDL_PERSONAL = 5,
    CSIDL_DESKTOPDIRECTORY = 16,
    CSIDL_FONTS = 20,
    CSIDL_APPDATA = 26,
    CSIDL_PROGRAM_FILES = 38,
    CSIDL_PROGRAM_FILES_COMMON = 43,
};

class SystemFolders {
public:
    // The temporary folder, with no trailing separator.
    static QString Temp();
    // The operating system's own folder and its folder of system libraries.
    static QString Windows();
    static QString System();
    // A shell folder by identifier; "" for identifiers not mapped.
    static QString Shell(int csidl);
};

}  // namespace korvex
