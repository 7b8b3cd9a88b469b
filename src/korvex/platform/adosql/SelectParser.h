// A reader for the simple queries data-entry forms open: "SELECT list FROM one table ...". It tells
// which table the rows come from and which column each result field is, for drivers that do not
// say so themselves. Anything it does not understand (joins, subqueries in FROM, unions) it
// reports as not a single-table query rather than guessing.
#pragma once

#include <QString>

#include <vector>

namespace korvex::ado {

struct SelectItem {
    QString qualifier;  // "t" of "t.col" or "t.*", unquoted; empty when not written
    QString column;     // the column of a plain column reference, unquoted; "*" for a star
    QString alias;      // the name the field gets: the alias, or the column's own name
    bool isColumn = false;  // a plain column reference (or a star), not an expression
};

struct SelectStatement {
    bool isSelect = false;     // it starts with SELECT and its list could be read
    bool singleTable = false;  // FROM names exactly one table, no joins or subqueries
    // Each result row is one row of that table: no DISTINCT, GROUP BY, HAVING, set operators
    // or aggregates without grouping.
    bool rowPerTableRow = false;
    QString schema;      // unquoted, empty when not written
    QString table;       // unquoted
    QString tableAlias;  // unquoted, empty when not written
    qsizetype listStart = -1;  // where the select list starts in the text
    std::vector<SelectItem> items;

    // The item that produces the field named `name` (ignoring case), or nullptr.
    const SelectItem* ItemNamed(const QString& name) const;
    // True when a "*" (or the table's "t.*") could have produced a field of any name.
    bool HasStar() const;
};

SelectStatement ParseSelect(const QString& sql);

}  // namespace korvex::ado
