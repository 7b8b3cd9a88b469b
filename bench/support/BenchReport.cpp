// Runs the compared benchmarks in interleaved rounds, keeps every round's real time, and prints
// the declared comparisons from the medians and the spread of the rounds.
#include "bench/support/BenchReport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <map>
#include <regex>
#include <vector>

namespace korvex::bench {
namespace {

// Above this spread a figure says that it is noisy.
constexpr double NoisySpread = 0.20;

struct Comparison {
    enum class Kind { Time, Absolute, Throughput } kind;
    std::string name, measured, reference, unit;
    double goal = 0;
};

struct Figure {
    std::string name, unit, reference, referenceUnit;
    double value = 0, referenceValue = 0, maxRatio = 0;
};

std::vector<Comparison>& Comparisons()
{
    static std::vector<Comparison> list;
    return list;
}

std::vector<Figure>& Figures()
{
    static std::vector<Figure> list;
    return list;
}

// One run of one benchmark.
struct Sample {
    double seconds = 0;  // mean real time of one iteration
    double bytesPerSecond = 0;
};

// Google Benchmark 1.8 says "skipped" where 1.7 (Debian 12) says "error_occurred".
template <class R>
bool Skipped(const R& run)
{
    if constexpr (requires { run.skipped; })
        return static_cast<bool>(run.skipped);
    else
        return run.error_occurred;
}

class CollectingReporter : public benchmark::ConsoleReporter {
public:
    // No colours: their escape codes would stand in front of the summary lines and hide them
    // from a search for "^BENCH".
    CollectingReporter() : ConsoleReporter(OO_Tabular) {}

    // The context (machine, caches, load) once, not before every round's every benchmark.
    bool ReportContext(const Context& context) override
    {
        if (mContextShown)
            return true;
        mContextShown = true;
        return ConsoleReporter::ReportContext(context);
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            // A benchmark that repeats itself (Repetitions) gives its median as the round's run.
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if ((run.run_type != Run::RT_Iteration && !median) || Skipped(run))
                continue;
            Sample s;
            s.seconds = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            auto it = run.counters.find("bytes_per_second");
            if (it != run.counters.end())
                s.bytesPerSecond = it->second.value;
            // Known by the full name and by the function's name (and arguments) without the run
            // settings that a registration adds ("/iterations:1/repeats:5").
            std::string shortName = run.run_name.function_name;
            if (!run.run_name.args.empty())
                shortName += "/" + run.run_name.args;
            for (const std::string& name : {run.benchmark_name(), shortName}) {
                if (median || !mRound.count(name) || !mRoundFromMedian[name])
                    mRound[name] = s;
                mRoundFromMedian[name] = mRoundFromMedian[name] || median;
            }
        }
    }

    // Files what the benchmarks of one round gave, each under its names.
    void EndRound()
    {
        for (const auto& [name, sample] : mRound)
            samples[name].push_back(sample);
        mRound.clear();
        mRoundFromMedian.clear();
    }

    std::map<std::string, std::vector<Sample>> samples;

private:
    bool mContextShown = false;
    std::map<std::string, Sample> mRound;
    std::map<std::string, bool> mRoundFromMedian;
};

std::string Human(double seconds, std::string& unit)
{
    char buffer[64];
    double value = seconds;
    const char* name = "s";
    if (seconds >= 1) {
        name = "s";
    } else if (seconds >= 1e-3) {
        value = seconds * 1e3, name = "ms";
    } else if (seconds >= 1e-6) {
        value = seconds * 1e6, name = "us";
    } else {
        value = seconds * 1e9, name = "ns";
    }
    // A fresh string moved in: GCC 12 at -O3 warns falsely (-Wrestrict) on assigning a literal.
    unit = std::string(name);
    std::snprintf(buffer, sizeof buffer, "%.3g", value);
    return buffer;
}

double Median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

// The middle half of the values (from the lower to the upper quartile) over their median: a
// round that another program on the machine slowed down moves the median and this spread
// little, where the full range would show nothing but that one round.
double Spread(std::vector<double> values)
{
    const double median = Median(values);
    if (values.size() < 2 || median == 0)
        return 0;
    std::sort(values.begin(), values.end());
    const auto quantile = [&](double q) {
        const double at = q * static_cast<double>(values.size() - 1);
        const auto below = static_cast<std::size_t>(at);
        const std::size_t above = std::min(below + 1, values.size() - 1);
        return values[below] + (values[above] - values[below]) * (at - static_cast<double>(below));
    };
    return (quantile(0.75) - quantile(0.25)) / median;
}

std::string SpreadNote(double spread, std::size_t runs)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "[spread %.0f%%, %zu runs%s]", spread * 100, runs,
                  spread > NoisySpread ? ", NOISY" : "");
    return buffer;
}

// The benchmark function a comparison names: its name up to the first "/".
std::string FunctionOf(const std::string& name)
{
    return name.substr(0, name.find('/'));
}

int RoundsWanted(int rounds)
{
    if (const char* text = std::getenv("KORVEX_BENCH_ROUNDS")) {
        const int wanted = std::atoi(text);
        if (wanted > 0)
            return wanted;
    }
    return std::max(rounds, 1);
}

}  // namespace

void CompareTime(const std::string& name, const std::string& measured, const std::string& reference, double maxRatio)
{
    Comparisons().push_back({Comparison::Kind::Time, name, measured, reference, {}, maxRatio});
}

void CompareTimeAbsolute(const std::string& name, const std::string& measured, const std::string& reference,
                         double goal, const std::string& unit)
{
    Comparisons().push_back({Comparison::Kind::Absolute, name, measured, reference, unit, goal});
}

