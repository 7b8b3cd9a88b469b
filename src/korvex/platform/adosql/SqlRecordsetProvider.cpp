// Writing a batch back with optimistic concurrency, reading rows again, running the source again.
#include "korvex/platform/adosql/SqlRecordsetProvider.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/adosql/DriverError.h"
#include "korvex/platform/adosql/SqlRecordsetLoader.h"
#include "korvex/platform/adosql/SqlSession.h"
#include "korvex/runtime/Conversions.h"

#include <cmath>

namespace korvex::ado {
namespace {

// The texts ADO's cursor engine gives a recordset that cannot say where its rows are.
const QString NoBaseTable = QStringLiteral("Insufficient base table information for updating or refreshing.");
const QString NoKey = QStringLiteral("Insufficient key column information for updating or refreshing.");

bool IsPresent(const Variant& value)
{
    return !value.IsNull() && !value.IsEmpty();
}

// A row someone else changed or deleted: refused, and the batch ends in ADO's conflict error.
void Refuse(BatchOutcome& outcome, RowId row, int status)
{
    outcome.refused.emplace_back(row, status);
    if (!outcome.error)
        outcome.error = Error(adErrRowConflict, CursorEngineSource, RowConflictDescription());
}

}  // namespace

// What one attempt at a batch produced; kept only when its transaction commits.
struct SqlRecordsetProvider::Attempt {
    BatchOutcome outcome;
    std::vector<std::pair<RowId, std::int64_t>> rowIds;
    bool guarded = false;  // each row inside its own savepoint
};

SqlRecordsetProvider::SqlRecordsetProvider(std::shared_ptr<SqlSession> session, RecordsetPlan plan,
                                           std::vector<std::int64_t> rowIds)
    : mSession(std::move(session)), mPlan(std::move(plan)), mRowIds(std::move(rowIds))
{
    mIsKey.assign(static_cast<std::size_t>(mPlan.baseColumns.size()), 0);
    for (int field : mPlan.keyFields)
        mIsKey[static_cast<std::size_t>(field)] = 1;
}

SqlSession& SqlRecordsetProvider::Session() const
{
    if (!mSession->IsOpen())
        RaiseAdo(adErrInvalidConnection);
    return *mSession;
}

QString SqlRecordsetProvider::Table() const
{
    return mSession->QuoteTable(mPlan.schema, mPlan.table);
}

void SqlRecordsetProvider::RequireKey() const
{
    if (mPlan.table.isEmpty())
        throw Error(adErrUnspecified, CursorEngineSource, NoBaseTable);
    if (mPlan.keyFields.empty() && !mPlan.rowIdKey)
        throw Error(adErrUnspecified, CursorEngineSource, NoKey);
}

BatchOutcome SqlRecordsetProvider::UpdateBatch(const RecordsetStore& store, std::span<const RowId> rows)
{
    SqlSession& session = Session();
    if (mPlan.table.isEmpty())
        throw Error(adErrUnspecified, CursorEngineSource, NoBaseTable);
    // Inside the caller's own transaction the batch keeps to a savepoint, so that a failure
    // takes back this batch's statements and nothing of the caller's.
    const bool own = !session.InTransaction();
    bool guarded = !own && session.FailureEndsTransaction();
    for (;;) {
        Attempt attempt;
        attempt.guarded = guarded;
        if (RunAttempt(store, rows, attempt, own) == WriteEnd::RetryGuarded) {
            // A row failed where a failure ends the whole transaction: start again with each row
            // inside a savepoint of its own.
            guarded = true;
            continue;
        }
        for (const auto& [row, id] : attempt.rowIds) {
            if (mRowIds.size() <= row)
                mRowIds.resize(row + 1, 0);
            mRowIds[row] = id;
        }
        return std::move(attempt.outcome);
    }
}

SqlRecordsetProvider::WriteEnd SqlRecordsetProvider::RunAttempt(const RecordsetStore& store, std::span<const RowId> rows,
                                                                  Attempt& attempt, bool own)
{
    SqlSession& session = *mSession;
    const QString batchPoint = QStringLiteral("korvex_batch");
    // Nothing of an attempt that does not finish stays written: every row keeps its changes.
    const auto takeBack = [&] {
        try {
            if (own && session.InTransaction())
                session.Rollback();
            else if (!own && session.SupportsSavepoints())
                session.Run(QStringLiteral("ROLLBACK TO SAVEPOINT ") + batchPoint);
        } catch (const Error&) {
            // The connection is gone: the server has dropped the transaction with it.
        }
    };
    try {
        if (own)
            session.Begin(true);
        else if (session.SupportsSavepoints())
            session.Run(QStringLiteral("SAVEPOINT ") + batchPoint);
        for (RowId row : rows) {
            if (WriteRow(store, row, attempt) == WriteEnd::RetryGuarded) {
                takeBack();
                return WriteEnd::RetryGuarded;
            }
        }
        if (own)
            session.Commit();
        else if (session.SupportsSavepoints())
            session.Run(QStringLiteral("RELEASE SAVEPOINT ") + batchPoint);
    } catch (...) {
        takeBack();
        throw;
    }
    return WriteEnd::Done;
}

SqlRecordsetProvider::WriteEnd SqlRecordsetProvider::WriteRow(const RecordsetStore& store, RowId row, Attempt& attempt)
{
    SqlSession& session = *mSession;
    const QString rowPoint = QStringLiteral("korvex_row");
    if (attempt.guarded)
        session.Run(QStringLiteral("SAVEPOINT ") + rowPoint);
    try {
        const int status = store.Status(row);
        if (status & adRecNew)
            Insert(store, row, attempt);
        else if (status & adRecDeleted)
            Delete(store, row, attempt);
        else if (status & adRecModified)
            Update(store, row, attempt);
        if (attempt.guarded)
            session.Run(QStringLiteral("RELEASE SAVEPOINT ") + rowPoint);
    } catch (const DriverError& e) {
        if (!e.IsRowError())
            throw;
        if (session.FailureEndsTransaction()) {
            if (!attempt.guarded)
                return WriteEnd::RetryGuarded;
            session.Run(QStringLiteral("ROLLBACK TO SAVEPOINT ") + rowPoint);
            session.Run(QStringLiteral("RELEASE SAVEPOINT ") + rowPoint);
        }
        // The row stays pending with the reason; the batch goes on with the others.
        const int flag = e.ErrorKind() == DriverError::Kind::Integrity ? adRecIntegrityViolation : adRecSchemaViolation;
        attempt.outcome.refused.emplace_back(row, flag);
        if (!attempt.outcome.error)
            attempt.outcome.error = static_cast<const Error&>(e);
    }
    return WriteEnd::Done;
}

SqlRecordsetProvider::Condition SqlRecordsetProvider::KeyCondition(const RecordsetStore& store, RowId row) const
{
    RequireKey();
    Condition where;
    if (mPlan.rowIdKey) {
        where.sql = MatchText(MatchKind::RowId, -1);
        where.matches.push_back({MatchKind::RowId, adBigInt, Variant(), RowIdOf(row)});
        return where;
    }
    for (int field : mPlan.keyFields)
        AddMatch(where, store, row, field);
    return where;
}

void SqlRecordsetProvider::AddMatch(Condition& where, const RecordsetStore& store, RowId row, int field) const
{
    const FieldDef& def = store.Field(field);
    // The values as read are the data source's, unless a Resync has told otherwise.
    Variant value = store.UnderlyingValue(row, field);
    const MatchKind kind = KindOf(def, value);
    if (!where.sql.isEmpty())
        where.sql += QStringLiteral(" AND ");
    where.sql += MatchText(kind, field);
    where.matches.push_back({kind, def.Type, std::move(value)});
}

SqlRecordsetProvider::MatchKind SqlRecordsetProvider::KindOf(const FieldDef& def, const Variant& value)
{
    if (!IsPresent(value))
        return MatchKind::Null;
    switch (def.Info().storage) {
    case StorageKind::Date: return MatchKind::Date;
    case StorageKind::Real: return MatchKind::Real;
    default: return MatchKind::Equal;
    }
}

QString SqlRecordsetProvider::MatchText(MatchKind kind, int field) const
{
    const SqlSession& session = *mSession;
    if (kind == MatchKind::RowId)
        return QStringLiteral("rowid = ?");
    const QString column = session.QuoteName(mPlan.baseColumns[field]);
    switch (kind) {
    case MatchKind::Null: return column + QStringLiteral(" IS NULL");
    case MatchKind::Date: return session.DateMatch(column);
    // Binary floating point does not always survive a driver's text form exactly (SQLite's
    // ODBC driver reads 0.30000000000000004 as 0.3): equal within a relative 1e-12.
    case MatchKind::Real: return QStringLiteral("ABS(%1 - ?) <= ?").arg(column);
    default: return column + QStringLiteral(" = ?");
    }
}

void SqlRecordsetProvider::BindMatch(SqlStatement& statement, int& position, MatchKind kind, const Variant& value,
                                     DataTypeEnum type, std::int64_t rowId) const
{
    switch (kind) {
    case MatchKind::Null: break;
    case MatchKind::RowId: statement.BindInt64(position++, rowId); break;
    case MatchKind::Date:
        for (const QVariant& parameter : mSession->DateParameters(value, type))
            statement.Bind(position++, parameter);
        break;
    case MatchKind::Real: {
        const double number = CDbl(value);
        statement.BindDouble(position++, number);
        statement.BindDouble(position++, std::abs(number) * 1e-12);
        break;
    }
    case MatchKind::Equal: BindVariant(statement, position++, value, type); break;
    }
}

void SqlRecordsetProvider::BindVariant(SqlStatement& statement, int position, const Variant& value,
                                       DataTypeEnum type) const
{
    // What ToParameter makes of these in every session, bound without making it.
    if (const auto* text = value.As<QString>())
        statement.BindText(position, *text);
    else if (const auto* l = value.As<std::int32_t>())
        statement.BindInt(position, *l);
    else if (const auto* i = value.As<std::int16_t>())
        statement.BindInt(position, *i);
    else if (const auto* u = value.As<std::uint8_t>())
        statement.BindInt(position, *u);
    else
        statement.Bind(position, mSession->ToParameter(value, type));
}

SqlStatement& SqlRecordsetProvider::RunWith(const QString& sql, const Condition& where) const
{
    SqlStatement& statement = mSession->Cached(sql);
    int position = 1;
    for (const Match& match : where.matches)
        BindMatch(statement, position, match.kind, match.value, match.type, match.rowId);
    statement.Run();
    return statement;
}

int SqlRecordsetProvider::ConflictStatus(const RecordsetStore& store, RowId row) const
{
    const Condition key = KeyCondition(store, row);
    SqlStatement& statement = RunWith(QStringLiteral("SELECT 1 FROM %1 WHERE %2").arg(Table(), key.sql), key);
    const bool exists = statement.Next();
    statement.Finish();
    return exists ? adRecConcurrencyViolation : adRecDBDeleted;
}

void SqlRecordsetProvider::Update(const RecordsetStore& store, RowId row, Attempt& attempt)
{
    // A row sent in a batch of thousands: its values go from the store to the statement without
    // a copy, and rows of one shape share one statement, found without a lookup when the row
    // before had the same shape.
    const Variant* originals = store.OriginalValues(row);
    if (!originals)
        return;  // nothing kept as read: nothing changed
    std::vector<int>& changed = mChangedScratch;
    changed.clear();
    std::string& shape = mShapeScratch;
    shape.clear();
    const std::uint64_t written = store.WrittenFields(row);
    for (int f = 0; f < store.FieldCount(); ++f) {
        if (!((written >> std::min(f, 63)) & 1) || mPlan.baseColumns[f].isEmpty())
            continue;  // never written: as read
        if (store.ValueIs(row, f, originals[f]))
            continue;  // changed and changed back: nothing to send
        changed.push_back(f);
        shape += static_cast<char>('0' + f % 64);
        shape += static_cast<char>('0' + f / 64);
    }
    if (changed.empty())
        return;
    RequireKey();
    // The row is found by its key and by the values the changed columns had: as read, unless a
    // Resync has told otherwise.
    const Variant* matched = originals;
    if (store.HasResyncedValues()) {
        mUnderlyingScratch.clear();
        for (int f = 0; f < store.FieldCount(); ++f)
            mUnderlyingScratch.push_back(store.UnderlyingValue(row, f));
        matched = mUnderlyingScratch.data();
    }
    std::vector<int>& matches = mMatchScratch;
    matches.clear();
    if (!mPlan.rowIdKey)
        matches = mPlan.keyFields;
    for (int f : changed) {
        if (mPlan.rowIdKey || !IsKey(f))
            matches.push_back(f);
    }
    shape += '|';
    if (mPlan.rowIdKey)
        shape += static_cast<char>(MatchKind::RowId);
    const std::size_t kinds = shape.size();  // each match's kind, in order, from here on
    for (int f : matches)
        shape += static_cast<char>(KindOf(store.Field(f), matched[f]));
    if (!mLastUpdate || shape != mLastShape) {
        mLastUpdate = &mUpdateTexts[shape];
        mLastShape = shape;
    }
    UpdateText& text = *mLastUpdate;
    if (text.sql.isEmpty()) {
        QStringList assignments;
        for (int f : changed)
            assignments << mSession->QuoteName(mPlan.baseColumns[f]) + QStringLiteral(" = ?");
        QStringList conditions;
        if (mPlan.rowIdKey)
            conditions << MatchText(MatchKind::RowId, -1);
        for (std::size_t i = 0; i < matches.size(); ++i)
            conditions << MatchText(static_cast<MatchKind>(shape[kinds + i]), matches[i]);
        text.sql = QStringLiteral("UPDATE %1 SET %2 WHERE %3")
                       .arg(Table(), assignments.join(QStringLiteral(", ")), conditions.join(QStringLiteral(" AND ")));
    }
    if (!text.statement || text.generation != mSession->Generation()) {
        text.statement = &mSession->Cached(text.sql);
        text.generation = mSession->Generation();
    }
    SqlStatement& statement = *text.statement;
    int position = 1;
    for (int f : changed)
        BindValue(statement, position++, store, row, f);
    if (mPlan.rowIdKey)
        BindMatch(statement, position, MatchKind::RowId, Variant(), adBigInt, RowIdOf(row));
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const int f = matches[i];
        BindMatch(statement, position, static_cast<MatchKind>(shape[kinds + i]), matched[f], store.Field(f).Type);
    }
    statement.Run();
    const int affected = statement.RowsAffected();
    statement.Finish();
    if (affected == 0)
        Refuse(attempt.outcome, row, ConflictStatus(store, row));
}

