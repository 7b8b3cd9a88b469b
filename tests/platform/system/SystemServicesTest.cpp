// The system services: message-box styles and the recorder, timers, the thread hooks, the
// registry's two scopes, and DPI and colour pins.
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/system/Registry.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/platform/desktop/ThreadHooks.h"
#include "korvex/platform/desktop/WindowStyles.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/system/Timers.h"
#include "korvex/runtime/OleColor.h"
#include "korvex/runtime/Twips.h"
#include "tests/support/Printers.h"

#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

TEST(SystemServices, MessageBoxStylesAndTheRecorder)
{
    EXPECT_EQ(MessageBoxService::ButtonsOf(vbYesNoCancel | vbQuestion), (QList<int>{vbYes, vbNo, vbCancel}));
    EXPECT_EQ(MessageBoxService::DefaultResultOf(vbYesNo | vbDefaultButton2), vbNo);
    EXPECT_EQ(MessageBoxService::DefaultResultOf(vbOKOnly | vbDefaultButton3), vbOK) << "no third button: the first";

    QCoreApplication::setApplicationName(QStringLiteral("Korvex Tests"));
    ScopedMessageBoxRecorder boxes;
    boxes.recorder().answers = {vbNo};
    EXPECT_EQ(MsgBox(QStringLiteral("Save?"), vbYesNo | vbQuestion), vbNo) << "scripted answer";
    EXPECT_EQ(MsgBox(QStringLiteral("Again?"), vbYesNo | vbDefaultButton2, QStringLiteral("Title")), vbNo)
        << "an empty script presses the default button";
    ASSERT_EQ(boxes.shown().size(), 2);
    EXPECT_EQ(boxes.shown()[0].title, "Korvex Tests") << "no title: the application's";
    EXPECT_EQ(boxes.shown()[0].buttons, vbYesNo | vbQuestion);
    EXPECT_EQ(boxes.shown()[1].title, "Title");
}

TEST(SystemServices, TimersFireRepeatOrOnceAndDieWhenKilled)
{
    int repeats = 0, once = 0;
    const int repeating = SetTimer(5, [&] { ++repeats; });
    SetSingleShotTimer(5, [&] { ++once; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return repeats >= 3; }, 2000));
    EXPECT_TRUE(KillTimer(repeating));
    EXPECT_FALSE(KillTimer(repeating)) << "a killed timer is gone";
    const int after = repeats;
    QTest::qWait(30);
    EXPECT_EQ(repeats, after);
    EXPECT_EQ(once, 1);

    int selfKilled = 0;
    int id = 0;
    id = SetTimer(1, [&] {
        ++selfKilled;
        KillTimer(id);  // the one-shot idiom: kill from inside the callback
    });
    // Waits for the first call rather than a fixed time, so a busy machine does not fail it.
    EXPECT_TRUE(QTest::qWaitFor([&] { return selfKilled >= 1; }, 2000));
    QTest::qWait(30);
    EXPECT_EQ(selfKilled, 1);
    EXPECT_FALSE(TimerIsRunning(id));
}

TEST(SystemServices, HooksSeeKeysFirstAndBelongToOneOwner)
{
    QLineEdit edit;
    edit.show();
    QObject first, second;
    QList<int> seenByFirst, seenBySecond;
    ThreadHooks::Install(&first, {}, [&](QWidget*, QKeyEvent* e) {
        seenByFirst << e->key();
        return e->key() == Qt::Key_X;  // consume x
    });
    QTest::keyClicks(&edit, QStringLiteral("axb"));
    EXPECT_EQ(edit.text(), "ab");
    EXPECT_EQ(seenByFirst, (QList<int>{Qt::Key_A, Qt::Key_X, Qt::Key_B})) << "each key once, though it propagates";
    ThreadHooks::Install(&second, {}, [&](QWidget*, QKeyEvent* e) {
        seenBySecond << e->key();
        return false;
    });
    EXPECT_EQ(ThreadHooks::Owner(), &second) << "a new owner takes the hooks over";
    QTest::keyClicks(&edit, QStringLiteral("x"));
    EXPECT_EQ(seenByFirst.size(), 3);
    EXPECT_EQ(edit.text(), "abx");
    ThreadHooks::Remove();
    EXPECT_EQ(ThreadHooks::Owner(), nullptr);
}

