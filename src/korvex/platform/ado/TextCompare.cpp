// Case folding and the comparisons built on it.
#include "korvex/platform/ado/TextCompare.h"

#include <QChar>

#include <algorithm>

namespace korvex::ado {

char16_t FoldCase(char16_t c) noexcept
{
    if (c < 0x80)
        return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
    return QChar::toCaseFolded(c);
}

int CompareNoCase(QStringView a, QStringView b) noexcept
{
    const qsizetype n = std::min(a.size(), b.size());
    const char16_t* pa = a.utf16();
    const char16_t* pb = b.utf16();
    for (qsizetype i = 0; i < n; ++i) {
        if (pa[i] == pb[i])
            continue;
        const char16_t fa = FoldCase(pa[i]);
        const char16_t fb = FoldCase(pb[i]);
        if (fa != fb)
            return fa < fb ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool EqualsNoCase(QStringView a, QStringView b) noexcept
{
    return a.size() == b.size() && CompareNoCase(a, b) == 0;
}

bool StartsWithNoCase(QStringView text, QStringView prefix) noexcept
{
    return text.size() >= prefix.size() && CompareNoCase(text.first(prefix.size()), prefix) == 0;
}

bool EndsWithNoCase(QStringView text, QStringView suffix) noexcept
{
    return text.size() >= suffix.size() && CompareNoCase(text.last(suffix.size()), suffix) == 0;
}

}  // namespace korvex::ado