void SqlRecordsetProvider::BindValue(SqlStatement& statement, int position, const RecordsetStore& store, RowId row,
                                     int field) const
{
    const Column& column = store.ColumnOf(field);
    const FieldDef& def = store.Field(field);
    // A text goes from where the column keeps it; Null and padded texts the way the session
    // sends them; numbers as they are.
    if (column.IsNull(row) || (column.Storage() == StorageKind::Text && def.Info().padded))
        statement.Bind(position, mSession->ToParameter(column.Get(row), def.Type));
    else if (column.Storage() == StorageKind::Text)
        statement.BindText(position, column.Text(row));
    else  // no storage but text gives a text, so nothing bound here points into the temporary
        BindVariant(statement, position, column.Get(row), def.Type);
}

void SqlRecordsetProvider::Delete(const RecordsetStore& store, RowId row, Attempt& attempt)
{
    // The whole row as read must still be there: deleting a row someone changed meanwhile
    // would throw their change away unseen.
    Condition where = KeyCondition(store, row);
    for (int f = 0; f < store.FieldCount(); ++f) {
        const bool comparable = mSession->Kind() != SqlSession::Dialect::ODBC || !(store.Field(f).Attributes & adFldLong);
        if (!IsKey(f) && comparable && !mPlan.baseColumns[f].isEmpty() && store.Field(f).IsUpdatable())
            AddMatch(where, store, row, f);
    }
    SqlStatement& statement = RunWith(QStringLiteral("DELETE FROM %1 WHERE %2").arg(Table(), where.sql), where);
    const int affected = statement.RowsAffected();
    statement.Finish();
    if (affected == 0)
        Refuse(attempt.outcome, row, ConflictStatus(store, row));
}

