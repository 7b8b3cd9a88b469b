// Binding criteria to fields, testing rows and selecting them through indexes or a scan.
#include "korvex/platform/ado/RowFilter.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/ado/TextCompare.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <algorithm>

namespace korvex::ado {
namespace {

bool Holds(CriteriaOp op, int comparison)
{
    switch (op) {
    case CriteriaOp::Equal: return comparison == 0;
    case CriteriaOp::NotEqual: return comparison != 0;
    case CriteriaOp::Less: return comparison < 0;
    case CriteriaOp::Greater: return comparison > 0;
    case CriteriaOp::LessEqual: return comparison <= 0;
    case CriteriaOp::GreaterEqual: return comparison >= 0;
    case CriteriaOp::Like: return comparison == 0;
    }
    return false;
}

bool IsWildcard(QChar c)
{
    return c == u'*' || c == u'%';
}

std::vector<RowId> Union(const std::vector<RowId>& a, const std::vector<RowId>& b)
{
    std::vector<RowId> out;
    out.reserve(a.size() + b.size());
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(out));
    return out;
}

}  // namespace

RowFilter::RowFilter(const CriteriaNode& criteria, const RecordsetStore& store) : mStore(store), mRoot(Bind(criteria)) {}

RowFilter::Node RowFilter::Bind(const CriteriaNode& criteria) const
{
    Node node;
    if (criteria.kind != CriteriaNode::Kind::Clause) {
        node.kind = criteria.kind == CriteriaNode::Kind::And ? Node::Kind::And : Node::Kind::Or;
        for (const CriteriaNode& child : criteria.children)
            node.children.push_back(Bind(child));
        return node;
    }
    node.field = mStore.FieldIndexOf(criteria.field);
    if (node.field < 0)
        RaiseAdo(adErrInvalidArgument);
    node.op = criteria.op;
    if (criteria.value.kind == CriteriaValue::Kind::Null) {
        // Only "= Null" and "<> Null" mean anything.
        if (node.op != CriteriaOp::Equal && node.op != CriteriaOp::NotEqual)
            RaiseAdo(adErrInvalidArgument);
        node.test = node.op == CriteriaOp::Equal ? Test::IsNull : Test::IsNotNull;
    } else if (node.op == CriteriaOp::Like) {
        BindLike(node, criteria.value);
    } else {
        BindComparison(node, criteria.value);
    }
    return node;
}

void RowFilter::BindComparison(Node& node, const CriteriaValue& value) const
{
    const FieldDef& field = mStore.Field(node.field);
    if (field.IsText()) {
        node.test = Test::Text;
        node.text = value.text;
        return;
    }
    node.test = Test::Number;
    if (value.kind == CriteriaValue::Kind::Number || value.kind == CriteriaValue::Kind::Date) {
        node.number = value.number;
    } else {
        // A quoted value against a number, date or boolean field is read as the field's type.
        try {
            switch (field.Info().storage) {
            case StorageKind::Date: node.number = CDate(Variant(value.text)).serial; break;
            case StorageKind::Boolean: node.number = CBool(Variant(value.text)) ? -1 : 0; break;
            default: node.number = CDbl(Variant(value.text)); break;
            }
        } catch (const Error&) {
            RaiseAdo(adErrInvalidArgument);
        }
    }
    if (field.Info().storage == StorageKind::Boolean)
        node.number = node.number != 0 ? -1 : 0;
}

void RowFilter::BindLike(Node& node, const CriteriaValue& value) const
{
    if (value.kind != CriteriaValue::Kind::Text)
        RaiseAdo(adErrInvalidArgument);
    // Wildcards may stand anywhere: the pieces between them are matched in order.
    const QStringView text = value.text;
    const bool lead = !text.isEmpty() && IsWildcard(text.front());
    const bool trail = !text.isEmpty() && IsWildcard(text.back());
    std::vector<std::string> pieces;
    qsizetype begin = 0;
    for (qsizetype i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !IsWildcard(text[i]))
            continue;
        if (i > begin)
            pieces.push_back(Folded(text.sliced(begin, i - begin)));
        begin = i + 1;
    }
    node.test = mStore.Field(node.field).IsText() ? Test::LikeText : Test::LikeOther;
    if (pieces.empty()) {
        node.shape = lead ? Shape::Anything : Shape::Exact;  // "%" is anything, "" the empty text
        return;
    }
    if (pieces.size() > 1) {
        node.shape = Shape::Pattern;
        node.pattern = {std::move(pieces), lead, trail};
        return;
    }
    node.folded = std::move(pieces.front());
    node.shape = lead && trail ? Shape::Contains : lead ? Shape::EndsWith : trail ? Shape::StartsWith : Shape::Exact;
}

bool RowFilter::Matches(RowId row) const
{
    return Matches(mRoot, row);
}

bool RowFilter::MatchesFolded(const Node& node, std::string_view text)
{
    switch (node.shape) {
    case Shape::Exact: return text == node.folded;
    case Shape::StartsWith: return text.starts_with(node.folded);
    case Shape::EndsWith: return text.ends_with(node.folded);
    case Shape::Contains: return FindBytes(text, node.folded) != std::string_view::npos;
    case Shape::Pattern: return node.pattern.Matches(text);
    case Shape::Anything: return true;
    }
    return false;
}

