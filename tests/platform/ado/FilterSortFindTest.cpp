// Filter, Sort and Find: the criteria syntax as a table, Null in filters and sorts, filter and
// sort together, refused criteria that change nothing, and the Optimize index answering exactly
// as a scan does while rows change through clones.
#include "tests/platform/ado/RecordsetBuilder.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

namespace korvex::ado {
namespace {

using korvex::test::ErrorOf;
using test::MakeRecordset;
using test::Text;
using test::Values;

std::shared_ptr<Recordset> People()
{
    return MakeRecordset({{"Code", adVarChar, 10},
                          {"Name", adVarWChar, 40},
                          {"Qty", adInteger},
                          {"Price", adCurrency},
                          {"Born", adDate},
                          {"Active", adBoolean}},
                         {
                             {"A1", "Smith", 5, 1.5, Date{39818}, true},
                             {"B2", "smithers", 10, 2.0, Date{40210}, false},
                             {"C3", "Jones", Null, 0.99, Null, true},
                             {"D4", Null, 7, 10, Date{36525}, false},
                             {"E5", "O'Malley", 5, 3.25, Date{39818.4375}, true},
                         });
}

TEST(RecordsetFilter, CriteriaSelectTheExpectedRowsWithAndWithoutAnIndex)
{
    korvex::test::PinnedSettings pinned;
    struct Row {
        const char* criteria;
        QStringList codes;
    };
    const Row rows[] = {
        {"Name = 'smith'", {"A1"}},                                   // text ignores case
        {"Name <> 'Smith'", {"B2", "C3", "E5"}},                      // Null matches no comparison
        {"Name LIKE 'smith*'", {"A1", "B2"}},                         // starts with
        {"Name like 'SMITH%'", {"A1", "B2"}},                         // % and any case of LIKE
        {"Name LIKE '*ER*'", {"B2"}},                                 // contains
        {"Name LIKE '%s'", {"B2", "C3"}},                             // ends with
        {"Name LIKE 'jones'", {"C3"}},                                // no wildcard: equality
        {"Name LIKE '*'", {"A1", "B2", "C3", "E5"}},                  // anything but Null
        {"Name = Null", {"D4"}},
        {"Name <> NULL", {"A1", "B2", "C3", "E5"}},
        {"Qty > 5", {"B2", "D4"}},
        {"Qty >= 5 AND Qty < 10", {"A1", "D4", "E5"}},
        {"Qty = 5 OR Qty = 7", {"A1", "D4", "E5"}},
        {"Qty = '5'", {"A1", "E5"}},                                  // quoted number on a number field
        {"Price = $1.50", {"A1"}},
        {"Price < 1", {"C3"}},
        {"Price > 2.5E0", {"D4", "E5"}},
        {"Born = #1/5/2009#", {"A1"}},                                // E5 has a time of day
        {"Born >= #2009-01-05#", {"A1", "B2", "E5"}},
        {"Born < '1/1/2000'", {"D4"}},
        {"Active = -1", {"A1", "C3", "E5"}},
        {"Active = 'False'", {"B2", "D4"}},
        {"Name = 'O''Malley'", {"E5"}},                               // doubled quote
        {"Name = #O'Malley#", {"E5"}},                                // # around text that is no date
        {"[Code] = 'c3'", {"C3"}},
        {"Code >= 'c'", {"C3", "D4", "E5"}},
        {"(Qty = 5 AND Active = 0) OR Code = 'C3'", {"C3"}},
        {"Code = 'A1' OR Code = 'B2' OR Code = 'C3' AND Qty = 5", {"A1", "B2"}},  // AND binds first
        {"((Name LIKE 's*')) AND Qty > 5", {"B2"}},
        {"Name = 'Smith' OR Name LIKE 'j*'", {"A1", "C3"}},           // both branches from an index
    };
    for (bool optimize : {false, true}) {
        auto rs = People();
        rs->Fields()->Item("Name")->Properties()->Item("Optimize")->SetValue(optimize);
        rs->Fields()->Item("Code")->Properties()->Item("Optimize")->SetValue(optimize);
        for (const Row& r : rows) {
            rs->SetFilter(Variant(r.criteria));
            EXPECT_EQ(Values(*rs, "Code"), r.codes) << r.criteria << (optimize ? " (indexed)" : "");
            EXPECT_EQ(rs->RecordCount(), r.codes.size());
            EXPECT_EQ(rs->Filter(), Variant(r.criteria)) << "Filter reads back as written";
        }
        rs->SetFilter(Variant(""));
        EXPECT_EQ(rs->Filter(), Variant(0)) << "an empty filter is adFilterNone";
        EXPECT_EQ(rs->RecordCount(), 5);
    }
}

TEST(RecordsetFilter, RefusedCriteriaRaise3001AndLeaveFilterSortAndPosition)
{
    korvex::test::PinnedSettings pinned;
    auto rs = People();
    rs->SetFilter(Variant("Qty > 0"));
    rs->SetSort("Code DESC");
    rs->MoveNext();
    const Variant bookmark = rs->Bookmark();
    int moves = 0;
    QObject::connect(rs.get(), &Recordset::MoveComplete, [&] { ++moves; });

    const QString deep = QString(100, u'(') + "Qty = 1" + QString(100, u')');
    const char* filters[] = {
        "Name", "Name =", "= 'a'", "Name = 'a", "Born = #1/1/2000", "Name LIKE 5",
        "(Name = 'a' OR Code = 'b') AND Qty = 1",  // ADO refuses an OR group joined by AND
        "Nope = 1", "Qty = 'abc'", "Name = 'a' AND", "Name == 'a'", "Name = 'a')", "((Name = 'a')",
        "Qty < Null", "Name = 'a' XOR Code = 'b'", "Born = #not a date#", "Name = True", "Name LIKE Null",
    };
    for (const char* f : filters)
        EXPECT_EQ(ErrorOf([&] { rs->SetFilter(Variant(f)); }), adErrInvalidArgument) << f;
    EXPECT_EQ(ErrorOf([&] { rs->SetFilter(Variant(deep)); }), adErrInvalidArgument) << "nesting is bounded";
    EXPECT_EQ(ErrorOf([&] { rs->SetFilter(Variant(adFilterPredicate)); }), adErrInvalidArgument);
    EXPECT_EQ(ErrorOf([&] { rs->SetFilter(Variant(9)); }), adErrInvalidArgument);
    EXPECT_EQ(ErrorOf([&] { rs->SetFilter(Variant::Array({Variant(1.0)})); }), adErrInvalidArgument);
    for (const char* s : {"Code DESCX", "Code,", ", Code", "Nope", "Code ASC DESC", "'Code'"})
        EXPECT_EQ(ErrorOf([&] { rs->SetSort(s); }), adErrInvalidArgument) << s;
    for (const char* f : {"Code = 'a' AND Qty = 1", "", "Qty"})
        EXPECT_EQ(ErrorOf([&] { rs->Find(f); }), adErrInvalidArgument) << f;
    EXPECT_EQ(ErrorOf([&] { rs->Find("Qty = 1", 0, 0); }), adErrInvalidArgument) << "no such direction";
    EXPECT_EQ(ErrorOf([&] { rs->Find("Qty = 1", 0, adSearchForward, Variant(7)); }), adErrInvalidArgument);

    EXPECT_EQ(rs->Filter(), Variant("Qty > 0"));
    EXPECT_EQ(rs->Sort(), "Code DESC");
    EXPECT_EQ(rs->Bookmark(), bookmark);
    EXPECT_EQ(rs->AbsolutePosition(), 2);
    EXPECT_EQ(moves, 0) << "nothing moved";
}

TEST(RecordsetSort, SortIsStableWithNullsFirstAndWorksWithTheFilter)
{
    auto rs = MakeRecordset({{"Code", adVarChar, 5}, {"Name", adVarChar, 10}, {"Qty", adInteger}},
                            {{"1", "b", 1}, {"2", "B", Null}, {"3", "a", 2}, {"4", Null, 1}, {"5", "b", 2}});
    struct Row {
        const char* sort;
        QStringList codes;
    };
    const Row rows[] = {
        {"Name", {"4", "3", "1", "2", "5"}},           // Null first, b and B equal, kept in order
        {"Name DESC", {"1", "2", "5", "3", "4"}},      // Null last, equal rows still in order
        {"Qty DESC, Code", {"3", "5", "1", "4", "2"}},
        {"[Qty], Name DESC", {"2", "1", "4", "5", "3"}},
        {"", {"1", "2", "3", "4", "5"}},
    };
    for (const Row& r : rows) {
        rs->SetSort(r.sort);
        EXPECT_EQ(Values(*rs, "Code"), r.codes) << r.sort;
    }

    rs->SetSort("Name DESC");
    rs->SetFilter(Variant("Qty = 1 OR Qty = Null"));
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"1", "2", "4"})) << "a new filter keeps the sort";
    rs->SetSort("Code DESC");
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"4", "2", "1"})) << "a new sort keeps the filter";
    rs->SetSort("");
    EXPECT_EQ(Values(*rs, "Code"), (QStringList{"1", "2", "4"}));
    rs->SetFilter(Variant(adFilterNone));
    EXPECT_EQ(rs->RecordCount(), 5);

    auto early = std::make_shared<Recordset>();
    early->SetSort("Name DESC");
    early->Fields()->Append("Name", adVarChar, 5);
    early->Open();
    early->AddNew(Variant("Name"), Variant("a"));
    early->AddNew(Variant("Name"), Variant("b"));
    early->SetSort(early->Sort());
    EXPECT_EQ(Values(*early, "Name"), (QStringList{"b", "a"})) << "a Sort set before Open stays";
    auto misnamed = std::make_shared<Recordset>();
    misnamed->SetSort("Nope");
    misnamed->Fields()->Append("Name", adVarChar, 5);
    EXPECT_EQ(ErrorOf([&] { misnamed->Open(); }), adErrInvalidArgument);
    EXPECT_EQ(misnamed->State(), adStateClosed);
}