void SqlRecordsetProvider::Insert(const RecordsetStore& store, RowId row, Attempt& attempt)
{
    SqlSession& session = *mSession;
    // Columns left Null are left out, so that the table's defaults and generated keys apply.
    QStringList columns;
    QStringList marks;
    std::vector<QVariant> parameters;
    for (int f = 0; f < store.FieldCount(); ++f) {
        const Variant value = store.Value(row, f);
        if (mPlan.baseColumns[f].isEmpty() || !IsPresent(value) || !store.Field(f).IsUpdatable())
            continue;
        columns << session.QuoteName(mPlan.baseColumns[f]);
        marks << QStringLiteral("?");
        parameters.push_back(session.ToParameter(value, store.Field(f).Type));
    }
    std::vector<int> generated;
    QStringList returning;
    for (int f : mPlan.keyFields) {
        if (!IsPresent(store.Value(row, f))) {
            // Left to the database to fill in (a serial, identity or rowid key) or left Null.
            generated.push_back(f);
            returning << session.QuoteName(mPlan.baseColumns[f]);
        }
    }
    const QString clause = session.ReturningClause(returning);
    QString sql = columns.isEmpty()
                      ? QStringLiteral("INSERT INTO %1 DEFAULT VALUES").arg(Table())
                      : QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)").arg(Table(), columns.join(QStringLiteral(", ")),
                                                                             marks.join(QStringLiteral(", ")));
    SqlStatement& statement = session.Cached(sql + clause);
    statement.Execute(parameters);
    if (!clause.isEmpty() && statement.Next()) {
        for (std::size_t i = 0; i < generated.size(); ++i)
            attempt.outcome.values.push_back(
                {row, generated[i], session.FromColumn(statement.Value(static_cast<int>(i)), store.Field(generated[i]).Type)});
    }
    statement.Finish();
    // Without RETURNING the server names the key it generated, when it can: only a key it
    // generates itself is worth asking for.
    const bool generatedKey = generated.size() == 1 && (store.Field(generated.front()).AutoIncrement ||
                                                        (session.Kind() == SqlSession::Dialect::ODBC &&
                                                         store.Field(generated.front()).Info().storage == StorageKind::Integer));
    if (clause.isEmpty() && (generatedKey || mPlan.rowIdKey)) {
        if (const std::optional<Variant> key = session.LastGeneratedKey()) {
            if (generatedKey)
                attempt.outcome.values.push_back({row, generated.front(), *key});
            if (mPlan.rowIdKey && key->IsNumber())
                attempt.rowIds.emplace_back(row, static_cast<std::int64_t>(CDbl(*key)));
        }
    }
}

