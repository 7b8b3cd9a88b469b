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
    const QString sql = StatementFor(source, options);
    const SelectStatement select = ParseSelect(sql);
    QString run = sql;
    const bool rowIdColumn = AddRowIdColumn(select, run);

    std::unique_ptr<SqlStatement> statement = mSession->Prepare(run);
    statement->Execute(parameters);
    Result result;
    if (statement->ColumnCount() == 0) {
        result.rowsAffected = statement->RowsAffected();
        statement->Finish();
        return result;
    }
    Columns columns;
    columns.first = rowIdColumn ? 1 : 0;
    const int count = statement->ColumnCount() - columns.first;
    for (int i = 0; i < count; ++i) {
        columns.results.push_back(statement->Column(columns.first + i));
        columns.sources.push_back(SourceOf(columns.results.back(), select));
        columns.types.push_back(DeclaredType(columns.results.back(), columns.sources.back()));
    }
    RecordsetPlan plan = PlanUpdates(columns, rowIdColumn);
    plan.source = sql;
    plan.options = adCmdText;
    plan.parameters = parameters;

    // A value its declared type cannot hold (SQLite checks no types) widens that field's type,
    // and the rows are read again.
    for (int pass = 0;; ++pass) {
        if (pass > 0)
            statement->Execute(parameters);
        const bool any = statement->Next();
        if (any) {
            for (int f = 0; f < count; ++f) {
                if (columns.types[f].unknown)
                    columns.types[f] = TypeOfValue(statement->Value(columns.first + f));
            }
        }
        auto store = std::make_shared<RecordsetStore>(DefineFields(columns, plan));
        std::vector<std::int64_t> rowIds;
        const Loaded loaded = LoadRows(*statement, any, columns, *store, rowIdColumn ? &rowIds : nullptr);
        statement->Finish();
        if (loaded.error) {
            if (!Widen(columns, loaded.refused, *store) || pass > 4 * count)
                throw *loaded.error;
            continue;
        }
        store->SetDynamicProperty(QStringLiteral("Unique Table"), Variant(plan.table));
        store->SetDynamicProperty(QStringLiteral("Unique Schema"), Variant(plan.schema));
        store->SetProvider(std::make_shared<SqlRecordsetProvider>(mSession, std::move(plan), std::move(rowIds)));
        result.store = std::move(store);
        return result;
    }
}

QString SqlRecordsetLoader::StatementFor(const QString& source, int options) const
{
    if (options == adCmdTable || options == adCmdTableDirect) {
        const qsizetype dot = source.lastIndexOf(u'.');
        return QStringLiteral("SELECT * FROM ") + mSession->QuoteTable(dot < 0 ? QString() : source.left(dot), source.mid(dot + 1));
    }
    if (options == adCmdStoredProc)
        RaiseAdo(adErrFeatureNotAvailable);
    return source;
}

bool SqlRecordsetLoader::AddRowIdColumn(const SelectStatement& select, QString& run) const
{
    // SQLite finds rows by rowid when the result lacks the table's key: the loader reads it too.
    SqlSession& session = *mSession;
    if (session.Kind() != SqlSession::Dialect::SQLite || !select.singleTable || !select.rowPerTableRow)
        return false;
    const TableInfo& table = session.Table(select.schema, select.table);
    const QStringList keys = table.KeyColumns();
    bool keySelected = !keys.isEmpty();
    for (const QString& key : keys) {
        const SelectItem* item = select.ItemNamed(key);
        keySelected = keySelected && ((item && item->isColumn && SameName(item->column, key)) || (!item && select.HasStar()));
    }
    if (!table.exists || !table.hasRowId || keySelected)
        return false;
    const QString qualifier =
        select.tableAlias.isEmpty() ? session.QuoteTable(select.schema, select.table) : session.QuoteName(select.tableAlias);
    run.insert(select.listStart, qualifier + QStringLiteral(".rowid, "));
    return true;
}

const TableColumnInfo* SqlRecordsetLoader::BaseColumnOf(const FieldSource& source) const
{
    return source.table.isEmpty() ? nullptr : mSession->Table(source.schema, source.table).Column(source.column);
}

ColumnType SqlRecordsetLoader::DeclaredType(const ResultColumn& column, const FieldSource& source) const
{
    // Declared by the table where the field is a column, else as the driver reports it.
    const TableColumnInfo* base = BaseColumnOf(source);
    return base ? base->type : column.type;
}

