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

std::uint64_t FoldedPrefixKey(QStringView text) noexcept
{
    std::uint64_t key = 0;
    for (qsizetype i = 0; i < 4; ++i) {
        key <<= 16;
        if (i < text.size())
            key |= FoldCase(text.utf16()[i]);
    }
    return key;
}

NoCaseSearcher::NoCaseSearcher(QStringView needle)
{
    mFolded.reserve(static_cast<std::size_t>(needle.size()));
    for (qsizetype i = 0; i < needle.size(); ++i)
        mFolded.push_back(FoldCase(needle.utf16()[i]));
}

bool NoCaseSearcher::In(QStringView text) const noexcept
{
    const std::size_t m = mFolded.size();
    if (m == 0)
        return true;
    if (static_cast<std::size_t>(text.size()) < m)
        return false;
    const char16_t* p = text.utf16();
    const std::size_t last = static_cast<std::size_t>(text.size()) - m;
    const char16_t first = mFolded[0];
    for (std::size_t i = 0; i <= last; ++i) {
        if (FoldCase(p[i]) != first)
            continue;
        std::size_t j = 1;
        while (j < m && FoldCase(p[i + j]) == mFolded[j])
            ++j;
        if (j == m)
            return true;
    }
    return false;
}

}  // namespace korvex::ado
