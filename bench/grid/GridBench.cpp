// The grid over a million rows beside ten: binding and painting the first screen, scrolling a
// page, and the memory the grid adds; and, as the reference a Qt developer would write, the
// first screen of a QTableView over a QStandardItemModel filled with the same rows.
#include "bench/support/BenchReport.h"
#include "bench/support/BenchRows.h"

#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/grid/Grid.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QStandardItemModel>
#include <QTableView>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>

namespace korvex {
namespace {

using namespace ado;

constexpr int Million = 1000000;
constexpr int Width = 640, Height = 480;

QString CodeOf(int i)
{
    return QStringLiteral("C%1").arg(i, 7, 10, QChar(u'0'));
}
QString NameOf(int i)
{
    return QStringLiteral("Customer number %1 of the list").arg(i);
}

std::shared_ptr<Recordset> MakeRecordset(int rows)
{
    return bench::RecordsetOver(bench::StoreOfRows(
        {MakeFieldDef("Code", adVarWChar, 10, adFldIsNullable), MakeFieldDef("Name", adVarWChar, 40, adFldIsNullable),
         MakeFieldDef("Amount", adInteger, 4, adFldIsNullable)},
        rows, [](int i) { return std::array{Variant(CodeOf(i)), Variant(NameOf(i)), Variant(std::int32_t{i % 9973})}; }));
}

Recordset& Big()
{
    static const std::shared_ptr<Recordset> rs = MakeRecordset(Million);
    return *rs;
}
Recordset& Small()
{
    static const std::shared_ptr<Recordset> rs = MakeRecordset(10);
    return *rs;
}
// More rows than the screen holds: the same cells painted as for the million.
Recordset& Screenful()
{
    static const std::shared_ptr<Recordset> rs = MakeRecordset(60);
    return *rs;
}

struct ShownGrid {
    ShownGrid()
    {
        grid.resize(Width, Height);
        grid.show();
        QApplication::processEvents();
    }
    Grid grid;
};

// Binds a clone of the recordset and paints the first screen; the time of both.
void BindAndPaint(benchmark::State& state, Recordset& source)
{
    ShownGrid g;
    for (auto _ : state) {
        auto clone = source.Clone();
        QElapsedTimer clock;
        clock.start();
        g.grid.SetDataSource(clone);
        QPixmap screen = g.grid.grab();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        benchmark::DoNotOptimize(screen);
        g.grid.SetDataSource(nullptr);
    }
}
void BM_BindAndPaintMillion(benchmark::State& state)
{
    BindAndPaint(state, Big());
}
BENCHMARK(BM_BindAndPaintMillion)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20)->Repetitions(5);
void BM_BindAndPaintTen(benchmark::State& state)
{
    BindAndPaint(state, Small());
}
BENCHMARK(BM_BindAndPaintTen)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20)->Repetitions(5);
void BM_BindAndPaintScreenful(benchmark::State& state)
{
    BindAndPaint(state, Screenful());
}
BENCHMARK(BM_BindAndPaintScreenful)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20)->Repetitions(5);

// One page down and the new screen painted, in the middle of the million rows.
void BM_ScrollPageMillion(benchmark::State& state)
{
    ShownGrid g;
    g.grid.SetDataSource(Big().Clone());
    int top = Million / 2;
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        const int page = g.grid.BottomRow() - g.grid.TopRow();
        g.grid.SetTopRow(top += page);
        QPixmap screen = g.grid.grab();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        benchmark::DoNotOptimize(screen);
    }
}
BENCHMARK(BM_ScrollPageMillion)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50)->Repetitions(5);

// The same screen of the million rows painted again where it stands: what a page scrolled to
// costs at the least.
void BM_RepaintMillion(benchmark::State& state)
{
    ShownGrid g;
    g.grid.SetDataSource(Big().Clone());
    g.grid.SetTopRow(Million / 2);
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        QPixmap screen = g.grid.grab();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        benchmark::DoNotOptimize(screen);
    }
}
BENCHMARK(BM_RepaintMillion)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50)->Repetitions(5);

// The reference: a QStandardItemModel filled with the same rows, then the first screen.
void BM_StandardItemModelMillion(benchmark::State& state)
{
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        QStandardItemModel model(Million, 3);
        for (int i = 0; i < Million; ++i) {
            model.setItem(i, 0, new QStandardItem(CodeOf(i)));
            model.setItem(i, 1, new QStandardItem(NameOf(i)));
            model.setItem(i, 2, new QStandardItem(QString::number(i % 9973)));
        }
        QTableView view;
        view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        view.resize(Width, Height);
        view.setModel(&model);
        view.show();
        QPixmap screen = view.grab();
        state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        benchmark::DoNotOptimize(screen);
    }
}
BENCHMARK(BM_StandardItemModelMillion)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

// Heap the bound grid holds beyond the unbound grid, painted once.
double MegabytesAddedBy(Recordset& source)
{
    ShownGrid g;
    auto clone = source.Clone();
    g.grid.grab();
    const std::size_t before = bench::HeapInUse();
    g.grid.SetDataSource(clone);
    g.grid.grab();
    return static_cast<double>(bench::HeapInUse() - before) / (1024.0 * 1024.0);
}

}  // namespace
}  // namespace korvex

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    using namespace korvex::bench;
    korvex::Big();
    korvex::Small();
    korvex::Screenful();
    // A million rows bind and paint as ten do, within a frame.
    CompareTime("grid_bind_paint_1m_vs_10", "BM_BindAndPaintMillion", "BM_BindAndPaintTen", 2.0);
    // The same beside a screenful of rows, which paints the same cells: what the million rows
    // themselves cost. Ten rows paint fewer cells than a screen, and painting is most of it.
    CompareTime("grid_bind_paint_1m_vs_screenful", "BM_BindAndPaintMillion", "BM_BindAndPaintScreenful", 2.0);
    CompareTimeAbsolute("grid_bind_paint_1m", "BM_BindAndPaintMillion", "BM_StandardItemModelMillion", 16.0, "ms");
    // A page further down costs what painting the screen in place does.
    CompareTime("grid_scroll_page_1m", "BM_ScrollPageMillion", "BM_RepaintMillion", 2.0);
    const double big = korvex::MegabytesAddedBy(korvex::Big());
    const double small = korvex::MegabytesAddedBy(korvex::Small());
    // What the grid adds for a million rows stays within 1 MB of what it adds for ten.
    ReportFigure("grid_memory_added_1m_minus_10", big - small, "MB", "goal", 1.0, "MB", 1.0);
    return Main(argc, argv);
}
