// The cursor: moves and their ends, AbsolutePosition, bookmarks across filters, sorts and clones,
// and the WillMove/MoveComplete events with their reasons and order.
#include "tests/platform/ado/RecordsetBuilder.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace korvex::ado {
namespace {

using korvex::test::ErrorOf;
using test::MakeRecordset;
using test::Text;

std::shared_ptr<Recordset> Letters(int count)
{
    auto rs = MakeRecordset({{"Code", adVarChar, 5}});
    for (int i = 0; i < count; ++i)
        rs->AddNew(Variant("Code"), Variant(QString(QChar(u'a' + i))));
    if (count)
        rs->MoveFirst();
    return rs;
}

TEST(RecordsetNavigation, MovesWalkTheRowsAndStopAtBothEnds)
{
    auto rs = Letters(3);
    EXPECT_FALSE(rs->IsBOF());
    EXPECT_EQ(rs->AbsolutePosition(), 1);
    rs->MovePrevious();
    EXPECT_TRUE(rs->IsBOF());
    EXPECT_FALSE(rs->IsEOF());
    EXPECT_EQ(rs->AbsolutePosition(), adPosBOF);
    EXPECT_EQ(ErrorOf([&] { rs->MovePrevious(); }), adErrNoCurrentRecord) << "nothing before BOF";
    EXPECT_EQ(ErrorOf([&] { (void)rs->Bookmark(); }), adErrNoCurrentRecord);
    rs->MoveNext();
    EXPECT_EQ(Text(*rs, "Code"), "a");
    rs->MoveLast();
    EXPECT_EQ(rs->AbsolutePosition(), 3);
    rs->MoveNext();
    EXPECT_TRUE(rs->IsEOF());
    EXPECT_EQ(rs->AbsolutePosition(), adPosEOF);
    EXPECT_EQ(ErrorOf([&] { rs->MoveNext(); }), adErrNoCurrentRecord) << "nothing after EOF";
    EXPECT_EQ(ErrorOf([&] { rs->Move(1); }), adErrNoCurrentRecord);

    struct Step {
        int records;
        Variant start;
        const char* expected;  // code, or BOF / EOF
    };
    const Step steps[] = {
        {-2, {}, "b"},                              // from EOF, two back
        {5, {}, "EOF"},                             // past the end stops at EOF
        {-10, {}, "BOF"},                           // past the start stops at BOF
        {1, Variant(adBookmarkFirst), "b"},         // from the first record
        {-1, Variant(adBookmarkLast), "b"},         // from the last record
        {0, Variant(adBookmarkLast), "c"},
    };
    for (const Step& s : steps) {
        rs->Move(s.records, s.start);
        const QString where = rs->IsEOF() ? "EOF" : rs->IsBOF() ? "BOF" : Text(*rs, "Code");
        EXPECT_EQ(where, s.expected) << "Move(" << s.records << ")";
    }
    rs->SetAbsolutePosition(2);
    EXPECT_EQ(Text(*rs, "Code"), "b");
    EXPECT_EQ(ErrorOf([&] { rs->SetAbsolutePosition(4); }), adErrInvalidArgument);
    EXPECT_EQ(ErrorOf([&] { rs->SetAbsolutePosition(0); }), adErrInvalidArgument);
    EXPECT_EQ(Text(*rs, "Code"), "b") << "a refused position leaves the cursor";

    auto empty = Letters(0);
    EXPECT_TRUE(empty->IsBOF());
    EXPECT_TRUE(empty->IsEOF());
    EXPECT_EQ(empty->AbsolutePosition(), adPosUnknown);
    EXPECT_EQ(empty->RecordCount(), 0);
    empty->MoveFirst();
    empty->MoveLast();
    EXPECT_EQ(ErrorOf([&] { empty->MoveNext(); }), adErrNoCurrentRecord);
}

TEST(RecordsetNavigation, BookmarksNameRecordsAcrossFiltersSortsAndClones)
{
    auto rs = Letters(5);
    rs->SetAbsolutePosition(3);
    const Variant c = rs->Bookmark();
    rs->MoveNext();
    const Variant d = rs->Bookmark();
    EXPECT_NE(c, d);

    rs->SetFilter(Variant("Code > 'b'"));
    rs->SetBookmark(c);
    EXPECT_EQ(Text(*rs, "Code"), "c");
    EXPECT_EQ(rs->AbsolutePosition(), 1);
    rs->SetSort("Code DESC");
    rs->SetBookmark(c);
    EXPECT_EQ(rs->AbsolutePosition(), 3) << "e, d, c";
    EXPECT_EQ(rs->CompareBookmarks(d, c), adCompareLessThan) << "compared in the sorted order";
    EXPECT_EQ(rs->CompareBookmarks(c, d), adCompareGreaterThan);
    EXPECT_EQ(rs->CompareBookmarks(c, c), adCompareEqual);

    rs->SetFilter(Variant("Code = 'd'"));
    EXPECT_EQ(ErrorOf([&] { rs->SetBookmark(c); }), adErrInvalidArgument) << "c is filtered out";
    EXPECT_EQ(rs->CompareBookmarks(c, d), adCompareNotComparable);
    EXPECT_EQ(Text(*rs, "Code"), "d");

    auto clone = rs->Clone();
    clone->SetBookmark(c);
    EXPECT_EQ(Text(*clone, "Code"), "c") << "bookmarks are valid on clones";

    auto other = Letters(5);
    EXPECT_EQ(ErrorOf([&] { other->SetBookmark(c); }), adErrInvalidArgument) << "not this recordset's rows";
    EXPECT_EQ(ErrorOf([&] { (void)other->CompareBookmarks(c, other->Bookmark()); }), adErrInvalidArgument);
    EXPECT_EQ(ErrorOf([&] { rs->SetBookmark(Variant(1)); }), adErrInvalidArgument);

    // A filter of bookmarks shows those records in the recordset's order.
    rs->SetFilter(Variant::Array({d, c}));
    rs->SetSort("");
    EXPECT_EQ(test::Values(*rs, "Code"), (QStringList{"c", "d"}));
    rs->SetSort("Code DESC");
    EXPECT_EQ(test::Values(*rs, "Code"), (QStringList{"d", "c"}));
    rs->SetFilter(Variant(adFilterFetchedRecords));
    EXPECT_EQ(rs->RecordCount(), 5);
}

// Records each event with the state the handler finds.
struct EventLog {
    QStringList entries;

