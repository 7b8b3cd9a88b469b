// Runs a statement on a session and, when it returns rows, reads them into a new recordset store:
// each field with its ADO type, size and attributes, its base table and column (from the driver,
// or from the statement's text when the driver does not say), the table's key, the recordset's
// "Unique Table", and a provider that writes changes back there.
#pragma once

#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/adosql/SqlRecordsetProvider.h"

#include <memory>
#include <vector>

namespace korvex::ado {

class SqlSession;
class SqlStatement;
struct ResultColumn;
struct TableInfo;

class SqlRecordsetLoader {
public:
    explicit SqlRecordsetLoader(std::shared_ptr<SqlSession> session);

    struct Result {
        std::shared_ptr<RecordsetStore> store;  // null for a statement that returns no rows
        int rowsAffected = -1;
    };

    // `options`: adCmdTable (or adCmdTableDirect) makes `source` a table name; anything else a
    // statement. The session's listener hears of it. Raises the session's errors.
    Result Run(const QString& source, int options, std::vector<QVariant> parameters);

private:
    Result RunStatement(const QString& source, int options, std::vector<QVariant> parameters);
    struct FieldSource {
        QString schema;
        QString table;
        QString column;
        bool fromDriver = false;
    };

    FieldSource SourceOf(const ResultColumn& column, const struct SelectStatement& select);
    FieldDef Define(const ResultColumn& column, const FieldSource& source, const TableInfo* table);
    void Load(SqlStatement& statement, RecordsetStore& store, int firstColumn, std::vector<std::int64_t>* rowIds);

    std::shared_ptr<SqlSession> mSession;
};

}  // namespace korvex::ado
