// LGS: the one call every control makes for a user-visible text. It uses this thread's current
// clsLanguage and, when the host has not loaded a language, loads it on first use from the
// environment variables "LanguageFile" and "Language".
#pragma once

#include "korvex/localisation/clsLanguage.h"

#include <QString>

namespace korvex {

// The text of `StringId` in the active language, or `DefaultString`, with the suffix appended
// and "%1" and "%2" replaced. Without a loaded language and without a "LanguageFile" variable
// the result is "Run Application to initialise", so captions show it at design time. A
// "Language" variable that is not a number raises Type mismatch (13); a language file that
// cannot be read raises the CSV reader's error.
QString LGS(const QString& StringId, const QString& DefaultString = {}, int Suffix = tsNone,
            const QString& SubVar1 = {}, const QString& SubVar2 = {});

}  // namespace korvex
