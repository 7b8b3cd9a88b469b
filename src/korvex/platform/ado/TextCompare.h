// Text comparison that ignores case, the one order the engine uses for Filter, Find, Sort and the
// field indexes: code units folded to lower case and compared by value. One definition keeps an
// index, a scan and a sort in agreement; an ASCII fast path keeps million-row scans cheap.
#pragma once

#include <QStringView>

#include <cstdint>
#include <string>

namespace korvex::ado {

char16_t FoldCase(char16_t c) noexcept;

// <0, 0 or >0.
int CompareNoCase(QStringView a, QStringView b) noexcept;
bool EqualsNoCase(QStringView a, QStringView b) noexcept;
bool StartsWithNoCase(QStringView text, QStringView prefix) noexcept;
bool EndsWithNoCase(QStringView text, QStringView suffix) noexcept;

// The first four folded code units packed high to low: a 64-bit key whose order agrees with
// CompareNoCase wherever the keys differ, so sorts and indexes compare whole texts only on ties.
std::uint64_t FoldedPrefixKey(QStringView text) noexcept;

// Finds a fixed needle inside many texts, ignoring case; the needle is folded once.
class NoCaseSearcher {
public:
    explicit NoCaseSearcher(QStringView needle);
    bool In(QStringView text) const noexcept;

private:
    std::u16string mFolded;
};

}  // namespace korvex::ado
