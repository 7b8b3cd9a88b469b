// What Recordset.Open asks of the connection it is handed: the rows of a source. The data-access
// layer over Qt Sql implements it on its Connection, so that the engine itself stays free of any
// database driver.
#pragma once

#include <QString>

#include <memory>

namespace korvex::ado {

class RecordsetStore;

class RowSource {
public:
    virtual ~RowSource() = default;

    // A store holding the rows of `source` (a statement, or a table name with adCmdTable), whose
    // provider writes changes back to the data source; null when the statement returns no rows.
    // Raises the data source's errors, 3709 when the connection is closed.
    virtual std::shared_ptr<RecordsetStore> OpenSource(const QString& source, int options) = 0;
};

}  // namespace korvex::ado