TEST(RecordsetFind, SearchesEitherWayFromTheCurrentRecordOrABookmark)
{
    for (int variant = 0; variant < 3; ++variant) {
        auto rs = People();
        if (variant == 1)
            rs->Fields()->Item("Name")->Properties()->Item("Optimize")->SetValue(true);
        if (variant == 2)
            rs->SetSort("Price");  // C3 A1 B2 E5 D4: the search follows the sorted order
        const char* how[] = {"scan", "index", "sorted"};
        SCOPED_TRACE(how[variant]);
        auto at = [&] { return rs->IsEOF() ? QString("EOF") : rs->IsBOF() ? QString("BOF") : Text(*rs, "Code"); };

        rs->MoveFirst();
        rs->Find("Name LIKE 'smith*'");
        EXPECT_EQ(at(), "A1");
        rs->Find("Name LIKE 'smith*'");
        EXPECT_EQ(at(), "A1") << "the current record is searched first";
        rs->Find("Name LIKE 'smith*'", 1);
        EXPECT_EQ(at(), "B2");
        rs->Find("Name LIKE 'smith*'", 1);
        EXPECT_EQ(at(), "EOF");
        rs->Find("Name LIKE 'smith*'");
        EXPECT_EQ(at(), "EOF") << "nothing after the end";
        rs->Find("Name LIKE 'smith*'", 0, adSearchBackward);
        EXPECT_EQ(at(), "B2");
        rs->Find("Name = 'SMITH'", 1, adSearchBackward);
        EXPECT_EQ(at(), "A1");
        rs->Find("Name LIKE 'smith*'", 1, adSearchBackward);
        EXPECT_EQ(at(), "BOF");
        rs->Find("Qty = 5", 0, adSearchForward, Variant(adBookmarkLast));
        EXPECT_EQ(at(), variant == 2 ? "EOF" : "E5");
        rs->MoveFirst();
        rs->MoveNext();
        const Variant second = rs->Bookmark();
        rs->MoveFirst();
        rs->Find("Name = 'jones'", 0, adSearchForward, second);
        EXPECT_EQ(at(), variant == 2 ? "EOF" : "C3") << "from a bookmark";
        rs->Find("Name = 'nobody'", 0, adSearchBackward, Variant(adBookmarkLast));
        EXPECT_EQ(at(), "BOF");
    }
}

