// The host's toolbox object, a global application object: the host may call its members
// without creating it (one implicit instance per thread), and every instance created becomes
// the current one. It hands the library its shared objects, checks required fields, answers
// regional formats, measures text, keeps the library's default font, tells the Windows version
// the host's rules are written for, and stacks mouse-pointer requests.
#pragma once

#include "korvex/runtime/RegionalSettings.h"
#include "korvex/runtime/StdFont.h"
#include "korvex/runtime/Variant.h"

#include <QFont>
#include <QObject>

#include <memory>
#include <vector>

namespace korvex {

// The locale-information codes clsPublic answers (LOCALE_SDECIMAL 14, LOCALE_STHOUSAND 15,
// LOCALE_SSHORTDATE 31, LOCALE_INEGNUMBER 4112, LOCALE_ILANGUAGE 1).
using LocaleSettings = LocaleInfoCode;
enum ShortDateFormatSettings : int { sdfWithoutCentury = 0, sdfWithCentury = 1 };
enum ZqMousePointerStates : int { mpNormal = -1, mpHourglass = 11, mpArrowHourglass = 13 };
enum WindowsVersions : int {
    wvWindows95_WindowsNT = 0,
    wvWindows98 = 1,
    wvWindows98SE = 2,
    wvWindowsME_Windows2000 = 3,
    wvWindowsXP = 4,
    wvWindowsVista = 5,
    wvWindows7 = 6,
};

// The operating-system version as the version tests read it: platform identifier (1 the 9x
// family, 2 the NT family), major, minor and build number.
struct OSVersionInfo {
    int PlatformId = 2;
    int Major = 10;
    int Minor = 0;
    int Build = 0;

    // This platform's version. Linux and other non-Windows systems count as the NT family at
    // version 10.0 (newer than every version the tests name), with the kernel's major and minor
    // release (6.1 gives 601) as the build number.
    static OSVersionInfo Current();
};

class clsPublic : public QObject {
    Q_OBJECT

public:
    // A new instance, registered as the current one.
    static std::shared_ptr<clsPublic> Create();
    // The implicit instance of this thread (created, and so made current, on first use).
    static clsPublic& Global();
    // The current instance; nullptr when none was created on this thread.
    static std::shared_ptr<clsPublic> Current();

    // True (after telling the user "<caption> is required" and focusing the control) when the
    // control holds no value. `Caption` is a label or a text; `ZqForm` shows the message when
    // it offers MsgBoxZq, otherwise LibMsgBox does.
    Q_INVOKABLE bool FieldMissing(QObject* ControlToCheck, const korvex::Variant& Caption, QObject* ZqForm = nullptr);
    // The text's extent in twips in the font; with word wrap broken to the width given in.
    void CalcTextSize(const QString& Text, int& Width, int& Height, bool WordWrap, const QFont& font);
    Q_INVOKABLE int GetTextWidth(const QFont& font, const QString& Text);
    // The library's default font, created on first use by the Windows version; callers share it.
    Q_INVOKABLE korvex::StdFont* GetDefaultFont();
    // Copies the new font's name and size into the default font.
    Q_INVOKABLE void SetDefaultFont(QObject* NewFont);
    Q_INVOKABLE int WindowsVersionRelative();
    static short LoWord(std::int32_t DWord);
    static short HiWord(std::int32_t DWord);
    Q_INVOKABLE QString GetWindowsVersion();
    Q_INVOKABLE bool WindowsVersionIsNT();
    Q_INVOKABLE QString GetShortDateFormat(int Settings = sdfWithoutCentury);
    Q_INVOKABLE QString GetShortDateTimeFormat(int Settings = sdfWithoutCentury);
    Q_INVOKABLE QString GetRegionalNumberFormat(const QString& FormatString);
    Q_INVOKABLE korvex::Variant GetRegionalSetting(int Index, const korvex::Variant& DefaultVal = {});
    Q_INVOKABLE static QString RemColon(const QString& Caption);
    // Pushes a pointer state (or pops one with mpNormal) and shows the state now on top.
    Q_INVOKABLE void SetMousePointer(int NewState);
    // Gives every TDBDate control of the form the short date format without century.
    Q_INVOKABLE void InitDateControls(QObject* f);

    // Hands over the user (a clsZqUser), the host's Screen and its MDI main form; a missing
    // (nullptr) argument leaves its slot as it is. An object of the wrong kind raises Type
    // mismatch (13) and changes nothing.
    Q_INVOKABLE void InitZqControls(QObject* objZqUser = nullptr, QObject* objParentScreen = nullptr,
                                    QObject* objParentMDIForm = nullptr);
    // Forgets the user, the screen and the MDI form; the connection and the current instances
    // stay.
    Q_INVOKABLE void UninitVyrInvControls();

    // The version the tests see; tests replace it to walk the version tables.
    void SetVersionInfo(const OSVersionInfo& info)
    {
        mVersionInfo = info;
        mWindowsVersion = 0;
    }
    // The pointer stack's depth and slots, for tests.
    int PointerDepth() const noexcept { return mPointerDepth; }
    qsizetype PointerSlots() const noexcept { return static_cast<qsizetype>(mPointerStack.size()); }

protected:
    clsPublic() = default;

private:
    std::unique_ptr<StdFont> mDefaultFont;
    std::vector<int> mPointerStack = std::vector<int>(1);
    int mPointerDepth = 0;
    int mWindowsVersion = 0;
    OSVersionInfo mVersionInfo = OSVersionInfo::Current();
};

}  // namespace korvex
