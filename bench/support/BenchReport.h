// Benchmark programs register Google benchmarks as usual, declare which measurement is
// compared with which reference, and call korvex::bench::Main. Main runs every benchmark that a
// comparison names in rounds: each round runs each of them once, the measurements and their
// references one after the other (in turn forwards and backwards), so that a figure and its
// reference see the same machine. After the rounds it prints one summary line per comparison:
//   BENCH <name>: <value> <unit> vs <reference> <value> <unit> = <ratio>x (goal <= <target>x) [spread 4%, 7 runs] OK|MISS
// Values are the medians over the rounds. The ratio is the median of the rounds' own ratios
// (each round's measurement over the same round's reference), and the spread is the middle half
// of those ratios (for an absolute goal: of the measurement), from the lower to the upper
// quartile, over their median; a spread above 20% adds "NOISY" to the brackets, as the figure
// is then not to be trusted.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

namespace korvex::bench {

// measured / reference (real time per iteration) must stay at or below `maxRatio`.
void CompareTime(const std::string& name, const std::string& measured, const std::string& reference, double maxRatio);
// An absolute goal on one measurement, in milliseconds or microseconds ("ms", "us"), still
// printed beside its reference.
void CompareTimeAbsolute(const std::string& name, const std::string& measured, const std::string& reference,
                         double goal, const std::string& unit);
// Throughput (bytes per second) of measured against reference must be at least `minRatio`.
void CompareThroughput(const std::string& name, const std::string& measured, const std::string& reference,
                       double minRatio);
// A figure computed by the program itself (memory, counts): value / reference <= maxRatio.
void ReportFigure(const std::string& name, double value, const std::string& unit, const std::string& reference,
                  double referenceValue, const std::string& referenceUnit, double maxRatio);

// Bytes the heap holds at this moment (glibc's count of allocated bytes), for memory figures: the
// difference around a piece of work is what it keeps.
std::size_t HeapInUse();

// Runs the compared benchmarks in `rounds` rounds (the environment variable KORVEX_BENCH_ROUNDS
// overrides it; --benchmark_filter narrows which run) and prints the summary; returns 0 even
// when a goal is missed (the lines say MISS), non-zero only when a comparison names a
// benchmark that did not run.
int Main(int argc, char** argv, int rounds = 7);

}  // namespace korvex::bench
