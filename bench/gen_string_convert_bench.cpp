// Numbers from and to text; one iteration is one number. The peers have the same results: a number from a string, and a
// new string with a number.
#include "gen_string_sys.h"

#include "bench/bench.h"

#include <charconv>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t NUMBER_COUNT = 1024;

// Numbers of all lengths, equally distributed, a quarter of them negative.
std::vector<int> make_numbers()
{
    std::mt19937 random(1);
    std::vector<int> numbers;
    while (numbers.size() < NUMBER_COUNT) {
        int const magnitude = static_cast<int>((random() >> 1) >> random() % 31);
        numbers.push_back(random() % 4 == 0 ? -magnitude : magnitude);
    }
    return numbers;
}
std::vector<int> const NUMBERS = make_numbers();

std::vector<std::string> make_texts()
{
    std::vector<std::string> texts;
    for (int number : NUMBERS)
        texts.push_back(std::to_string(number));
    return texts;
}
std::vector<std::string> const TEXTS = make_texts();

int read_by_gen(std::string const &text)
{
    return gen_atoi(text);
}
int read_by_from_chars(std::string const &text)
{
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}
int read_by_atoi(std::string const &text)
{
    return std::atoi(text.c_str());
}
std::int64_t read_long_by_from_chars(std::string const &text)
{
    std::int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

template <auto READ>
void reading(benchmark::State &state)
{
    std::size_t at = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(READ(TEXTS[at++ % NUMBER_COUNT]));
}

template <int RADIX>
std::string write_by_gen(int value)
{
    return gen_itoa(value, RADIX);
}
template <int RADIX>
std::string write_by_to_chars(int value)
{
    char buffer[40];
    char *const end = RADIX == 10
                          ? std::to_chars(buffer, buffer + sizeof buffer, value, RADIX).ptr
                          : std::to_chars(buffer, buffer + sizeof buffer, static_cast<unsigned>(value), RADIX).ptr;
    return {buffer, end};
}
std::string write_by_to_string(int value)
{
    return std::to_string(value);
}

char l_buffer[66];

char *put_by_gen(int value)
{
    return gen_itoa(value, l_buffer, 10);
}
char *put_long_by_gen(int value)
{
    return gen_ltoa(std::int64_t{value} * 1000003, l_buffer, 10);
}
char *put_by_to_chars(int value)
{
    *std::to_chars(l_buffer, l_buffer + sizeof l_buffer, value).ptr = '\0';
    return l_buffer;
}
char *put_long_by_to_chars(int value)
{
    *std::to_chars(l_buffer, l_buffer + sizeof l_buffer, std::int64_t{value} * 1000003).ptr = '\0';
    return l_buffer;
}

template <auto WRITE>
void writing(benchmark::State &state)
{
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(WRITE(NUMBERS[at++ % NUMBER_COUNT]));
        benchmark::ClobberMemory();
    }
}

BENCHMARK(reading<read_by_gen>)->Name("atoi");
BENCHMARK(reading<gen_atotime_t>)->Name("atotime_t");
BENCHMARK(reading<read_by_from_chars>)->Name("peer/from_chars");
BENCHMARK(reading<read_long_by_from_chars>)->Name("peer/from_chars_64");
BENCHMARK(reading<read_by_atoi>)->Name("peer/atoi");
BENCHMARK(writing<write_by_gen<10>>)->Name("itoa");
BENCHMARK(writing<write_by_gen<16>>)->Name("itoa_16");
BENCHMARK(writing<put_by_gen>)->Name("itoa_into_buffer");
BENCHMARK(writing<put_long_by_gen>)->Name("ltoa_into_buffer");
BENCHMARK(writing<write_by_to_chars<10>>)->Name("peer/to_chars");
BENCHMARK(writing<write_by_to_chars<16>>)->Name("peer/to_chars_16");
BENCHMARK(writing<put_by_to_chars>)->Name("peer/to_chars_into_buffer");
BENCHMARK(writing<put_long_by_to_chars>)->Name("peer/to_chars_64_into_buffer");
BENCHMARK(writing<write_by_to_string>)->Name("peer/to_string");

BenchGoals const GOALS{
    {"gen_atoi / std::from_chars", "atoi", "peer/from_chars", 1.1},
    {"gen_atotime_t / std::from_chars", "atotime_t", "peer/from_chars_64", 1.1},
    {"gen_itoa / std::to_chars with its string", "itoa", "peer/to_chars", 1.1},
    {"gen_itoa in radix 16 / std::to_chars with its string", "itoa_16", "peer/to_chars_16", 1.1},
    {"gen_itoa into a buffer / std::to_chars", "itoa_into_buffer", "peer/to_chars_into_buffer", 1.1},
    {"gen_ltoa into a buffer / std::to_chars", "ltoa_into_buffer", "peer/to_chars_64_into_buffer", 1.1},
};

} // namespace
