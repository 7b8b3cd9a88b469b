// Filters and sorts against a plain reference on random data: texts with letters outside ASCII and
// quotes, random criteria of every shape (wildcards anywhere), optimized fields and plain ones,
// narrowing filters typed a character at a time, and edits through clones between filters. Also
// every filter the combo builds from typed text, which must be accepted whatever was typed.
#include "korvex/platform/ado/FoldedText.h"
#include "tests/platform/ado/RecordsetBuilder.h"
#include "tests/support/ErrorOf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <random>

namespace korvex::ado {
namespace {

using korvex::test::ErrorOf;

// Letters that fold (ASCII, Latin-1, Greek with its final sigma), letters that do not, a quote, a
// space and a character outside the basic plane.
const QString Alphabet = QStringLiteral("aAbBcé\u00c9\u00e4\u00c4\u03c3\u03c2\u03a3\u03c9\u03a9' x") + QChar(0xD83D) +
                         QChar(0xDE00);

struct Item {
    int id = 0;
    std::optional<QString> code, name;
    bool deleted = false;
};

class Reference {
public:
    explicit Reference(unsigned seed) : mRandom(seed) {}

    QString RandomText(int maxLength)
    {
        const int n = Pick(0, maxLength);
        QString text;
        for (int i = 0; i < n; ++i) {
            const int k = Pick(0, static_cast<int>(Alphabet.size()) - 1);
            if (Alphabet[k].isHighSurrogate())
                text += Alphabet.sliced(k, 2);
            else if (!Alphabet[k].isLowSurrogate())
                text += Alphabet[k];
        }
        return text;
    }
    std::optional<QString> RandomValue(int maxLength)
    {
        if (Pick(0, 9) == 0)
            return std::nullopt;
        return RandomText(maxLength);
    }
    int Pick(int from, int to) { return std::uniform_int_distribution<int>(from, to)(mRandom); }

