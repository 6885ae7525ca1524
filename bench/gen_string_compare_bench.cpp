// Comparing, sorting and folding names of a netlist. One iteration is one pair for a comparison, all 200,000 names for
// a sort, and one name for a fold to lower case. The pairs are neighbours in sorted order, as in a sort or a map. The
// floors are strcmp() on the same pairs, and a loop over the bytes that doesn't fold.
#include "gen_string_sys.h"

#include "bench/bench.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <strings.h>
#ifdef BENCH_HAS_ICU
#include <unicode/ucol.h>
#endif

namespace {

constexpr std::size_t NAME_COUNT = 200000;

// Hierarchical names of 10 to 80 bytes: instances with numbers, buses with indices.
std::vector<std::string> make_names()
{
    constexpr char const *UNITS[] = {"cpu",      "alu",  "fetch_unit", "decoder", "cache_ctrl",
                                     "ddr3_phy", "pcie", "u_fifo",     "lane",    "crossbar_switch"};
    constexpr char const *LEAVES[] = {"sum", "carry_out", "data_reg", "q", "state_ff", "Add0~", "Mux", "wr_ptr_gray"};
    std::mt19937 random(1);
    auto const below = [&](std::size_t limit) { return random() % limit; };
    std::vector<std::string> names;
    while (names.size() < NAME_COUNT) {
        std::string path;
        for (std::size_t depth = below(4); depth > 0; --depth)
            path += UNITS[below(std::size(UNITS))] + (below(2) != 0 ? "_" + std::to_string(below(16)) : "") + '|';
        path += LEAVES[below(std::size(LEAVES))];
        std::size_t const width = std::size_t{1} << below(9);
        for (std::size_t bit = 0; bit < width; ++bit) {
            std::string name = path;
            name += '[' + std::to_string(bit) + ']';
            if (name.size() < 10)
                name = "top_level|" + name;
            if (name.size() <= 80)
                names.push_back(name);
        }
    }
    names.resize(NAME_COUNT);
    std::shuffle(names.begin(), names.end(), random);
    return names;
}

std::vector<std::string> const &shuffled_names()
{
    static std::vector<std::string> const names = make_names();
    return names;
}

bool comes_first(std::string const &first, std::string const &second)
{
    return gen_lexcmp(first, second) < 0;
}

// A window of neighbours that fits into the caches, so that the speed of the memory has no effect.
std::vector<std::string> const &sorted_names()
{
    static std::vector<std::string> const names = [] {
        std::vector<std::string> sorted = shuffled_names();
        std::sort(sorted.begin(), sorted.end(), comes_first);
        sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
        return std::vector<std::string>(sorted.begin() + 20000, sorted.begin() + 22049);
    }();
    return names;
}

using Compare = int (*)(std::string const &, std::string const &);

int by_strcmp(std::string const &first, std::string const &second)
{
    return std::strcmp(first.c_str(), second.c_str());
}
int by_strverscmp(std::string const &first, std::string const &second)
{
    return strverscmp(first.c_str(), second.c_str());
}
int by_strcasecmp(std::string const &first, std::string const &second)
{
    return strcasecmp(first.c_str(), second.c_str());
}
int by_gen_stricmp(std::string const &first, std::string const &second)
{
    return gen_stricmp(first.c_str(), second.c_str());
}
int by_gen_strcmp(std::string const &first, std::string const &second)
{
    return gen_strcmp(first.c_str(), second.c_str());
}
int by_lexcmp_of_texts(std::string const &first, std::string const &second)
{
    return gen_lexcmp(first.c_str(), second.c_str());
}
int by_lexcmp(std::string const &first, std::string const &second)
{
    return gen_lexcmp(first, second);
}
int by_ilexcmp(std::string const &first, std::string const &second)
{
    return gen_ilexcmp(first, second);
}

__attribute__((noinline)) int by_byte_loop(std::string const &first_text, std::string const &second_text)
{
    char const *first = first_text.c_str();
    char const *second = second_text.c_str();
    while (*first == *second && *first != '\0') {
        ++first;
        ++second;
    }
    return static_cast<unsigned char>(*first) - static_cast<unsigned char>(*second);
}

#ifdef BENCH_HAS_ICU
UCollator *numeric_collator()
{
    static UCollator *const collator = [] {
        UErrorCode status = U_ZERO_ERROR;
        UCollator *const made = ucol_open("en", &status);
        ucol_setAttribute(made, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
        return made;
    }();
    return collator;
}
int by_icu(std::string const &first, std::string const &second)
{
    UErrorCode status = U_ZERO_ERROR;
    return ucol_strcollUTF8(numeric_collator(), first.data(), static_cast<int>(first.size()), second.data(),
                            static_cast<int>(second.size()), &status);
}
#endif

template <Compare COMPARE>
void neighbours(benchmark::State &state)
{
    std::vector<std::string> const &names = sorted_names();
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(COMPARE(names[at], names[at + 1]));
        at = at + 2 == names.size() ? 0 : at + 1;
    }
}

// Pairs of a name and the same name in capitals.
template <Compare COMPARE>
void other_case(benchmark::State &state)
{
    std::vector<std::string> const &names = sorted_names();
    std::vector<std::string> capitals = names;
    for (std::string &name : capitals)
        gen_toupper(name);
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(COMPARE(names[at], capitals[at]));
        at = at + 1 == names.size() ? 0 : at + 1;
    }
}

