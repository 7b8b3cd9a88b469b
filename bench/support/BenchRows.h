// Recordsets of many generated rows, the fixtures most benchmarks start from: each row is made
// by a function of its number and appended straight to the store, the quickest way in.
#pragma once

#include "korvex/platform/ado/FieldDef.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/ado/RecordsetStore.h"

#include <memory>
#include <vector>

namespace korvex::bench {

// makeRow(i) gives row i's values, one per field (an array of Variant).
template <class MakeRow>
std::shared_ptr<ado::RecordsetStore> StoreOfRows(std::vector<ado::FieldDef> fields, int rows, MakeRow makeRow)
{
    auto store = std::make_shared<ado::RecordsetStore>(std::move(fields));
    for (int i = 0; i < rows; ++i) {
        const auto values = makeRow(i);
        store->AppendRow(values);
    }
    return store;
}

inline std::shared_ptr<ado::Recordset> RecordsetOver(std::shared_ptr<ado::RecordsetStore> store)
{
    auto rs = std::make_shared<ado::Recordset>();
    rs->OpenStore(std::move(store));
    return rs;
}

}  // namespace korvex::bench
