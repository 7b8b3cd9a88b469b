// The CSV reader over real files: the quoting rules as a table, the record walk with its line
// ends and end-of-file behaviour, record counting, apostrophe doubling, the error numbers and
// the file locks of the two open modes.
#include "korvex/data/clsCSVFile.h"
#include "korvex/runtime/Conversions.h"
#include "tests/support/CsvReference.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Printers.h"
#include "tests/support/RaisedError.h"
#include "tests/support/TestFiles.h"

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

#include <random>

#include <unistd.h>

namespace korvex {
namespace {

using test::RaisedError;

constexpr int ErrOpen = ObjectErrorBase + 1;
constexpr int ErrClosed = ObjectErrorBase + 2;
constexpr int ErrColumn = ObjectErrorBase + 4;
constexpr int ErrPastEOF = ObjectErrorBase + 5;
constexpr int ErrCannotOpen = ObjectErrorBase + 6;

QStringList FieldsOf(const clsCSVFile& csv)
{
    QStringList fields;
    for (const Variant& field : csv.Fields(-1).Items())
        fields.append(CStr(field));
    return fields;
}

// The current record's fields through the views, which must read as the strings do.
QStringList ViewsOf(const clsCSVFile& csv)
{
    QStringList fields;
    for (short i = 0; i < csv.FieldsCount(); ++i)
        fields.append(csv.FieldView(i).toString());
    return fields;
}

// Every record from the current one to the end, each as its fields joined by "|".
QStringList Walk(clsCSVFile& csv)
{
    QStringList records;
    while (!csv.EOFCSV()) {
        records.append(FieldsOf(csv).join(u'|'));
        csv.MoveNext();
    }
    return records;
}

void ExpectError(const std::optional<Error>& error, int number, const char* source, const QString& description)
{
    ASSERT_TRUE(error.has_value()) << "nothing raised, expected " << source;
    EXPECT_EQ(error->Number(), number) << source;
    EXPECT_EQ(error->Source(), QString::fromLatin1(source));
    EXPECT_EQ(error->Description(), description) << source;
}

TEST(CSVFile, QuotingRulesSplitOneLine)
{
    struct Row {
        QByteArray line;
        bool doubleApostrophes;
        QStringList fields;
        QString valueList;
        const char* reason;
    };
    const Row rows[] = {
        {"a,b,c", false, {"a", "b", "c"}, "'a','b','c'", "plain fields"},
        {"a,\"b,c\",d", false, {"a", "b,c", "d"}, "'a','b,c','d'", "a quoted comma stays in its field"},
        {"\"say \"\"hi\"\"\"", false, {"say \"hi\""}, "'say \"hi\"'", "doubled quotes inside quotes become one"},
        {"\"a\"\"b\"", false, {"a\"b"}, "'a\"b'", "a doubled quote in the middle"},
        {"\"\"\"\",x", false, {"\"", "x"}, "'\"','x'", "a quoted field holding one quote"},
        {" \"x\",y", false, {" \"x\"", "y"}, "' \"x\"','y'", "a space before the quote: not a quoted field"},
        {"a\"b,c\"d,e", false, {"a\"b,c\"d", "e"}, "'a\"b,c\"d','e'", "quotes inside a field still pair up across commas"},
        {"\"a,b", false, {"\"a,b"}, "'\"a,b'", "an unclosed quote runs to the end of the line"},
        {"\"", false, {"\""}, "'\"'", "a lone quote is kept as it is"},
        {"\"\",x", false, {"", "x"}, "'','x'", "an empty quoted field"},
        {"a,,b", false, {"a", "", "b"}, "'a','','b'", "an empty field between commas"},
        {",a", false, {"", "a"}, "'','a'", "an empty first field"},
        {"a,b,", false, {"a", "b"}, "'a','b'", "a comma at the end adds no field"},
        {"a,b,,", false, {"a", "b", ""}, "'a','b',''", "only the last comma adds nothing"},
        {" a , b ", false, {" a ", " b "}, "' a ',' b '", "spaces are never trimmed"},
        {"x\r,\ry\r", false, {"x", "y"}, "'x','y'", "every CR in the line is dropped"},
        {"M\xFCller,\x80,\x92", false, {"M\u00FCller", "\u20AC", "\u2019"}, "'M\u00FCller','\u20AC','\u2019'",
         "bytes are Windows-1252"},
        {"O'Neil,x", true, {"O''Neil", "x"}, "'O''Neil','x'", "apostrophes doubled for SQL"},
        {"\"it's, fine\"", true, {"it''s, fine"}, "'it''s, fine'", "doubled after unquoting"},
        {"O'Neil", false, {"O'Neil"}, "'O'Neil'", "apostrophes kept by default"},
    };
    test::TestFolder folder;
    for (const Row& r : rows) {
        const QString path = folder.Write(QStringLiteral("line.csv"), r.line + "\n");
        clsCSVFile csv;
        csv.SetDoubleApostrophes(r.doubleApostrophes);
        csv.OpenCSV(path, 1);
        EXPECT_EQ(FieldsOf(csv), r.fields) << r.reason;
        EXPECT_EQ(csv.FieldsValueList(), r.valueList) << r.reason;
        EXPECT_EQ(csv.FieldsCount(), r.fields.size()) << r.reason;
    }
}

TEST(CSVFile, RecordWalkKeepsWidthAndStopsAtTheEnd)
{
    test::TestFolder folder;
    const QString path = folder.Write(QStringLiteral("walk.csv"), "a,b,c\r\nd\r\n\r\ne,f\r\n");
    clsCSVFile csv;
    csv.OpenCSV(path, 0);
    EXPECT_EQ(csv.AbsolutePosition(), 1);
    EXPECT_EQ(Walk(csv), (QStringList{"a|b|c", "d||", "||", "e|f|"})) << "shorter lines blank the rest of the width";
    EXPECT_EQ(csv.FieldsCount(), 3) << "the width never shrinks while open";
    EXPECT_TRUE(csv.EOFCSV());
    EXPECT_EQ(csv.AbsolutePosition(), -1);
    EXPECT_EQ(FieldsOf(csv), (QStringList{"e", "f", ""})) << "at the end the fields keep the last record";
    ExpectError(RaisedError([&] { csv.MoveNext(); }), ErrPastEOF, "clsCSVFile.MoveNext",
                QStringLiteral("Attempted to move past EOF."));
    ExpectError(RaisedError([&] { csv.Fields(3); }), ErrColumn, "clsCSVFile.Fields",
                QStringLiteral("Invalid column reference."));
    ExpectError(RaisedError([&] { csv.Fields(-2); }), ErrColumn, "clsCSVFile.Fields",
                QStringLiteral("Invalid column reference."));

    csv.MoveFirst();
    EXPECT_FALSE(csv.EOFCSV());
    EXPECT_EQ(csv.AbsolutePosition(), 1);
    csv.MoveNext();
    EXPECT_EQ(csv.AbsolutePosition(), 2);
    EXPECT_EQ(CStr(csv.Fields(0)), QStringLiteral("d"));
    EXPECT_EQ(csv.RecordCount(), 4);
    EXPECT_EQ(CStr(csv.Fields(0)), QStringLiteral("d")) << "counting does not move the reader";
    csv.MoveNext();
    EXPECT_EQ(csv.AbsolutePosition(), 3);
}

TEST(CSVFile, LineEndsAndLastLines)
{
    struct Row {
        QByteArray bytes;
        QStringList records;
        int recordCount;
        const char* reason;
    };
    const Row rows[] = {
        {"a,b\nc,d\n", {"a|b", "c|d"}, 2, "LF line ends"},
        {"a,b\r\nc,d\r\n", {"a|b", "c|d"}, 2, "CR LF reads the same as LF"},
        {"a,b\nc,d", {"a|b", "c|d"}, 2, "a last line without LF is a record"},
        {"a\nc", {"a", "c"}, 2, "a one-character last line counts"},
        {"a\nc\r", {"a", "c"}, 2, "a one-character last line with a CR counts"},
        {"a\n\n", {"a", ""}, 2, "an empty line before the end is a record"},
        {"a\n\r", {"a", ""}, 2, "a CR alone is an empty record"},
        {"\n", {""}, 1, "one empty line"},
        {"x", {"x"}, 1, "one byte"},
        {"a\rb\r\n", {"ab"}, 1, "a CR inside a line vanishes"},
    };
    test::TestFolder folder;
    for (const Row& r : rows) {
        const QString path = folder.Write(QStringLiteral("ends.csv"), r.bytes);
        clsCSVFile csv;
        csv.OpenCSV(path, 0);
        EXPECT_EQ(csv.RecordCount(), r.recordCount) << r.reason;
        EXPECT_EQ(Walk(csv), r.records) << r.reason;
    }
}

TEST(CSVFile, EmptyFileIsAtTheEndAtOnce)
{
    test::TestFolder folder;
    clsCSVFile csv;
    csv.OpenCSV(folder.Write(QStringLiteral("empty.csv"), {}), 0);
    EXPECT_TRUE(csv.EOFCSV());
    EXPECT_EQ(csv.AbsolutePosition(), -1);
    EXPECT_EQ(csv.FieldsCount(), 0);
    EXPECT_EQ(csv.RecordCount(), 0);
    ExpectError(RaisedError([&] { csv.MoveNext(); }), ErrPastEOF, "clsCSVFile.MoveNext",
                QStringLiteral("Attempted to move past EOF."));
    csv.MoveFirst();
    EXPECT_TRUE(csv.EOFCSV());
    EXPECT_EQ(csv.AbsolutePosition(), -1);
}

// Lines far longer than one read, CRs on both sides of buffer boundaries and many short lines:
// the reader must give exactly the lines that splitting the bytes at LF gives.
TEST(CSVFile, LongLinesAcrossReadBoundaries)
{
    constexpr qsizetype ReadSize = 64 * 1024;
    QByteArray bytes;
    QStringList expected;
    const int lengths[] = {0, 1, 511, 512, 513, 65535, 65536, 65537, 200000, 3, 131071};
    for (int length : lengths) {
        QByteArray line(length, 'x');
        for (int i = 7; i < length; i += 4093)
            line[i] = ',';
        expected.append(QString::fromLatin1(line).split(u',').join(u'|'));
        // CRs on both sides of the next read boundary when this line spans one.
        const qsizetype boundary = ReadSize - bytes.size() % ReadSize;
        if (boundary > 0 && boundary < line.size()) {
            line.insert(boundary, '\r');
            line.insert(boundary - 1, '\r');
        }
        bytes += line + "\r\n";
    }
    test::TestFolder folder;
    clsCSVFile csv;
    csv.OpenCSV(folder.Write(QStringLiteral("long.csv"), bytes), 0);
    QStringList records;
    while (!csv.EOFCSV()) {
        QStringList fields;
        for (int i = 0; i < csv.FieldsCount(); ++i)
            fields.append(csv.FieldText(static_cast<short>(i)));
        // Fields beyond this line's own count are blank; compare only what the line holds.
        while (!fields.isEmpty() && fields.last().isEmpty())
            fields.removeLast();
        records.append(fields.join(u'|'));
        csv.MoveNext();
    }
    for (QString& e : expected) {
        QStringList parts = e.split(u'|');
        while (!parts.isEmpty() && parts.last().isEmpty())
            parts.removeLast();
        e = parts.join(u'|');
    }
    ASSERT_EQ(records.size(), expected.size());
    for (qsizetype i = 0; i < records.size(); ++i)
        EXPECT_EQ(records[i], expected[i]) << "line " << i << " of length " << lengths[i];
    EXPECT_EQ(csv.RecordCount(), static_cast<int>(std::size(lengths)));
}

// Random lines of quotes, commas, apostrophes, CRs and letters, many longer than the 64 bytes
// the parser takes at a time, so that open quotes carry across its blocks; read in the usual
// 64 KB and in reads so small that quotes, CRs and LFs fall on every side of a read boundary.
TEST(CSVFile, AgreesWithThePlainRulesOnRandomLines)
{
    std::mt19937 random(2009);
    const char alphabet[] = {'a', 'b', ',', ',', '"', '"', '\'', ' ', '\r', '\xE9', '\x80', '\x9F'};
    QList<QByteArray> lines;
    QByteArray bytes;
    for (int n = 0; n < 400; ++n) {
        QByteArray line(static_cast<qsizetype>(random() % 300), 'a');
        for (char& c : line)
            c = alphabet[random() % sizeof alphabet];
        lines.append(line);
        bytes += line + '\n';
    }
    test::TestFolder folder;
    const QString path = folder.Write(QStringLiteral("random.csv"), bytes);
    // Each search the processor has, plain, AVX2 and AVX-512, with every size of read.
    for (int search : {0, 1, 2})
    for (qsizetype readSize : {qsizetype{64 * 1024}, qsizetype{1}, qsizetype{7}, qsizetype{64}, qsizetype{100}}) {
        for (bool doubling : {false, true}) {
            SCOPED_TRACE(testing::Message() << "search " << search << ", reads of " << readSize
                                            << (doubling ? ", doubling" : ""));
            clsCSVFile csv(readSize, nullptr, search);
            csv.SetDoubleApostrophes(doubling);
            csv.OpenCSV(path, 0);
            int width = 0;
            for (const QByteArray& line : lines) {
                ASSERT_FALSE(csv.EOFCSV());
                const QStringList expected = test::ReferenceCsvFields(line, doubling);
                width = std::max(width, static_cast<int>(expected.size()));
                ASSERT_EQ(csv.FieldsCount(), width);
                // Odd lines are read through the views first, even ones through the strings.
                for (int i = 0; i < width; ++i) {
                    const QString want = i < expected.size() ? expected[i] : QString();
                    const auto index = static_cast<short>(i);
                    if (csv.AbsolutePosition() % 2) {
                        ASSERT_EQ(csv.FieldView(index).toString(), want) << "field " << i << " of " << line.toStdString();
                    }
                    ASSERT_EQ(csv.FieldText(index), want) << "field " << i << " of " << line.toStdString();
                    ASSERT_EQ(csv.FieldView(index).toString(), want) << "field " << i << " of " << line.toStdString();
                }
                QStringList quoted;
                for (const QString& field : expected)
                    quoted.append(u'\'' + field + u'\'');
                ASSERT_EQ(csv.FieldsValueList(), quoted.join(u','));
                csv.MoveNext();
            }
            EXPECT_TRUE(csv.EOFCSV());
            EXPECT_EQ(csv.RecordCount(), lines.size());

            // Walked without a look at any field, the reader still holds the last record at the end.
            csv.MoveFirst();
            while (!csv.EOFCSV())
                csv.MoveNext();
            const QStringList last = test::ReferenceCsvFields(lines.last(), doubling);
            for (int i = 0; i < width; ++i)
                EXPECT_EQ(csv.FieldText(static_cast<short>(i)), i < last.size() ? last[i] : QString()) << "field " << i;
        }
    }
}

// Quoted fields with doubled quotes, lone quotes and code-page characters, short and longer
// than a block, and runs of empty fields, starting at every place in a block: the commas and
// the quotes inside are found from the search's marks, which a field shares with the blocks
// beside it. Read in the usual 64 KB and in reads that keep moving the lines in the buffer,
// with every third record passed unread.
TEST(CSVFile, QuotedAndEmptyFieldsAtEveryPlaceInABlock)
{
    QList<QByteArray> lines;
    QByteArray bytes;
    const auto add = [&](const QByteArray& line) {
        lines.append(line);
        bytes += line + '\n';
    };
    for (int lead = 0; lead < 64; ++lead) {
        const QByteArray a(lead, 'a');
        for (int inner : {0, 2, 31, 32, 33, 62, 63, 64, 90}) {
            QByteArray text(inner, 'x');
            for (int k = 0; k + 2 < inner; k += 7)
                text.replace(k, 3, "\"\"\x80");
            add(a + ",\"" + text + "\",\"\"\"\"\"\",\"\x9F\"\"\"\r");
        }
        // Runs of one and of three quotes inside quoted fields.
        add(a + ",\"a\"\"\"b\"c\",\"a\"b\"c\"\r");
        // Runs of empty fields: a block may hold from none to 64 separating commas.
        for (int commas : {8, 9, 17, 25, 63, 64, 130})
            add(a + QByteArray(commas, ',') + "\"z\"\"\"\r");
    }
    test::TestFolder folder;
    const QString path = folder.Write(QStringLiteral("quoted.csv"), bytes);
    const QString other = folder.Write(QStringLiteral("other.csv"), "p,\"q\"\"\"\r\n");
    const auto expectViews = [](const clsCSVFile& csv, const QByteArray& line) {
        // The fields of a line narrower than the widest so far read as blank.
        QStringList expected = test::ReferenceCsvFields(line.chopped(1), false);
        while (expected.size() < csv.FieldsCount())
            expected.append(QString());
        ASSERT_EQ(ViewsOf(csv), expected) << line.toStdString();
    };
    for (int search : {0, 1, 2}) {
        for (qsizetype readSize : {qsizetype{64 * 1024}, qsizetype{1000}}) {
            SCOPED_TRACE(testing::Message() << "search " << search << ", reads of " << readSize);
            clsCSVFile csv(readSize, nullptr, search);
            csv.OpenCSV(path, 0);
            for (qsizetype i = 0; i < lines.size(); ++i) {
                if (i % 3 != 1) {
                    ASSERT_NO_FATAL_FAILURE(expectViews(csv, lines[i]));
                }
                csv.MoveNext();
            }
            EXPECT_TRUE(csv.EOFCSV());
            // From the start again, and then in another file, nothing of the last reads shows.
            csv.MoveFirst();
            for (qsizetype i = 0; i < 3; ++i) {
                ASSERT_NO_FATAL_FAILURE(expectViews(csv, lines[i]));
                csv.MoveNext();
            }
            csv.CloseCSV();
            EXPECT_EQ(test::ErrorOf([&] { (void)csv.FieldView(0); }), ErrClosed) << "views go with the file";
            csv.OpenCSV(other, 0);
            EXPECT_EQ(ViewsOf(csv), QStringList({QStringLiteral("p"), QStringLiteral("q\"")}));
            csv.CloseCSV();
        }
    }
}

// Another program may write on while the file is open shared: lines appended behind a last
// line without an LF are read on as records of their own.
TEST(CSVFile, LinesAppendedBehindALastLineWithoutLineFeed)
{
    test::TestFolder folder;
    for (int search : {0, 1, 2}) {
        SCOPED_TRACE(testing::Message() << "search " << search);
        const QString path = folder.Write(QStringLiteral("growing.csv"), "x,y\na,\"b\"");
        clsCSVFile csv(64 * 1024, nullptr, search);
        csv.OpenCSV(path, 1);
        csv.MoveNext();
        EXPECT_EQ(ViewsOf(csv), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write(",c,\"d\"\r\ne,f\n");
        file.close();
        csv.MoveNext();
        EXPECT_EQ(ViewsOf(csv), QStringList({QString(), QStringLiteral("c"), QStringLiteral("d")}));
        csv.MoveNext();
        EXPECT_EQ(ViewsOf(csv), QStringList({QStringLiteral("e"), QStringLiteral("f"), QString()}));
        csv.MoveNext();
        EXPECT_TRUE(csv.EOFCSV());
        csv.CloseCSV();
    }
}

// Fields are placed only when one is asked for: records passed unread, and a last record read
// only after the walk has reached the end, must read as the rules say all the same.
TEST(CSVFile, RecordsPassedUnreadLeaveTheOthersRight)
{
    const QByteArray files[] = {
        QByteArray("\n") + QByteArray(55, '\0') + "a\xF4\x84\x84\x7F{{{\n,",
        "a,\"b\r\n,c\",d\r\n\"x\ny,z\r\r\n,,\n\"q,\"\"\",r",
    };
    test::TestFolder folder;
    for (const QByteArray& bytes : files) {
        const QString path = folder.Write(QStringLiteral("unread.csv"), bytes);
        QList<QByteArray> lines = bytes.split('\n');
        if (bytes.endsWith('\n'))
            lines.removeLast();
        for (qsizetype readSize : {qsizetype{64 * 1024}, qsizetype{1}, qsizetype{3}, qsizetype{64}}) {
            SCOPED_TRACE(testing::Message() << "reads of " << readSize);
            clsCSVFile csv(readSize, nullptr);
            csv.OpenCSV(path, 0);
            for (qsizetype n = 0; n < lines.size(); ++n, csv.MoveNext()) {
                if (n % 2 == 1)
                    continue;
                const QStringList expected = test::ReferenceCsvFields(lines[n], false);
                for (int i = 0; i < csv.FieldsCount(); ++i)
                    EXPECT_EQ(csv.FieldText(static_cast<short>(i)), i < expected.size() ? expected[i] : QString())
                        << "line " << n << " field " << i;
            }
            ASSERT_TRUE(csv.EOFCSV());
            const QStringList last = test::ReferenceCsvFields(lines.last(), false);
            for (int i = 0; i < last.size(); ++i)
                EXPECT_EQ(csv.FieldText(static_cast<short>(i)), last[i]) << "last line, field " << i;
        }
    }
}

TEST(CSVFile, RecordCountIsCountedOnceAfterModeZero)
{
    test::TestFolder folder;
    const QString three = folder.Write(QStringLiteral("three.csv"), "a\nb\nc\n");
    const QString one = folder.Write(QStringLiteral("one.csv"), "a\n");

    clsCSVFile fresh;
    fresh.OpenCSV(three, 1);
    EXPECT_EQ(fresh.RecordCount(), 0) << "a new reader opened shared has nothing counted";
    fresh.CloseCSV();
    fresh.OpenCSV(three, 1);
    EXPECT_EQ(fresh.RecordCount(), 3) << "closing marks the count as not yet counted";
    fresh.CloseCSV();

    clsCSVFile csv;
    csv.OpenCSV(three, 0);
    EXPECT_EQ(csv.RecordCount(), 3);
    csv.CloseCSV();
    csv.OpenCSV(one, 0);
    EXPECT_EQ(csv.RecordCount(), 1) << "mode 0 counts afresh";
}

TEST(CSVFile, DoubleApostrophesChangesTheCurrentRecord)
{
    test::TestFolder folder;
    clsCSVFile csv;
    csv.OpenCSV(folder.Write(QStringLiteral("names.csv"), "O'Neil,d'Arcy\nx\n"), 1);
    EXPECT_EQ(ViewsOf(csv), (QStringList{"O'Neil", "d'Arcy"}));
    csv.SetDoubleApostrophes(true);
    EXPECT_EQ(FieldsOf(csv), (QStringList{"O''Neil", "d''Arcy"}));
    EXPECT_EQ(ViewsOf(csv), FieldsOf(csv)) << "the views show the change too";
    csv.SetDoubleApostrophes(true);
    EXPECT_EQ(FieldsOf(csv), (QStringList{"O''''Neil", "d''''Arcy"})) << "setting it again applies it again";
    EXPECT_EQ(ViewsOf(csv), FieldsOf(csv));
    EXPECT_EQ(csv.FieldsValueList(), QStringLiteral("'O'Neil','d'Arcy'")) << "the value list keeps the record as read";
    csv.SetDoubleApostrophes(false);
    EXPECT_EQ(FieldsOf(csv), (QStringList{"O''Neil", "d''Arcy"}));
    EXPECT_EQ(ViewsOf(csv), FieldsOf(csv));
    csv.MoveFirst();
    EXPECT_EQ(ViewsOf(csv), (QStringList{"O'Neil", "d'Arcy"}));
    EXPECT_EQ(FieldsOf(csv), (QStringList{"O'Neil", "d'Arcy"}));

    csv.MoveNext();
    csv.MoveNext();
    ASSERT_TRUE(csv.EOFCSV());
    csv.SetDoubleApostrophes(true);
    EXPECT_EQ(FieldsOf(csv), (QStringList{"x", ""})) << "at the end nothing is changed";
}

TEST(CSVFile, ClosedReaderRaisesWithTheMembersSource)
{
    const QString closed = QStringLiteral("Operation is not allowed when the object is closed.");
    clsCSVFile csv;
    struct Row {
        std::function<void()> call;
        const char* source;
    };
    const Row rows[] = {
        {[&] { (void)csv.EOFCSV(); }, "clsCSVFile.EOF"},
        {[&] { (void)csv.Fields(0); }, "clsCSVFile.Fields"},
        {[&] { (void)csv.FieldsCount(); }, "clsCSVFile.Fields"},
        {[&] { (void)csv.FieldsValueList(); }, "clsCSVFile.FieldsValueList"},
        {[&] { (void)csv.RecordCount(); }, "clsCSVFile.RecordCount"},
        {[&] { (void)csv.AbsolutePosition(); }, "clsCSVFile.AbsolutePosition"},
        {[&] { csv.CloseCSV(); }, "clsCSVFile.CloseCSV"},
    };
    for (const Row& r : rows)
        ExpectError(RaisedError(r.call), ErrClosed, r.source, closed);
    EXPECT_EQ(test::ErrorOf([&] { csv.MoveNext(); }), vbErrBadFileNameOrNumber) << "no file behind it";
}

TEST(CSVFile, OpenFailuresNeedACloseBeforeTheNextOpen)
{
    test::TestFolder folder;
    const QString good = folder.Write(QStringLiteral("good.csv"), "a,b\n");
    clsCSVFile csv;
    ExpectError(RaisedError([&] { csv.OpenCSV(folder.Path(QStringLiteral("missing.csv")), 1); }), ErrCannotOpen,
                "clsCSVFile.OpenCSV", QStringLiteral("Unable to open CSV file:\r\nNo such file or directory"));
    ExpectError(RaisedError([&] { csv.OpenCSV(good, 1); }), ErrOpen, "clsCSVFile.OpenCSV",
                QStringLiteral("Operation is not allowed when the object is open."));
    csv.CloseCSV();
    csv.OpenCSV(good, 1);
    EXPECT_EQ(FieldsOf(csv), (QStringList{"a", "b"}));
    csv.CloseCSV();

    ExpectError(RaisedError([&] { csv.OpenCSV(good, 2); }), ErrCannotOpen, "clsCSVFile.OpenCSV",
                QStringLiteral("Unable to open CSV file:\r\nBad file name or number"));
    csv.CloseCSV();

    const auto folderError = RaisedError([&] { csv.OpenCSV(folder.Root(), 0); });
    ASSERT_TRUE(folderError.has_value()) << "a folder is not a CSV file";
    EXPECT_EQ(folderError->Number(), ErrCannotOpen);
    EXPECT_TRUE(folderError->Description().startsWith(QStringLiteral("Unable to open CSV file:\r\n")));
    EXPECT_GT(folderError->Description().size(), 26) << "the system's reason follows";
    csv.CloseCSV();
}

TEST(CSVFile, UnreadableFileGivesTheSystemsReason)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "running as root: file permissions cannot make a file unreadable";
    test::TestFolder folder;
    const QString locked = folder.Write(QStringLiteral("locked.csv"), "a\n");
    QFile::setPermissions(locked, QFileDevice::WriteOwner);
    clsCSVFile csv;
    ExpectError(RaisedError([&] { csv.OpenCSV(locked, 1); }), ErrCannotOpen, "clsCSVFile.OpenCSV",
                QStringLiteral("Unable to open CSV file:\r\nPermission denied"));
}

TEST(CSVFile, ModeZeroKeepsOtherReadersOut)
{
    test::TestFolder folder;
    const QString path = folder.Write(QStringLiteral("shared.csv"), "a\n");
    const QString denied = QStringLiteral("Unable to open CSV file:\r\nPermission denied");

    clsCSVFile first;
    clsCSVFile second;
    first.OpenCSV(path, 1);
    second.OpenCSV(path, 1);
    EXPECT_FALSE(second.EOFCSV()) << "two shared readers";
    second.CloseCSV();

    clsCSVFile exclusive;
    ExpectError(RaisedError([&] { exclusive.OpenCSV(path, 0); }), ErrCannotOpen, "clsCSVFile.OpenCSV", denied);
    exclusive.CloseCSV();
    first.CloseCSV();

    exclusive.OpenCSV(path, 0);
    ExpectError(RaisedError([&] { second.OpenCSV(path, 1); }), ErrCannotOpen, "clsCSVFile.OpenCSV", denied);
    second.CloseCSV();
    exclusive.CloseCSV();
    second.OpenCSV(path, 1);
    EXPECT_EQ(CStr(second.Fields(0)), QStringLiteral("a")) << "closing releases the lock";
}

}  // namespace
}  // namespace korvex
