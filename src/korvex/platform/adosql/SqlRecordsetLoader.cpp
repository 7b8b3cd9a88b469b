// From a statement's result to a recordset store: field definitions, base tables and keys, rows.
#include "korvex/platform/adosql/SqlRecordsetLoader.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/adosql/SelectParser.h"
#include "korvex/platform/adosql/SqlSession.h"
#include "korvex/runtime/Conversions.h"

namespace korvex::ado {
namespace {

constexpr int adCmdTableDirect = 512;

bool SameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// The next wider type for values a field refused, or nullopt when there is none.
std::optional<ColumnType> Wider(const ColumnType& type)
{
    ColumnType wider = type;
    wider.unknown = false;
    switch (type.type) {
    case adTinyInt:
    case adUnsignedTinyInt:
    case adSmallInt:
    case adUnsignedSmallInt:
    case adInteger: wider.type = adBigInt; return wider;
    case adBigInt:
    case adUnsignedInt:
    case adUnsignedBigInt:
    case adSingle: wider.type = adDouble; return wider;
    case adLongVarWChar: return std::nullopt;
    default:
        wider.type = adLongVarWChar;
        wider.size = LongTextSize;
        return wider;
    }
}

// A type for a column nothing was declared for, from its first value.
ColumnType TypeOfValue(const Variant& value)
{
    ColumnType type;
    if (value.As<std::int32_t>())
        type.type = adInteger;
    else if (value.As<double>())
        type.type = adDouble;
    else if (value.As<Date>())
        type.type = adDBTimeStamp;
    else if (value.As<bool>())
        type.type = adBoolean;
    else
        type.size = LongTextSize;
    return type;
}

bool IsFixedSize(DataTypeEnum type)
{
    const FieldTypeInfo* info = FieldTypeInfoOf(type);
    return info && (info->storage != StorageKind::Text || info->padded);
}

}  // namespace

SqlRecordsetLoader::SqlRecordsetLoader(std::shared_ptr<SqlSession> session) : mSession(std::move(session)) {}

SqlRecordsetLoader::FieldSource SqlRecordsetLoader::SourceOf(const ResultColumn& column, const SelectStatement& select)
{
    FieldSource source;
    const SelectItem* item = select.ItemNamed(column.name);
    const bool plainItem = item && item->isColumn && item->column != u'*';
    const QString selectName = select.tableAlias.isEmpty() ? select.table : select.tableAlias;
    if (!column.baseTable.isEmpty()) {
        source.table = column.baseTable;
        source.fromDriver = true;
        if (!column.baseColumn.isEmpty())
            source.column = column.baseColumn;
        else if (plainItem)
            source.column = item->column;
        else if (!item)
            source.column = column.name;  // from a star, or from a statement we could not read
        if (select.singleTable && SameName(select.table, source.table))
            source.schema = select.schema;
    } else if (select.singleTable) {
        const bool ours = plainItem && (item->qualifier.isEmpty() || SameName(item->qualifier, selectName));
        if (ours || (!item && select.HasStar())) {
            source.schema = select.schema;
            source.table = select.table;
            source.column = ours ? item->column : column.name;
        }
    }
    if (source.table.isEmpty() || source.column.isEmpty())
        return {};
    // Only a column the table really has is a base column (an alias may shadow nothing).
    const TableInfo& table = mSession->Table(source.schema, source.table);
    const TableColumnInfo* found = table.exists ? table.Column(source.column) : nullptr;
    if (!found)
        return {};
    source.column = found->name;
    return source;
}

SqlRecordsetLoader::Result SqlRecordsetLoader::Run(const QString& source, int options, std::vector<QVariant> parameters)
{
    const QString text = mSession->WillExecute(source);
    try {
        Result result = RunStatement(text, options, std::move(parameters));
        mSession->ExecuteComplete(result.rowsAffected, nullptr);
        return result;
    } catch (const Error& e) {
        mSession->ExecuteComplete(-1, &e);
        throw;
    }
}

SqlRecordsetLoader::Result SqlRecordsetLoader::RunStatement(const QString& source, int options,
                                                            std::vector<QVariant> parameters)
{
    SqlSession& session = *mSession;
    QString sql = source;
    if (options == adCmdTable || options == adCmdTableDirect) {
        const qsizetype dot = source.lastIndexOf(u'.');
        sql = QStringLiteral("SELECT * FROM ") + session.QuoteTable(dot < 0 ? QString() : source.left(dot), source.mid(dot + 1));
    } else if (options == adCmdStoredProc) {
        RaiseAdo(adErrFeatureNotAvailable);
    }
    const SelectStatement select = ParseSelect(sql);

    // SQLite finds rows by rowid when the result lacks the table's key: the loader reads it too.
    QString run = sql;
    bool rowIdColumn = false;
    if (session.Kind() == SqlSession::Dialect::SQLite && select.singleTable && select.rowPerTableRow) {
        const TableInfo& table = session.Table(select.schema, select.table);
        const QStringList keys = table.KeyColumns();
        bool keySelected = !keys.isEmpty();
        for (const QString& key : keys) {
            const SelectItem* item = select.ItemNamed(key);
            keySelected = keySelected && ((item && item->isColumn && SameName(item->column, key)) || (!item && select.HasStar()));
        }
        if (table.exists && table.hasRowId && !keySelected) {
            const QString qualifier = select.tableAlias.isEmpty() ? session.QuoteTable(select.schema, select.table)
                                                                  : session.QuoteName(select.tableAlias);
            run.insert(select.listStart, qualifier + QStringLiteral(".rowid, "));
            rowIdColumn = true;
        }
    }

    std::unique_ptr<SqlStatement> statement = session.Prepare(run);
    statement->Execute(parameters);
    Result result;
    if (statement->ColumnCount() == 0) {
        result.rowsAffected = statement->RowsAffected();
        statement->Finish();
        return result;
    }
    const int first = rowIdColumn ? 1 : 0;
    const int count = statement->ColumnCount() - first;

    // Where each field comes from, and the table changes go to.
    std::vector<ResultColumn> columns;
    std::vector<FieldSource> sources;
    for (int i = 0; i < count; ++i) {
        columns.push_back(statement->Column(first + i));
        sources.push_back(SourceOf(columns.back(), select));
    }
    RecordsetPlan plan;
    plan.source = sql;
    plan.options = adCmdText;
    plan.parameters = parameters;
    std::vector<std::pair<QString, QString>> tables;
    for (const FieldSource& s : sources) {
        if (!s.table.isEmpty() && std::find(tables.begin(), tables.end(), std::pair(s.schema, s.table)) == tables.end())
            tables.emplace_back(s.schema, s.table);
    }
    // Several tables (a join): the first whose whole key is in the result takes the changes.
    for (const auto& [schema, name] : tables) {
        const QStringList keys = session.Table(schema, name).KeyColumns();
        std::vector<int> keyFields;
        for (const QString& key : keys) {
            for (int f = 0; f < count; ++f) {
                if (sources[f].schema == schema && sources[f].table == name && SameName(sources[f].column, key)) {
                    keyFields.push_back(f);
                    break;
                }
            }
        }
        const bool keyed = !keys.isEmpty() && keyFields.size() == static_cast<std::size_t>(keys.size());
        if (keyed || tables.size() == 1) {
            plan.schema = schema;
            plan.table = name;
            if (keyed)
                plan.keyFields = std::move(keyFields);
            plan.rowIdKey = !keyed && rowIdColumn;
            break;
        }
    }
    for (int f = 0; f < count; ++f) {
        const bool ours = !plan.table.isEmpty() && sources[f].schema == plan.schema && sources[f].table == plan.table;
        plan.baseColumns << (ours ? sources[f].column : QString());
    }

    // Types: declared by the table where the field is a column, else as the driver reports
    // them; a column of unknown type takes its first value's.
    std::vector<ColumnType> types;
    for (int f = 0; f < count; ++f) {
        const TableColumnInfo* column =
            sources[f].table.isEmpty() ? nullptr
                                       : session.Table(sources[f].schema, sources[f].table).Column(sources[f].column);
        types.push_back(column ? column->type : columns[f].type);
    }

    for (int pass = 0;; ++pass) {
        if (pass > 0)
            statement->Execute(parameters);
        std::vector<Variant> values(static_cast<std::size_t>(count));
        const bool any = statement->Next();
        for (int f = 0; f < count; ++f) {
            if (any)
                values[f] = statement->Value(first + f);
            if (types[f].unknown && any)
                types[f] = TypeOfValue(values[f]);
        }
        std::vector<FieldDef> fields;
        for (int f = 0; f < count; ++f) {
            const TableColumnInfo* column =
                sources[f].table.isEmpty() ? nullptr
                                           : session.Table(sources[f].schema, sources[f].table).Column(sources[f].column);
            FieldDef field;
            field.Name = columns[f].name;
            field.Type = types[f].type;
            field.DefinedSize = FieldTypeInfoOf(field.Type)->storage == StorageKind::Text
                                    ? (types[f].size > 0 ? types[f].size : LongTextSize)
                                    : FieldTypeInfoOf(field.Type)->byteSize;
            field.Precision = types[f].precision;
            field.NumericScale = types[f].scale;
            const bool nullable = column ? !column->notNull : columns[f].nullable != 0;
            int attributes = nullable ? adFldIsNullable | adFldMayBeNull : 0;
            if (IsFixedSize(field.Type))
                attributes |= adFldFixed;
            if (field.Type == adLongVarWChar || field.Type == adLongVarChar)
                attributes |= adFldLong;
            if (!plan.baseColumns[f].isEmpty() && !types[f].binary)
                attributes |= sources[f].fromDriver ? adFldUpdatable : adFldUnknownUpdatable;
            if (std::find(plan.keyFields.begin(), plan.keyFields.end(), f) != plan.keyFields.end()) {
                attributes |= adFldKeyColumn;
                field.KeyColumn = true;
            }
            field.Attributes = attributes;
            field.BaseSchema = sources[f].schema;
            field.BaseTable = sources[f].table;
            field.BaseColumn = sources[f].column;
            field.AutoIncrement = column && column->autoIncrement;
            fields.push_back(std::move(field));
        }
        auto store = std::make_shared<RecordsetStore>(std::move(fields));
        std::vector<std::int64_t> rowIds;
        try {
            for (bool row = any; row; row = statement->Next()) {
                for (int f = 0; f < count; ++f)
                    values[f] = session.FromColumn(statement->Value(first + f), types[f].type);
                if (rowIdColumn)
                    rowIds.push_back(static_cast<std::int64_t>(CDbl(statement->Value(0))));
                store->AppendRow(values);
            }
        } catch (const Error& e) {
            // A value its declared type cannot hold (SQLite checks no types): the field takes
            // the next wider type and the rows are read again.
            if (e.Number() != adErrMultipleStep)
                throw;
            bool widened = false;
            for (int f = 0; f < count && !widened; ++f) {
                if (ConvertForField(values[f], store->Field(f)).status == adFieldOK || values[f].IsNull())
                    continue;
                if (const std::optional<ColumnType> wider = Wider(types[f])) {
                    types[f] = *wider;
                    widened = true;
                }
            }
            statement->Finish();
            if (!widened || pass > 4 * count)
                throw;
            continue;
        }
        statement->Finish();
        store->SetDynamicProperty(QStringLiteral("Unique Table"), Variant(plan.table));
        store->SetDynamicProperty(QStringLiteral("Unique Schema"), Variant(plan.schema));
        store->SetProvider(std::make_shared<SqlRecordsetProvider>(mSession, std::move(plan), std::move(rowIds)));
        result.store = std::move(store);
        return result;
    }
}

}  // namespace korvex::ado
