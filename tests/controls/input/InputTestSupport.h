// What the input-control tests share: pinned system colours and twips, a shown and active form
// to hold the controls, and waiting for the focus to arrive.
#pragma once

#include "korvex/platform/host/Form.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "tests/support/PinnedSettings.h"

#include <QApplication>
#include <QTest>

#include <optional>

#include <gtest/gtest.h>

namespace korvex::test {

inline constexpr OleColor PinnedWindowText = RGB(0, 0, 200);
inline constexpr OleColor PinnedGrayText = RGB(220, 0, 0);
inline constexpr OleColor PinnedWindow = RGB(255, 255, 255);
inline constexpr OleColor PinnedButtonFace = RGB(200, 100, 50);

class InputControlTest : public ::testing::Test {
protected:
    InputControlTest()
    {
        SystemInfo::Start();
        SystemInfo::PinSysColor(vbWindowText & 0xFF, PinnedWindowText);
        SystemInfo::PinSysColor(vbGrayText & 0xFF, PinnedGrayText);
        SystemInfo::PinSysColor(vbWindowBackground & 0xFF, PinnedWindow);
        SystemInfo::PinSysColor(vbButtonFace & 0xFF, PinnedButtonFace);
        SystemInfo::PinSysColor(vbButtonText & 0xFF, RGB(0, 0, 0));
        mPin.emplace();  // 15 twips a pixel both ways, after Start took the screen's
    }
    ~InputControlTest() override
    {
        mPin.reset();
        SystemInfo::ClearPins();
    }

    // Shows the form and makes it the active window, so that focus changes arrive.
    void ShowActive()
    {
        form.show();
        QApplication::setActiveWindow(&form);
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form, 1000));
    }

    static void WaitForFocus(QWidget* widget)
    {
        ASSERT_TRUE(QTest::qWaitFor([widget] { return widget->hasFocus(); }, 1000));
    }

    std::optional<PinnedSettings> mPin;
    Form form;
};

}  // namespace korvex::test