void SqlRecordsetProvider::Resync(RecordsetStore& store, std::span<const RowId> rows, ResyncEnum values)
{
    SqlSession& session = Session();
    RequireKey();
    QStringList columns;
    std::vector<int> fields;
    for (int f = 0; f < store.FieldCount(); ++f) {
        if (!mPlan.baseColumns[f].isEmpty()) {
            columns << session.QuoteName(mPlan.baseColumns[f]);
            fields.push_back(f);
        }
    }
    for (RowId row : rows) {
        if (store.Status(row) & adRecNew)
            continue;  // not at the data source yet: nothing to read
        const Condition key = KeyCondition(store, row);
        SqlStatement& statement =
            RunWith(QStringLiteral("SELECT %1 FROM %2 WHERE %3").arg(columns.join(QStringLiteral(", ")), Table(), key.sql), key);
        if (!statement.Next()) {
            statement.Finish();
            store.AddStatusFlags(row, adRecDBDeleted);
            continue;
        }
        std::vector<Variant> read;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const FieldDef& def = store.Field(fields[i]);
            Variant value = session.FromColumn(statement.Value(static_cast<int>(i)), def.Type);
            if (IsPresent(value)) {
                FieldInput input = ConvertForField(value, def);
                if (input.status == adFieldOK)
                    value = std::move(input.value);
            }
            read.push_back(std::move(value));
        }
        statement.Finish();
        if (values == adResyncUnderlyingValues) {
            for (std::size_t i = 0; i < fields.size(); ++i)
                store.SetUnderlyingValue(row, fields[i], read[i]);
        } else {
            std::vector<Variant> all;
            for (int f = 0; f < store.FieldCount(); ++f)
                all.push_back(store.Value(row, f));
            for (std::size_t i = 0; i < fields.size(); ++i)
                all[static_cast<std::size_t>(fields[i])] = read[i];
            store.ReplaceValues(row, all);
        }
    }
}

std::shared_ptr<RecordsetStore> SqlRecordsetProvider::Requery(const RecordsetStore&)
{
    Session();
    SqlRecordsetLoader loader(mSession);
    SqlRecordsetLoader::Result result = loader.Run(mPlan.source, mPlan.options, mPlan.parameters);
    if (!result.store)
        RaiseAdo(adErrInvalidArgument);
    return result.store;
}

}  // namespace korvex::ado
