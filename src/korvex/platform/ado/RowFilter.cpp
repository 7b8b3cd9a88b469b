// Binding criteria to fields, testing rows and selecting them through indexes or a scan.
#include "korvex/platform/ado/RowFilter.h"

#include "korvex/platform/ado/AdoError.h"
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
    // Wildcards may lead, trail or both; one inside the pattern is refused.
    QStringView pattern = value.text;
    qsizetype lead = 0;
    while (lead < pattern.size() && IsWildcard(pattern[lead]))
        ++lead;
    qsizetype trail = 0;
    while (trail < pattern.size() - lead && IsWildcard(pattern[pattern.size() - 1 - trail]))
        ++trail;
    const QStringView core = pattern.sliced(lead, pattern.size() - lead - trail);
    if (std::any_of(core.begin(), core.end(), IsWildcard))
        RaiseAdo(adErrInvalidArgument);
    node.text = core.toString();
    if (core.isEmpty() && (lead || trail))
        node.shape = Shape::Anything;
    else if (lead && trail)
        node.shape = Shape::Contains;
    else if (lead)
        node.shape = Shape::EndsWith;
    else if (trail)
        node.shape = Shape::StartsWith;
    else
        node.shape = Shape::Exact;
    if (node.shape == Shape::Contains)
        node.searcher = std::make_shared<NoCaseSearcher>(core);
    node.test = mStore.Field(node.field).IsText() ? Test::LikeText : Test::LikeOther;
}

bool RowFilter::Matches(RowId row) const
{
    return Matches(mRoot, row);
}

bool RowFilter::MatchesText(const Node& node, QStringView text) const
{
    switch (node.shape) {
    case Shape::Exact: return EqualsNoCase(text, node.text);
    case Shape::StartsWith: return StartsWithNoCase(text, node.text);
    case Shape::EndsWith: return EndsWithNoCase(text, node.text);
    case Shape::Contains: return node.searcher->In(text);
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
    case Test::LikeText: return !null && MatchesText(node, column.Text(row));
    case Test::LikeOther: return !null && MatchesText(node, CStr(column.Get(row)));
    }
    return false;
}

std::optional<std::vector<RowId>> RowFilter::Candidates() const
{
    return Candidates(mRoot);
}

std::optional<std::vector<RowId>> RowFilter::Candidates(const Node& node) const
{
    switch (node.kind) {
    case Node::Kind::And: {
        // Any one indexed clause narrows an AND; take the narrowest.
        std::optional<std::vector<RowId>> best;
        for (const Node& child : node.children) {
            auto rows = Candidates(child);
            if (rows && (!best || rows->size() < best->size()))
                best = std::move(rows);
        }
        return best;
    }
    case Node::Kind::Or: {
        // An OR needs every branch answered.
        std::vector<RowId> all;
        for (const Node& child : node.children) {
            auto rows = Candidates(child);
            if (!rows)
                return std::nullopt;
            all = Union(all, *rows);
        }
        return all;
    }
    case Node::Kind::Clause: break;
    }
    const FieldIndex* index = mStore.IndexOf(node.field);
    if (!index)
        return std::nullopt;
    if ((node.test == Test::Text && node.op == CriteriaOp::Equal) ||
        (node.test == Test::LikeText && node.shape == Shape::Exact))
        return index->Equal(node.text);
    if (node.test == Test::LikeText && node.shape == Shape::StartsWith)
        return index->StartingWith(node.text);
    return std::nullopt;
}

std::vector<RowId> RowFilter::Select() const
{
    std::vector<RowId> rows;
    if (auto candidates = Candidates()) {
        for (RowId row : *candidates) {
            if (mStore.IsVisible(row) && Matches(row))
                rows.push_back(row);
        }
        return rows;
    }
    for (RowId row : mStore.VisibleRows()) {
        if (Matches(row))
            rows.push_back(row);
    }
    return rows;
}

}  // namespace korvex::ado
