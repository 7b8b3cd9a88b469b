// The seam between a recordset and the data source behind its rows. A provider fills a
// RecordsetStore (fields with their base table and column, the rows as read, the "Unique Table"),
// opens a recordset over it with Recordset::OpenStore, and is then called for the operations that
// talk to the data source. The base class is the fabricated recordset's own behaviour: every change
// is accepted as it stands, and there is no data source to read again.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"
#include "korvex/platform/ado/Column.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Variant.h"

#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace korvex::ado {

class RecordsetStore;

// A value the data source chose for a row it accepted: a generated key, say.
struct SourceValue {
    RowId row = 0;
    int field = 0;
    Variant value;
};

// What became of a batch sent to the data source.
struct BatchOutcome {
    // Rows the data source refused, each with the status flags that say why
    // (adRecConcurrencyViolation, adRecDBDeleted, adRecIntegrityViolation ...). They keep their
    // pending changes; every other row sent is taken as written.
    std::vector<std::pair<RowId, int>> refused;
    // Raised to the caller of UpdateBatch once the refused rows are marked.
    std::optional<Error> error;
    // Stored into accepted rows as values read from the data source.
    std::vector<SourceValue> values;
};

class RecordsetProvider {
public:
    virtual ~RecordsetProvider();

    // Sends the pending changes of `rows` (each new, modified or deleted; see store.Status and
    // OriginalValue) to the data source. Throwing leaves every row pending.
    virtual BatchOutcome UpdateBatch(const RecordsetStore& store, std::span<const RowId> rows);

    // Reads `rows` again: with adResyncUnderlyingValues through store.SetUnderlyingValue, with
    // adResyncAllValues through store.ReplaceValues; a row the data source no longer has gets
    // adRecDBDeleted (store.AddStatusFlags).
    virtual void Resync(RecordsetStore& store, std::span<const RowId> rows, ResyncEnum values);

    // Runs the source again and returns a new store with its rows (Recordset.Requery).
    virtual std::shared_ptr<RecordsetStore> Requery(const RecordsetStore& store);
};

}  // namespace korvex::ado
