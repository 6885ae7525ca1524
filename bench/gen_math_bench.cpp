// Checked arithmetic and the random generator. One iteration is 1,024 operations, which share one overflow flag, or
// 1,024 random numbers. The floors are the compiler's own checked operations; for the 64-bit product they include the
// two bit lengths that decide its flag.
#include "gen_math_sys.h"
#include "gen_rand_sys.h"

#include "bench/bench.h"

#include <boost/safe_numerics/safe_integer.hpp>

#include <random>
#include <vector>

namespace {

constexpr std::size_t PAIR_COUNT = 1024;

template <typename T>
struct Pair
{
    T a;
    T b;
};

// Numbers of all lengths up to `bits`, equally distributed, half of them negative.
template <typename T>
std::vector<Pair<T>> make_pairs(unsigned bits)
{
    std::mt19937_64 random(1);
    auto const next = [&] {
        auto const magnitude = static_cast<T>(random() >> (64 - bits) >> random() % bits);
        return random() % 2 == 0 ? magnitude : static_cast<T>(-magnitude);
    };
    std::vector<Pair<T>> pairs(PAIR_COUNT);
    for (Pair<T> &pair : pairs)
        pair = {next(), next()};
    return pairs;
}

template <typename T>
T add_by_builtin(T a, T b, bool &overflow)
{
    T result;
    if (__builtin_add_overflow(a, b, &result))
        overflow = true;
    return result;
}
template <typename T>
T subtract_by_builtin(T a, T b, bool &overflow)
{
    T result;
    if (__builtin_sub_overflow(a, b, &result))
        overflow = true;
    return result;
}
template <typename T>
T multiply_by_builtin(T a, T b, bool &overflow)
{
    T result;
    if (__builtin_mul_overflow(a, b, &result))
        overflow = true;
    return result;
}

// The peer throws on overflow, which does not occur with these operands.
template <typename T>
T add_by_boost(T a, T b, bool &)
{
    return boost::safe_numerics::safe<T>(a) + boost::safe_numerics::safe<T>(b);
}

int length_by_halving_the_range(std::uint64_t magnitude)
{
    int length = 0;
    for (int half = 32; half != 0; half /= 2) {
        int const shift = magnitude >> half != 0 ? half : 0;
        magnitude >>= shift;
        length += shift;
    }
    return length + static_cast<int>(magnitude);
}
int length_by_halving_the_number(std::uint64_t magnitude)
{
    int length = 0;
    for (; magnitude != 0; magnitude /= 2)
        ++length;
    return length;
}
template <auto LENGTH>
std::int64_t two_lengths(std::int64_t a, std::int64_t b, bool &overflow)
{
    auto const magnitude = [](std::int64_t value) { return static_cast<std::uint64_t>(value < 0 ? -value : value); };
    int const length = LENGTH(magnitude(a)) + LENGTH(magnitude(b));
    overflow |= length > 63;
    return length;
}

// No sum and no product of these overflows.
template <typename T, auto OPERATION>
void operating(benchmark::State &state)
{
    std::vector<Pair<T>> const pairs = make_pairs<T>(sizeof(T) * 4 - 1);
    bool overflow = false;
    for (auto _ : state)
        for (Pair<T> const &pair : pairs)
            benchmark::DoNotOptimize(OPERATION(pair.a, pair.b, overflow));
    benchmark::DoNotOptimize(overflow);
}

void number_by_gen(benchmark::State &state)
{
    GEN_RAND random(1);
    for (auto _ : state)
        for (std::size_t i = 0; i < PAIR_COUNT; ++i)
            benchmark::DoNotOptimize(random.get_rand());
}
void number_by_minstd(benchmark::State &state)
{
    std::minstd_rand random(1);
    for (auto _ : state)
        for (std::size_t i = 0; i < PAIR_COUNT; ++i)
            benchmark::DoNotOptimize(random());
}

using I32 = int;
using I64 = std::int64_t;

BENCHMARK(operating<I32, add_by_builtin<I32>>)->Name("floor/add_32");
BENCHMARK(operating<I64, add_by_builtin<I64>>)->Name("floor/add_64");
BENCHMARK(operating<I32, subtract_by_builtin<I32>>)->Name("floor/subtract_32");
BENCHMARK(operating<I64, subtract_by_builtin<I64>>)->Name("floor/subtract_64");
BENCHMARK(operating<I32, multiply_by_builtin<I32>>)->Name("floor/multiply_32");
BENCHMARK(operating<I64, multiply_by_builtin<I64>>)->Name("floor/multiply_64");
BENCHMARK(operating<I64, two_lengths<length_by_halving_the_range>>)->Name("floor/two_lengths_by_ranges");
BENCHMARK(operating<I64, two_lengths<length_by_halving_the_number>>)->Name("floor/two_lengths_by_numbers");
BENCHMARK(operating<I32, add_by_boost<I32>>)->Name("peer/safe_add_32");
BENCHMARK(operating<I64, add_by_boost<I64>>)->Name("peer/safe_add_64");
BENCHMARK(operating<I32, GEN_MATH::add_of<I32>>)->Name("add_32");
BENCHMARK(operating<I64, GEN_MATH::add_of<I64>>)->Name("add_64");
BENCHMARK(operating<I32, GEN_MATH::subtract_of<I32>>)->Name("subtract_32");
BENCHMARK(operating<I64, GEN_MATH::subtract_of<I64>>)->Name("subtract_64");
BENCHMARK(operating<I32, GEN_MATH::multiply_of<I32>>)->Name("multiply_32");
BENCHMARK(operating<I64, GEN_MATH::multiply_of<I64>>)->Name("multiply_64");
BENCHMARK(number_by_minstd)->Name("peer/minstd_rand");
BENCHMARK(number_by_gen)->Name("get_rand");

BenchGoals const GOALS{
    {"add_of, int / builtin", "add_32", "floor/add_32", 1.05},
    {"add_of, 64 bits / builtin", "add_64", "floor/add_64", 1.05},
    {"subtract_of, int / builtin", "subtract_32", "floor/subtract_32", 1.05},
    {"subtract_of, 64 bits / builtin", "subtract_64", "floor/subtract_64", 1.05},
    {"multiply_of, int / builtin", "multiply_32", "floor/multiply_32", 2.0},
    {"multiply_of, 64 bits / two lengths by halving ranges", "multiply_64", "floor/two_lengths_by_ranges", 1.2},
    {"  by halving numbers", "multiply_64", "floor/two_lengths_by_numbers", 1.2},
    {"add_of, int / Boost safe numerics", "add_32", "peer/safe_add_32", 0.8},
    {"add_of, 64 bits / Boost safe numerics", "add_64", "peer/safe_add_64", 0.8},
    {"get_rand / std::minstd_rand", "get_rand", "peer/minstd_rand", 1.0},
};

} // namespace
