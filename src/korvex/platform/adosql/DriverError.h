// The errors that come from a database: the driver's own words, under the numbers ADO gives such
// failures, and a kind that tells the batch writer whether the failure belongs to one row (a
// constraint) or ends the whole batch (a lock, a lost connection, a full disk).
#pragma once

#include "korvex/runtime/Error.h"

#include <QString>

namespace korvex::ado {

// Numbers ADO reports for data-source failures.
inline constexpr int adErrUnspecified = -2147467259;        // 0x80004005: connection and I/O failures
inline constexpr int adErrCommandErrors = -2147217900;      // 0x80040E14: the statement failed
inline constexpr int adErrIntegrity = -2147217873;          // 0x80040E2F: a constraint refused a row
inline constexpr int adErrTimeout = -2147217871;            // 0x80040E31: a lock was not granted in time
inline constexpr int adErrRowConflict = -2147217864;        // 0x80040E38: a batch row changed or vanished
inline constexpr int adErrProviderNotFound = 3706;
inline constexpr int adErrInTransaction = 3246;

// ADO's text for a batch whose rows were changed or deleted by someone else.
QString RowConflictDescription();
// The source of errors found by the client cursor itself (conflicts).
inline const QString CursorEngineSource = QStringLiteral("Korvex Cursor Engine");

class DriverError : public Error {
public:
    enum class Kind {
        Statement,   // the statement itself is wrong (syntax, unknown column)
        Integrity,   // a constraint refused this row (unique, check, not null, foreign key)
        Schema,      // this row's value does not fit its column (too long, out of range)
        Busy,        // the database is locked by someone else, or a deadlock was broken
        Connection,  // the connection was refused or lost
        Resource,    // the disk is full, an I/O error, the database is read-only
    };

    // The number follows from the kind (NumberOf).
    DriverError(Kind kind, QString source, QString description);

    Kind ErrorKind() const noexcept { return mKind; }
    // Failures that concern one row: the batch writer refuses that row and goes on.
    bool IsRowError() const noexcept { return mKind == Kind::Integrity || mKind == Kind::Schema; }

    // The number ADO gives a failure of this kind.
    static int NumberOf(Kind kind);

private:
    Kind mKind;
};

}  // namespace korvex::ado
