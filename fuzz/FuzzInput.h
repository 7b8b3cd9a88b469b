// Helpers shared by the fuzz targets: turning raw bytes into the texts the parsers read.
#pragma once

#include "korvex/runtime/RegionalSettings.h"

#include <QString>

#include <cstddef>
#include <cstdint>

namespace korvex::fuzz {

// The first byte picks the regional settings (so both "." and "," locales are explored), the
// rest is split at the first 0 byte into two UTF-8 texts.
struct TwoTexts {
    QString first;
    QString second;
};

inline TwoTexts SplitInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return {};
    RegionalSettings::SetCurrent(data[0] % 2 ? RegionalSettings::German() : RegionalSettings::EnglishUS());
    const char* text = reinterpret_cast<const char*>(data + 1);
    const std::size_t n = size - 1;
    std::size_t split = 0;
    while (split < n && text[split] != 0)
        ++split;
    TwoTexts t;
    t.first = QString::fromUtf8(text, static_cast<qsizetype>(split));
    if (split < n)
        t.second = QString::fromUtf8(text + split + 1, static_cast<qsizetype>(n - split - 1));
    return t;
}

}  // namespace korvex::fuzz
