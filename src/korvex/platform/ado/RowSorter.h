// Sort keys bound to a store's fields, and the stable sort of a list of rows by them. Text orders
// ignoring case (TextCompare.h); Null comes before every value in ascending order and after every
// value in descending order; rows that compare equal keep their order.
#pragma once

#include "korvex/platform/ado/RecordsetStore.h"

#include <QStringView>

#include <span>
#include <vector>

namespace korvex::ado {

struct SortKey {
    int field = -1;
    bool descending = false;
    bool operator==(const SortKey&) const = default;
};

// Reads a Sort text ("Name DESC, Code"); raises 3001 when it is malformed or names a field the
// store lacks.
std::vector<SortKey> BindSortKeys(QStringView text, const RecordsetStore& store);

void SortRows(std::vector<RowId>& rows, const RecordsetStore& store, std::span<const SortKey> keys);

}  // namespace korvex::ado
