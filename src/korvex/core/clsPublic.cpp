// clsPublic: instances and the shared-context slots they fill, and the toolbox members.
#include "korvex/core/clsPublic.h"

#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/core/Environment.h"
#include "korvex/core/LibMsgBox.h"
#include "korvex/core/SharedContext.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/localisation/LGS.h"
#include "korvex/platform/host/Control.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/LateBinding.h"
#include "korvex/runtime/Twips.h"

#include <QFontMetrics>
#include <QSysInfo>

namespace korvex {

OSVersionInfo OSVersionInfo::Current()
{
    OSVersionInfo info;
    const QStringList kernel = QSysInfo::kernelVersion().split(QLatin1Char('.'));
    info.Build = kernel.value(0).toInt() * 100 + kernel.value(1).toInt();
    return info;
}

std::shared_ptr<clsPublic> clsPublic::Create()
{
    struct Instance : clsPublic {};
    auto instance = std::make_shared<Instance>();
    SharedContext::ForThisThread().CurrentPublic = instance;
    return instance;
}

clsPublic& clsPublic::Global()
{
    thread_local std::shared_ptr<clsPublic> implicit = Create();
    return *implicit;
}

std::shared_ptr<clsPublic> clsPublic::Current()
{
    return SharedContext::ForThisThread().CurrentPublic;
}

void clsPublic::InitZqControls(QObject* objZqUser, QObject* objParentScreen, QObject* objParentMDIForm)
{
    // Every argument is checked before any slot changes.
    if ((objZqUser && !qobject_cast<clsZqUser*>(objZqUser)) || (objParentScreen && !qobject_cast<Screen*>(objParentScreen)) ||
        (objParentMDIForm && !qobject_cast<MDIForm*>(objParentMDIForm)))
        Raise(vbErrTypeMismatch, QStringLiteral("clsPublic.InitZqControls"));
    SharedContext& context = SharedContext::ForThisThread();
    if (objZqUser)
        context.User = objZqUser;
    if (objParentScreen)
        context.ParentScreen = objParentScreen;
    if (objParentMDIForm)
        context.ParentMDIForm = objParentMDIForm;
}

void clsPublic::UninitVyrInvControls()
{
    SharedContext& context = SharedContext::ForThisThread();
    context.User = nullptr;
    context.ParentScreen = nullptr;
    context.ParentMDIForm = nullptr;
}

bool clsPublic::FieldMissing(QObject* ControlToCheck, const Variant& Caption, QObject* ZqForm)
{
    const QString type = TypeNameOf(ControlToCheck);
    Variant value;
    if (type == QLatin1String("TextBox") || type == QLatin1String("SOPProdCode"))
        value = GetProperty(ControlToCheck, QStringLiteral("Text"));
    else if (type == QLatin1String("TDBDate") || type == QLatin1String("TDBNumber") || type == QLatin1String("ZqNumber"))
        value = GetProperty(ControlToCheck, QStringLiteral("Value"));
    else if (type == QLatin1String("ZqDropdown"))
        value = GetProperty(ControlToCheck, QStringLiteral("BoundValue"));
    const bool missing = value.IsNull() || value.IsEmpty() || Trim(CStr(value)).isEmpty();
    if (!missing)
        return false;

    QString caption;
    const QString captionType = Caption.IsObject() ? TypeNameOf(Caption.Object()) : QString();
    if (captionType == QLatin1String("Label") || captionType == QLatin1String("ZqLabel"))
        caption = CStr(GetProperty(Caption.Object(), QStringLiteral("Caption")));
    else
        caption = CStr(Caption);
    QString message = LGS(QStringLiteral("MsgFieldReqd"), QStringLiteral("%1 is required"), tsNone, RemColon(caption));
    bool shown = false;
    if (ZqForm) {
        try {
            QList<Variant> args{Variant(message), Variant(vbExclamation)};
            CallByName(ZqForm, QStringLiteral("MsgBoxZq"), VbMethod, args);
            shown = true;
        } catch (const Error&) {
            // A form without the method: the library's own box below.
        }
    }
    if (!shown)
        LibMsgBox(message, vbExclamation, QString());
    if (CBool(GetProperty(ControlToCheck, QStringLiteral("Enabled"))))
        CallByName(ControlToCheck, QStringLiteral("SetFocus"), VbMethod);
    return true;
}

void clsPublic::CalcTextSize(const QString& Text, int& Width, int& Height, bool WordWrap, const QFont& font)
{
    korvex::CalcTextSize(Text, Width, Height, WordWrap, font);
}

int clsPublic::GetTextWidth(const QFont& font, const QString& Text)
{
    return RoundHalfEven(QFontMetrics(font).horizontalAdvance(Text) * TwipsPerPixelX());
}

StdFont* clsPublic::GetDefaultFont()
{
    if (!mDefaultFont) {
        const int version = WindowsVersionRelative();
        if (version < wvWindowsXP)
            mDefaultFont = std::make_unique<StdFont>(QStringLiteral("Ms Sans Serif"), 8);
        else if (version == wvWindowsXP)
            mDefaultFont = std::make_unique<StdFont>(QStringLiteral("Tahoma"), 8);
        else
            mDefaultFont = std::make_unique<StdFont>(QStringLiteral("Segoe UI"), 9);
    }
    return mDefaultFont.get();
}

void clsPublic::SetDefaultFont(QObject* NewFont)
{
    auto* font = qobject_cast<StdFont*>(NewFont);
    if (!font)
        Raise(vbErrTypeMismatch, QStringLiteral("clsPublic.SetDefaultFont"));
    StdFont* target = GetDefaultFont();
    target->SetName(font->Name());
    target->SetSize(font->Size());
}

int clsPublic::WindowsVersionRelative()
{
    if (mWindowsVersion != 0)
        return mWindowsVersion;
    const OSVersionInfo& v = mVersionInfo;
    int result = wvWindows95_WindowsNT;
    if (v.PlatformId == 2) {
        if (v.Major > 6)
            result = wvWindows7;
        else if (v.Major == 6)
            result = v.Minor == 0 ? wvWindowsVista : wvWindows7;
        else if (v.Major == 5)
            result = v.Minor == 0 ? wvWindowsME_Windows2000 : wvWindowsXP;
    } else if (v.PlatformId == 1 && v.Major == 4) {
        const int build = v.Build & 0xFFFF;
        if (v.Minor == 10)
            result = build >= 2222 ? wvWindows98SE : build >= 1998 ? wvWindows98 : wvWindows95_WindowsNT;
        else if (v.Minor == 90)
            result = build >= 3000 ? wvWindowsME_Windows2000 : wvWindows98SE;
    }
    mWindowsVersion = result;
    return result;
}

short clsPublic::LoWord(std::int32_t DWord)
{
    return static_cast<short>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(DWord) & 0xFFFF));
}

