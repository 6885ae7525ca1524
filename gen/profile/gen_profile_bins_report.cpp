// The report of the bins: a row for each bin with its numbers and its path, and after the children of a bin a row
// "OTHER" with the rest that none of them accounts for.
#include "gen/profile/gen_profile_bins_report.h"

#include "fio_sys.h"
#include "gen/base/gen_debug_message.h"
#include "gen/process/gen_log_file.h"
#include "gen/profile/gen_profile_bins_estimate.h"
#include "gen/profile/gen_profile_bins_tagged.h"
#include "mem_sys.h"

#include <algorithm>
#include <cstring>

namespace {

// The numbers of a row.
struct Figures
{
    std::uint32_t count;
    GEN_PB_METRICS const &metrics;
};

struct Column
{
    double (*value)(Figures const &row);
    int start_width;
    int decimals;
    char const *title;

    // As wide as the title at least; a count has room for one more digit.
    int width() const
    {
        int const start = decimals == 0 ? start_width + 1 : start_width;
        return std::max(start, static_cast<int>(std::strlen(title)));
    }
};

// Both are counts of 32 bits, and so is their sum.
double clock_errors(GEN_PB_METRICS const &metrics)
{
    return metrics.m_errors[GEN_PB_CPU] + metrics.m_errors[GEN_PB_WC];
}

template <GEN_PB_METRIC_INDEX INDEX>
double seconds(Figures const &row)
{
    return gen_pb_seconds_of_nsec(row.metrics.m_values[INDEX]);
}

template <GEN_PB_METRIC_INDEX INDEX>
double mib(Figures const &row)
{
    return gen_pb_mib(row.metrics.m_values[INDEX]);
}

constexpr Column COLUMNS[] = {
    {[](Figures const &row) -> double { return row.count; }, 5, 0, "count"},
    {seconds<GEN_PB_CPU>, 10, 2, "cpu time (s)"},
    {[](Figures const &row) { return gen_pb_seconds_of_ticks(row.metrics.m_values[GEN_PB_WC]); }, 10, 2, "wc time (s)"},
    {[](Figures const &row) { return clock_errors(row.metrics); }, 5, 0, "clock errors"},
    {seconds<GEN_PB_WC_EST>, 10, 2, "wc est time (s)"},
    {mib<GEN_PB_START_MEM>, 10, 2, "start mem (MiB)"},
    {mib<GEN_PB_END_MEM>, 10, 2, "end mem (MiB)"},
    {mib<GEN_PB_PEAK_MEM>, 10, 2, "peak mem (MiB)"},
};

std::string header_line(char separator)
{
    std::string line;
    std::string cell;
    for (Column const &column : COLUMNS) {
        stl_sprintf(&cell, "%*s", column.width(), column.title);
        line += cell + separator;
    }
    return line + "name\n";
}

std::string value_cells(Figures const &row, char separator)
{
    std::string cells;
    std::string cell;
    for (Column const &column : COLUMNS) {
        stl_sprintf(&cell, "%*.*f", column.width(), column.decimals, column.value(row));
        cells += cell + separator;
    }
    return cells;
}

// Writes one report: a file, or debug messages under the code prefix of its topmost bin.
class RowWriter
{
public:
    // To debug messages if `file` is null. Bins with a tag are added to `tagged_bins` unless it is null.
    RowWriter(GEN_PB_IMPL const &top, GEN_LOG_FILE *file, std::vector<GEN_PB_IMPL *> *tagged_bins)
        : m_top(top), m_file(file), m_separator(file != nullptr ? '\t' : ' '), m_tagged_bins(tagged_bins)
    {
    }

    // A line is data: a "%" in a bin's name stays one.
    void write_line(std::string const &line) const
    {
        if (m_file != nullptr)
            m_file->write(line);
        else
            mem_msg_local_vdebug(m_top.m_code_prefix.c_str(), "%s", GEN_ARGUMENT_SLOTS(line).cursor());
    }

    void write_header() const { write_line(header_line(m_separator)); }

    // Writes the rows of a bin and of all bins below it. If one of them is open this is an internal error, and nothing
    // follows. The bins that the walk is in are kept in a list instead of calls, since a tree may be deeper than the
    // stack.
    void write_rows(GEN_PB_IMPL &top)
    {
        for (bool goes_on = enter(top); goes_on && !m_levels.empty();) {
            Level &level = m_levels.back();
            if (level.next != level.children->size())
                goes_on = enter(*(*level.children)[level.next++]);
            else
                leave();
        }
    }

private:
    // A bin whose row is written, while its children are.
    struct Level
    {
        GEN_PB_IMPL *bin;
        std::vector<GEN_PB_IMPL *> const *children;
        std::size_t next;         // of the children
        std::size_t place_length; // of m_place before the bin
    };

    // Writes the row of a bin. Returns false if the bin is open.
    bool enter(GEN_PB_IMPL &bin)
    {
        if (!GEN_PB_CHECK(bin.m_open_count == 0, "m_open_count == 0"))
            return false;
        std::size_t const place_length = m_place.size();
        if (m_file != nullptr && !bin.m_name.empty())
            m_place += m_levels.empty() ? bin.m_name : "::" + bin.m_name;
        if (!bin.m_name.empty())
            write_row({bin.m_count, bin.m_report}, m_file != nullptr ? m_place : m_place + bin.m_name);
        if (m_file == nullptr)
            m_place += "| ";
        m_levels.push_back({&bin, children_of(bin), 0, place_length});
        return true;
    }

