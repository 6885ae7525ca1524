#include "gen_time_sys.h"

#include "gen/base/gen_assert.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr GEN_TIME_UNIT_DATA UNITS[] = {
    {GEN_TIME_UNIT::UNIT_SECOND, "s", "second", 0},
    {GEN_TIME_UNIT::UNIT_MILLISECOND, "ms", "millisecond", -3},
    {GEN_TIME_UNIT::UNIT_MICROSECOND, "us", "microsecond", -6},
    {GEN_TIME_UNIT::UNIT_NANOSECOND, "ns", "nanosecond", -9},
    {GEN_TIME_UNIT::UNIT_PICOSECOND, "ps", "picosecond", -12},
};

constexpr GEN_TIME_FREQ_DATA FREQS[] = {
    {GEN_TIME_FREQ::FREQ_HERTZ, "Hz", "hertz", 0},
    {GEN_TIME_FREQ::FREQ_KILOHERTZ, "kHz", "kilohertz", 3},
    {GEN_TIME_FREQ::FREQ_MEGAHERTZ, "MHz", "megahertz", 6},
    {GEN_TIME_FREQ::FREQ_GIGAHERTZ, "GHz", "gigahertz", 9},
};

template <typename Data, std::size_t COUNT>
int append_rows(std::list<Data> *out, Data const (&table)[COUNT])
{
    out->insert(out->end(), std::begin(table), std::end(table));
    return static_cast<int>(COUNT);
}

template <typename Data, std::size_t COUNT>
int append_column(std::list<std::string> *out, Data const (&table)[COUNT], char const *Data::*column)
{
    for (Data const &row : table)
        out->emplace_back(row.*column);
    return static_cast<int>(COUNT);
}

// The position of the row with that key, or the number of rows.
template <typename Data, std::size_t COUNT, typename Key>
std::size_t find_row(Data const (&table)[COUNT], Key Data::*key, Key value)
{
    auto const has_key = [&](Data const &row) { return row.*key == value; };
    return static_cast<std::size_t>(std::find_if(std::begin(table), std::end(table), has_key) - std::begin(table));
}

} // namespace

int GEN_TIME_UNIT::get_entire_list(std::list<GEN_TIME_UNIT_DATA> *out)
{
    return append_rows(out, UNITS);
}

int GEN_TIME_UNIT::get_long_name_list(std::list<std::string> *out)
{
    return append_column(out, UNITS, &GEN_TIME_UNIT_DATA::long_name);
}

int GEN_TIME_UNIT::get_short_name_list(std::list<std::string> *out)
{
    return append_column(out, UNITS, &GEN_TIME_UNIT_DATA::short_name);
}

std::string GEN_TIME_UNIT::get_long_name(UNIT_ENUM unit)
{
    return UNITS[get_list_index(unit)].long_name;
}

std::string GEN_TIME_UNIT::get_short_name(UNIT_ENUM unit)
{
    return UNITS[get_list_index(unit)].short_name;
}

int GEN_TIME_UNIT::get_magnitude(UNIT_ENUM unit)
{
    return UNITS[get_list_index(unit)].magnitude;
}

int GEN_TIME_UNIT::get_list_index(UNIT_ENUM unit)
{
    std::size_t const index = find_row(UNITS, &GEN_TIME_UNIT_DATA::unit, unit);
    GEN_ASSERT(index < std::size(UNITS), "Could not find index for time unit enum.");
    return static_cast<int>(index);
}

int GEN_TIME_FREQ::get_entire_list(std::list<GEN_TIME_FREQ_DATA> *out)
{
    return append_rows(out, FREQS);
}

int GEN_TIME_FREQ::get_long_name_list(std::list<std::string> *out)
{
    return append_column(out, FREQS, &GEN_TIME_FREQ_DATA::long_name);
}

int GEN_TIME_FREQ::get_short_name_list(std::list<std::string> *out)
{
    return append_column(out, FREQS, &GEN_TIME_FREQ_DATA::short_name);
}

std::string GEN_TIME_FREQ::get_long_name(FREQ_ENUM freq)
{
    return FREQS[get_list_index(freq)].long_name;
}

std::string GEN_TIME_FREQ::get_short_name(FREQ_ENUM freq)
{
    return FREQS[get_list_index(freq)].short_name;
}

int GEN_TIME_FREQ::get_magnitude(FREQ_ENUM freq)
{
    return FREQS[get_list_index(freq)].magnitude;
}

int GEN_TIME_FREQ::get_list_index(FREQ_ENUM freq)
{
    std::size_t const index = find_row(FREQS, &GEN_TIME_FREQ_DATA::freq, freq);
    GEN_ASSERT(index < std::size(FREQS), "Could not find index for time freq enum.");
    return static_cast<int>(index);
}