short clsPublic::HiWord(std::int32_t DWord)
{
    return static_cast<short>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(DWord) >> 16));
}

QString clsPublic::GetWindowsVersion()
{
    return QStringLiteral("%1.%2.%3").arg(mVersionInfo.Major).arg(mVersionInfo.Minor).arg(LoWord(mVersionInfo.Build) & 0xFFFF);
}

bool clsPublic::WindowsVersionIsNT()
{
    return mVersionInfo.PlatformId == 2;
}

QString clsPublic::GetShortDateFormat(int Settings)
{
    const QString year = Settings == sdfWithCentury ? QStringLiteral("yyyy") : QStringLiteral("yy");
    QString pattern = GetLocaleString(LOCALE_SSHORTDATE, QString());
    pattern.remove(QStringLiteral("dddd")).remove(QStringLiteral("ddd"));
    while (pattern.startsWith(QLatin1Char(' ')))
        pattern.remove(0, 1);
    const QString sep = pattern.contains(QLatin1Char('.'))   ? QStringLiteral(".")
                        : pattern.contains(QLatin1Char('-')) ? QStringLiteral("-")
                                                             : QStringLiteral("/");
    const QChar first = pattern.isEmpty() ? QChar() : pattern[0].toLower();
    if (first == QLatin1Char('m'))
        return QStringLiteral("mm") + sep + QStringLiteral("dd") + sep + year;
    if (first == QLatin1Char('y'))
        return year + sep + QStringLiteral("mm") + sep + QStringLiteral("dd");
    return QStringLiteral("dd") + sep + QStringLiteral("mm") + sep + year;
}

QString clsPublic::GetShortDateTimeFormat(int Settings)
{
    return GetShortDateFormat(Settings) + QStringLiteral(" HH:mm");
}

QString clsPublic::GetRegionalNumberFormat(const QString& FormatString)
{
    QString format = FormatString;
    format.replace(QLatin1Char('.'), QStringLiteral("[DECIMAL]")).replace(QLatin1Char(','), QStringLiteral("[THOUSAND]"));
    format.replace(QStringLiteral("[THOUSAND]"), GetLocaleString(LOCALE_STHOUSAND, QStringLiteral(",")));
    format.replace(QStringLiteral("[DECIMAL]"), GetLocaleString(LOCALE_SDECIMAL, QStringLiteral(".")));
    return format;
}

Variant clsPublic::GetRegionalSetting(int Index, const Variant& DefaultVal)
{
    const QString value = RegionalSettings::Current().LocaleInfo(Index);
    if (value.isEmpty())
        return DefaultVal.IsEmpty() ? Variant(QString()) : Variant(CStr(DefaultVal));
    return value;
}

QString clsPublic::RemColon(const QString& Caption)
{
    return Caption.endsWith(QLatin1Char(':')) ? Caption.left(Caption.size() - 1) : Caption;
}

void clsPublic::SetMousePointer(int NewState)
{
    int shown = 0;
    if (NewState != mpNormal) {
        ++mPointerDepth;
        if (mPointerDepth > static_cast<int>(mPointerStack.size()))
            mPointerStack.resize(static_cast<std::size_t>(mPointerDepth));
        mPointerStack[static_cast<std::size_t>(mPointerDepth - 1)] = NewState;
        shown = NewState;
    } else {
        if (mPointerDepth > 0) {
            --mPointerDepth;
            if (mPointerDepth > 4)
                mPointerStack.resize(static_cast<std::size_t>(mPointerDepth));
        }
        shown = mPointerDepth > 0 ? mPointerStack[static_cast<std::size_t>(mPointerDepth - 1)] : 0;
    }
    Screen::Instance()->SetMousePointer(shown);
    if (QObject* hostScreen = SharedContext::ForThisThread().ParentScreen; hostScreen && hostScreen != Screen::Instance())
        SetProperty(hostScreen, QStringLiteral("MousePointer"), shown);
}

void clsPublic::InitDateControls(QObject* f)
{
    auto* form = qobject_cast<Form*>(f);
    if (!form)
        Raise(vbErrTypeMismatch, QStringLiteral("clsPublic.InitDateControls"));
    const QString format = GetShortDateFormat(sdfWithoutCentury);
    for (Control* c : form->Controls()) {
        if (TypeNameOf(c) == QLatin1String("TDBDate")) {
            SetProperty(c, QStringLiteral("Format"), format);
            SetProperty(c, QStringLiteral("DisplayFormat"), format);
        }
    }
}

}  // namespace korvex
