// Runs a statement on a session and, when it returns rows, reads them into a new recordset store:
// each field with its ADO type, size and attributes, its base table and column (from the driver,
// or from the statement's text when the driver does not say), the table's key, the recordset's
// "Unique Table", and a provider that writes changes back there.
#pragma once

#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/adosql/SqlRecordsetProvider.h"
#include "korvex/platform/adosql/SqlSession.h"
#include "korvex/platform/adosql/SqlStatement.h"
#include "korvex/runtime/Error.h"

#include <memory>
#include <optional>
#include <vector>

namespace korvex::ado {

class SqlSession;
class SqlStatement;
struct SelectStatement;

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
    struct FieldSource {
        QString schema;
        QString table;
        QString column;
        bool fromDriver = false;
    };
    // The result's columns: as the driver describes them, where each comes from, its type.
    struct Columns {
        int first = 0;  // a rowid read ahead of the statement's own columns
        std::vector<ResultColumn> results;
        std::vector<FieldSource> sources;
        std::vector<ColumnType> types;
    };
    struct Loaded {
        std::optional<Error> error;   // a value its field's type could not take
        std::vector<Variant> refused;  // the row being read then
    };

    Result RunStatement(const QString& source, int options, std::vector<QVariant> parameters);
    // The steps of a run, in order.
    QString StatementFor(const QString& source, int options) const;
    bool AddRowIdColumn(const SelectStatement& select, QString& run) const;
    FieldSource SourceOf(const ResultColumn& column, const SelectStatement& select);
    ColumnType DeclaredType(const ResultColumn& column, const FieldSource& source) const;
    RecordsetPlan PlanUpdates(const Columns& columns, bool rowIdColumn) const;
    std::vector<FieldDef> DefineFields(const Columns& columns, const RecordsetPlan& plan) const;
    Loaded LoadRows(SqlStatement& statement, bool any, const Columns& columns, RecordsetStore& store,
                    std::vector<std::int64_t>* rowIds) const;
    bool Widen(Columns& columns, const std::vector<Variant>& row, const RecordsetStore& store) const;
    const TableColumnInfo* BaseColumnOf(const FieldSource& source) const;

    std::shared_ptr<SqlSession> mSession;
};

}  // namespace korvex::ado
