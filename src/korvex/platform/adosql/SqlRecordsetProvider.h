// The data source behind a recordset opened on a Connection. It writes pending changes back the
// way ADO's batch-optimistic cursor does: each UPDATE or DELETE finds its row by key and by the
// values it had when read (the underlying values, after a Resync), so that a row changed or
// deleted by someone else meanwhile is refused rather than overwritten, and the other rows are
// still written. It also reads rows again (Resync) and runs the source again (Requery).
#pragma once

#include "korvex/platform/ado/RecordsetProvider.h"
#include "korvex/platform/ado/RecordsetStore.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace korvex::ado {

class SqlSession;
class SqlStatement;

// What the loader learnt about a source: how to run it again, and where its rows are written.
struct RecordsetPlan {
    QString source;  // the statement as run (without the rowid the loader may add)
    int options = -1;
    std::vector<QVariant> parameters;
    // The table changes are written to; empty when no field can be written.
    QString schema;
    QString table;
    std::vector<int> keyFields;  // the fields holding the table's key, in key order
    bool rowIdKey = false;       // rows are found by SQLite's rowid instead
    QStringList baseColumns;     // per field: its column in the table, empty when none
};

class SqlRecordsetProvider : public RecordsetProvider {
public:
    // `rowIds`: the rowid of each loaded row, by row number (rowIdKey only).
    SqlRecordsetProvider(std::shared_ptr<SqlSession> session, RecordsetPlan plan, std::vector<std::int64_t> rowIds);

    BatchOutcome UpdateBatch(const RecordsetStore& store, std::span<const RowId> rows) override;
    void Resync(RecordsetStore& store, std::span<const RowId> rows, ResyncEnum values) override;
    std::shared_ptr<RecordsetStore> Requery(const RecordsetStore& store) override;

private:
    // How a value as read is found again in a WHERE clause: IS NULL, a date range, a real number
    // within a tolerance, equality, or SQLite's rowid.
    enum class MatchKind : char { Null = 'N', Date = 'D', Real = 'R', Equal = 'V', RowId = 'I' };
    struct Match {
        MatchKind kind;
        DataTypeEnum type;
        Variant value;           // not for RowId
        std::int64_t rowId = 0;  // RowId only
    };
    // A WHERE clause and the values it is bound with, in order.
    struct Condition {
        QString sql;
        std::vector<Match> matches;
    };
    // An UPDATE of one shape: its text, and its statement while the session that prepared it
    // is still open.
    struct UpdateText {
        QString sql;
        SqlStatement* statement = nullptr;
        std::uint64_t generation = 0;
    };
    struct Attempt;
    // How an attempt at a batch, or one row of it, ended: done (written or refused), or to be
    // tried again with each row in a savepoint of its own.
    enum class WriteEnd { Done, RetryGuarded };

    SqlSession& Session() const;
    void RequireKey() const;
    bool IsKey(int field) const { return mIsKey[static_cast<std::size_t>(field)] != 0; }
    WriteEnd RunAttempt(const RecordsetStore& store, std::span<const RowId> rows, Attempt& attempt, bool own);
    WriteEnd WriteRow(const RecordsetStore& store, RowId row, Attempt& attempt);
    void Insert(const RecordsetStore& store, RowId row, Attempt& attempt);
    void Update(const RecordsetStore& store, RowId row, Attempt& attempt);
    void Delete(const RecordsetStore& store, RowId row, Attempt& attempt);
    std::int64_t RowIdOf(RowId row) const { return row < mRowIds.size() ? mRowIds[row] : 0; }
    // The row's key as the data source knows it (underlying values), or its rowid.
    Condition KeyCondition(const RecordsetStore& store, RowId row) const;
    void AddMatch(Condition& where, const RecordsetStore& store, RowId row, int field) const;
    static MatchKind KindOf(const FieldDef& def, const Variant& value);
    QString MatchText(MatchKind kind, int field) const;
    void BindMatch(SqlStatement& statement, int& position, MatchKind kind, const Variant& value, DataTypeEnum type,
                   std::int64_t rowId = 0) const;
    // A value as the session sends it, numbers and texts without a QVariant on the way; a text
    // is read where it lies, so `value` must outlive the statement's run.
    void BindVariant(SqlStatement& statement, int position, const Variant& value, DataTypeEnum type) const;
    void BindValue(SqlStatement& statement, int position, const RecordsetStore& store, RowId row, int field) const;
    // Runs a statement bound with the condition's values and returns it, its rows (if any)
    // still to be read; Finish it after.
    SqlStatement& RunWith(const QString& sql, const Condition& where) const;
    // A row no statement found: still there under its key (changed by someone) or gone.
    int ConflictStatus(const RecordsetStore& store, RowId row) const;
    QString Table() const;

    std::shared_ptr<SqlSession> mSession;
    RecordsetPlan mPlan;
    std::unordered_map<std::string, UpdateText> mUpdateTexts;  // UPDATE statements by shape
    UpdateText* mLastUpdate = nullptr;  // the last row's, under mLastShape
    std::string mLastShape;
    std::string mShapeScratch;
    std::vector<int> mChangedScratch;
    std::vector<int> mMatchScratch;
    std::vector<Variant> mUnderlyingScratch;
    std::vector<char> mIsKey;  // per field
    std::vector<std::int64_t> mRowIds;
};

}  // namespace korvex::ado
