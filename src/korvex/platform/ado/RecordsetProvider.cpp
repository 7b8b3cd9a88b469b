// The fabricated recordset's answers to the data-source operations.
#include "korvex/platform/ado/RecordsetProvider.h"

#include "korvex/platform/ado/AdoError.h"

namespace korvex::ado {

RecordsetProvider::~RecordsetProvider() = default;

BatchOutcome RecordsetProvider::UpdateBatch(const RecordsetStore&, std::span<const RowId>)
{
    return {};
}

void RecordsetProvider::Resync(RecordsetStore&, std::span<const RowId>, ResyncEnum)
{
    // Rows made in memory have no data source to be read from again.
    RaiseAdo(adErrFeatureNotAvailable);
}

std::shared_ptr<RecordsetStore> RecordsetProvider::Requery(const RecordsetStore&)
{
    RaiseAdo(adErrFeatureNotAvailable);
}

}  // namespace korvex::ado
