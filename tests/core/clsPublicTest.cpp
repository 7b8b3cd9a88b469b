// clsPublic's toolbox: required fields, regional formats against pinned locales, the version
// tables, word extraction, the default font and the mouse-pointer stack.
#include "korvex/core/clsPublic.h"
#include "korvex/controls/display/ZqLabel.h"
#include "korvex/localisation/clsLanguage.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

class FakeDropdown : public Control {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "ZqDropdown")
    Q_PROPERTY(korvex::Variant BoundValue MEMBER boundValue)
public:
    using Control::Control;
    Variant boundValue = Variant::Null();
};

class FormService : public QObject {
    Q_OBJECT
public:
    Q_INVOKABLE int MsgBoxZq(const QString& prompt, int buttons)
    {
        shown << QStringLiteral("%1|%2").arg(prompt).arg(buttons);
        return vbOK;
    }
    QStringList shown;
};

TEST(clsPublic, FieldMissingTellsTheUserAndFocusesTheControl)
{
    clsLanguage::Global().LanguageInitialise(0, QString());  // no file: every text is its default
    Form form;
    auto* name = new TextBox(form.Client());
    name->SetText(QStringLiteral("   "));
    auto* caption = static_cast<ZqLabel*>(FormFile::AddNewControl(form, QStringLiteral("ZqLabel"), QStringLiteral("lblName")));
    caption->SetCaption(QStringLiteral("Name:"));
    form.show();
    QApplication::setActiveWindow(&form);

    ScopedMessageBoxRecorder boxes;
    clsPublic& p = clsPublic::Global();
    EXPECT_TRUE(p.FieldMissing(name, Variant(static_cast<QObject*>(caption))));
    ASSERT_EQ(boxes.shown().size(), 1);
    EXPECT_EQ(boxes.shown()[0].prompt, "Name is required") << "the label's caption without its colon";
    EXPECT_EQ(boxes.shown()[0].buttons, vbExclamation);
    EXPECT_TRUE(QTest::qWaitFor([&] { return name->LineEdit()->hasFocus(); }, 1000));

    FormService service;
    auto* dropdown = new FakeDropdown(form.Client());
    EXPECT_TRUE(p.FieldMissing(dropdown, Variant("Country"), &service)) << "a Null bound value is missing";
    EXPECT_EQ(service.shown, QStringList{"Country is required|48"}) << "through the form's MsgBoxZq";
    dropdown->boundValue = 7;
    EXPECT_FALSE(p.FieldMissing(dropdown, Variant("Country"), &service));

    name->SetText(QStringLiteral("Ada"));
    EXPECT_FALSE(p.FieldMissing(name, Variant("Name")));
    name->SetText(QStringLiteral("\t"));
    EXPECT_FALSE(p.FieldMissing(name, Variant("Name"))) << "only spaces are trimmed: a tab is a value";
    EXPECT_TRUE(p.FieldMissing(caption, Variant("Anything"))) << "a kind that is not read counts as missing";
    EXPECT_EQ(boxes.shown().size(), 2);
}

TEST(clsPublic, RegionalFormatsFollowThePinnedLocale)
{
    clsPublic& p = clsPublic::Global();
    {
        test::PinnedSettings german(RegionalSettings::German());
        EXPECT_EQ(p.GetShortDateFormat(), "dd.mm.yy");
        EXPECT_EQ(p.GetShortDateFormat(sdfWithCentury), "dd.mm.yyyy");
        EXPECT_EQ(p.GetShortDateTimeFormat(), "dd.mm.yy HH:mm");
        EXPECT_EQ(p.GetRegionalNumberFormat(QStringLiteral("#,##0.00")), "#.##0,00");
        EXPECT_EQ(p.GetRegionalSetting(LOCALE_SDECIMAL), Variant(","));
        EXPECT_EQ(p.GetRegionalSetting(9999, Variant("none")), Variant("none"));
    }
    test::PinnedSettings us(RegionalSettings::EnglishUS());
    EXPECT_EQ(p.GetShortDateFormat(sdfWithCentury), "mm/dd/yyyy");
    RegionalSettings iso = RegionalSettings::EnglishUS();
    iso.ShortDatePattern = QStringLiteral("dddd yyyy-MM-dd");
    test::PinnedSettings isoPin(iso);
    EXPECT_EQ(p.GetShortDateFormat(), "yy-mm-dd") << "day names go, the order follows the first letter";
}

