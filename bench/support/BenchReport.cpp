// Collects the real time of every benchmark run (the median of its repetitions when it is
// repeated) and prints the declared comparisons.
#include "bench/support/BenchReport.h"

#include <cstdio>
#include <map>
#include <vector>

namespace korvex::bench {
namespace {

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

struct Result {
    double seconds = 0;        // mean real time of one iteration
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

    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            // A benchmark run several times (Repetitions) is judged by its median.
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if ((run.run_type != Run::RT_Iteration && !median) || Skipped(run))
                continue;
            Result r;
            r.seconds = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            auto it = run.counters.find("bytes_per_second");
            if (it != run.counters.end())
                r.bytesPerSecond = it->second.value;
            // Known by the function's name (and arguments), without the run settings that a
            // registration adds ("/iterations:1/repeats:5").
            std::string name = run.run_name.function_name;
            if (!run.run_name.args.empty())
                name += "/" + run.run_name.args;
            if (median) {
                medians[name] = r;
            } else {
                results[run.benchmark_name()] = r;
                results.emplace(name, r);
            }
        }
    }
    void PreferMedians()
    {
        for (const auto& [name, r] : medians)
            results[name] = r;
    }
    std::map<std::string, Result> results;
    std::map<std::string, Result> medians;
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

int Main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    reporter.PreferMedians();

    int status = 0;
    for (const Comparison& c : Comparisons()) {
        auto m = reporter.results.find(c.measured);
        auto r = reporter.results.find(c.reference);
        if (m == reporter.results.end() || r == reporter.results.end()) {
            std::printf("BENCH %s: not run (%s or %s missing)\n", c.name.c_str(), c.measured.c_str(), c.reference.c_str());
            status = 1;
            continue;
        }
        std::string mu, ru;
        const std::string mv = Human(m->second.seconds, mu), rv = Human(r->second.seconds, ru);
        switch (c.kind) {
        case Comparison::Kind::Time: {
            const double ratio = m->second.seconds / r->second.seconds;
            std::printf("BENCH %s: %s %s vs %s %s %s = %.2fx (goal <= %.2fx) %s\n", c.name.c_str(), mv.c_str(),
                        mu.c_str(), c.reference.c_str(), rv.c_str(), ru.c_str(), ratio, c.goal,
                        ratio <= c.goal ? "OK" : "MISS");
            break;
        }
        case Comparison::Kind::Absolute: {
            const double scale = c.unit == "ms" ? 1e3 : c.unit == "us" ? 1e6 : 1.0;
            const double value = m->second.seconds * scale;
            const double ratio = m->second.seconds / r->second.seconds;
            std::printf("BENCH %s: %.3g %s vs %s %.3g %s = %.2fx (goal <= %g %s) %s\n", c.name.c_str(), value,
                        c.unit.c_str(), c.reference.c_str(), r->second.seconds * scale, c.unit.c_str(), ratio, c.goal,
                        c.unit.c_str(), value <= c.goal ? "OK" : "MISS");
            break;
        }
        case Comparison::Kind::Throughput: {
            const double mb = m->second.bytesPerSecond / 1e6, rb = r->second.bytesPerSecond / 1e6;
            const double ratio = rb > 0 ? mb / rb : 0;
            std::printf("BENCH %s: %.1f MB/s vs %s %.1f MB/s = %.2fx (goal >= %.2fx) %s\n", c.name.c_str(), mb,
                        c.reference.c_str(), rb, ratio, c.goal, ratio >= c.goal ? "OK" : "MISS");
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