TEST(SystemServices, RegistryScopesIgnoreCaseAndKeepTypes)
{
    QTemporaryDir dir;
    const QString user = dir.filePath(QStringLiteral("user.ini"));
    const QString machine = dir.filePath(QStringLiteral("machine.ini"));
    {
        QSettings m(machine, QSettings::IniFormat);
        m.setValue(QStringLiteral("SOFTWARE/Clients/Mail/@"), QStringLiteral("Thunderbird"));
        m.setValue(QStringLiteral("SOFTWARE/Clients/Mail/Outlook/@"), QStringLiteral("Microsoft Outlook"));
    }
    RegistryKey::SetLocations(user, machine);

    auto mail = RegistryKey::Open(HKEY_LOCAL_MACHINE, QStringLiteral("software\\clients\\MAIL"));
    ASSERT_TRUE(mail.has_value()) << "paths match ignoring case";
    EXPECT_EQ(mail->Value(QString()), Variant("Thunderbird")) << "the default value has no name";
    EXPECT_EQ(mail->SubKeyNames(), QStringList{"Outlook"});
    EXPECT_FALSE(RegistryKey::Open(HKEY_LOCAL_MACHINE, QStringLiteral("SOFTWARE\\Clients\\Mail"), true).has_value())
        << "the machine scope is read-only";
    EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER, QStringLiteral("Software\\Nothing")).has_value());

    RegistryKey created = RegistryKey::Create(QStringLiteral("Software\\Zq Systems"));
    EXPECT_TRUE(created.SetValue(QStringLiteral("Email Send Method"), 3));
    EXPECT_TRUE(created.SetValue(QStringLiteral("Last Profile"), QStringLiteral("Office; \"main\"")));
    auto read = RegistryKey::Open(HKEY_CURRENT_USER, QStringLiteral("SOFTWARE\\ZQ SYSTEMS"));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->Value(QStringLiteral("email send method")), Variant(3)) << "a whole number comes back as Long";
    EXPECT_EQ(read->ValueType(QStringLiteral("Email Send Method")), REG_DWORD);
    EXPECT_EQ(read->Value(QStringLiteral("Last Profile")), Variant("Office; \"main\""));
    EXPECT_FALSE(read->SetValue(QStringLiteral("x"), 1)) << "opened for reading";
    RegistryKey::SetLocations({}, {});
}

TEST(SystemServices, PinnedDotsPerInchSetTwipsAndColoursResolveThroughThePalette)
{
    SystemInfo::Start();
    SystemInfo::PinDotsPerInch(144, 96);
    EXPECT_EQ(TwipsPerPixelX(), 10);
    EXPECT_EQ(TwipsPerPixelY(), 15);
    SystemInfo::PinSysColor(15, RGB(1, 2, 3));
    EXPECT_EQ(ResolveColor(vbButtonFace), RGB(1, 2, 3));
    EXPECT_EQ(ResolveColor(0x80000100), 0u) << "an index the system lacks is black";
    SystemInfo::ClearPins();
    EXPECT_EQ(TwipsPerPixelX(), 1440.0 / SystemInfo::DotsPerInchX());
    SetSystemColorLookup({});
    SetTwipsPerPixel(15, 15);
}

// The frame a style asks for covers the window's outermost pixels on all four sides.
TEST(SystemServices, WindowFramesDrawOnTheOuterEdge)
{
    QWidget window;
    window.resize(20, 10);
    SetWindowLong(&window, GWL_STYLE, WS_BORDER);
    QImage image(20, 10, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    DrawWindowFrame(painter, &window);
    painter.end();
    const QRgb frame = ToQColor(vbWindowFrame).rgb();
    for (const QPoint p : {QPoint(0, 5), QPoint(19, 5), QPoint(10, 0), QPoint(10, 9)})
        EXPECT_EQ(image.pixel(p), frame) << p.x() << "," << p.y();
    EXPECT_EQ(image.pixel(18, 5), QColor(Qt::white).rgb()) << "the content next to the edge is left alone";
    EXPECT_EQ(image.pixel(10, 8), QColor(Qt::white).rgb());
}

}  // namespace
}  // namespace korvex