// The same random edits, through clones, on two stores that differ only in the index: every
// filter and find must agree.
TEST(RecordsetOptimize, IndexAnswersAsAScanWhileClonesEditAddDeleteAndCancel)
{
    QRandomGenerator random(20240611);
    auto name = [&] {
        QString s;
        const int length = random.bounded(0, 4);
        for (int i = 0; i < length; ++i)
            s += QChar(u"abAB"[random.bounded(4)]);
        return random.bounded(10) == 0 ? Variant(Null) : Variant(s);
    };
    auto quantity = [&] { return random.bounded(10) == 0 ? Variant(Null) : Variant(std::int32_t{random.bounded(6)}); };
    std::shared_ptr<Recordset> stores[2];
    std::shared_ptr<Recordset> clones[2];
    for (int k = 0; k < 2; ++k) {
        stores[k] = MakeRecordset({{"Id", adInteger}, {"Name", adVarChar, 10}, {"Qty", adInteger}});
        stores[k]->Fields()->Item("Name")->Properties()->Item("Optimize")->SetValue(k == 1);
        stores[k]->Fields()->Item("Qty")->Properties()->Item("Optimize")->SetValue(k == 1);
        clones[k] = stores[k]->Clone();
    }
    const char* filters[] = {"Name = 'ab'", "Name LIKE 'a*'", "Name LIKE 'AB*'", "Name = ''", "Name LIKE 'b%'",
                             "Name = 'a' OR Name LIKE 'ba*'", "Name LIKE 'a*' AND Id > 50", "Qty = 3",
                             "Qty = '0' OR Name = 'b'", "Qty = 2 AND Name LIKE 'a*'", "Qty > 3"};
    const char* finds[] = {"Name = 'ab'", "Name LIKE 'a*'", "Name = ''", "Name LIKE 'B*'", "Qty = 4", "Qty = 0"};
    for (int step = 0; step < 400; ++step) {
        const int op = random.bounded(10);
        const Variant value = name();
        const Variant qty = quantity();
        const int target = random.bounded(1, 120);
        for (int k = 0; k < 2; ++k) {
            Recordset& rs = random.bounded(2) ? *stores[k] : *clones[k];
            (void)rs.RecordCount();
            if (op < 4 || rs.RecordCount() == 0) {
                rs.AddNew();
                rs.Fields()->Item("Id")->SetValue(step);
                rs.Fields()->Item("Name")->SetValue(value);
                rs.Fields()->Item("Qty")->SetValue(qty);
                rs.Update();
            } else {
                rs.SetFilter(Variant(adFilterNone));
                rs.SetAbsolutePosition(target % rs.RecordCount() + 1);
                if (op < 8) {
                    rs.Fields()->Item("Name")->SetValue(value);
                    rs.Fields()->Item("Qty")->SetValue(qty);
                    rs.Update();
                } else if (op == 8) {
                    rs.Delete();
                } else {
                    rs.CancelBatch();
                }
            }
        }
        if (step % 20 == 0 || step == 399) {
            for (const char* f : filters) {
                stores[0]->SetFilter(Variant(f));
                stores[1]->SetFilter(Variant(f));
                ASSERT_EQ(Values(*stores[0], "Id"), Values(*stores[1], "Id")) << f << " at step " << step;
            }
            for (const char* f : finds) {
                for (int k = 0; k < 2; ++k) {
                    clones[k]->MoveLast();
                    clones[k]->Find(f, 0, adSearchBackward);
                }
                ASSERT_EQ(clones[0]->AbsolutePosition(), clones[1]->AbsolutePosition()) << f << " at step " << step;
            }
            stores[0]->SetFilter(Variant(adFilterNone));
            stores[1]->SetFilter(Variant(adFilterNone));
        }
    }
}

}  // namespace
}  // namespace korvex::ado
