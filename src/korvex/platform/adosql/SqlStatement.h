// One prepared statement of a database session: "?" placeholders bound by position, run, then
// read row by row. Each session kind implements it over its own interface to the driver.
#pragma once

#include "korvex/platform/adosql/SqlTypes.h"
#include "korvex/runtime/Variant.h"

#include <QString>
#include <QVariant>

#include <span>
#include <vector>

namespace korvex::ado {

// A result column as the driver describes it.
struct ResultColumn {
    QString name;
    QString baseTable;   // empty when the driver does not tell
    QString baseColumn;  // empty when the driver does not tell
    ColumnType type;     // from the driver's declaration or value type
    int nullable = -1;   // 1 accepts Null, 0 does not, -1 unknown
};

class SqlStatement {
public:
    virtual ~SqlStatement() = default;

    // Binds the parameters in order and runs the statement; throws DriverError. A statement that
    // returns rows is then positioned before its first row.
    virtual void Execute(std::span<const QVariant> parameters) = 0;
    // The same in steps, for a writer that binds straight from where it keeps its values:
    // each parameter by its position from 1, then Run. A text bound with BindText is read where
    // it lies when the statement runs, so it must stay as it is until then; an empty view binds
    // an empty text, not Null.
    virtual void Bind(int position, const QVariant& value)
    {
        if (mBound.size() < static_cast<std::size_t>(position))
            mBound.resize(static_cast<std::size_t>(position));
        mBound[static_cast<std::size_t>(position) - 1] = value;
    }
    virtual void BindText(int position, QStringView text)
    {
        Bind(position, QVariant(text.isNull() ? QString(QLatin1StringView("")) : text.toString()));
    }
    // Numbers bound as they are, without a QVariant on the way where the driver allows it; the
    // same as Bind with a QVariant of int, qlonglong or double.
    virtual void BindInt(int position, int value) { Bind(position, QVariant(value)); }
    virtual void BindInt64(int position, qlonglong value) { Bind(position, QVariant(value)); }
    virtual void BindDouble(int position, double value) { Bind(position, QVariant(value)); }
    virtual void Run()
    {
        Execute(mBound);
        mBound.clear();
    }
    // Rows changed by the last Execute of an INSERT, UPDATE or DELETE (matched rows, in fact:
    // a row set to the values it already had counts).
    virtual int RowsAffected() const = 0;

    virtual int ColumnCount() const = 0;
    virtual ResultColumn Column(int index) const = 0;
    // Moves to the next row; false after the last. Throws DriverError.
    virtual bool Next() = 0;
    // A value of the current row: Null, a text, a Long or Double for numbers, a Date for dates
    // and times, a Boolean for Booleans.
    virtual Variant Value(int index) const = 0;
    // The same, except that a text may lie in the driver's own buffer: it holds only until the
    // statement moves on (Next, Execute, Finish), and whoever keeps it must copy it. Reading
    // rows into a store copies each text once this way instead of twice.
    virtual Variant PeekValue(int index) const { return Value(index); }
    // Drops the rest of the result so that the statement can run again.
    virtual void Finish() = 0;

private:
    std::vector<QVariant> mBound;  // Bind's parameters, where a statement has no binding of its own
};

}  // namespace korvex::ado