void CompareThroughput(const std::string& name, const std::string& measured, const std::string& reference,
                       double minRatio)
{
    Comparisons().push_back({Comparison::Kind::Throughput, name, measured, reference, {}, minRatio});
}

void ReportFigure(const std::string& name, double value, const std::string& unit, const std::string& reference,
                  double referenceValue, const std::string& referenceUnit, double maxRatio)
{
    Figures().push_back({name, unit, reference, referenceUnit, value, referenceValue, maxRatio});
}

std::size_t HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

int Main(int argc, char** argv, int rounds)
{
    benchmark::Initialize(&argc, argv);
    // The functions to run each round, in the order the comparisons first name them, each once
    // however many comparisons it takes part in; --benchmark_filter keeps those it matches.
    const std::string filter = benchmark::GetBenchmarkFilter();
    const bool filtered = !filter.empty() && filter != "." && filter != "all";
    std::vector<std::string> functions;
    for (const Comparison& c : Comparisons()) {
        for (const std::string& name : {c.measured, c.reference}) {
            const std::string function = FunctionOf(name);
            if (std::find(functions.begin(), functions.end(), function) != functions.end())
                continue;
            if (filtered && !std::regex_search(name, std::regex(filter)))
                continue;
            functions.push_back(function);
        }
    }

    CollectingReporter reporter;
    const int count = RoundsWanted(rounds);
    for (int round = 0; round < count; ++round) {
        // Forwards, then backwards: neither side of a comparison always runs first.
        std::vector<std::string> order = functions;
        if (round % 2)
            std::reverse(order.begin(), order.end());
        for (const std::string& function : order)
            benchmark::RunSpecifiedBenchmarks(&reporter, "^" + function + "(/|$)");
        reporter.EndRound();
    }
    benchmark::Shutdown();

    int status = 0;
    for (const Comparison& c : Comparisons()) {
        const auto selected = [&](const std::string& name) {
            return std::find(functions.begin(), functions.end(), FunctionOf(name)) != functions.end();
        };
        if (filtered && (!selected(c.measured) || !selected(c.reference)))
            continue;  // left out by the filter
        auto m = reporter.samples.find(c.measured);
        auto r = reporter.samples.find(c.reference);
        if (m == reporter.samples.end() || r == reporter.samples.end()) {
            std::printf("BENCH %s: not run (%s or %s missing)\n", c.name.c_str(), c.measured.c_str(), c.reference.c_str());
            status = 1;
            continue;
        }
        // Round by round: both lists have one sample a round.
        std::vector<double> mSeconds, rSeconds, mBytes, rBytes, timeRatios, throughputRatios;
        const std::size_t runs = std::min(m->second.size(), r->second.size());
        for (std::size_t i = 0; i < runs; ++i) {
            const Sample& ms = m->second[i];
            const Sample& rs = r->second[i];
            mSeconds.push_back(ms.seconds);
            rSeconds.push_back(rs.seconds);
            mBytes.push_back(ms.bytesPerSecond);
            rBytes.push_back(rs.bytesPerSecond);
            timeRatios.push_back(rs.seconds > 0 ? ms.seconds / rs.seconds : 0);
            throughputRatios.push_back(rs.bytesPerSecond > 0 ? ms.bytesPerSecond / rs.bytesPerSecond : 0);
        }
        const double measured = Median(mSeconds), reference = Median(rSeconds);
        std::string mu, ru;
        const std::string mv = Human(measured, mu), rv = Human(reference, ru);
        switch (c.kind) {
        case Comparison::Kind::Time: {
            const double ratio = Median(timeRatios);
            std::printf("BENCH %s: %s %s vs %s %s %s = %.2fx (goal <= %.2fx) %s %s\n", c.name.c_str(), mv.c_str(),
                        mu.c_str(), c.reference.c_str(), rv.c_str(), ru.c_str(), ratio, c.goal,
                        SpreadNote(Spread(timeRatios), runs).c_str(), ratio <= c.goal ? "OK" : "MISS");
            break;
        }
        case Comparison::Kind::Absolute: {
            const double scale = c.unit == "ms" ? 1e3 : c.unit == "us" ? 1e6 : 1.0;
            const double value = measured * scale;
            const double ratio = Median(timeRatios);
            std::printf("BENCH %s: %.3g %s vs %s %.3g %s = %.2fx (goal <= %g %s) %s %s\n", c.name.c_str(), value,
                        c.unit.c_str(), c.reference.c_str(), reference * scale, c.unit.c_str(), ratio, c.goal,
                        c.unit.c_str(), SpreadNote(Spread(mSeconds), runs).c_str(), value <= c.goal ? "OK" : "MISS");
            break;
        }
        case Comparison::Kind::Throughput: {
            const double mb = Median(mBytes) / 1e6, rb = Median(rBytes) / 1e6;
            const double ratio = Median(throughputRatios);
            std::printf("BENCH %s: %.1f MB/s vs %s %.1f MB/s = %.2fx (goal >= %.2fx) %s %s\n", c.name.c_str(), mb,
                        c.reference.c_str(), rb, ratio, c.goal, SpreadNote(Spread(throughputRatios), runs).c_str(),
                        ratio >= c.goal ? "OK" : "MISS");
            break;
        }
        }
    }
    for (const Figure& f : Figures()) {
        const double ratio = f.referenceValue != 0 ? f.value / f.referenceValue : 0;
        std::printf("BENCH %s: %.4g %s vs %s %.4g %s = %.2fx (goal <= %.2fx) %s\n", f.name.c_str(), f.value,
                    f.unit.c_str(), f.reference.c_str(), f.referenceValue, f.referenceUnit.c_str(), ratio, f.maxRatio,
                    ratio <= f.maxRatio ? "OK" : "MISS");
    }
    return status;
}

}  // namespace korvex::bench
