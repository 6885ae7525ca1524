// The report of the bins: a row per bin with its numbers and its path, and behind the children of a bin a row "OTHER"
// with what none of them accounts for.
#include "gen/profile/gen_profile_bins_impl.h"

#include "fio_sys.h"
#include "gen/base/gen_message.h"
#include "mem_sys.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

struct GEN_PB_COLUMN
{
    double (*m_value)(GEN_PB_IMPL const &bin);
    int m_start_width;
    int m_decimals;
    char const *m_title;

    // Wide enough for the title; a count has room for one more digit.
    int width() const
    {
        int const start = m_decimals == 0 ? m_start_width + 1 : m_start_width;
        return std::max(start, static_cast<int>(std::strlen(m_title)));
    }
};

// Both are counts of 32 bits, and so is their sum.
double clock_errors(GEN_PB_METRICS const &metrics)
{
    return metrics.m_errors[GEN_PB_CPU] + metrics.m_errors[GEN_PB_WC];
}

constexpr GEN_PB_COLUMN GEN_PB_COLUMNS[] = {
    {[](GEN_PB_IMPL const &bin) -> double { return bin.m_count; }, 5, 0, "count"},
    {[](GEN_PB_IMPL const &bin) { return gen_pb_seconds_of_nsec(bin.m_report.m_values[GEN_PB_CPU]); }, 10, 2,
     "cpu time (s)"},
    {[](GEN_PB_IMPL const &bin) { return gen_pb_seconds_of_ticks(bin.m_report.m_values[GEN_PB_WC]); }, 10, 2,
     "wc time (s)"},
    {[](GEN_PB_IMPL const &bin) { return clock_errors(bin.m_report); }, 5, 0, "clock errors"},
    {[](GEN_PB_IMPL const &bin) { return gen_pb_seconds_of_nsec(bin.m_report.m_values[GEN_PB_WC_EST]); }, 10, 2,
     "wc est time (s)"},
    {[](GEN_PB_IMPL const &bin) { return gen_pb_mib(bin.m_report.m_values[GEN_PB_START_MEM]); }, 10, 2,
     "start mem (MiB)"},
    {[](GEN_PB_IMPL const &bin) { return gen_pb_mib(bin.m_report.m_values[GEN_PB_END_MEM]); }, 10, 2, "end mem (MiB)"},
    {[](GEN_PB_IMPL const &bin) { return gen_pb_mib(bin.m_report.m_values[GEN_PB_PEAK_MEM]); }, 10, 2,
     "peak mem (MiB)"},
};

// Where a dump goes; one of the two is set while it runs.
std::FILE *l_gen_pb_current_file = nullptr;
char const *l_gen_pb_current_code_prefix = nullptr;

// Lines are data: a "%" in a bin's name stays one.
void print_line(std::string const &line)
{
    if (l_gen_pb_current_file != nullptr)
        std::fputs(line.c_str(), l_gen_pb_current_file);
    else
        mem_msg_local_vdebug(l_gen_pb_current_code_prefix, "%s", GEN_ARGUMENT_SLOTS(line).cursor());
}