RecordsetPlan SqlRecordsetLoader::PlanUpdates(const Columns& columns, bool rowIdColumn) const
{
    RecordsetPlan plan;
    const std::vector<FieldSource>& sources = columns.sources;
    const int count = static_cast<int>(sources.size());
    std::vector<std::pair<QString, QString>> tables;
    for (const FieldSource& s : sources) {
        if (!s.table.isEmpty() && std::find(tables.begin(), tables.end(), std::pair(s.schema, s.table)) == tables.end())
            tables.emplace_back(s.schema, s.table);
    }
    // Several tables (a join): the first whose whole key is in the result takes the changes.
    for (const auto& [schema, name] : tables) {
        const QStringList keys = mSession->Table(schema, name).KeyColumns();
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
    return plan;
}

std::vector<FieldDef> SqlRecordsetLoader::DefineFields(const Columns& columns, const RecordsetPlan& plan) const
{
    std::vector<FieldDef> fields;
    for (std::size_t f = 0; f < columns.results.size(); ++f) {
        const FieldSource& source = columns.sources[f];
        const ColumnType& type = columns.types[f];
        const TableColumnInfo* base = BaseColumnOf(source);
        FieldDef field;
        field.Name = columns.results[f].name;
        field.Type = type.type;
        field.DefinedSize = FieldTypeInfoOf(field.Type)->storage == StorageKind::Text ? (type.size > 0 ? type.size : LongTextSize)
                                                                                      : FieldTypeInfoOf(field.Type)->byteSize;
        field.Precision = type.precision;
        field.NumericScale = type.scale;
        const bool nullable = base ? !base->notNull : columns.results[f].nullable != 0;
        int attributes = nullable ? adFldIsNullable | adFldMayBeNull : 0;
        if (IsFixedSize(field.Type))
            attributes |= adFldFixed;
        if (field.Type == adLongVarWChar || field.Type == adLongVarChar)
            attributes |= adFldLong;
        if (!plan.baseColumns[static_cast<qsizetype>(f)].isEmpty() && !type.binary)
            attributes |= source.fromDriver ? adFldUpdatable : adFldUnknownUpdatable;
        if (std::find(plan.keyFields.begin(), plan.keyFields.end(), static_cast<int>(f)) != plan.keyFields.end()) {
            attributes |= adFldKeyColumn;
            field.KeyColumn = true;
        }
        field.Attributes = attributes;
        field.BaseSchema = source.schema;
        field.BaseTable = source.table;
        field.BaseColumn = source.column;
        field.AutoIncrement = base && base->autoIncrement;
        fields.push_back(std::move(field));
    }
    return fields;
}

SqlRecordsetLoader::Loaded SqlRecordsetLoader::LoadRows(SqlStatement& statement, bool any, const Columns& columns,
                                                        RecordsetStore& store, std::vector<std::int64_t>* rowIds) const
{
    const int count = static_cast<int>(columns.results.size());
    Loaded loaded;
    loaded.refused.resize(static_cast<std::size_t>(count));
    try {
        // Texts are read where the driver keeps them: the store copies them into its columns.
        for (bool row = any; row; row = statement.Next()) {
            for (int f = 0; f < count; ++f)
                loaded.refused[f] = mSession->FromColumn(statement.PeekValue(columns.first + f), columns.types[f].type);
            if (rowIds)
                rowIds->push_back(static_cast<std::int64_t>(CDbl(statement.Value(0))));
            store.AppendRow(loaded.refused);
        }
    } catch (const Error& e) {
        if (e.Number() != adErrMultipleStep)
            throw;
        loaded.error = e;  // the row in `refused` holds a value its field's type cannot take
        // It outlives the statement's row: its texts become copies of their own.
        for (Variant& value : loaded.refused) {
            if (const auto* text = value.As<QString>())
                value = Variant(QStringView(*text).toString());
        }
    }
    return loaded;
}

bool SqlRecordsetLoader::Widen(Columns& columns, const std::vector<Variant>& row, const RecordsetStore& store) const
{
    for (std::size_t f = 0; f < row.size(); ++f) {
        if (row[f].IsNull() || ConvertForField(row[f], store.Field(static_cast<int>(f))).status == adFieldOK)
            continue;
        if (const std::optional<ColumnType> wider = Wider(columns.types[f])) {
            columns.types[f] = *wider;
            return true;
        }
    }
    return false;
}

}  // namespace korvex::ado