    std::vector<Item> items;

private:
    std::mt19937 mRandom;
};

QString Fold(const QString& text)
{
    return text.toCaseFolded();
}

// Like with * and % standing for any run of characters, anywhere.
bool LikeMatches(QStringView text, QStringView pattern)
{
    if (pattern.isEmpty())
        return text.isEmpty();
    if (pattern[0] == u'*' || pattern[0] == u'%') {
        for (qsizetype i = 0; i <= text.size(); ++i) {
            if (LikeMatches(text.sliced(i), pattern.sliced(1)))
                return true;
        }
        return false;
    }
    return !text.isEmpty() && text[0] == pattern[0] && LikeMatches(text.sliced(1), pattern.sliced(1));
}

// A criteria clause both as text and as the test the reference applies.
struct Clause {
    QString text;
    std::function<bool(const Item&)> test;
};

QString Quoted(const QString& value)
{
    QString doubled = value;
    doubled.replace(u'\'', QStringLiteral("''"));
    return u'\'' + doubled + u'\'';
}

const std::optional<QString>& FieldOf(const Item& item, bool code)
{
    return code ? item.code : item.name;
}

Clause RandomClause(Reference& ref)
{
    const bool code = ref.Pick(0, 1) == 0;
    const QString field = code ? QStringLiteral("Code") : QStringLiteral("Name");
    if (ref.Pick(0, 4) == 0) {
        const QString value = ref.RandomText(3);
        return {field + " = " + Quoted(value), [=](const Item& item) {
                    const auto& v = FieldOf(item, code);
                    return v && Fold(*v) == Fold(value);
                }};
    }
    // Pieces joined by wildcards, with or without one at either end.
    QString pattern;
    const QString wildcards = QStringLiteral("%*");
    if (ref.Pick(0, 1))
        pattern += wildcards[ref.Pick(0, 1)];
    const int pieces = ref.Pick(1, 3);
    for (int i = 0; i < pieces; ++i) {
        if (i > 0)
            pattern += wildcards[ref.Pick(0, 1)];
        pattern += ref.RandomText(2);
    }
    if (ref.Pick(0, 1))
        pattern += wildcards[ref.Pick(0, 1)];
    return {field + " Like " + Quoted(pattern), [=](const Item& item) {
                const auto& v = FieldOf(item, code);
                return v && LikeMatches(Fold(*v), Fold(pattern));
            }};
}

Clause RandomCriteria(Reference& ref)
{
    const Clause a = RandomClause(ref);
    const Clause b = RandomClause(ref);
    switch (ref.Pick(0, 3)) {
    case 0: return a;
    case 1: return {a.text + " AND " + b.text, [=](const Item& i) { return a.test(i) && b.test(i); }};
    case 2: return {a.text + " OR " + b.text, [=](const Item& i) { return a.test(i) || b.test(i); }};
    default: {
        const Clause c = RandomClause(ref);
        return {"(" + a.text + " AND " + b.text + ") OR " + c.text,
                [=](const Item& i) { return (a.test(i) && b.test(i)) || c.test(i); }};
    }
    }
}

// The filter the combo builds from typed text over two columns, with or without a filter of its own.
QString ComboFilter(const QString& typed, const QString& outer)
{
    QString doubled = typed;
    doubled.replace(u'\'', QStringLiteral("''"));
    QStringList terms;
    for (const char* column : {"Code", "Name"}) {
        QString term = QString::fromLatin1(column) + " Like '" + doubled + "%'";
        if (!outer.isEmpty())
            term = "(" + outer + " AND " + term + ")";
        terms << term;
    }
    return terms.join(QStringLiteral(" OR "));
}

// Ids in the recordset's order.
std::vector<int> Ids(Recordset& rs)
{
    std::vector<int> ids;
    if (rs.RecordCount() == 0)
        return ids;
    for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext())
        ids.push_back(CLng(rs.Fields()->Item("Id")->Value()));
    return ids;
}

std::vector<int> Expected(const Reference& ref, const std::function<bool(const Item&)>& test)
{
    std::vector<int> ids;
    for (const Item& item : ref.items) {
        if (!item.deleted && test(item))
            ids.push_back(item.id);
    }
    return ids;
}

Variant ValueOf(const std::optional<QString>& value)
{
    return value ? Variant(*value) : Null;
}

// Changes through a clone: a value rewritten (to `name` when given), a row added, a row deleted.
void EditThroughClone(Recordset& rs, Reference& ref, const std::optional<QString>& name = std::nullopt)
{
    auto clone = rs.Clone();
    clone->SetFilter(Variant(adFilterNone));
    std::vector<Item*> live;
    for (Item& item : ref.items) {
        if (!item.deleted)
            live.push_back(&item);
    }
    Item& edited = *live[static_cast<std::size_t>(ref.Pick(0, static_cast<int>(live.size()) - 1))];
    clone->MoveFirst();
    clone->Find("Id = " + QString::number(edited.id));
    edited.name = name ? name : ref.RandomValue(6);
    clone->Fields()->Item("Name")->SetValue(ValueOf(edited.name));
    clone->Update();

    Item added{static_cast<int>(ref.items.size()) + 1, ref.RandomValue(4), ref.RandomValue(6)};
    clone->AddNew();
    clone->Fields()->Item("Id")->SetValue(Variant(added.id));
    clone->Fields()->Item("Code")->SetValue(ValueOf(added.code));
    clone->Fields()->Item("Name")->SetValue(ValueOf(added.name));
    clone->Update();
    ref.items.push_back(added);

    Item& gone = *live[static_cast<std::size_t>(ref.Pick(0, static_cast<int>(live.size()) - 1))];
    if (gone.id != edited.id) {
        clone->MoveFirst();
        clone->Find("Id = " + QString::number(gone.id));
        clone->Delete();
        gone.deleted = true;
    }
}

std::shared_ptr<Recordset> RandomRecordset(Reference& ref, int rows)
{
    auto rs = test::MakeRecordset({{"Id", adInteger}, {"Code", adVarWChar, 10}, {"Name", adVarWChar, 20}});
    for (int i = 1; i <= rows; ++i) {
        Item item{i, ref.RandomValue(4), ref.RandomValue(6)};
        rs->AddNew();
        rs->Fields()->Item("Id")->SetValue(Variant(i));
        rs->Fields()->Item("Code")->SetValue(ValueOf(item.code));
        rs->Fields()->Item("Name")->SetValue(ValueOf(item.name));
        rs->Update();
        ref.items.push_back(item);
    }
    rs->UpdateBatch();
    return rs;
}

// Every position of a sorted, filtered view is reached by its bookmark, and bookmarks compare
// in view order.
void ExpectBookmarksKeepTheirPlaces(Recordset& rs)
{
    std::vector<Variant> bookmarks;
    if (rs.RecordCount() == 0)
        return;
    for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext())
        bookmarks.push_back(rs.Bookmark());
    for (std::size_t i = 0; i < bookmarks.size(); ++i) {
        rs.SetBookmark(bookmarks[i]);
        ASSERT_EQ(rs.AbsolutePosition(), static_cast<int>(i) + 1);
        if (i > 0) {
            ASSERT_EQ(rs.CompareBookmarks(bookmarks[i - 1], bookmarks[i]), adCompareLessThan);
        }
    }
}

