// How fast captions resolve and language-sized CSV files read: LGS lookups of known
// identifiers against a bare hash map of the same keys, and clsCSVFile walking a 100 MB file
// against a plain read-and-memchr scan for its line ends.
#include "bench/support/BenchReport.h"
#include "korvex/core/SharedContext.h"
#include "korvex/data/clsCSVFile.h"
#include "korvex/localisation/LGS.h"
#include "korvex/runtime/Windows1252.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <cstring>
#include <random>
#include <unordered_map>
#include <vector>

namespace korvex {
namespace {

constexpr int KeyCount = 2000;

// std::hash for QString, which this Qt version does not provide.
struct QStringHasher {
    std::size_t operator()(const QString& text) const noexcept { return qHash(text); }
};
constexpr qint64 CsvBytes = 100 * 1000 * 1000;

QTemporaryDir& Folder()
{
    static QTemporaryDir dir;
    return dir;
}

QString KeyName(int i)
{
    return QStringLiteral("MsgText%1").arg(i, 4, 10, QLatin1Char('0'));
}

// A language file of KeyCount keys in five languages, loaded as the current language, and the
// keys in the order the benchmarks look them up.
const QStringList& LoadedKeys()
{
    static const QStringList keys = [] {
        QByteArray file = "Key,English,German,French,American,Dutch\r\n";
        for (int i = 0; i < KeyCount; ++i) {
            const QByteArray n = QByteArray::number(i);
            file += ToWindows1252(KeyName(i)) + ",Text " + n + ",Text \xE4 " + n + ",Texte \xE9 " + n + ",Text " + n +
                    " US,Tekst " + n + "\r\n";
        }
        const QString path = Folder().filePath(QStringLiteral("bench.lng"));
        QFile out(path);
        if (!out.open(QIODevice::WriteOnly) || out.write(file) != file.size())
            qFatal("cannot write %s", qPrintable(path));
        out.close();
        clsLanguage::Create()->LanguageInitialise(langGerman, path);

        QStringList order;
        for (int i = 0; i < KeyCount; ++i)
            order.append(KeyName(i));
        std::shuffle(order.begin(), order.end(), std::mt19937(42));
        return order;
    }();
    return keys;
}

void BM_LGS(benchmark::State& state)
{
    const QStringList& keys = LoadedKeys();
    qsizetype i = 0;
    for (auto _ : state) {
        QString text = LGS(keys[i]);
        benchmark::DoNotOptimize(text);
        if (++i == keys.size())
            i = 0;
    }
}
BENCHMARK(BM_LGS);

void BM_UnorderedMapLookup(benchmark::State& state)
{
    const QStringList& keys = LoadedKeys();
    std::unordered_map<QString, QString, QStringHasher> map;
    for (int k = 0; k < KeyCount; ++k)
        map.emplace(KeyName(k), QStringLiteral("Text \u00E4 %1").arg(k));
    const QString fallback;
    qsizetype i = 0;
    for (auto _ : state) {
        const auto it = map.find(keys[i]);
        QString text = it != map.end() ? it->second : fallback;
        benchmark::DoNotOptimize(text);
        if (++i == keys.size())
            i = 0;
    }
}
BENCHMARK(BM_UnorderedMapLookup);

// About 100 MB of records such as a data import would bring: numbers, quoted texts with
// commas and doubled quotes, accented names, empty fields, CR LF line ends.
const QString& CsvFile()
{
    static const QString path = [] {
        const QString p = Folder().filePath(QStringLiteral("bench.csv"));
        QFile out(p);
        if (!out.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(p));
        std::mt19937 random(7);
        const char* names[] = {"M\xFCller", "O'Neil", "Smith", "Dupont", "van der Berg", "\xC9lise"};
        QByteArray chunk;
        qint64 written = 0;
        for (int row = 0; written < CsvBytes; ++row) {
            const unsigned r = random();
            chunk += QByteArray::number(row) + ',' + names[r % 6] + ",\"" + names[(r >> 3) % 6] + ", " +
                     names[(r >> 6) % 6] + "\",\"said \"\"hi\"\"\"," + QByteArray::number(r % 100000) + '.' +
                     QByteArray::number(r % 100) + ",2009-01-" + QByteArray::number(1 + r % 28) + ",," +
                     QByteArray(static_cast<int>(r % 40), 'x') + "\r\n";
            if (chunk.size() > (1 << 20) || written + chunk.size() >= CsvBytes) {
                written += out.write(chunk);
                chunk.clear();
            }
        }
        out.close();
        return p;
    }();
    return path;
}

// Walks the whole file record by record per iteration; `perRecord` sees each record and
// returns a number to sum, so that nothing is optimised away.
template <class PerRecord>
void WalkCsvFile(benchmark::State& state, PerRecord perRecord)
{
    const QString& path = CsvFile();
    const qint64 size = QFile(path).size();
    for (auto _ : state) {
        clsCSVFile csv;
        csv.OpenCSV(path, 1);
        qsizetype sum = 0;
        while (!csv.EOFCSV()) {
            sum += perRecord(csv);
            csv.MoveNext();
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * size);
}

void BM_CSVWalk(benchmark::State& state)
{
    WalkCsvFile(state, [](const clsCSVFile& csv) { return static_cast<qsizetype>(csv.FieldsCount()); });
}
BENCHMARK(BM_CSVWalk)->Unit(benchmark::kMillisecond);

// A caller that looks at every field of every record, through the view that decodes fields
// without a string each; it reads each field's length and its last character, so that the
// decoding cannot be left undone.
void BM_CSVWalkReadingEveryField(benchmark::State& state)
{
    WalkCsvFile(state, [](const clsCSVFile& csv) {
        qsizetype characters = 0;
        for (short i = 0; i < csv.FieldsCount(); ++i) {
            const QStringView field = csv.FieldView(i);
            characters += field.size() + (field.isEmpty() ? 0 : field.back().unicode());
        }
        return characters;
    });
}
BENCHMARK(BM_CSVWalkReadingEveryField)->Unit(benchmark::kMillisecond);

// The floor: read the same file in the reader's block size and find every line end.
void BM_MemchrLineScan(benchmark::State& state)
{
    const QString& path = CsvFile();
    const qint64 size = QFile(path).size();
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            qFatal("cannot read %s", qPrintable(path));
        qint64 lines = 0;
        qint64 got = 0;
        while ((got = file.read(buffer.data(), static_cast<qint64>(buffer.size()))) > 0) {
            const char* p = buffer.data();
            const char* end = p + got;
            while ((p = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)))) != nullptr) {
                ++lines;
                ++p;
            }
        }
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(state.iterations() * size);
}
BENCHMARK(BM_MemchrLineScan)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace korvex

int main(int argc, char** argv)
{
    using namespace korvex::bench;
    CompareTime("lgs_lookup_vs_unordered_map", "BM_LGS", "BM_UnorderedMapLookup", 1.5);
    // 10 million lookups a second is 0.1 us a lookup.
    CompareTimeAbsolute("lgs_lookup", "BM_LGS", "BM_UnorderedMapLookup", 0.1, "us");
    CompareThroughput("csv_walk", "BM_CSVWalk", "BM_MemchrLineScan", 0.5);
    CompareThroughput("csv_walk_every_field", "BM_CSVWalkReadingEveryField", "BM_MemchrLineScan", 0.25);
    return Main(argc, argv);
}
