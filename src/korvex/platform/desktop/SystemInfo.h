// System colours, metrics and screen facts taken from Qt's palette, style and screen, each one
// replaceable so that tests pin the DPI and colours. Starting the service also installs its
// colour lookup for OLE colours and its twips-per-pixel ratios.
#pragma once

#include "korvex/runtime/OleColor.h"

#include <QRect>

#include <optional>

namespace korvex {

// Win32 system-metric indexes the library asks for.
enum SystemMetricIndex : int {
    SM_CXSCREEN = 0,
    SM_CYSCREEN = 1,
    SM_CXVSCROLL = 2,
    SM_CYHSCROLL = 3,
    SM_CXBORDER = 5,
    SM_CYBORDER = 6,
    SM_CXDLGFRAME = 7,
    SM_CYDLGFRAME = 8,
    SM_CXICON = 11,
    SM_CXCURSOR = 13,
    SM_SWAPBUTTON = 23,
    SM_CXDOUBLECLK = 36,
    SM_CXEDGE = 45,
    SM_CYEDGE = 46,
};

class SystemInfo {
public:
    // Installs the colour lookup and the twips-per-pixel ratios of the primary screen. Call
    // once the application object exists; controls call it themselves when it has not been.
    static void Start();

    // The system colour of an index (the low byte of a system OLE colour), as RGB.
    static OleColor SysColor(int index);
    // A Win32 system metric in pixels; 0 for indexes not modelled.
    static int SystemMetric(int index);
    // The part of the primary screen not covered by panels and task bars, in pixels.
    static QRect WorkArea();
    static double DotsPerInchX();
    static double DotsPerInchY();

    // Test pins: fixed dots per inch (twips per pixel follow), fixed colours, swapped buttons.
    static void PinDotsPerInch(double x, double y);
    static void PinSysColor(int index, OleColor rgb);
    static void PinSwappedButtons(bool swapped);
    static void PinWorkArea(const QRect& area);
    static void ClearPins();
};

}  // namespace korvex