TEST(RecordsetReference, RandomFiltersAndSortsEqualAPlainReferenceWhileClonesEdit)
{
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        Reference ref(seed);
        auto rs = RandomRecordset(ref, 200);
        // Half the runs answer through indexes, half by scans: both must agree with the reference.
        if (seed % 2 == 0) {
            for (const char* field : {"Code", "Name"})
                rs->Fields()->Item(field)->Properties()->Item("Optimize")->SetValue(true);
        }
        for (int round = 0; round < 60; ++round) {
            const Clause criteria = RandomCriteria(ref);
            SCOPED_TRACE(criteria.text.toStdString());
            rs->SetFilter(Variant(criteria.text));
            ASSERT_EQ(Ids(*rs), Expected(ref, criteria.test));
            if (round % 10 == 0)
                EditThroughClone(*rs, ref);
        }

        // Sorts by up to three keys, either way, over a filtered view: stable, Null first ascending.
        const Clause criteria = RandomCriteria(ref);
        for (int round = 0; round < 12; ++round) {
            const bool byCode = ref.Pick(0, 1) == 0;
            const bool descending = ref.Pick(0, 1) == 0;
            const QString sort = QString(byCode ? "Code" : "Name") + (descending ? " DESC" : "") +
                                 (byCode ? ", Name" : ", Code DESC");
            SCOPED_TRACE(sort.toStdString());
            rs->SetFilter(round % 2 ? Variant(criteria.text) : Variant(adFilterNone));
            rs->SetSort(sort);
            std::vector<int> expected = Expected(ref, round % 2 ? criteria.test : [](const Item&) { return true; });
            auto compare = [](const std::optional<QString>& a, const std::optional<QString>& b) {
                if (!a || !b)
                    return static_cast<int>(!b) - static_cast<int>(!a);
                const QString x = Fold(*a), y = Fold(*b);
                return x < y ? -1 : (y < x ? 1 : 0);
            };
            std::stable_sort(expected.begin(), expected.end(), [&](int a, int b) {
                const Item& x = ref.items[static_cast<std::size_t>(a - 1)];
                const Item& y = ref.items[static_cast<std::size_t>(b - 1)];
                int c = compare(FieldOf(x, byCode), FieldOf(y, byCode));
                if (c != 0)
                    return descending ? c > 0 : c < 0;
                c = compare(FieldOf(x, !byCode), FieldOf(y, !byCode));
                if (c != 0)
                    return byCode ? c < 0 : c > 0;
                return a < b;
            });
            ASSERT_EQ(Ids(*rs), expected);
            ExpectBookmarksKeepTheirPlaces(*rs);
            if (round % 4 == 3)
                EditThroughClone(*rs, ref);
            rs->SetSort(QString());
        }
    }
}

