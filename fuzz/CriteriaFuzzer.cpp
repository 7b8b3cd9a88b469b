// Filter, Find and Sort criteria as a user or a caller could write them: anything may be refused
// with the invalid-argument error (3001), which must leave filter, sort and position as they were;
// anything accepted must select the same rows whether a field index or a scan answers.
#include "fuzz/FuzzInput.h"
#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/ado/Recordset.h"

#include <cstdlib>
#include <memory>

namespace {

using namespace korvex;
using namespace korvex::ado;

std::shared_ptr<Recordset> MakeRecordset(bool optimize)
{
    auto rs = std::make_shared<Recordset>();
    rs->Fields()->Append("Code", adVarChar, 10, adFldIsNullable);
    rs->Fields()->Append("Name", adVarWChar, 20, adFldIsNullable);
    rs->Fields()->Append("Qty", adInteger, 0, adFldIsNullable);
    rs->Fields()->Append("Price", adCurrency, 0, adFldIsNullable);
    rs->Fields()->Append("Born", adDate, 0, adFldIsNullable);
    rs->Fields()->Append("Active", adBoolean, 0, adFldIsNullable);
    rs->Open();
    const char* names[] = {"Smith", "smithers", "Jones", nullptr, "O'Malley", "", "abc", "ABD", "x*y"};
    for (int i = 0; i < 40; ++i) {
        const char* name = names[i % 9];
        const Variant values[] = {Variant(QStringLiteral("C%1").arg(i)), name ? Variant(name) : Null,
                                  i % 7 ? Variant(i % 5) : Null, Variant(i * 0.25), Variant(Date{39000.0 + i}),
                                  Variant(i % 2 == 0)};
        rs->AddNew();
        for (int f = 0; f < 6; ++f)
            rs->Fields()->Item(f)->SetValue(values[f]);
        rs->Update();
    }
    rs->UpdateBatch();
    rs->Fields()->Item("Name")->Properties()->Item("Optimize")->SetValue(optimize);
    rs->Fields()->Item("Code")->Properties()->Item("Optimize")->SetValue(optimize);
    return rs;
}

struct State {
    Variant filter;
    QString sort;
    int position;
};

State Snapshot(Recordset& rs)
{
    return {rs.Filter(), rs.Sort(), rs.AbsolutePosition()};
}

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

// Runs an operation on both recordsets: both must refuse it alike (3001, nothing changed) or
// both accept it.
template <class Operation>
bool OnBoth(Recordset& a, Recordset& b, Operation&& operation)
{
    int refused = 0;
    for (Recordset* rs : {&a, &b}) {
        const State before = Snapshot(*rs);
        try {
            operation(*rs);
        } catch (const Error& e) {
            Require(e.Number() == adErrInvalidArgument);
            const State after = Snapshot(*rs);
            Require(after.filter == before.filter && after.sort == before.sort && after.position == before.position);
            ++refused;
        }
    }
    Require(refused != 1);
    return refused == 0;
}

void RequireSameRows(Recordset& a, Recordset& b)
{
    Require(a.RecordCount() == b.RecordCount());
    if (a.RecordCount() == 0)
        return;
    for (a.MoveFirst(), b.MoveFirst(); !a.IsEOF(); a.MoveNext(), b.MoveNext())
        Require(a.Fields()->Item(0)->Value() == b.Fields()->Item(0)->Value());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::shared_ptr<Recordset> indexed = MakeRecordset(true);
    static const std::shared_ptr<Recordset> scanned = MakeRecordset(false);
    const auto input = fuzz::SplitInput(data, size);
    Recordset& a = *indexed;
    Recordset& b = *scanned;
    for (Recordset* rs : {&a, &b}) {
        rs->SetFilter(Variant(adFilterNone));
        rs->SetSort(QString());
        rs->SetAbsolutePosition(2);
    }
    if (OnBoth(a, b, [&](Recordset& rs) { rs.SetFilter(Variant(input.first)); }))
        RequireSameRows(a, b);
    if (OnBoth(a, b, [&](Recordset& rs) { rs.SetSort(input.second); }))
        RequireSameRows(a, b);
    for (int direction : {adSearchForward, adSearchBackward}) {
        for (Recordset* rs : {&a, &b}) {
            if (rs->RecordCount())
                rs->MoveFirst();
        }
        if (OnBoth(a, b, [&](Recordset& rs) { rs.Find(input.first, 0, direction); }))
            Require(a.AbsolutePosition() == b.AbsolutePosition());
    }
    return 0;
}
