// The combo over the demo's million generated items (code, name, town), beside what a Qt developer
// would reach for over the same names: a QComboBox with a QCompleter. Typing one more character
// into the filter box until the list has painted its first rows (starts-with and ends-with),
// opening the drop-down, binding the rows, a header sort beside the engine's own Sort, clearing
// the filter box, and the memory the combo and its copies of the rows add to the item store.
#include "bench/support/BenchReport.h"
#include "bench/support/BenchRows.h"

#include "ItemGenerator.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/controls/input/ZqText.h"
#include "korvex/controls/lists/ZqDropdown.h"
#include "korvex/controls/lists/ZqDropdown_Header.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"
#include "korvex/runtime/Conversions.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>

namespace korvex {
namespace {

using namespace ado;

double Megabytes(std::size_t bytes)
{
    return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

// The items as the demo's table holds them, read into a recordset, and their names alone for
// Qt's widgets. The heap the recordset took is the reference of the memory figure.
struct Items {
    std::shared_ptr<Recordset> rs;
    QStringList names;
    std::size_t storeBytes = 0;
};

Items& TheItems()
{
    static Items items = [] {
        Items is;
        const std::size_t before = bench::HeapInUse();
        is.rs = bench::RecordsetOver(bench::StoreOfRows(
            {MakeFieldDef("Code", adVarWChar, 10, 0), MakeFieldDef("Name", adVarWChar, 40, 0), MakeFieldDef("Town", adVarWChar, 30, 0)},
            demo::ItemCount, [](int i) {
                const demo::Item item = demo::MakeItem(i);
                return std::array{Variant(item.code), Variant(item.name), Variant(item.town)};
            }));
        is.storeBytes = bench::HeapInUse() - before;
        is.names.reserve(demo::ItemCount);
        for (int i = 0; i < demo::ItemCount; ++i)
            is.names.append(CStr(is.rs->ValueAtPosition(static_cast<std::size_t>(i), 1)));
        return is;
    }();
    return items;
}

// Keystrokes of the runs: a prefix of two letters and the third that narrows it, for names that
// begin and for names and towns that end with them.
constexpr char16_t StartsTyped[] = u"Ma", StartsNext = u'r';
constexpr char16_t EndsTyped[] = u"er", EndsNext = u'n';

// Times one call, in seconds, for a benchmark that runs on manual time.
template <class F>
void Timed(benchmark::State& state, F&& work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    state.SetIterationTime(static_cast<double>(clock.nsecsElapsed()) / 1e9);
}

// ---- QComboBox and QCompleter over the names --------------------------------------------------

void BM_QtAddItems(benchmark::State& state)
{
    for (auto _ : state) {
        auto box = std::make_unique<QComboBox>();
        Timed(state, [&] { box->addItems(TheItems().names); });
        benchmark::DoNotOptimize(box->count());
    }
}

// A combo filled once, with a completer over its model that filters the way the filter box does.
struct QtCombo {
    QtCombo()
    {
        box.setEditable(true);
        box.addItems(TheItems().names);
        box.resize(300, box.sizeHint().height());
        completer.setModel(box.model());
        completer.setCaseSensitivity(Qt::CaseInsensitive);
        completer.setCompletionMode(QCompleter::PopupCompletion);
        completer.setWidget(&box);
        box.show();
        QApplication::processEvents();
    }
    // Sets the completion prefix and paints the popup's first rows.
    QPixmap Complete(const QString& prefix)
    {
        completer.setCompletionPrefix(prefix);
        completer.complete();
        return completer.popup()->window()->grab();
    }
    QComboBox box;
    QCompleter completer;
};

// Made once the application exists and gone before it ends, as widgets must be.
std::unique_ptr<QtCombo> gQtCombo;
QtCombo& TheQtCombo()
{
    if (!gQtCombo)
        gQtCombo = std::make_unique<QtCombo>();
    return *gQtCombo;
}

void QtTypeOneMore(benchmark::State& state, Qt::MatchFlag mode, const QString& typed, QChar next)
{
    QtCombo& qt = TheQtCombo();
    qt.completer.setFilterMode(mode);
    for (auto _ : state) {
        qt.Complete(typed);
        QPixmap painted;
        Timed(state, [&] { painted = qt.Complete(typed + next); });
        benchmark::DoNotOptimize(painted);
    }
    qt.completer.popup()->hide();
}
void BM_QtTypeStartsWith(benchmark::State& state)
{
    QtTypeOneMore(state, Qt::MatchStartsWith, QString::fromUtf16(StartsTyped), QChar(StartsNext));
}
void BM_QtTypeEndsWith(benchmark::State& state)
{
    QtTypeOneMore(state, Qt::MatchEndsWith, QString::fromUtf16(EndsTyped), QChar(EndsNext));
}

void BM_QtClearPrefix(benchmark::State& state)
{
    QtCombo& qt = TheQtCombo();
    qt.completer.setFilterMode(Qt::MatchStartsWith);
    const QString typed = QString::fromUtf16(StartsTyped) + QChar(StartsNext);
    for (auto _ : state) {
        qt.Complete(typed);
        QPixmap painted;
        Timed(state, [&] { painted = qt.Complete(QString()); });
        benchmark::DoNotOptimize(painted);
    }
    qt.completer.popup()->hide();
}

void BM_QtShowPopup(benchmark::State& state)
{
    QtCombo& qt = TheQtCombo();
    for (auto _ : state) {
        QPixmap painted;
        Timed(state, [&] {
            qt.box.showPopup();
            painted = qt.box.view()->window()->grab();
        });
        benchmark::DoNotOptimize(painted);
        qt.box.hidePopup();
    }
}

// ---- The engine's own sort ----------------------------------------------------------------------

// The two sorts a header click gives when the name and then the town column is clicked.
const QString SortTexts[] = {QStringLiteral("Name, Code, Town"), QStringLiteral("Town, Code, Name")};

void BM_EngineSort(benchmark::State& state)
{
    auto copy = TheItems().rs->Clone();
    int turn = 0;
    for (auto _ : state) {
        Timed(state, [&] { copy->SetSort(SortTexts[turn ^= 1]); });
        benchmark::DoNotOptimize(copy->RecordCount());
    }
}


// ---- The combo ----------------------------------------------------------------------------------

// A shown form holding a combo with the filter box and the header on, as the demo's form has it.
struct ComboOnForm {
    ComboOnForm()
    {
        form.resize(640, 480);
        combo = new ZqDropdown(form.Client());
        combo->SetName(QStringLiteral("zqddBench"));
        combo->InitProperties();
        combo->setGeometry(20, 20, 420, 24);
        combo->SetAllowFilter(true);
        combo->SetAllowSorting(true);
        combo->SetBoundColumn(QStringLiteral("Code"));
        combo->SetColumnCaptions(QStringLiteral("Code;Name;Town"));
        form.show();
        QApplication::processEvents();
    }
    ~ComboOnForm() { combo->DropdownHide(); }
    void Bind() { combo->SetRowSource(TheItems().rs); }
    // The drop-down as the user sees it, painted.
    QPixmap Painted() const { return combo->zqfraDropdown()->grab(); }
    QLineEdit* FilterLine() const { return combo->zqtxtFilter()->findChild<QLineEdit*>(); }

    Form form;
    ZqDropdown* combo = nullptr;
};

void BM_ComboBind(benchmark::State& state)
{
    for (auto _ : state) {
        ComboOnForm c;
        Timed(state, [&] { c.Bind(); });
        benchmark::DoNotOptimize(c.combo->ListCount());
    }
}

// Open with an item far down selected: the list comes in step with it and paints around it.
void BM_ComboOpen(benchmark::State& state)
{
    ComboOnForm c;
    c.Bind();
    c.combo->SetBoundValue(Variant(demo::MakeItem(demo::ItemCount - 10).code));
    for (auto _ : state) {
        QPixmap painted;
        Timed(state, [&] {
            c.combo->DropdownShow();
            painted = c.Painted();
        });
        benchmark::DoNotOptimize(painted);
        c.combo->DropdownHide();
    }
}

// The filter box holds `typed`; one more key is pressed, and the list paints what is left.
void ComboTypeOneMore(benchmark::State& state, int mode, const QString& typed, QChar next)
{
    ComboOnForm c;
    c.Bind();
    c.combo->SetFilterMode(mode);
    c.combo->DropdownShow();
    for (auto _ : state) {
        c.combo->zqtxtFilter()->SetText(typed);
        c.Painted();
        QPixmap painted;
        Timed(state, [&] {
            QTest::keyClick(c.FilterLine(), next.toLatin1());
            painted = c.Painted();
        });
        benchmark::DoNotOptimize(painted);
    }
    if (c.combo->zqtxtFilter()->Text() != typed + next)
        state.SkipWithError("the key did not reach the filter box");
}
void BM_ComboTypeStartsWith(benchmark::State& state)
{
    ComboTypeOneMore(state, ddfmStartsWith, QString::fromUtf16(StartsTyped), QChar(StartsNext));
}
void BM_ComboTypeEndsWith(benchmark::State& state)
{
    ComboTypeOneMore(state, ddfmEndsWith, QString::fromUtf16(EndsTyped), QChar(EndsNext));
}

void BM_ComboClearFilter(benchmark::State& state)
{
    ComboOnForm c;
    c.Bind();
    c.combo->DropdownShow();
    const QString typed = QString::fromUtf16(StartsTyped) + QChar(StartsNext);
    for (auto _ : state) {
        c.combo->zqtxtFilter()->SetText(typed);
        c.Painted();
        QPixmap painted;
        Timed(state, [&] {
            c.combo->zqtxtFilter()->SetText(QString());
            painted = c.Painted();
        });
        benchmark::DoNotOptimize(painted);
    }
}

// The header's name column chosen, then its town column: the sorts BM_EngineSort makes.
void BM_ComboHeaderSort(benchmark::State& state)
{
    ComboOnForm c;
    c.Bind();
    c.combo->DropdownShow();
    int turn = 0;
    for (auto _ : state) {
        QPixmap painted;
        turn ^= 1;
        Timed(state, [&] {
            emit c.combo->ZqDDHeader()->ColumnChosen(static_cast<short>(turn ? 1 : 2));
            painted = c.Painted();
        });
        benchmark::DoNotOptimize(painted);
    }
    if (c.combo->Model().DisplayCopy()->Sort() != SortTexts[turn ? 0 : 1])
        state.SkipWithError("the header did not sort the list");
}

// The heap a combo bound to the items holds beyond the item store: bound and opened; and, with
// the columns indexed for filtering (Optimize, an index the store keeps for all its clones),
// after typing into its filter box both ways.
struct ComboMemory {
    double boundAndOpen = 0, indexes = 0, filtered = 0;
};
ComboMemory MeasureComboMemory()
{
    ComboMemory m;
    std::size_t before = bench::HeapInUse();
    {
        ComboOnForm c;
        c.Bind();
        c.combo->DropdownShow();
        c.Painted();
        m.boundAndOpen = static_cast<double>(bench::HeapInUse() - before);
    }
    before = bench::HeapInUse();
    for (const char* field : {"Code", "Name", "Town"})
        TheItems().rs->SetFieldOptimized(TheItems().rs->Fields()->Item(Variant(field))->Index(), true);
    m.indexes = static_cast<double>(bench::HeapInUse() - before);
    before = bench::HeapInUse();
    {
        ComboOnForm c;
        c.Bind();
        c.combo->DropdownShow();
        c.combo->zqtxtFilter()->SetText(QStringLiteral("Mar"));
        c.Painted();
        c.combo->SetFilterMode(ddfmEndsWith);
        c.combo->zqtxtFilter()->SetText(QStringLiteral("ern"));
        c.Painted();
        m.filtered = static_cast<double>(bench::HeapInUse() - before);
    }
    return m;
}

BENCHMARK(BM_ComboBind)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ComboOpen)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_ComboTypeStartsWith)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_ComboTypeEndsWith)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_ComboClearFilter)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_ComboHeaderSort)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_QtAddItems)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_QtTypeStartsWith)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_QtTypeEndsWith)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_QtClearPrefix)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_QtShowPopup)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_EngineSort)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
}  // namespace korvex

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    using namespace korvex::bench;
    korvex::App::Instance()->SetTitle(QStringLiteral("Korvex Bench"));
    const korvex::Items& items = korvex::TheItems();
    korvex::TheQtCombo();
    // Memory first, while the heap holds nothing but the items and Qt's own combo.
    const korvex::ComboMemory memory = korvex::MeasureComboMemory();
    const double store = korvex::Megabytes(items.storeBytes);
    // The drop-down paints its first rows within a frame of the key, however many rows match.
    CompareTimeAbsolute("combo_type_starts_with_1m", "BM_ComboTypeStartsWith", "BM_QtTypeStartsWith", 16, "ms");
    CompareTimeAbsolute("combo_type_ends_with_1m", "BM_ComboTypeEndsWith", "BM_QtTypeEndsWith", 50, "ms");
    CompareTimeAbsolute("combo_open_1m", "BM_ComboOpen", "BM_QtShowPopup", 16, "ms");
    // Binding copies no rows: the clones share the item store's.
    CompareTimeAbsolute("combo_bind_1m", "BM_ComboBind", "BM_QtAddItems", 16, "ms");
    CompareTime("combo_header_sort_1m_vs_engine_sort", "BM_ComboHeaderSort", "BM_EngineSort", 1.5);
    CompareTimeAbsolute("combo_clear_filter_1m", "BM_ComboClearFilter", "BM_QtClearPrefix", 16, "ms");
    const auto mb = [](double bytes) { return korvex::Megabytes(static_cast<std::size_t>(bytes)); };
    ReportFigure("combo_memory_bound_and_open_1m", store + mb(memory.boundAndOpen), "MB", "item store alone", store, "MB",
                 1.2);
    // The filter indexes belong to the store (they answer any Filter on it or its clones), so the
    // store's side of this comparison holds them too.
    ReportFigure("combo_memory_after_filtering_1m", store + mb(memory.indexes) + mb(memory.filtered), "MB",
                 "item store with its filter indexes", store + mb(memory.indexes), "MB", 1.2);
    // The references of Qt's widgets scan a million names at every step: five rounds.
    const int status = Main(argc, argv, 5);
    korvex::gQtCombo.reset();
    return status;
}