TEST(RecordsetReference, ComboFiltersOfAnyTypedTextAreAcceptedAndNarrowAsTheyGrow)
{
    // Typed text may hold anything a keyboard gives: quotes, brackets, wildcards, criteria words.
    const QStringList tokens = {"a", "B", "é", "\u03a3", "'", "''", "[", "]", "(", ")", "%", "*", "#", "AND",
                                " OR ", "Like", "=", "<>", " ", "\"", "x", "\u00c4"};
    for (unsigned seed = 11; seed <= 14; ++seed) {
        SCOPED_TRACE(seed);
        Reference ref(seed);
        auto rs = RandomRecordset(ref, 600);
        if (seed % 2)
            rs->Fields()->Item("Name")->Properties()->Item("Optimize")->SetValue(true);
        for (int word = 0; word < 40; ++word) {
            const QString outer = word % 3 == 0 ? QStringLiteral("Id > 20") : QString();
            QString typed;
            // One character (token) at a time, as the user types: each filter narrows the last.
            for (int length = 0; length < 5; ++length) {
                typed += tokens[ref.Pick(0, static_cast<int>(tokens.size()) - 1)];
                QString bare = typed;
                bare.remove(u'%').remove(u'*');
                if (bare.isEmpty())
                    continue;  // the combo does not filter on wildcards alone
                const QString filter = ComboFilter(typed, outer);
                SCOPED_TRACE(filter.toStdString());
                ASSERT_EQ(ErrorOf([&] { rs->SetFilter(Variant(filter)); }), 0);
                const QString pattern = Fold(typed) + u'%';
                const std::vector<int> expected = Expected(ref, [&](const Item& item) {
                    if (!outer.isEmpty() && item.id <= 20)
                        return false;
                    return (item.code && LikeMatches(Fold(*item.code), pattern)) ||
                           (item.name && LikeMatches(Fold(*item.name), pattern));
                });
                ASSERT_EQ(Ids(*rs), expected);
                // A row given a name the next, narrower filter takes must show although the
                // last answer did not hold it.
                if (length == 2 && word % 4 == 1)
                    EditThroughClone(*rs, ref, typed + typed);
            }
        }
    }
}

TEST(FoldedText, SearchesAndViewsStayRightThroughManyEditsAndRepacking)
{
    Reference ref(99);
    std::vector<QString> texts;
    FoldedText folded;
    folded.Build(0, [](RowId) { return QStringView(); });
    for (int i = 0; i < 300; ++i) {
        texts.push_back(ref.RandomText(12));
        folded.Append(texts.back());
    }
    // Enough rewrites that the moved texts outgrow their allowance and are packed again.
    for (int edit = 1; edit <= 8000; ++edit) {
        const auto row = static_cast<RowId>(ref.Pick(0, static_cast<int>(texts.size()) - 1));
        texts[row] = ref.RandomText(20);
        folded.Set(row, texts[row]);
        if (edit % 1000 != 0)
            continue;
        for (int k = 0; k < 10; ++k) {
            QString needle = ref.RandomText(2);
            if (needle.isEmpty())
                needle = QStringLiteral("a");
            std::vector<RowId> expected;
            for (RowId r = 0; r < texts.size(); ++r) {
                if (Fold(texts[r]).contains(Fold(needle)))
                    expected.push_back(r);
            }
            ASSERT_EQ(folded.Containing(Folded(needle)), expected) << needle.toStdString();
        }
        for (RowId r = 0; r < texts.size(); ++r)
            ASSERT_EQ(folded.View(r), Folded(texts[r]));
    }
}

}  // namespace
}  // namespace korvex::ado
