// OLE colours to QColor and onto a widget's palette.
#pragma once

#include "korvex/runtime/OleColor.h"

#include <QColor>
#include <QPalette>
#include <QWidget>

namespace korvex {

// The colour as it shows now (system colours resolved).
inline QColor ToQColor(OleColor color)
{
    const OleColor rgb = ResolveColor(color);
    return QColor(RedOf(rgb), GreenOf(rgb), BlueOf(rgb));
}

inline OleColor FromQColor(const QColor& color)
{
    return RGB(color.red(), color.green(), color.blue());
}

// Sets the background and text roles of a widget's palette.
void ApplyColors(QWidget* widget, OleColor back, OleColor fore);

}  // namespace korvex
