// Text comparison that ignores case, the one order the engine uses for Filter, Find, Sort and the
// field indexes: code units folded to lower case and compared by value. One definition keeps an
// index, a scan and a sort in agreement; an ASCII fast path keeps million-row scans cheap.
#pragma once

#include <QStringView>

namespace korvex::ado {

char16_t FoldCase(char16_t c) noexcept;

// <0, 0 or >0.
int CompareNoCase(QStringView a, QStringView b) noexcept;
bool EqualsNoCase(QStringView a, QStringView b) noexcept;
bool StartsWithNoCase(QStringView text, QStringView prefix) noexcept;
bool EndsWithNoCase(QStringView text, QStringView suffix) noexcept;

}  // namespace korvex::ado
