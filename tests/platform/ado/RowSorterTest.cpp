// The row sort against a plain std::stable_sort that compares whole values: Null first in
// ascending order, texts by CompareNoCase, numbers by value, the first differing key deciding in
// its own direction. Random rows crowd around a few long shared prefixes (in different cases and
// with letters that fold to two and three bytes), so that ties run past several eight-byte steps,
// texts end inside a step or exactly at its edge, and NUL characters meet texts that ended.
#include "korvex/platform/ado/RowSorter.h"
#include "korvex/platform/ado/TextCompare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace korvex::ado {
namespace {

const QString Prefixes[] = {
    QStringLiteral("Katherine Zimmermann"), QStringLiteral("KATHERINE zimmermann"), QStringLiteral("Katherin"),
    QStringLiteral("\u00c9mond \u00c5ngstr\u00f6m"), QStringLiteral("\u00e9MOND \u00e5ngstr\u00d6m"),
    QStringLiteral("\u03a3\u03c3\u03c2\u20ac\u20ac\u20ac"), QString()};
// Letters that fold, letters that do not, one, two and three bytes folded, NUL, and a character
// outside the basic plane.
const QString Letters = QStringLiteral("aAzZ \u00e9\u00c9\u00df\u03a3\u03c2\u20ac\uffef") + QChar(0) +
                        QChar(0xD83D) + QChar(0xDE00);

class RandomRows {
public:
    explicit RandomRows(unsigned seed) : mRandom(seed) {}

    int Pick(int from, int to) { return std::uniform_int_distribution<int>(from, to)(mRandom); }

    Variant Text()
    {
        if (Pick(0, 11) == 0)
            return Null;
        QString text = Prefixes[Pick(0, static_cast<int>(std::size(Prefixes)) - 1)];
        text.truncate(Pick(0, 1) ? text.size() : Pick(0, static_cast<int>(text.size())));
        for (int n = Pick(0, 3); n > 0; --n)
            text += Letters[Pick(0, static_cast<int>(Letters.size()) - 1)];
        return Variant(text);
    }
    Variant Number()
    {
        const double values[] = {-2.5, -0.0, 0.0, 1.0, 1e300, -1e-300, 7.0};
        return Pick(0, 9) == 0 ? Null : Variant(values[Pick(0, static_cast<int>(std::size(values)) - 1)]);
    }

private:
    std::mt19937 mRandom;
};

// The sort as it reads: every key compared in full until one differs.
bool ReferenceLess(const RecordsetStore& store, std::span<const SortKey> keys, RowId a, RowId b)
{
    for (const SortKey& key : keys) {
        const Column& column = store.ColumnOf(key.field);
        int c = 0;
        if (column.IsNull(a) || column.IsNull(b))
            c = static_cast<int>(column.IsNull(b)) - static_cast<int>(column.IsNull(a));
        else if (column.Storage() == StorageKind::Text)
            c = CompareNoCase(column.Text(a), column.Text(b));
        else
            c = column.Number(a) < column.Number(b) ? -1 : (column.Number(a) > column.Number(b) ? 1 : 0);
        if (c != 0)
            return key.descending ? c > 0 : c < 0;
    }
    return false;
}

TEST(RowSorterTest, AgreesWithAStableSortOfWholeValues)
{
    RandomRows random(20240611);
    const char* const sorts[] = {"Name",         "Name DESC",         "Name, Code",      "Code DESC, Name",
                                 "Amount, Name", "Name DESC, Amount", "Code, Amount DESC, Name DESC", "Amount DESC"};
    for (int round = 0; round < 40; ++round) {
        RecordsetStore store({MakeFieldDef("Name", adVarWChar, 255, adFldIsNullable),
                              MakeFieldDef("Code", adVarWChar, 255, adFldIsNullable),
                              MakeFieldDef("Amount", adDouble, 0, adFldIsNullable)});
        const int rowCount = random.Pick(2, 400);
        for (int i = 0; i < rowCount; ++i) {
            const Variant values[] = {random.Text(), random.Text(), random.Number()};
            store.AppendRow(values);
        }
        std::vector<RowId> input(static_cast<std::size_t>(rowCount));
        std::iota(input.begin(), input.end(), RowId{0});
        // Half the rounds start from a shuffled order, which the sort must keep among equal rows.
        if (round % 2)
            std::shuffle(input.begin(), input.end(), std::mt19937(static_cast<unsigned>(round)));
        for (const char* sort : sorts) {
            SCOPED_TRACE(testing::Message() << "round " << round << ", sort " << sort);
            const std::vector<SortKey> keys = BindSortKeys(QString::fromUtf8(sort), store);
            std::vector<RowId> expected = input;
            std::stable_sort(expected.begin(), expected.end(),
                             [&](RowId a, RowId b) { return ReferenceLess(store, keys, a, b); });
            std::vector<RowId> rows = input;
            SortRows(rows, store, keys);
            ASSERT_EQ(rows, expected);
        }
    }
}

// Texts that differ only past the first eight folded bytes, or only in length, or by a NUL where
// the other text ends; values whose folded bytes cross the edge of an eight-byte step.
TEST(RowSorterTest, SettlesTiesPastTheFirstBytes)
{
    RecordsetStore store({MakeFieldDef("Name", adVarWChar, 255, adFldIsNullable)});
    const QString texts[] = {QStringLiteral("abcdefgh"),
                             QStringLiteral("ABCDEFGH") + QChar(0),
                             QStringLiteral("abcdefghi"),
                             QStringLiteral("abcdefg"),
                             QStringLiteral("abcdefg\u00e9"),
                             QStringLiteral("abcdefg\u20ac"),
                             QStringLiteral("abcdefg\u00c9a"),
                             QStringLiteral("ABCDEFGHIJKLMNOPQ"),
                             QStringLiteral("abcdefghijklmnopq"),
                             QStringLiteral("abcdefghijklmnop"),
                             QString()};
    for (const QString& text : texts) {
        const Variant value[] = {Variant(text)};
        store.AppendRow(value);
    }
    const Variant null[] = {Null};
    store.AppendRow(null);
    std::vector<RowId> rows(store.RowCount());
    std::iota(rows.begin(), rows.end(), RowId{0});
    SortRows(rows, store, BindSortKeys(u"Name", store));
    EXPECT_EQ(rows, (std::vector<RowId>{11, 10, 3, 0, 1, 2, 9, 7, 8, 4, 6, 5}));
    SortRows(rows, store, BindSortKeys(u"Name DESC", store));
    EXPECT_EQ(rows, (std::vector<RowId>{5, 6, 4, 7, 8, 9, 2, 1, 0, 3, 10, 11}));
}

}  // namespace
}  // namespace korvex::ado