bool RowFilter::Matches(const Node& node, RowId row) const
{
    switch (node.kind) {
    case Node::Kind::And:
        return std::all_of(node.children.begin(), node.children.end(),
                           [&](const Node& child) { return Matches(child, row); });
    case Node::Kind::Or:
        return std::any_of(node.children.begin(), node.children.end(),
                           [&](const Node& child) { return Matches(child, row); });
    case Node::Kind::Clause: break;
    }
    const Column& column = mStore.ColumnOf(node.field);
    const bool null = column.IsNull(row);
    switch (node.test) {
    case Test::IsNull: return null;
    case Test::IsNotNull: return !null;
    case Test::Text: return !null && Holds(node.op, CompareNoCase(column.Text(row), node.text));
    case Test::Number: {
        if (null)
            return false;
        const double value = column.Number(row);
        return Holds(node.op, value < node.number ? -1 : (value > node.number ? 1 : 0));
    }
    case Test::LikeText: return !null && MatchesFolded(node, column.Folded().View(row));
    case Test::LikeOther: return !null && MatchesFolded(node, Folded(CStr(column.Get(row))));
    }
    return false;
}

bool RowFilter::Narrows(const RowFilter& wider) const
{
    return &mStore == &wider.mStore && Narrows(mRoot, wider.mRoot);
}

bool RowFilter::Narrows(const Node& node, const Node& wider)
{
    if (node.kind != wider.kind || node.children.size() != wider.children.size())
        return false;
    if (node.kind != Node::Kind::Clause) {
        for (std::size_t i = 0; i < node.children.size(); ++i) {
            if (!Narrows(node.children[i], wider.children[i]))
                return false;
        }
        return true;
    }
    if (node.field != wider.field || node.test != wider.test || node.op != wider.op)
        return false;
    if (node.test != Test::LikeText && node.test != Test::LikeOther)
        return node.text == wider.text && node.number == wider.number;
    const std::string_view now = node.folded;
    const bool single = node.shape != Shape::Pattern && node.shape != Shape::Anything;
    switch (wider.shape) {
    case Shape::Anything: return true;
    case Shape::Contains: return single && now.find(wider.folded) != std::string_view::npos;
    case Shape::StartsWith:
        return (node.shape == Shape::StartsWith || node.shape == Shape::Exact) && now.starts_with(wider.folded);
    case Shape::EndsWith:
        return (node.shape == Shape::EndsWith || node.shape == Shape::Exact) && now.ends_with(wider.folded);
    case Shape::Exact: return node.shape == Shape::Exact && now == wider.folded;
    case Shape::Pattern:
        return node.shape == Shape::Pattern && node.pattern.pieces == wider.pattern.pieces &&
               node.pattern.lead == wider.pattern.lead && node.pattern.trail == wider.pattern.trail;
    }
    return false;
}

std::optional<std::vector<RowId>> RowFilter::Candidates() const
{
    auto found = Candidates(mRoot);
    if (!found)
        return std::nullopt;
    return std::move(found->rows);
}

std::optional<RowFilter::Found> RowFilter::Candidates(const Node& node) const
{
    switch (node.kind) {
    case Node::Kind::And: {
        // Each answered clause narrows an AND: the rows all of them allow.
        std::optional<Found> all;
        bool exact = true;
        for (const Node& child : node.children) {
            auto found = Candidates(child);
            if (!found) {
                exact = false;
                continue;
            }
            exact = exact && found->exact;
            if (!all) {
                all = std::move(found);
                continue;
            }
            std::vector<RowId> both;
            std::set_intersection(all->rows.begin(), all->rows.end(), found->rows.begin(), found->rows.end(),
                                  std::back_inserter(both));
            all->rows = std::move(both);
        }
        if (all)
            all->exact = exact;
        return all;
    }
    case Node::Kind::Or: {
        // An OR needs every branch answered.
        Found all{{}, true};
        for (const Node& child : node.children) {
            auto found = Candidates(child);
            if (!found)
                return std::nullopt;
            all.rows = Union(all.rows, found->rows);
            all.exact = all.exact && found->exact;
        }
        return all;
    }
    case Node::Kind::Clause: break;
    }
    if (node.test == Test::LikeText && node.shape == Shape::Contains)
        return Found{mStore.ColumnOf(node.field).Folded().Containing(node.folded), true};
    if (node.test == Test::LikeText && node.shape == Shape::Pattern)
        return Found{mStore.ColumnOf(node.field).Folded().Containing(node.pattern.Longest()), false};
    const FieldIndex* index = mStore.IndexOf(node.field);
    if (!index)
        return std::nullopt;
    if (index->Numeric())
        return node.test == Test::Number && node.op == CriteriaOp::Equal
                   ? std::optional<Found>(Found{index->EqualNumber(node.number), true})
                   : std::nullopt;
    if (node.test == Test::Text && node.op == CriteriaOp::Equal)
        return Found{index->Equal(Folded(node.text)), true};
    if (node.test != Test::LikeText)
        return std::nullopt;
    switch (node.shape) {
    case Shape::Exact: return Found{index->Equal(node.folded), true};
    case Shape::StartsWith: return Found{index->StartingWith(node.folded), true};
    case Shape::EndsWith: return Found{index->EndingWith(node.folded), true};
    default: return std::nullopt;
    }
}

std::vector<RowId> RowFilter::Select(const std::vector<RowId>* within) const
{
    std::vector<RowId> rows;
    auto test = [&](const std::vector<RowId>& from, bool exact) {
        for (RowId row : from) {
            if (mStore.IsVisible(row) && (exact || Matches(row)))
                rows.push_back(row);
        }
    };
    // A narrower filter's rows are among the wider one's: when those are few, testing them beats
    // asking indexes or scanning. Each lies somewhere else in memory, so a test costs about as
    // much as scanning a few dozen rows' packed folded texts in a row: hence the share.
    constexpr std::size_t ScanRowsPerTest = 32;
    if (within && within->size() * ScanRowsPerTest <= mStore.VisibleRows().size())
        test(*within, false);
    else if (auto found = Candidates(mRoot))
        test(found->rows, found->exact);
    else
        test(mStore.VisibleRows(), false);
    return rows;
}

}  // namespace korvex::ado