std::string header_line(char separator)
{
    std::string line;
    std::string cell;
    for (GEN_PB_COLUMN const &column : GEN_PB_COLUMNS) {
        stl_sprintf(&cell, "%*s", column.width(), column.m_title);
        line += cell + separator;
    }
    return line + "name\n";
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

std::string value_cells(GEN_PB_IMPL const &bin, char separator)
{
    std::string cells;
    std::string cell;
    for (GEN_PB_COLUMN const &column : GEN_PB_COLUMNS) {
        stl_sprintf(&cell, "%*.*f", column.width(), column.m_decimals, column.m_value(bin));
        cells += cell + separator;
    }
    return cells;
}

// One dump of the tree below a bin.
class RowWriter
{
public:
    RowWriter(GEN_PB_IMPL const &root, bool is_file) : m_root(root), m_is_file(is_file) {}

    /// Writes the rows of a bin and of all below it; `depth` is the bin's indentation, of no meaning in a file. False,
    /// after an internal error, if a bin is open.
    bool write(GEN_PB_IMPL &bin, int depth, bool collect_tags) const
    {
        if (!GEN_PB_CHECK(bin.m_open_count == 0, "m_open_count == 0"))
            return false;
        if (!bin.m_name.empty())
            print_line(row_of(bin, depth));
        if (!bin.m_children.empty() && !write_children(bin, depth + 1, collect_tags))
            return false;
        if (collect_tags && !bin.m_tag.empty())
            gen_pb_note_tagged_bin(bin);
        return true;
    }

private:
    std::string row_of(GEN_PB_IMPL const &bin, int depth) const
    {
        if (m_is_file)
            return value_cells(bin, '\t') + bin.get_path("::", &m_root) + '\n';
        std::string row = value_cells(bin, ' ');
        for (int i = 0; i < depth; ++i)
            row += "| ";
        return row + bin.m_name + '\n';
    }

    bool write_children(GEN_PB_IMPL &bin, int depth, bool collect_tags) const
    {
        bool const is_sorted = &bin == GEN_PB_IMPL::get_root_bin() && !collect_tags;
        std::vector<GEN_PB_IMPL *> children = bin.m_children;
        if (is_sorted)
            std::stable_sort(children.begin(), children.end(),
                             [](GEN_PB_IMPL const *a, GEN_PB_IMPL const *b) { return a->m_name < b->m_name; });
        for (GEN_PB_IMPL *child : children)
            if (!write(*child, depth, collect_tags))
                return false;
        return bin.m_name.empty() || write_other(bin, depth);
    }

    // What no child accounts for, as if it were the last child.
    bool write_other(GEN_PB_IMPL &bin, int depth) const
    {
        GEN_PB_IMPL other;
        other.m_code_prefix = bin.m_code_prefix;
        other.m_name = "OTHER";
        other.m_parent = &bin;
        other.m_report = bin.m_self;
        return write(other, depth, /*collect_tags=*/false);
    }

    GEN_PB_IMPL const &m_root;
    bool m_is_file;
};

} // namespace

void gen_pb_write_reports(char const *name)
{
    gen_pb_forget_tagged_bins(); // noted by a tool's own dump
    s_gen_pb.m_root->dump(report_file_name("profile_bins", name).c_str(), /*collect_tags=*/true);
    if (gen_pb_build_tag_tree())
        s_gen_pb.m_root->dump(report_file_name("profile_bins_tagged", name).c_str(), /*collect_tags=*/false);
}

void GEN_PB_IMPL::dump(char const *file, bool collect_tags)
{
    if (!gen_pb_is_own_thread())
        return;
    GEN_PB_BUSY const busy;
    if (m_open_count != 0) {
        gen_say("Warning: bin still open (%d times), cannot dump: %s", m_open_count, get_path("/", nullptr));
        return;
    }
    if (!compute_report())
        return;
    double const overhead_cpu = gen_pb_seconds_of_nsec(m_report_overhead.m_values[GEN_PB_CPU]);
    double const overhead_wc = gen_pb_seconds_of_ticks(m_report_overhead.m_values[GEN_PB_WC]);
    gen_say("Overhead for bin %s is %.1fs (%.1fs WC)", m_name, overhead_cpu, overhead_wc);
    if (file != nullptr)
        write_file_report(file, collect_tags);
    else
        write_debug_report();
}

void GEN_PB_IMPL::write_file_report(char const *file, bool collect_tags)
{
    if (!GEN_PB_CHECK(l_gen_pb_current_file == nullptr, "l_gen_pb_current_file == 0LL"))
        return;
    l_gen_pb_current_file = FIO_FILE_SYSTEM::fopen(file, "w");
    if (l_gen_pb_current_file == nullptr) {
        gen_say("Error - couldn't print profile bins (disk probably full)");
        return;
    }
    print_line(header_line('\t'));
    RowWriter(*this, /*is_file=*/true).write(*this, /*depth=*/0, collect_tags);
    std::string closing;
    stl_sprintf(&closing, "\nEstimated bin overhead was %.1fs (%.1fs WC)\n",
                gen_pb_seconds_of_nsec(m_report_overhead.m_values[GEN_PB_CPU]),
                gen_pb_seconds_of_ticks(m_report_overhead.m_values[GEN_PB_WC]));
    print_line(closing);
    std::fclose(l_gen_pb_current_file);
    l_gen_pb_current_file = nullptr;
}

void GEN_PB_IMPL::write_debug_report()
{
    if (!GEN_PB_CHECK(l_gen_pb_current_code_prefix == nullptr, "l_gen_pb_current_code_prefix == 0LL"))
        return;
    l_gen_pb_current_code_prefix = m_code_prefix.c_str();
    print_line(header_line(' '));
    RowWriter(*this, /*is_file=*/false).write(*this, /*depth=*/0, /*collect_tags=*/false);
    l_gen_pb_current_code_prefix = nullptr;
}
