// System information over QPalette, QStyle and QScreen, with pins for tests.
#include "korvex/platform/desktop/SystemInfo.h"

#include "korvex/runtime/Twips.h"

#include <QApplication>
#include <QHash>
#include <QPalette>
#include <QScreen>
#include <QStyle>

namespace korvex {
namespace {

struct Pins {
    std::optional<double> dpiX, dpiY;
    QHash<int, OleColor> colors;
    std::optional<bool> swapped;
    std::optional<QRect> workArea;
};

Pins& ThePins()
{
    static Pins pins;
    return pins;
}

OleColor FromQColor(const QColor& c)
{
    return RGB(c.red(), c.green(), c.blue());
}

// The Windows colour indexes mapped onto the application palette's roles.
OleColor PaletteColor(int index)
{
    const QPalette p = QGuiApplication::palette();
    switch (index) {
    case 0: return FromQColor(p.color(QPalette::Button).darker(110));  // scroll bars
    case 1: return RGB(0, 0, 0);                                        // desktop
    case 2: return FromQColor(p.color(QPalette::Highlight));            // active title bar
    case 3: return FromQColor(p.color(QPalette::Inactive, QPalette::Highlight));
    case 4: return FromQColor(p.color(QPalette::Window));       // menu bar
    case 5: return FromQColor(p.color(QPalette::Base));         // window background
    case 6: return FromQColor(p.color(QPalette::Shadow));       // window frame
    case 7: return FromQColor(p.color(QPalette::WindowText));   // menu text
    case 8: return FromQColor(p.color(QPalette::Text));         // window text
    case 9: return FromQColor(p.color(QPalette::HighlightedText));
    case 10:
    case 11: return FromQColor(p.color(QPalette::Window));  // borders
    case 12: return FromQColor(p.color(QPalette::Dark));    // application workspace
    case 13: return FromQColor(p.color(QPalette::Highlight));
    case 14: return FromQColor(p.color(QPalette::HighlightedText));
    case 15: return FromQColor(p.color(QPalette::Button));  // button face
    case 16: return FromQColor(p.color(QPalette::Mid));     // button shadow
    case 17: return FromQColor(p.color(QPalette::Disabled, QPalette::Text));
    case 18: return FromQColor(p.color(QPalette::ButtonText));
    case 19: return FromQColor(p.color(QPalette::Inactive, QPalette::HighlightedText));
    case 20: return FromQColor(p.color(QPalette::Light));  // 3-D highlight
    case 21: return FromQColor(p.color(QPalette::Shadow));  // 3-D dark shadow
    case 22: return FromQColor(p.color(QPalette::Midlight));
    case 23: return FromQColor(p.color(QPalette::ToolTipText));
    case 24: return FromQColor(p.color(QPalette::ToolTipBase));
    default: return 0;
    }
}

void ApplyTwips()
{
    SetTwipsPerPixel(1440.0 / SystemInfo::DotsPerInchX(), 1440.0 / SystemInfo::DotsPerInchY());
}

}  // namespace

void SystemInfo::Start()
{
    SetSystemColorLookup([](int index) { return SysColor(index); });
    ApplyTwips();
}

OleColor SystemInfo::SysColor(int index)
{
    auto it = ThePins().colors.constFind(index);
    if (it != ThePins().colors.cend())
        return *it;
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return 0;
    return PaletteColor(index);
}

int SystemInfo::SystemMetric(int index)
{
    QStyle* style = qobject_cast<QApplication*>(QCoreApplication::instance()) ? QApplication::style() : nullptr;
    switch (index) {
    case SM_CXSCREEN: return WorkArea().width();
    case SM_CYSCREEN: return WorkArea().height();
    case SM_CXVSCROLL:
    case SM_CYHSCROLL: return style ? style->pixelMetric(QStyle::PM_ScrollBarExtent) : 17;
    case SM_CXBORDER:
    case SM_CYBORDER: return 1;
    case SM_CXDLGFRAME:
    case SM_CYDLGFRAME: return 3;
    case SM_CXEDGE:
    case SM_CYEDGE: return 2;
    case SM_CXICON: return 32;
    case SM_CXCURSOR: return 32;
    case SM_CXDOUBLECLK: return 4;
    case SM_SWAPBUTTON: return ThePins().swapped.value_or(false) ? 1 : 0;
    default: return 0;
    }
}

QRect SystemInfo::WorkArea()
{
    if (ThePins().workArea)
        return *ThePins().workArea;
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
}

double SystemInfo::DotsPerInchX()
{
    if (ThePins().dpiX)
        return *ThePins().dpiX;
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen && screen->logicalDotsPerInchX() > 0 ? screen->logicalDotsPerInchX() : 96.0;
}

double SystemInfo::DotsPerInchY()
{
    if (ThePins().dpiY)
        return *ThePins().dpiY;
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen && screen->logicalDotsPerInchY() > 0 ? screen->logicalDotsPerInchY() : 96.0;
}

void SystemInfo::PinDotsPerInch(double x, double y)
{
    ThePins().dpiX = x;
    ThePins().dpiY = y;
    ApplyTwips();
}

void SystemInfo::PinSysColor(int index, OleColor rgb)
{
    ThePins().colors.insert(index, rgb & 0xFFFFFFu);
}

void SystemInfo::PinSwappedButtons(bool swapped)
{
    ThePins().swapped = swapped;
}

void SystemInfo::PinWorkArea(const QRect& area)
{
    ThePins().workArea = area;
}

void SystemInfo::ClearPins()
{
    ThePins() = Pins{};
    ApplyTwips();
}

}  // namespace korvex
