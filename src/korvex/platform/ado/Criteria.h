// The text of Filter and Find criteria and of Sort, read into a small tree: clauses of a field, an
// operator and a value, joined by AND and OR with parentheses. The reader knows the syntax only;
// RowFilter and RowSorter give the names and values their meaning against a recordset's fields.
// Anything malformed raises ADO's invalid-argument error (3001).
#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace korvex::ado {

enum class CriteriaOp : unsigned char { Equal, NotEqual, Less, Greater, LessEqual, GreaterEqual, Like };

struct CriteriaValue {
    enum class Kind : unsigned char { Text, Number, Date, Null };
    Kind kind = Kind::Null;
    QString text;       // the value as written (quotes and # removed, '' made ')
    double number = 0;  // Number: the value; Date: the day serial
};

struct CriteriaNode {
    enum class Kind : unsigned char { Clause, And, Or };
    Kind kind = Kind::Clause;
    std::vector<CriteriaNode> children;  // And, Or
    QString field;                       // Clause
    CriteriaOp op = CriteriaOp::Equal;
    CriteriaValue value;
};

// Filter criteria. AND and OR have no precedence over each other in ADO's rule book; clauses group
// with parentheses, except that a group joined by OR may not be joined to more by AND.
CriteriaNode ParseCriteria(QStringView text);

struct SortTerm {
    QString field;
    bool descending = false;
};

// "Field [ASC|DESC], ..."; field names with blanks stand in brackets.
std::vector<SortTerm> ParseSortTerms(QStringView text);

}  // namespace korvex::ado
