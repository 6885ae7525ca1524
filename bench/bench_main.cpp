// Runs the benchmarks. Prints the quiet time (the minimum over the repetitions) and the median of each, then the ratios
// that the benchmarks have registered. Times are nanoseconds per iteration.
#include "bench/bench.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <map>

std::vector<BenchRatio> &bench_ratios()
{
    static std::vector<BenchRatio> rows;
    return rows;
}

namespace {

class QuietReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(Context const &context) override
    {
        PrintBasicContext(&std::cout, context);
        return true;
    }

    void ReportRuns(std::vector<Run> const &runs) override
    {
        for (Run const &run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                m_times[run.run_name.str()].push_back(run.GetAdjustedRealTime());
    }

    void Finalize() override
    {
        std::printf("%-56s %12s %12s\n", "benchmark", "quiet ns", "median ns");
        for (auto &[name, times] : m_times) {
            std::sort(times.begin(), times.end());
            std::printf("%-56s %12.1f %12.1f\n", name.c_str(), times.front(), times[times.size() / 2]);
        }
        std::printf("\n%-64s %8s %8s\n", "ratio of quiet times", "here", "goal");
        for (BenchRatio const &row : bench_ratios())
            print_ratio(row);
    }

private:
    void print_ratio(BenchRatio const &row) const
    {
        auto const numerator = m_times.find(row.numerator);
        if (numerator == m_times.end())
            return;
        double value = numerator->second.front();
        if (!row.denominator.empty()) {
            auto const denominator = m_times.find(row.denominator);
            if (denominator == m_times.end())
                return;
            value /= denominator->second.front();
        }
        std::printf("%-64s %8.2f %8.2f%s\n", row.what.c_str(), value, row.goal, value <= row.goal ? "" : "  over");
    }

    std::map<std::string, std::vector<double>> m_times;
};

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    QuietReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
