// Display controls: what a progress bar's value step costs beside drawing the whole bar, and
// how long a side bar of 500 tasks takes to draw a burst of 500 changes (one redraw, within a
// frame of 16 ms) beside a redraw with nothing changed.
#include "bench/support/BenchReport.h"

#include "korvex/controls/display/TasksSideBar.h"
#include "korvex/controls/display/ZqProgress.h"
#include "korvex/platform/host/Form.h"

#include <QApplication>
#include <QElapsedTimer>

#include <benchmark/benchmark.h>

namespace korvex {
namespace {

constexpr int BarWidth = 400, BarHeight = 24;

struct ShownProgress {
    ShownProgress()
    {
        form.resize(BarWidth + 40, 80);
        bar = new ZqProgress(form.Client());
        bar->InitProperties();
        bar->setGeometry(10, 10, BarWidth, BarHeight);
        bar->SetCaption(QStringLiteral("Copying files"));
        bar->SetAlignment(2);
        form.show();
        QApplication::processEvents();
    }
    Form form;
    ZqProgress* bar;
};

// One per cent further each time, shown on the screen.
void BM_ProgressValueStep(benchmark::State& state)
{
    ShownProgress p;
    int value = 0;
    for (auto _ : state) {
        value = value == 100 ? 0 : value + 1;
        p.bar->SetValue(value);
        QApplication::processEvents();
    }
}
BENCHMARK(BM_ProgressValueStep)->Unit(benchmark::kMicrosecond);

// The whole bar drawn and shown, as any other property change does.
void BM_ProgressFullDraw(benchmark::State& state)
{
    ShownProgress p;
    p.bar->SetValue(50);
    bool flip = false;
    for (auto _ : state) {
        p.bar->SetButtonFace((flip = !flip) ? vbButtonFace : RGB(250, 250, 250));
        QApplication::processEvents();
    }
}
BENCHMARK(BM_ProgressFullDraw)->Unit(benchmark::kMicrosecond);

struct ShownSideBar {
    ShownSideBar()
    {
        form.resize(300, 800);
        bar = new TasksSideBar(form.Client());
        bar->InitProperties();
        for (int i = 0; i < 500; ++i)
            bar->Tasks()->Add(QStringLiteral("t%1").arg(i), QStringLiteral("Task number %1").arg(i), static_cast<short>(i % 3));
        form.show();
        bar->Redraw();  // the labels are loaded once, before anything is timed
        QApplication::processEvents();
    }
    // Lets events run until the timer has drawn, or a second has gone.
    bool WaitForRedraw(int redraws)
    {
        QElapsedTimer clock;
        clock.start();
        while (bar->Redraws() < redraws && clock.elapsed() < 1000)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        return bar->Redraws() == redraws;
    }
    Form form;
    TasksSideBar* bar;
};

// 500 caption changes in a row, then the one redraw the timer makes; the time is the redraw's.
void BM_SideBarBurstOf500(benchmark::State& state)
{
    ShownSideBar s;
    s.WaitForRedraw(s.bar->Redraws());
    int round = 0;
    for (auto _ : state) {
        const int before = s.bar->Redraws();
        ++round;
        for (Task* task : s.bar->Tasks()->NewEnum())
            task->SetCaption(QStringLiteral("Task %1, round %2").arg(task->Index()).arg(round));
        if (!s.WaitForRedraw(before + 1)) {
            state.SkipWithError("the side bar did not redraw");
            return;
        }
        state.SetIterationTime(static_cast<double>(s.bar->LastRedrawNanoseconds()) / 1e9);
    }
}
BENCHMARK(BM_SideBarBurstOf500)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// The same side bar redrawn with nothing changed: only the lines' places are worked out.
void BM_SideBarRedrawUnchanged(benchmark::State& state)
{
    ShownSideBar s;
    for (auto _ : state) {
        s.bar->Redraw();
        state.SetIterationTime(static_cast<double>(s.bar->LastRedrawNanoseconds()) / 1e9);
    }
}
BENCHMARK(BM_SideBarRedrawUnchanged)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// Pixels drawn per one-per-cent step, over a hundred steps up the bar.
double PixelsPerStep()
{
    ShownProgress p;
    const qint64 before = p.bar->PixelsDrawn();
    for (int value = 1; value <= 100; ++value)
        p.bar->SetValue(value);
    return static_cast<double>(p.bar->PixelsDrawn() - before) / 100.0;
}

// Redraws that follow one burst of 500 changes, counted until the events have settled.
int RedrawsPerBurst()
{
    ShownSideBar s;
    const int before = s.bar->Redraws();
    for (Task* task : s.bar->Tasks()->NewEnum())
        task->SetState(tsInactive);
    s.WaitForRedraw(before + 1);
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 100)
        QApplication::processEvents();
    return s.bar->Redraws() - before;
}

}  // namespace
}  // namespace korvex

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    using namespace korvex::bench;
    // A value step should cost a fraction of drawing the whole bar.
    CompareTime("progress_value_step", "BM_ProgressValueStep", "BM_ProgressFullDraw", 1.0);
    // The side bar draws a burst of 500 changes within one frame.
    CompareTimeAbsolute("sidebar_burst_of_500_redraw", "BM_SideBarBurstOf500/iterations:20/manual_time",
                        "BM_SideBarRedrawUnchanged/iterations:20/manual_time", 16.0, "ms");
    // A one per cent step of a 400-pixel bar is 4 columns: 1 % of the bar.
    ReportFigure("progress_pixels_per_step", korvex::PixelsPerStep(), "px", "whole bar", korvex::BarWidth * korvex::BarHeight, "px",
                 0.02);
    // 500 changes in a row are drawn once.
    ReportFigure("sidebar_redraws_per_burst_of_500", korvex::RedrawsPerBurst(), "redraws", "one redraw", 1, "redraws", 1.0);
    return Main(argc, argv);
}
