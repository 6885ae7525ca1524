// The cookie log: values that a tool records by name, with the path of the bin that was current.
//
// Cookies under one path wait until the path changes or the log is written, and are then sorted by name and value. So
// the cookies of one place of the flow are in the same order whichever of its threads was first, and the places are in
// the order of the flow:
//
//     b in X, a in X, c in Y, d in X   gives   a in X, b in X, c in Y, d in X
#include "gen_cookie_sys.h"

#include "gen/base/gen_debug_message.h"
#include "gen/profile/gen_cookie.h"
#include "gen/profile/gen_profile_bins_bin.h"
#include "gen/profile/gen_profile_bins_listener.h"
#include "gen_fstream_sys.h"
#include "mem_sys.h"
#include "thr_sys.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

// Widths of the file's columns, and of the line below their titles.
constexpr std::size_t DESCRIPTION_WIDTH = 60;
constexpr std::size_t HASH_WIDTH = 25;
constexpr std::size_t PATH_WIDTH = 20;
constexpr std::size_t LINE_WIDTH = 200;

using Path = std::vector<std::string>;

struct Cookie
{
    Path m_path; // names of the bins from the root down
    std::string m_description;
    std::uint64_t m_hash;
};

bool operator<(Cookie const &a, Cookie const &b)
{
    return std::tie(a.m_description, a.m_path, a.m_hash) < std::tie(b.m_description, b.m_path, b.m_hash);
}

// All cookies of the process. Any thread changes them, under the mutex; the owner of the bins writes them at the end.
struct Log
{
    Log();
    ~Log();
    Log(Log const &) = delete;
    Log &operator=(Log const &) = delete;

    void add(Cookie cookie);
    // Sorts the pending cookies and appends them to the logged ones.
    void move_pending();
    // Does the same, but they stay pending as well.
    void copy_pending();

    THR_MUTEX_OBJ m_mutex = thr_mutex_create();
    bool m_enabled = false;
    std::vector<Cookie> m_logged;  // in the order of the file
    std::vector<Cookie> m_pending; // those of the current path
    Path m_last_path;
};

// The log, null before its construction and after its release; other libraries may log then.
std::atomic<Log *> l_log_in_life{nullptr};

Log l_log;

Log::Log()
{
    l_log_in_life.store(this, std::memory_order_release);
}

Log::~Log()
{
    l_log_in_life.store(nullptr, std::memory_order_relaxed);
    thr_mutex_destroy(m_mutex);
}

void Log::add(Cookie cookie)
{
    THR_SCOPED_MUTEX const lock(m_mutex);
    if (cookie.m_path != m_last_path) {
        if (!m_last_path.empty())
            move_pending();
        m_last_path = cookie.m_path;
    }
    m_pending.push_back(std::move(cookie));
}

void Log::move_pending()
{
    std::sort(m_pending.begin(), m_pending.end());
    std::move(m_pending.begin(), m_pending.end(), std::back_inserter(m_logged));
    m_pending.clear();
}

void Log::copy_pending()
{
    std::sort(m_pending.begin(), m_pending.end());
    m_logged.insert(m_logged.end(), m_pending.begin(), m_pending.end());
}

bool exists(std::string const &file)
{
    return std::brisel_ifstream(file.c_str(), std::ios::in, GEN_SHARE_ALL).good();
}

// Appends a text, filled up with blanks to a width. A longer text is not cut.
void append_cell(std::string &line, std::string const &text, std::size_t width)
{
    line += text;
    if (text.size() < width)
        line.append(width - text.size(), ' ');
}

void write_heading(std::ostream &out, char const *name)
{
    std::string titles;
    append_cell(titles, "Description", DESCRIPTION_WIDTH);
    titles += '|';
    append_cell(titles, "Hash Val", HASH_WIDTH);
    titles += '|';
    append_cell(titles, "Path", PATH_WIDTH);
    out << "Cookie Database file for " << name << "\n\n" << titles << '\n' << std::string(LINE_WIDTH, '-') << std::endl;
}

void append_row(std::string &row, Cookie const &cookie)
{
    append_cell(row, cookie.m_description, DESCRIPTION_WIDTH);
    row += '|';
    append_cell(row, std::to_string(cookie.m_hash), HASH_WIDTH);
    row += '|';
    char const *separator = "";
    for (std::string const &name : cookie.m_path) {
        row += separator;
        row += name;
        separator = "::";
    }
    row += '\n';
}

void write_rows(std::ostream &out, std::vector<Cookie> const &cookies)
{
    std::string row;
    for (Cookie const &cookie : cookies) {
        row.clear();
        append_row(row, cookie);
        out << row;
    }
}

// Writes the log, if that is enabled. No other thread may log at the same time.
void write_log(char const *name)
{
    Log *const log = l_log_in_life.load(std::memory_order_acquire);
    if (log == nullptr)
        return;
    log->copy_pending();
    if (!log->m_enabled)
        return;
    if (name == nullptr)
        name = "";
    std::string const file = std::string("cookie_db_") + name + ".log";
    std::brisel_ofstream out;
    if (exists(file)) {
        out.open(file.c_str(), std::ios::app | std::ios::out, GEN_SHARE_ALL);
    } else {
        out.open(file.c_str(), std::ios::out, GEN_SHARE_ALL);
        if (out.good())
            write_heading(out, name);
    }
    if (out.good())
        write_rows(out, log->m_logged);
}

// Writes the log at the end of a run.
class CookieWriter final : public GEN_PB_LISTENER
{
public:
    void on_end(char const *name) override { write_log(name); }
};

CookieWriter l_writer;

} // namespace

void gen_log_cookie(char const *description, std::uint64_t hash)
{
    Log *const log = l_log_in_life.load(std::memory_order_acquire);
    if (log == nullptr)
        return;
    if (description == nullptr)
        description = "";
    log->add({gen_pb_current_path(), description, hash});
    gen_debug_message("Cookie logged %s: %I64u", description, hash);
}

void gen_cookie_log_configure(bool primary, bool debug_messages)
{
    Log *const log = l_log_in_life.load(std::memory_order_acquire);
    if (log == nullptr)
        return;
    log->m_enabled = mem_cfg_is_on("gen_print_cookie_log", false) && (primary || debug_messages);
    gen_pb_listen_to_end(l_writer);
}

void gen_cookie_log_lock()
{
    if (Log *const log = l_log_in_life.load(std::memory_order_acquire))
        thr_mutex_lock(log->m_mutex);
}

void gen_cookie_log_unlock()
{
    if (Log *const log = l_log_in_life.load(std::memory_order_acquire))
        thr_mutex_unlock(log->m_mutex);
}
