// A short way to script trees of profile bins over the fake clocks, and to read the rows of a report.
#ifndef TESTS_SUPPORT_PROFILE_BINS_SCRIPT_H
#define TESTS_SUPPORT_PROFILE_BINS_SCRIPT_H

#include "gen_profile_bins_sys.h"
#include "tests/support/gen_os_fake.h"

#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

/// Opens a bin at once, without messages.
inline GEN_PROFILE_BIN *open_bin(std::string const &name)
{
    return const_cast<GEN_PROFILE_BIN *>(GEN_PROFILE_BINS::open("TST", name.c_str(), GEN_PB_FLAG_IMMEDIATE));
}

/// Closes the innermost bin.
inline void close_bin()
{
    GEN_PROFILE_BINS::close(nullptr);
}

/// A bin with nothing in it that takes so long.
inline GEN_PROFILE_BIN *run_bin(std::string const &name, std::int64_t cpu_usec, std::int64_t ticks)
{
    GEN_PROFILE_BIN *const bin = open_bin(name);
    gen_os_fake_advance(cpu_usec, ticks);
    close_bin();
    return bin;
}

/// Starts the bins with clocks that don't advance and, if the configuration asks for no report, without overhead.
inline GEN_PROFILE_BIN *start_bins(std::string const &root_name)
{
    GEN_PROFILE_BINS::initialize(root_name.c_str(), /*primary=*/true, /*debug_messages=*/false);
    return const_cast<GEN_PROFILE_BIN *>(gen_profile_bin_get_current_bin());
}

/// The estimate of a closed bin in nanoseconds.
inline std::int64_t estimate_nsec(GEN_PROFILE_BIN const *bin)
{
    double const nsec = bin->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/false) * 1e9;
    return static_cast<std::int64_t>(nsec < 0 ? nsec - 0.5 : nsec + 0.5);
}

/// The figures of a row in their order, and the text after them.
struct ReportRow
{
    double count = 0;
    double cpu = 0;
    double wc = 0;
    double errors = 0;
    double estimate = 0;
    double start_memory = 0;
    double end_memory = 0;
    double peak_memory = 0;
    std::string name;

    bool operator==(ReportRow const &other) const
    {
        return count == other.count && cpu == other.cpu && wc == other.wc && errors == other.errors &&
               estimate == other.estimate && start_memory == other.start_memory && end_memory == other.end_memory &&
               peak_memory == other.peak_memory && name == other.name;
    }
};

inline std::ostream &operator<<(std::ostream &out, ReportRow const &row)
{
    return out << '{' << row.count << ", " << row.cpu << ", " << row.wc << ", " << row.errors << ", " << row.estimate
               << ", " << row.start_memory << ", " << row.end_memory << ", " << row.peak_memory << ", \"" << row.name
               << "\"}";
}

/// Reads a line of a report; lines that are no rows give no figures and the name "".
inline ReportRow parse_row(std::string const &line)
{
    ReportRow row;
    std::istringstream in(line);
    if (!(in >> row.count >> row.cpu >> row.wc >> row.errors >> row.estimate >> row.start_memory >> row.end_memory >>
          row.peak_memory) ||
        in.get() < 0)
        return {};
    std::getline(in, row.name);
    return row;
}

/// The rows among the lines of a report.
inline std::vector<ReportRow> parse_rows(std::vector<std::string> const &lines)
{
    std::vector<ReportRow> rows;
    for (std::string const &line : lines) {
        ReportRow const row = parse_row(line);
        if (!row.name.empty())
            rows.push_back(row);
    }
    return rows;
}

#endif