    // Ends the rows of the innermost bin.
    void leave()
    {
        Level const level = m_levels.back();
        GEN_PB_IMPL &bin = *level.bin;
        if (!bin.m_children.empty() && !bin.m_name.empty())
            write_other(bin);
        if (m_tagged_bins != nullptr && !bin.m_tag.empty())
            m_tagged_bins->push_back(&bin);
        m_place.resize(level.place_length);
        m_levels.pop_back();
    }

    // The root's children are sorted in each report that collects no tags.
    std::vector<GEN_PB_IMPL *> const *children_of(GEN_PB_IMPL const &bin)
    {
        if (&bin != GEN_PB_IMPL::get_root_bin() || m_tagged_bins != nullptr)
            return &bin.m_children;
        m_sorted_children = bin.m_children;
        std::stable_sort(m_sorted_children.begin(), m_sorted_children.end(),
                         [](GEN_PB_IMPL const *a, GEN_PB_IMPL const *b) { return a->m_name < b->m_name; });
        return &m_sorted_children;
    }

    void write_row(Figures const &figures, std::string const &name) const
    {
        write_line(value_cells(figures, m_separator) + name + '\n');
    }

    // The rest that no child accounts for, as if it were the last child.
    void write_other(GEN_PB_IMPL const &bin) const
    {
        write_row({/*count=*/0, bin.m_self}, m_place + (m_file != nullptr ? "::OTHER" : "OTHER"));
    }

    GEN_PB_IMPL const &m_top;
    GEN_LOG_FILE *m_file; // null for debug messages
    char m_separator;
    std::vector<GEN_PB_IMPL *> *m_tagged_bins;
    std::vector<Level> m_levels; // from the topmost bin down to the bin that the walk is in
    // What the rows of the children of that bin begin their last cell with: its path in a file, else the indentation.
    std::string m_place;
    std::vector<GEN_PB_IMPL *> m_sorted_children; // of the root
};

void write_file_report(GEN_PB_IMPL &bin, char const *name, std::vector<GEN_PB_IMPL *> *tagged_bins)
{
    bool &writes_file = gen_pb().report.writes_file;
    if (!GEN_PB_CHECK(!writes_file, "l_gen_pb_current_file == 0LL"))
        return;
    GEN_LOG_FILE file(name, GEN_LOG_FILE::File(FIO_FILE_SYSTEM::fopen(name, "w")));
    if (!file.is_open()) {
        gen_debug_message("Error - couldn't print profile bins (disk probably full)");
        return;
    }
    GEN_PB_SCOPED_FLAG const writing(writes_file);
    RowWriter writer(bin, &file, tagged_bins);
    writer.write_header();
    writer.write_rows(bin);
    std::string closing;
    stl_sprintf(&closing, "\nEstimated bin overhead was %.1fs (%.1fs WC)\n",
                gen_pb_seconds_of_nsec(bin.m_report_overhead.m_values[GEN_PB_CPU]),
                gen_pb_seconds_of_ticks(bin.m_report_overhead.m_values[GEN_PB_WC]));
    writer.write_line(closing);
}

void write_debug_report(GEN_PB_IMPL &bin)
{
    bool &writes_debug = gen_pb().report.writes_debug;
    if (!GEN_PB_CHECK(!writes_debug, "l_gen_pb_current_code_prefix == 0LL"))
        return;
    GEN_PB_SCOPED_FLAG const writing(writes_debug);
    RowWriter writer(bin, /*file=*/nullptr, /*tagged_bins=*/nullptr);
    writer.write_header();
    writer.write_rows(bin);
}

// GEN_PROFILE_BIN::dump(), with the bins that have a tag.
void dump(GEN_PB_IMPL &bin, char const *file, std::vector<GEN_PB_IMPL *> *tagged_bins)
{
    if (!gen_pb_is_own_thread())
        return;
    GEN_PB_BUSY const busy;
    if (bin.m_open_count != 0) {
        gen_debug_message("Warning: bin still open (%d times), cannot dump: %s", bin.m_open_count,
                          gen_pb_path_text(gen_pb_path(bin, gen_pb().tree.root), "/"));
        return;
    }
    if (!gen_pb_compute_report(bin))
        return;
    gen_debug_message("Overhead for bin %s is %.1fs (%.1fs WC)", bin.m_name,
                      gen_pb_seconds_of_nsec(bin.m_report_overhead.m_values[GEN_PB_CPU]),
                      gen_pb_seconds_of_ticks(bin.m_report_overhead.m_values[GEN_PB_WC]));
    if (file != nullptr)
        write_file_report(bin, file, tagged_bins);
    else
        write_debug_report(bin);
}

// "<stem>_Fitter.log", or "<stem>_Fitter_<suffix>.log".
std::string report_file_name(char const *stem, char const *name)
{
    std::string file;
    if (GEN_PROFILE_BINS::s_log_file_suffix.empty())
        stl_sprintf(&file, "%s_%s.log", stem, name);
    else
        stl_sprintf(&file, "%s_%s_%s.log", stem, name, GEN_PROFILE_BINS::s_log_file_suffix.c_str());
    return file;
}

} // namespace

std::string GEN_PROFILE_BINS::s_log_file_suffix;

void gen_pb_dump(GEN_PB_IMPL &bin, char const *file, bool collect_tags)
{
    std::vector<GEN_PB_IMPL *> tagged_bins;
    dump(bin, file, collect_tags ? &tagged_bins : nullptr);
}

void gen_pb_write_reports(char const *name)
{
    std::vector<GEN_PB_IMPL *> tagged_bins;
    dump(*gen_pb().tree.root, report_file_name("profile_bins", name).c_str(), &tagged_bins);
    if (tagged_bins.empty())
        return;
    gen_pb_build_tag_tree(tagged_bins);
    dump(*gen_pb().tree.root, report_file_name("profile_bins_tagged", name).c_str(), /*tagged_bins=*/nullptr);
}
