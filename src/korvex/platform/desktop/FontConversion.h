// StdFont against QFont: the bridge between the host's font objects and Qt's painting.
#pragma once

#include "korvex/runtime/StdFont.h"

#include <QFont>

namespace korvex {

QFont ToQFont(const StdFont& font);
// Copies the QFont's attributes into `target`, one notification per attribute that changed.

}  // namespace korvex
