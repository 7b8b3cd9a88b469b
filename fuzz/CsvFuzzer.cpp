// The CSV reader from arbitrary file contents: every record must be exactly what the plain
// statement of the quoting rules gives for its line, the record count must match the walk,
// and nothing may crash, hang or read out of bounds.
#include "korvex/data/clsCSVFile.h"
#include "korvex/runtime/Error.h"
#include "tests/support/CsvReference.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace {

const QString& FilePath()
{
    static QTemporaryDir dir;
    static const QString path = dir.filePath(QStringLiteral("fuzz.csv"));
    return path;
}

void Check(bool condition)
{
    if (!condition)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace korvex;
    if (size == 0)
        return 0;
    // The first byte chooses the open mode, apostrophe doubling and how much the reader reads at
    // a time (small reads put quotes, CRs and LFs on every side of a read boundary); the rest is
    // the file.
    const int mode = data[0] & 1;
    const bool doubling = (data[0] & 2) != 0;
    constexpr qsizetype readSizes[] = {64 * 1024, 1, 2, 3, 7, 63, 64, 100};
    const qsizetype readSize = readSizes[(data[0] >> 2) & 7];
    // Fields are placed only when asked for: some walks skip every other record unread.
    const bool readEveryRecord = (data[0] & 32) != 0;
    // Which search finds the separators: plain, AVX2 or AVX-512, as far as the processor has them.
    const int search = (data[0] >> 6) % 3;
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size - 1));
    {
        QFile file(FilePath());
        Check(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size());
    }

    QList<QByteArray> lines = bytes.split('\n');
    if (bytes.isEmpty() || bytes.endsWith('\n'))
        lines.removeLast();  // no record after the last line feed

    clsCSVFile csv(readSize, nullptr, search);
    csv.SetDoubleApostrophes(doubling);
    csv.OpenCSV(FilePath(), mode);
    int width = 0;
    int position = 0;
    for (const QByteArray& line : lines) {
        Check(!csv.EOFCSV() && csv.AbsolutePosition() == ++position);
        const QStringList expected = test::ReferenceCsvFields(line, doubling);
        width = std::max(width, static_cast<int>(expected.size()));
        Check(csv.FieldsCount() == width);
        if (readEveryRecord || position % 2) {
            // The views first on every other record, the strings first on the rest.
            for (int i = 0; i < width; ++i) {
                const QString want = i < expected.size() ? expected[i] : QString();
                const auto index = static_cast<short>(i);
                Check(position % 4 < 2 || csv.FieldView(index) == want);
                Check(csv.FieldText(index) == want);
                Check(csv.FieldView(index) == want);
            }
            (void)csv.FieldsValueList();
        }
        csv.MoveNext();
    }
    Check(csv.EOFCSV() && csv.AbsolutePosition() == -1);
    if (mode == 0)
        Check(csv.RecordCount() == lines.size());

    // At the end the reader still holds the last record, whether or not it was looked at before.
    if (!lines.isEmpty()) {
        const QStringList last = test::ReferenceCsvFields(lines.last(), doubling);
        for (int i = 0; i < last.size(); ++i)
            Check(csv.FieldText(static_cast<short>(i)) == last[i]);
    }

    // The members that change or hand out the current record must hold up too.
    csv.MoveFirst();
    if (!csv.EOFCSV()) {
        csv.SetDoubleApostrophes(!doubling);
        csv.SetDoubleApostrophes(!doubling);
        Check(csv.Fields(-1).Items().size() == csv.FieldsCount());
    }
    try {
        csv.MoveNext();
    } catch (const Error& error) {
        Check(error.Number() == ObjectErrorBase + 5);
    }
    csv.CloseCSV();
    return 0;
}
