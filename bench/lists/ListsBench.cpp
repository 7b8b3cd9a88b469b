// The pick list over a million rows beside a thousand: selecting by bound value and showing the
// list; and building a free-mode list from a string beside splitting that string with Qt.
#include "bench/support/BenchReport.h"
#include "bench/support/BenchRows.h"

#include "korvex/controls/lists/ZqDropdownList.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"

#include <QApplication>
#include <QElapsedTimer>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <vector>

namespace korvex {
namespace {

using namespace ado;

constexpr int Million = 1000000;
constexpr int Thousand = 1000;

QString CodeOf(int i)
{
    return QStringLiteral("C%1").arg(i, 7, 10, QChar(u'0'));
}

std::shared_ptr<Recordset> MakeRecordset(int rows)
{
    return bench::RecordsetOver(bench::StoreOfRows(
        {MakeFieldDef("Code", adVarWChar, 10, adFldIsNullable), MakeFieldDef("Name", adVarWChar, 40, adFldIsNullable),
         MakeFieldDef("Id", adInteger, 4, adFldIsNullable)},
        rows, [](int i) {
            return std::array{Variant(CodeOf(i)), Variant(QStringLiteral("Customer number %1").arg(i)), Variant(std::int32_t{i})};
        }));
}

Recordset& Big()
{
    static const std::shared_ptr<Recordset> rs = MakeRecordset(Million);
    return *rs;
}
Recordset& Small()
{
    static const std::shared_ptr<Recordset> rs = MakeRecordset(Thousand);
    return *rs;
}

// A shown form holding one hidden pick list over a clone of the rows.
struct ListOnForm {
    explicit ListOnForm(Recordset& rows, const QString& boundColumn)
    {
        form.resize(600, 400);
        list = new ZqDropdownList(form.Client());
        list->SetName(QStringLiteral("lstBench"));
        list->InitProperties();
        list->setGeometry(20, 20, 400, 300);
        list->SetVisible(false);
        list->SetRowSource(rows.Clone());
        list->SetBoundColumn(boundColumn);
        form.show();
        QApplication::processEvents();
    }
    Form form;
    ZqDropdownList* list = nullptr;
};

// Two values near the end of the rows, selected in turn so that every Let changes the selection.
void LetBoundValue(benchmark::State& state, Recordset& rows, const QString& column, bool numeric)
{
    ListOnForm l(rows, column);
    const int count = static_cast<int>(rows.RecordCount());
    const auto valueOf = [&](int i) { return numeric ? Variant(std::int32_t{i}) : Variant(CodeOf(i)); };
    const Variant values[] = {valueOf(count - 1), valueOf(count / 2 + 7)};
    // The first Let of each kind builds the index it looks values up in, once for the list's
    // life; that is paid before the clock starts, as the Lets are what is measured.
    for (const Variant& value : values)
        l.list->SetBoundValue(value);
    int turn = 0;
    for (auto _ : state) {
        l.list->SetBoundValue(values[turn ^= 1]);
        benchmark::DoNotOptimize(turn);
    }
}
void BM_BoundValueTextMillion(benchmark::State& state)
{
    LetBoundValue(state, Big(), QStringLiteral("Code"), false);
}
void BM_BoundValueTextThousand(benchmark::State& state)
{
    LetBoundValue(state, Small(), QStringLiteral("Code"), false);
}
void BM_BoundValueNumberMillion(benchmark::State& state)
{
    LetBoundValue(state, Big(), QStringLiteral("Id"), true);
}
void BM_BoundValueNumberThousand(benchmark::State& state)
{
    LetBoundValue(state, Small(), QStringLiteral("Id"), true);
}
BENCHMARK(BM_BoundValueTextMillion)->Unit(benchmark::kMicrosecond)->MinTime(0.2)->Repetitions(5);
BENCHMARK(BM_BoundValueTextThousand)->Unit(benchmark::kMicrosecond)->MinTime(0.2)->Repetitions(5);
BENCHMARK(BM_BoundValueNumberMillion)->Unit(benchmark::kMicrosecond)->MinTime(0.2)->Repetitions(5);
BENCHMARK(BM_BoundValueNumberThousand)->Unit(benchmark::kMicrosecond)->MinTime(0.2)->Repetitions(5);

// 10,000 items in two columns: 5,000 rows.
const QString& TenThousandItems()
{
    static const QString text = [] {
        QStringList items;
        for (int i = 0; i < 5000; ++i)
            items << CodeOf(i) << QStringLiteral("Customer number %1").arg(i);
        return items.join(u';');
    }();
    return text;
}
void BM_RowSourceLet(benchmark::State& state)
{
    Form form;
    auto* list = new ZqDropdownList(form.Client());
    list->SetName(QStringLiteral("lstBench"));
    list->InitProperties();
    list->SetColumns(2);
    for (auto _ : state) {
        list->SetRowSource(Variant(TenThousandItems()));
        benchmark::DoNotOptimize(list->ListCount());
    }
}
void BM_SplitString(benchmark::State& state)
{
    for (auto _ : state) {
        const QStringList items = TenThousandItems().split(u';');
        benchmark::DoNotOptimize(items.size());
    }
}
BENCHMARK(BM_RowSourceLet)->Unit(benchmark::kMicrosecond)->MinTime(0.2)->Repetitions(5);
BENCHMARK(BM_SplitString)->Unit(benchmark::kMicrosecond)->MinTime(0.2)->Repetitions(5);

// Shown with a row selected deep in the list: it floats, comes in step with the selection,
// applies its grid settings and paints its first screen.
void ShowList(benchmark::State& state, Recordset& rows)
{
    ListOnForm l(rows, QStringLiteral("Code"));
    l.list->SetBoundValue(Variant(CodeOf(static_cast<int>(rows.RecordCount()) - 10)));
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        l.list->SetVisible(true);
        QPixmap screen = l.list->grab();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        benchmark::DoNotOptimize(screen);
        l.list->SetVisible(false);
        // The display copy leaves the selection, so that the next showing brings it back.
        l.list->Model().DisplayCopy()->MoveFirst();
    }
}
void BM_ShowListMillion(benchmark::State& state)
{
    ShowList(state, Big());
}
void BM_ShowListThousand(benchmark::State& state)
{
    ShowList(state, Small());
}
BENCHMARK(BM_ShowListMillion)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20)->Repetitions(5);
BENCHMARK(BM_ShowListThousand)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20)->Repetitions(5);

}  // namespace
}  // namespace korvex

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    korvex::App::Instance()->SetTitle(QStringLiteral("Korvex Bench"));
    using namespace korvex::bench;
    korvex::Big();
    korvex::Small();
    // Selecting by value goes through the field index: a million rows cost what a thousand do.
    CompareTime("lists_boundvalue_text_1m_vs_1k", "BM_BoundValueTextMillion", "BM_BoundValueTextThousand", 3.0);
    CompareTimeAbsolute("lists_boundvalue_text_1m", "BM_BoundValueTextMillion", "BM_BoundValueTextThousand", 1.0, "ms");
    CompareTime("lists_boundvalue_number_1m_vs_1k", "BM_BoundValueNumberMillion", "BM_BoundValueNumberThousand", 3.0);
    CompareTimeAbsolute("lists_boundvalue_number_1m", "BM_BoundValueNumberMillion", "BM_BoundValueNumberThousand", 1.0,
                        "ms");
    // Building the list from a string costs little more than splitting the string.
    CompareTime("lists_rowsource_10k_items_vs_split", "BM_RowSourceLet", "BM_SplitString", 3.0);
    // Showing the list over a million rows fits in a frame.
    CompareTimeAbsolute("lists_show_1m", "BM_ShowListMillion", "BM_ShowListThousand", 16.0, "ms");
    // Repetitions of all benchmarks run interleaved in random order, so that a busy moment of the
    // machine does not fall on one side of a comparison only.
    std::vector<char*> args(argv, argv + argc);
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    args.insert(args.begin() + 1, interleave);
    int count = static_cast<int>(args.size());
    return Main(count, args.data());
}
