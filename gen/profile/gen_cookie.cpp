#include "gen_cookie_sys.h"

#include "gen/profile/gen_cookie.h"
#include "gen/base/gen_message.h"
#include "gen/profile/gen_profile_bins_impl.h"
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
    return std::tie(a.m_description, a.m_path) < std::tie(b.m_description, b.m_path);
}

// All cookies of the process. Threads change it under the mutex.
struct Log
{
    Log();
    ~Log();
    Log(Log const &) = delete;
    Log &operator=(Log const &) = delete;

    void add(Cookie cookie);
    // Sorts the pending cookies behind the logged ones.
    void move_pending();
    // The same, but they stay pending as well.
    void copy_pending();

    THR_MUTEX_OBJ m_mutex = thr_mutex_create();
    bool m_enabled = false;
    std::vector<Cookie> m_logged;  // in the order of the file
    std::vector<Cookie> m_pending; // those of the current path
    Path m_last_path;
};

// The log while it is there; another library may log before or after.
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

// Appends a text with blanks up to a width, which a longer text exceeds.
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

} // namespace

void gen_log_cookie(char const *description, std::uint64_t hash)
{
    Log *const log = l_log_in_life.load(std::memory_order_acquire);
    if (log == nullptr)
        return;
    if (description == nullptr)
        description = "";
    log->add({gen_pb_current_path(), description, hash});
    gen_say("Cookie logged %s: %I64u", description, hash);
}

void gen_cookie_log_configure(bool primary, bool debug_messages)
{
    if (Log *const log = l_log_in_life.load(std::memory_order_acquire))
        log->m_enabled = mem_cfg_is_on("gen_print_cookie_log", false) && (primary || debug_messages);
}

void gen_cookie_log_write(char const *name)
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
