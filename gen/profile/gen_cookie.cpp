// The cookie log: values that a tool records by name, with the path of the bin that was current.
//
// Cookies under one path wait until the path changes or the log is written, and are then sorted by name and value. So
// the cookies of one place of the flow are in the same order whichever of its threads was first, and the places are in
// the order of the flow:
//
//     b in X, a in X, c in Y, d in X   gives   a in X, b in X, c in Y, d in X
#include "gen_cookie_sys.h"

#include "fio_sys.h"
#include "gen/base/gen_debug_message.h"
#include "gen/os/gen_os.h"
#include "gen/process/gen_log_file.h"
#include "gen/profile/gen_cookie.h"
#include "gen/profile/gen_profile_bins_bin.h"
#include "gen/profile/gen_profile_bins_listener.h"
#include "gen_fstream_sys.h"
#include "mem_sys.h"
#include "sys/sys_file_mode.h"
#include "thr_sys.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <list>
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

// How often the end of a file is read before it counts as unfinished.
constexpr int LOOKS = 10;

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

// Sorted; never changed once it is logged.
using Group = std::vector<Cookie>;

// Groups that are logged already, in the order of the file. They may be read without the mutex while others are added.
struct Groups
{
    std::list<Group>::const_iterator first;
    std::list<Group>::const_iterator last;
    bool is_empty;
};

// All cookies of the process. Any thread changes them, under the mutex; the owner of the bins writes them at the end.
class Log
{
public:
    Log();
    ~Log();
    Log(Log const &) = delete;
    Log &operator=(Log const &) = delete;

    void add(Cookie cookie);
    // Everything up to now. The cookies of the current path are logged, and stay pending as well.
    Groups log_all();

    // Around a fork.
    void lock() { thr_mutex_lock(m_mutex); }
    void unlock() { thr_mutex_unlock(m_mutex); }

private:
    void log_pending();

    THR_MUTEX_OBJ m_mutex = thr_mutex_create();
    std::list<Group> m_logged;
    Group m_pending; // of the current path
    Path m_last_path;
};

// Whether the log is written. Only the owner of the bins uses it.
bool l_is_enabled = false;

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
            log_pending();
        m_last_path = cookie.m_path;
    }
    m_pending.push_back(std::move(cookie));
}

void Log::log_pending()
{
    if (m_pending.empty())
        return;
    std::sort(m_pending.begin(), m_pending.end());
    m_logged.emplace_back();
    m_logged.back().swap(m_pending);
}

Groups Log::log_all()
{
    THR_SCOPED_MUTEX const lock(m_mutex);
    if (!m_pending.empty()) {
        std::sort(m_pending.begin(), m_pending.end());
        m_logged.push_back(m_pending);
    }
    if (m_logged.empty())
        return {m_logged.end(), m_logged.end(), /*is_empty=*/true};
    return {m_logged.begin(), std::prev(m_logged.end()), /*is_empty=*/false};
}

// Whether the last byte of a regular file is not a line end now.
bool shows_part_of_line(std::string const &file)
{
    struct _stat64i32 record;
    if (!FIO_FILE_SYSTEM::status(file, &record) || !sys_mode_is_regular(record.st_mode))
        return false;
    std::brisel_ifstream in(file.c_str(), std::ios::in | std::ios::binary | std::ios::ate, GEN_SHARE_ALL);
    in.seekg(-1, std::ios::end); // fails if the file is empty
    return in.good() && in.get() != '\n';
}

// Whether a process has left a file within a line. One that is still writing also shows parts of its lines, but not at
// each of several looks.
bool ends_within_line(std::string const &file)
{
    for (int look = 0; look < LOOKS; ++look) {
        if (look != 0)
            thr_sleep(/*milliseconds=*/1);
        if (!shows_part_of_line(file))
            return false;
    }
    return true;
}

// Appends a text, filled up with blanks to a width. A longer text is not cut.
void append_cell(std::string &line, std::string const &text, std::size_t width)
{
    line += text;
    if (text.size() < width)
        line.append(width - text.size(), ' ');
}

void write_heading(GEN_LOG_FILE &out, char const *name)
{
    std::string titles;
    append_cell(titles, "Description", DESCRIPTION_WIDTH);
    titles += '|';
    append_cell(titles, "Hash Val", HASH_WIDTH);
    titles += '|';
    append_cell(titles, "Path", PATH_WIDTH);
    out.write(std::string("Cookie Database file for ") + name + "\n\n" + titles + '\n' + std::string(LINE_WIDTH, '-') +
              '\n');
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

void write_rows(GEN_LOG_FILE &out, Group const &cookies)
{
    std::string row;
    for (Cookie const &cookie : cookies) {
        row.clear();
        append_row(row, cookie);
        out.write(row);
    }
}

void write_rows(GEN_LOG_FILE &out, Groups const &groups)
{
    if (groups.is_empty)
        return;
    for (auto group = groups.first;; ++group) {
        write_rows(out, *group);
        if (group == groups.last)
            return;
    }
}

// Appends the cookies to a file. Of several processes that find no file, the one that creates it writes the heading.
void append_to_file(char const *name, Groups const &groups)
{
    std::string const file = std::string("cookie_db_") + name + ".log";
    bool const is_new = gen_os_create_file(file.c_str());
    GEN_LOG_FILE out(file, std::ios::app | std::ios::out);
    if (is_new)
        write_heading(out, name);
    else if (ends_within_line(file))
        out.write("\n");
    write_rows(out, groups);
}

// Logs the pending cookies, and writes all to the file if that is enabled.
void write_log(char const *name)
{
    Log *const log = l_log_in_life.load(std::memory_order_acquire);
    if (log == nullptr)
        return;
    Groups const groups = log->log_all();
    if (l_is_enabled)
        append_to_file(name == nullptr ? "" : name, groups);
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
    if (l_log_in_life.load(std::memory_order_acquire) == nullptr)
        return;
    l_is_enabled = mem_cfg_is_on("gen_print_cookie_log", false) && (primary || debug_messages);
    gen_pb_listen_to_end(l_writer);
}

void gen_cookie_log_lock()
{
    if (Log *const log = l_log_in_life.load(std::memory_order_acquire))
        log->lock();
}

void gen_cookie_log_unlock()
{
    if (Log *const log = l_log_in_life.load(std::memory_order_acquire))
        log->unlock();
}
