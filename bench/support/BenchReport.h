// Benchmark programs register Google benchmarks as usual, declare which measurement is
// compared with which reference, and call korvex::bench::Main. After the runs it prints one
// summary line per comparison:
//   BENCH <name>: <value> <unit> vs <reference> <value> <unit> = <ratio>x (goal <= <target>x) OK|MISS
// Ratios come from the same run, so a noisy machine moves both sides together. A benchmark
// registered with Repetitions(n) is judged by the median of its n runs.
#pragma once

#include <benchmark/benchmark.h>

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

// Runs the registered benchmarks and prints the summary; returns 0 even when a goal is missed
// (the lines say MISS), non-zero only when a comparison names a benchmark that did not run.
int Main(int argc, char** argv);

}  // namespace korvex::bench