    void Watch(Recordset& rs)
    {
        QObject::connect(&rs, &Recordset::WillMove, [this](EventReasonEnum reason, EventStatusEnum&, Recordset*) {
            entries << QStringLiteral("will %1").arg(reason);
        });
        QObject::connect(&rs, &Recordset::MoveComplete,
                         [this](EventReasonEnum reason, const Error* error, EventStatusEnum& status, Recordset* r) {
                             QString where = r->IsEOF() ? "EOF" : r->IsBOF() ? "BOF" : Text(*r, "Code");
                             if (error)
                                 where += QStringLiteral(" error %1 status %2").arg(error->Number()).arg(status);
                             entries << QStringLiteral("done %1 %2").arg(reason).arg(where);
                         });
    }
    QStringList Take() { return std::exchange(entries, {}); }
};

TEST(RecordsetEvents, MoveCompleteReportsEveryMoveOnceTheCursorIsSettled)
{
    auto rs = Letters(3);
    EventLog log;
    log.Watch(*rs);
    struct Row {
        std::function<void()> action;
        QStringList expected;
    };
    const Row rows[] = {
        {[&] { rs->MoveNext(); }, {"will 13", "done 13 b"}},
        {[&] { rs->MoveLast(); }, {"will 15", "done 15 c"}},
        {[&] { rs->MovePrevious(); }, {"will 14", "done 14 b"}},
        {[&] { rs->MoveFirst(); }, {"will 12", "done 12 a"}},
        {[&] { rs->Move(2); }, {"will 10", "done 10 c"}},
        {[&] { rs->SetFilter(Variant("Code <> 'a'")); }, {"will 10", "done 10 b"}},
        {[&] { rs->SetSort("Code DESC"); }, {"will 10", "done 10 c"}},
        {[&] { rs->Find("Code = 'b'"); }, {"will 10", "done 10 b"}},
        {[&] { rs->SetAbsolutePosition(1); }, {"will 10", "done 10 c"}},
        {[&] { rs->AddNew(); }, {"will 1", "done 1 <null>"}},
        {[&] { rs->Fields()->Item(0)->SetValue("z"); }, {}},
        {[&] { rs->Update(); }, {}},
        {[&] { rs->MoveFirst(); }, {"will 12", "done 12 c"}},
        {[&] { rs->Delete(); }, {"will 2", "done 2 c"}},  // the deleted record stays current
        {[&] { rs->UpdateBatch(); }, {"done 3 c"}},
        {[&] { rs->MoveFirst(); }, {"will 12", "done 12 b"}},
        {[&] { rs->AddNew(); }, {"will 1", "done 1 <null>"}},
        {[&] { rs->CancelUpdate(); }, {"will 5", "done 5 b"}},
        {[&] { rs->Fields()->Item(0)->SetValue("q"); }, {}},
        {[&] { rs->CancelBatch(); }, {}},  // nothing pending: the edit is dropped, nothing moves
        {[&] { rs->Fields()->Item(0)->SetValue("q"); }, {}},
        {[&] { rs->MoveNext(); }, {"will 13", "done 13 z"}},  // moving away saves the edit
        {[&] { rs->CancelBatch(); }, {"done 4 z"}},
    };
    for (const Row& r : rows) {
        r.action();
        EXPECT_EQ(log.Take(), r.expected);
    }
    EXPECT_EQ(ErrorOf([&] { rs->MoveLast(); rs->MoveNext(); rs->MoveNext(); }), adErrNoCurrentRecord);
    EXPECT_EQ(log.Take(), (QStringList{"will 15", "done 15 z", "will 13", "done 13 EOF"}))
        << "a refused move raises no events";
    EXPECT_EQ(test::Values(*rs, "Code"), (QStringList{"b", "z"})) << "c went with the batch, q was cancelled";
}

TEST(RecordsetEvents, HandlersCancelMovesAndSilenceReasons)
{
    auto rs = Letters(3);
    EventLog log;
    log.Watch(*rs);
    auto cancel = QObject::connect(rs.get(), &Recordset::WillMove,
                                   [](EventReasonEnum reason, EventStatusEnum& status, Recordset*) {
                                       if (reason == adRsnMoveNext)
                                           status = adStatusCancel;
                                   });
    EXPECT_EQ(ErrorOf([&] { rs->MoveNext(); }), adErrOperationCancelled);
    EXPECT_EQ(log.Take(), (QStringList{"will 13", "done 13 a error 3712 status 2"})) << "the cursor stayed";
    QObject::disconnect(cancel);

    auto silence = QObject::connect(rs.get(), &Recordset::MoveComplete,
                                    [](EventReasonEnum reason, const Error*, EventStatusEnum& status, Recordset*) {
                                        if (reason == adRsnMoveNext)
                                            status = adStatusUnwantedEvent;
                                    });
    rs->MoveNext();
    QObject::disconnect(silence);
    log.Take();
    rs->MoveNext();
    rs->MovePrevious();
    EXPECT_EQ(log.Take(), (QStringList{"will 13", "will 14", "done 14 b"})) << "MoveNext no longer completes";

    QSignalSpy spy(rs.get(), &Recordset::MoveComplete);
    auto clone = rs->Clone();
    clone->MoveLast();
    EXPECT_EQ(spy.count(), 0) << "a clone's moves are its own";
    rs->MoveFirst();
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.at(0).at(0).toInt(), adRsnMoveFirst);
}

}  // namespace
}  // namespace korvex::ado
