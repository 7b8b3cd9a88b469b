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
    // A WHERE clause and its parameters. Without text only the parameters and the clause's
    // shape are gathered: rows of one shape share their statement's text, built once.
    struct Condition {
        bool withText = true;
        QString sql;
        std::string shape;
        std::vector<QVariant> parameters;
        void Append(const QString& part);  // nothing without text
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
    WriteEnd RunAttempt(const RecordsetStore& store, std::span<const RowId> rows, Attempt& attempt, bool own);
    WriteEnd WriteRow(const RecordsetStore& store, RowId row, Attempt& attempt);
    void Insert(const RecordsetStore& store, RowId row, Attempt& attempt);
    void Update(const RecordsetStore& store, RowId row, Attempt& attempt);
    void BindValue(SqlStatement& statement, int position, const RecordsetStore& store, RowId row, int field) const;
    void Delete(const RecordsetStore& store, RowId row, Attempt& attempt);
    // The row's key as the data source knows it (underlying values), or its rowid.
    Condition KeyCondition(const RecordsetStore& store, RowId row) const;
    // `originals`: the row's values as read (RecordsetStore::OriginalValues), when at hand.
    void AddKey(Condition& where, const RecordsetStore& store, RowId row, const Variant* originals = nullptr) const;
    void AddMatch(Condition& where, const RecordsetStore& store, RowId row, int field,
                  const Variant* originals = nullptr) const;
    // A row no statement found: still there under its key (changed by someone) or gone.
    int ConflictStatus(const RecordsetStore& store, RowId row) const;
    // Runs a statement that changes rows and returns how many it matched.
    int Change(const QString& sql, const std::vector<QVariant>& parameters) const;
    QString Table() const;

    std::shared_ptr<SqlSession> mSession;
    RecordsetPlan mPlan;
    std::unordered_map<std::string, UpdateText> mUpdateTexts;  // UPDATE statements by shape
    UpdateText* mLastUpdate = nullptr;  // the last row's, under mLastShape
    std::string mLastShape;
    std::string mShapeScratch;
    std::vector<QVariant> mParameterScratch;
    std::vector<int> mChangedScratch;
    std::vector<std::int64_t> mRowIds;
};

}  // namespace korvex::ado