// Pairs of equal names at different addresses.
template <Compare COMPARE>
void equal(benchmark::State &state)
{
    std::vector<std::string> const &names = sorted_names();
    std::vector<std::string> const copies = names;
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(COMPARE(names[at], copies[at]));
        at = at + 1 == names.size() ? 0 : at + 1;
    }
}

template <Compare COMPARE>
void sort(benchmark::State &state)
{
    std::vector<std::string> names;
    for (auto _ : state) {
        state.PauseTiming();
        names = shuffled_names();
        state.ResumeTiming();
        std::sort(names.begin(), names.end(),
                  [](std::string const &first, std::string const &second) { return COMPARE(first, second) < 0; });
        benchmark::DoNotOptimize(names.data());
    }
}

void fold_by_gen(char *text)
{
    gen_strlwr(text);
}
void fold_string_by_gen(char *text)
{
    thread_local std::string name;
    name.assign(text);
    gen_tolower(name);
    benchmark::DoNotOptimize(name.data());
}
void fold_by_tolower(char *text)
{
    for (; *text != '\0'; ++text)
        *text = static_cast<char>(std::tolower(static_cast<unsigned char>(*text)));
}

template <void (*FOLD)(char *)>
void fold(benchmark::State &state)
{
    std::vector<std::string> names = sorted_names();
    std::size_t at = 0;
    for (auto _ : state) {
        FOLD(names[at].data());
        benchmark::DoNotOptimize(names[at].data());
        at = at + 1 == names.size() ? 0 : at + 1;
    }
}

BENCHMARK(neighbours<by_strcmp>)->Name("floor/strcmp");
BENCHMARK(neighbours<by_byte_loop>)->Name("floor/byte_loop");
BENCHMARK(neighbours<by_strverscmp>)->Name("peer/strverscmp");
BENCHMARK(neighbours<by_lexcmp>)->Name("lexcmp");
BENCHMARK(neighbours<by_lexcmp_of_texts>)->Name("lexcmp_of_texts");
BENCHMARK(neighbours<by_ilexcmp>)->Name("ilexcmp");
BENCHMARK(neighbours<gen_signed_lexcmp>)->Name("signed_lexcmp");
BENCHMARK(neighbours<by_gen_strcmp>)->Name("gen_strcmp");
BENCHMARK(neighbours<by_gen_stricmp>)->Name("stricmp");
BENCHMARK(neighbours<by_strcasecmp>)->Name("peer/strcasecmp");
BENCHMARK(equal<by_byte_loop>)->Name("floor/byte_loop_equal");
BENCHMARK(equal<by_gen_stricmp>)->Name("stricmp_equal");
BENCHMARK(equal<by_lexcmp>)->Name("lexcmp_equal");
BENCHMARK(equal<by_strcmp>)->Name("floor/strcmp_equal");
BENCHMARK(other_case<by_gen_stricmp>)->Name("stricmp_other_case");
BENCHMARK(other_case<by_strcasecmp>)->Name("peer/strcasecmp_other_case");
BENCHMARK(other_case<by_ilexcmp>)->Name("ilexcmp_other_case");
BENCHMARK(fold<fold_by_gen>)->Name("strlwr");
BENCHMARK(fold<fold_string_by_gen>)->Name("tolower_of_a_copy");
BENCHMARK(fold<fold_by_tolower>)->Name("peer/tolower");
BENCHMARK(sort<by_strcmp>)->Name("floor/sort_strcmp")->Unit(benchmark::kNanosecond);
BENCHMARK(sort<by_strverscmp>)->Name("peer/sort_strverscmp");
BENCHMARK(sort<by_lexcmp>)->Name("sort_lexcmp");
BENCHMARK(sort<by_ilexcmp>)->Name("sort_ilexcmp");
BENCHMARK(sort<gen_signed_lexcmp>)->Name("sort_signed_lexcmp");
#ifdef BENCH_HAS_ICU
BENCHMARK(neighbours<by_icu>)->Name("peer/icu_numeric");
BENCHMARK(sort<by_icu>)->Name("peer/sort_icu_numeric");
#endif

BenchGoals const GOALS{
    {"gen_lexcmp of neighbours / strcmp", "lexcmp", "floor/strcmp", 5},
    {"gen_lexcmp of neighbours / strverscmp", "lexcmp", "peer/strverscmp", 0.35},
    {"gen_lexcmp of neighbours / ICU numeric collation", "lexcmp", "peer/icu_numeric", 0.16},
    {"sort of 200,000 names by gen_lexcmp / by strcmp", "sort_lexcmp", "floor/sort_strcmp", 2.3},
    {"sort of 200,000 names by gen_lexcmp / by strverscmp", "sort_lexcmp", "peer/sort_strverscmp", 0.62},
    {"gen_stricmp of neighbours / byte loop that doesn't fold", "stricmp", "floor/byte_loop", 1.5},
    {"gen_stricmp of equal names / byte loop that doesn't fold", "stricmp_equal", "floor/byte_loop_equal", 1.5},
    {"gen_strlwr / a loop over tolower", "strlwr", "peer/tolower", 1.0},
};

} // namespace
