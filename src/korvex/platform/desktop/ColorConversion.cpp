// Palette roles for a control's back and fore colours: every role a Qt widget may paint its
// background or text with, so that line edits, buttons and labels all follow.
#include "korvex/platform/desktop/ColorConversion.h"

namespace korvex {

void ApplyColors(QWidget* widget, OleColor back, OleColor fore)
{
    QPalette p = widget->palette();
    const QColor b = ToQColor(back);
    const QColor f = ToQColor(fore);
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        p.setColor(group, QPalette::Base, b);
        p.setColor(group, QPalette::Window, b);
        p.setColor(group, QPalette::Button, b);
        p.setColor(group, QPalette::Text, f);
        p.setColor(group, QPalette::WindowText, f);
        p.setColor(group, QPalette::ButtonText, f);
    }
    widget->setPalette(p);
}

}  // namespace korvex
