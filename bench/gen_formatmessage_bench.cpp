// Message templates with three inserts, numbered in their order; one iteration is one message in a new string. The
// floor renders the numbers and appends the same pieces.
#include "gen_string_sys.h"

#include "bench/bench.h"
#include "tests/support/argument_slots.h"

#include <boost/format.hpp>
#include <charconv>
#include <cstdio>
#include <string>

#ifdef BENCH_HAS_FMT
#include <fmt/format.h>
#endif

namespace {

char const *const NET = "top|alu:arith|carry[17]";
char const *const SITE = "LAB_X27_Y14_N0";
char const *const REASON = "no free wire";
constexpr int COUNT = 184233;

// The formats are data, as in a table of messages.
struct Formats
{
    char const *ours;
    char const *fmt;
    char const *boost;
    char const *positional;
};
Formats l_texts{
    "Can't route net %1 from site %2: %3\n",
    "Can't route net {0} from site {1}: {2}\n",
    "Can't route net %1% from site %2%: %3%\n",
    "Can't route net %1$s from site %2$s: %3$s\n",
};
Formats l_number{
    "Can't route net %1 from site %2: %3!d! paths tried\n",
    "Can't route net {0} from site {1}: {2:d} paths tried\n",
    "Can't route net %1% from site %2%: %3% paths tried\n",
    "Can't route net %1$s from site %2$s: %3$d paths tried\n",
};

void floor_texts(benchmark::State &state)
{
    for (auto _ : state) {
        std::string out;
        out.append("Can't route net ").append(NET).append(" from site ").append(SITE).append(": ");
        out.append(REASON).append("\n");
        benchmark::DoNotOptimize(out.data());
    }
}

void floor_number(benchmark::State &state)
{
    int count = COUNT;
    for (auto _ : state) {
        std::string out;
        out.append("Can't route net ").append(NET).append(" from site ").append(SITE).append(": ");
        benchmark::DoNotOptimize(count);
        char digits[16];
        out.append(digits, std::to_chars(digits, digits + sizeof digits, count).ptr).append(" paths tried\n");
        benchmark::DoNotOptimize(out.data());
    }
}

template <typename Last>
void ours(benchmark::State &state, Formats const *formats, Last last)
{
    ArgumentSlots slots(NET, SITE, last);
    for (auto _ : state) {
        std::string out;
        gen_formatmessage(out, formats->ours, slots.begin());
        benchmark::DoNotOptimize(out.data());
    }
}

#ifdef BENCH_HAS_FMT
template <typename Last>
void peer_fmt(benchmark::State &state, Formats const *formats, Last last)
{
    for (auto _ : state) {
        std::string const out = fmt::vformat(formats->fmt, fmt::make_format_args(NET, SITE, last));
        benchmark::DoNotOptimize(out.data());
    }
}
#endif

template <typename Last>
void peer_boost(benchmark::State &state, Formats const *formats, Last last)
{
    for (auto _ : state) {
        std::string const out = (boost::format(formats->boost) % NET % SITE % last).str();
        benchmark::DoNotOptimize(out.data());
    }
}

template <typename Last>
void peer_positional(benchmark::State &state, Formats const *formats, Last last)
{
    for (auto _ : state) {
        char buffer[256];
        int const size = std::snprintf(buffer, sizeof buffer, formats->positional, NET, SITE, last);
        std::string const out(buffer, static_cast<std::size_t>(size));
        benchmark::DoNotOptimize(out.data());
    }
}

BENCHMARK(floor_texts)->Name("floor/texts");
BENCHMARK(floor_number)->Name("floor/number");
BENCHMARK_CAPTURE(ours, texts, &l_texts, REASON)->Name("formatmessage/texts");
BENCHMARK_CAPTURE(ours, number, &l_number, COUNT)->Name("formatmessage/number");
#ifdef BENCH_HAS_FMT
BENCHMARK_CAPTURE(peer_fmt, texts, &l_texts, REASON)->Name("peer/fmt/texts");
BENCHMARK_CAPTURE(peer_fmt, number, &l_number, COUNT)->Name("peer/fmt/number");
#endif
BENCHMARK_CAPTURE(peer_boost, texts, &l_texts, REASON)->Name("peer/boost/texts");
BENCHMARK_CAPTURE(peer_boost, number, &l_number, COUNT)->Name("peer/boost/number");
BENCHMARK_CAPTURE(peer_positional, texts, &l_texts, REASON)->Name("peer/positional/texts");
BENCHMARK_CAPTURE(peer_positional, number, &l_number, COUNT)->Name("peer/positional/number");

BenchGoals const GOALS{
    {"3 texts / appending", "formatmessage/texts", "floor/texts", 2.0},
    {"3 texts / fmt", "formatmessage/texts", "peer/fmt/texts", 1.0},
    {"3 texts / Boost.Format", "formatmessage/texts", "peer/boost/texts", 0.5},
    {"3 texts / positional snprintf", "formatmessage/texts", "peer/positional/texts", 0.5},
    {"2 texts, 1 number / appending", "formatmessage/number", "floor/number", 2.0},
    {"2 texts, 1 number / fmt", "formatmessage/number", "peer/fmt/number", 1.0},
    {"2 texts, 1 number / Boost.Format", "formatmessage/number", "peer/boost/number", 0.5},
    {"2 texts, 1 number / positional snprintf", "formatmessage/number", "peer/positional/number", 0.5},
};

} // namespace
