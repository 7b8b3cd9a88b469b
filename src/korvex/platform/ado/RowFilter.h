// Criteria bound to the fields of a store: each clause knows its column and holds its value in the
// column's terms (folded text, a number, a day serial), so testing a row touches no Variant.
// Selecting rows asks the field indexes first and scans only what they cannot answer.
#pragma once

#include "korvex/platform/ado/Criteria.h"
#include "korvex/platform/ado/FoldedText.h"
#include "korvex/platform/ado/RecordsetStore.h"

#include <optional>
#include <string>
#include <vector>

namespace korvex::ado {

class RowFilter {
public:
    // Raises 3001 for a field the store lacks or a value the field's type cannot compare with.
    // The filter reads `store`, which must outlive it.
    RowFilter(const CriteriaNode& criteria, const RecordsetStore& store);

    bool Matches(RowId row) const;
    // The visible rows that match, ascending. `within`, when given, holds every row that can
    // match (the answer of a filter this one narrows), so only those are tested.
    std::vector<RowId> Select(const std::vector<RowId>* within = nullptr) const;
    // True when every row this filter lets through, `wider` lets through too: the same criteria
    // with texts that only say more (a longer prefix, ending or part).
    bool Narrows(const RowFilter& wider) const;
    // Rows that may match, ascending, when field indexes or the folded texts can tell (every row
    // that matches is among them); nullopt when only a scan can.
    std::optional<std::vector<RowId>> Candidates() const;
    // Find takes one clause.
    bool IsSingleClause() const noexcept { return mRoot.kind == Node::Kind::Clause; }

private:
    enum class Test : unsigned char { IsNull, IsNotNull, Text, Number, LikeText, LikeOther };
    enum class Shape : unsigned char { Exact, StartsWith, EndsWith, Contains, Pattern, Anything };

    struct Node {
        enum class Kind : unsigned char { Clause, And, Or };
        Kind kind = Kind::Clause;
        std::vector<Node> children;
        int field = -1;
        CriteriaOp op = CriteriaOp::Equal;
        Test test = Test::IsNull;
        Shape shape = Shape::Exact;
        QString text;
        double number = 0;
        std::string folded;     // Like: the text between leading and trailing wildcards, folded
        FoldedPattern pattern;  // Like with wildcards inside
    };

    // Rows that may match, ascending, as far as indexes and the folded texts can tell; `exact`
    // when they are the very rows that match (visibility aside).
    struct Found {
        std::vector<RowId> rows;
        bool exact = false;
    };

    Node Bind(const CriteriaNode& criteria) const;
    void BindComparison(Node& node, const CriteriaValue& value) const;
    void BindLike(Node& node, const CriteriaValue& value) const;
    bool Matches(const Node& node, RowId row) const;
    static bool MatchesFolded(const Node& node, std::string_view text);
    static bool Narrows(const Node& node, const Node& wider);
    std::optional<Found> Candidates(const Node& node) const;

    const RecordsetStore& mStore;
    Node mRoot;
};

}  // namespace korvex::ado