TEST(clsPublic, VersionTablesWordsFontsAndColons)
{
    auto p = clsPublic::Create();
    struct Row {
        OSVersionInfo version;
        int expected;
    };
    const Row rows[] = {
        {{2, 6, 1, 7601}, wvWindows7},   {{2, 6, 0, 6000}, wvWindowsVista}, {{2, 10, 0, 0}, wvWindows7},
        {{2, 5, 0, 2195}, wvWindowsME_Windows2000}, {{2, 5, 1, 2600}, wvWindowsXP}, {{2, 4, 0, 1381}, wvWindows95_WindowsNT},
        {{1, 4, 10, 2222}, wvWindows98SE}, {{1, 4, 10, 1998}, wvWindows98},   {{1, 4, 10, 1000}, wvWindows95_WindowsNT},
        {{1, 4, 90, 3000}, wvWindowsME_Windows2000}, {{1, 4, 90, 2999}, wvWindows98SE}, {{3, 6, 1, 0}, wvWindows95_WindowsNT},
    };
    for (const Row& r : rows) {
        p->SetVersionInfo(r.version);
        EXPECT_EQ(p->WindowsVersionRelative(), r.expected) << r.version.PlatformId << ' ' << r.version.Major << '.' << r.version.Minor;
    }
    p->SetVersionInfo({2, 6, 1, 0x10000 + 7601});
    EXPECT_EQ(p->GetWindowsVersion(), "6.1.7601") << "the low word of the build";
    EXPECT_TRUE(p->WindowsVersionIsNT());
    EXPECT_EQ(OSVersionInfo::Current().PlatformId, 2) << "this platform counts as the NT family";

    EXPECT_EQ(clsPublic::HiWord(-65536), -1);
    EXPECT_EQ(clsPublic::LoWord(65535), -1);
    EXPECT_EQ(clsPublic::LoWord(0x12345678), 0x5678);
    EXPECT_EQ(clsPublic::RemColon(QStringLiteral("Name:")), "Name");
    EXPECT_EQ(clsPublic::RemColon(QStringLiteral("Name")), "Name");

    p->SetVersionInfo({2, 5, 1, 2600});
    StdFont* font = p->GetDefaultFont();
    EXPECT_EQ(font->Name(), "Tahoma");
    EXPECT_EQ(p->GetDefaultFont(), font) << "callers share one font";
    StdFont bigger(QStringLiteral("DejaVu Sans"), 12);
    bigger.SetBold(true);
    p->SetDefaultFont(&bigger);
    EXPECT_EQ(font->Name(), "DejaVu Sans");
    EXPECT_EQ(font->Size(), 12);
    EXPECT_FALSE(font->Bold()) << "only name and size are copied";
    auto vista = clsPublic::Create();
    vista->SetVersionInfo({2, 6, 0, 6000});
    EXPECT_EQ(vista->GetDefaultFont()->Name(), "Segoe UI");
}

TEST(clsPublic, MousePointerRequestsNest)
{
    auto p = clsPublic::Create();
    Screen* screen = Screen::Instance();
    p->SetMousePointer(mpHourglass);
    p->SetMousePointer(mpArrowHourglass);
    EXPECT_EQ(screen->MousePointer(), mpArrowHourglass);
    p->SetMousePointer(mpNormal);
    EXPECT_EQ(screen->MousePointer(), mpHourglass) << "the outer request is still on";
    p->SetMousePointer(mpNormal);
    EXPECT_EQ(screen->MousePointer(), 0);
    p->SetMousePointer(mpNormal);
    EXPECT_EQ(p->PointerDepth(), 0) << "an extra normal does not go below empty";

    for (int i = 0; i < 6; ++i)
        p->SetMousePointer(mpHourglass);
    EXPECT_EQ(p->PointerSlots(), 6);
    p->SetMousePointer(mpNormal);
    EXPECT_EQ(p->PointerSlots(), 5) << "shrunk while the depth stays above 4";
    p->SetMousePointer(mpNormal);
    EXPECT_EQ(p->PointerSlots(), 5) << "not shrunk to 4";
    while (p->PointerDepth() > 0)
        p->SetMousePointer(mpNormal);
    EXPECT_EQ(screen->MousePointer(), 0);
}

}  // namespace
}  // namespace korvex

#include "clsPublicTest.moc"
