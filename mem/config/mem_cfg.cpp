// Files are read at the first query. A thread may query again while it reads: from the function that returns the
// installation root, or from an operator new of the tool. Two locks and a mark on the thread keep that safe:
//
//     thread A                                           thread B
//     queries "verbose"; no file was read yet
//     marks itself as reading, locks `reading`
//     reads "kalvern.ini", which allocates;              queries "verbose", waits for `reading`
//       its operator new queries "trace": A is marked,
//       so the value comes from the tables as they are
//     locks `tables`, adds the values, unlocks `tables`
//     unlocks `reading`                                  finds that the files were read
//     locks `tables`, looks "verbose" up                 locks `tables`, looks "verbose" up
//
// `reading` is held while files are read, so that each is read once and every thread sees its values. `tables` is held
// for a look-up or a splice alone, and nothing is allocated or released under it. No lock is held while the function
// of the installation root runs or a problem is reported.
#include "mem_sys.h"

#include "mem/base/mem_line.h"
#include "mem/config/mem_cfg.h"
#include "mem/config/mem_cfg_file.h"
#include "sys/sys_module.h"
#include "sys/sys_path_text.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <set>

namespace {

constexpr char FILE_NAME[] = "kalvern.ini";
constexpr char FILE_VARIABLE[] = "KALVERN_INI";

// Kinds of queries, as bits of MEM_CFG_ENTRY::reported.
constexpr unsigned AS_SWITCH = 1;
constexpr unsigned AS_NUMBER = 2;

using Problems = std::vector<std::string>;

struct Configuration
{
    // The next three are written under `reading`, by the query that reads the files.
    std::mutex reading;
    // Set after the values of these files are in the tables. Any thread reads them without the lock.
    std::atomic<bool> has_start_files{false};
    std::atomic<bool> has_root_file{false};
    // The texts read so far; empty after the last file. The installation root may be the current directory, and a file
    // is one source however it is reached.
    std::vector<std::string> texts;
    // The identities of the files that can't be read.
    std::set<std::string> unreadable_files;

    // Guards the values, which mem_cfg_set() and the query that reads the files write.
    std::mutex tables;
    MEM_CFG_ENTRIES set_values;
    MEM_CFG_ENTRIES file_values;
};

// All state of the configuration. The exit destroys none of it, since exit handlers of other libraries still query it.

// Written by each event that may change a result; never 0.
std::atomic<std::uint64_t> l_generation{1};

// Null until the process sets it, which it does when it starts.
std::atomic<std::string (*)()> l_root_function{nullptr};

// True while the thread reads configuration files or calls the function of the installation root. Written by its own
// thread.
thread_local bool l_is_reading = false;

// Made when the library is loaded, or by a caller before that. It needs no memory as long as it is empty, so that
// nothing is lost if the library is unloaded then.
Configuration &configuration()
{
    alignas(Configuration) static unsigned char s_storage[sizeof(Configuration)];
    static Configuration *const s_configuration = new (s_storage) Configuration;
    return *s_configuration;
}

void begin_generation()
{
    l_generation.fetch_add(1, std::memory_order_acq_rel);
}

class ReadingScope
{
public:
    ReadingScope() { l_is_reading = true; }
    ~ReadingScope() { l_is_reading = false; }
    ReadingScope(ReadingScope const &) = delete;
    ReadingScope &operator=(ReadingScope const &) = delete;
};

// Adds those values of a file whose keys occur in no file read before. Under `reading`.
void read_source(Configuration &cfg, std::string const &path, bool is_named, Problems &problems)
{
    std::string text;
    if (!mem_cfg_read_file(path, is_named, text, cfg.unreadable_files, problems))
        return;
    for (std::string const &former : cfg.texts)
        if (former == text)
            return;
    MEM_CFG_ENTRIES entries;
    mem_cfg_parse(path, text, entries, problems);
    cfg.texts.push_back(std::move(text));
    std::lock_guard<std::mutex> const lock(cfg.tables);
    cfg.file_values.merge(entries);
}

void read_start_files(Configuration &cfg, Problems &problems)
{
    std::lock_guard<std::mutex> const lock(cfg.reading);
    if (cfg.has_start_files)
        return;
    char const *const named = std::getenv(FILE_VARIABLE);
    if (named != nullptr && *named != '\0')
        read_source(cfg, named, /*is_named=*/true, problems);
    read_source(cfg, FILE_NAME, /*is_named=*/false, problems);
    cfg.has_start_files = true;
    begin_generation();
}

void read_root_file(Configuration &cfg, std::string root, Problems &problems)
{
    std::lock_guard<std::mutex> const lock(cfg.reading);
    if (cfg.has_root_file)
        return;
    if (!root.empty()) {
        if (!sys_ends_in_separator(root))
            root += '/';
        read_source(cfg, root + FILE_NAME, /*is_named=*/false, problems);
    }
    cfg.texts = {};
    cfg.unreadable_files = {};
    cfg.has_root_file = true;
    begin_generation();
}

// Reads the files that can be read by now. Threads that come here together may each call the caller's function; one of
// them reads the file.
void read_files(Configuration &cfg, Problems &problems)
{
    ReadingScope const scope;
    if (!cfg.has_start_files)
        read_start_files(cfg, problems);
    if (cfg.has_root_file)
        return;
    if (auto const root_function = l_root_function.load(std::memory_order_acquire))
        read_root_file(cfg, root_function(), problems);
}

bool has_unread_files(Configuration const &cfg)
{
    if (l_is_reading)
        return false;
    return !cfg.has_start_files || (!cfg.has_root_file && l_root_function.load(std::memory_order_acquire) != nullptr);
}

std::shared_ptr<MEM_CFG_ENTRY> find_entry(char const *key)
{
    if (key == nullptr)
        return nullptr;
    Configuration &cfg = configuration();
    if (has_unread_files(cfg)) {
        sys_keep_loaded(); // with the values
        Problems problems;
        read_files(cfg, problems);
        for (std::string const &problem : problems)
            mem_line_warn(problem);
    }
    std::lock_guard<std::mutex> const lock(cfg.tables);
    for (MEM_CFG_ENTRIES const *const entries : {&cfg.set_values, &cfg.file_values}) {
        auto const found = entries->find(std::string_view(key));
        if (found != entries->end())
            return found->second;
    }
    return nullptr;
}

// Reports a value that can't be read, once for each kind of query.
void report_value(MEM_CFG_ENTRY &entry, char const *key, unsigned kind, char const *expected)
{
    if ((entry.reported.fetch_or(kind) & kind) != 0)
        return;
    mem_line_warn(entry.origin + ": the value of " + mem_cfg_quoted(key) + " is " + mem_cfg_quoted(entry.value) +
                  ", expected " + expected);
}

} // namespace

void mem_cfg_prepare()
{
    configuration();
}

void mem_cfg_lock()
{
    configuration().reading.lock();
    configuration().tables.lock();
}

void mem_cfg_unlock()
{
    configuration().tables.unlock();
    configuration().reading.unlock();
}

void mem_cfg_set_root_function(std::string (*function)())
{
    l_root_function.store(function, std::memory_order_release);
    begin_generation();
}

std::uint64_t mem_cfg_generation()
{
    return l_generation.load(std::memory_order_acquire);
}

bool mem_cfg_is_on(char const *key, bool default_value)
{
    bool result = default_value;
    std::shared_ptr<MEM_CFG_ENTRY> const entry = find_entry(key);
    if (entry != nullptr && !mem_cfg_parse_switch(entry->value, result))
        report_value(*entry, key, AS_SWITCH, "on, off, true, false, yes, no, 1 or 0");
    return result;
}

int mem_cfg_get_int_value(char const *key, int default_value)
{
    int result = default_value;
    std::shared_ptr<MEM_CFG_ENTRY> const entry = find_entry(key);
    if (entry != nullptr && !mem_cfg_parse_number(entry->value, result))
        report_value(*entry, key, AS_NUMBER, "a whole number from -2147483648 to 2147483647");
    return result;
}

std::string mem_cfg_get_value(char const *key)
{
    std::shared_ptr<MEM_CFG_ENTRY> const entry = find_entry(key);
    return entry == nullptr ? std::string() : entry->value;
}

std::string mem_cfg_get_origin(char const *key)
{
    std::shared_ptr<MEM_CFG_ENTRY> const entry = find_entry(key);
    return entry == nullptr ? std::string() : entry->origin;
}

void mem_cfg_set(char const *key, char const *value)
{
    if (key == nullptr)
        return;
    MEM_CFG_ENTRIES fresh;
    if (value != nullptr) {
        auto entry = std::make_shared<MEM_CFG_ENTRY>();
        entry->value = value;
        entry->origin = "mem_cfg_set";
        fresh.emplace(key, std::move(entry));
    }
    sys_keep_loaded(); // with the value
    Configuration &cfg = configuration();
    MEM_CFG_ENTRIES::node_type former; // released after the lock
    {
        std::lock_guard<std::mutex> const lock(cfg.tables);
        auto const found = cfg.set_values.find(std::string_view(key));
        if (found != cfg.set_values.end())
            former = cfg.set_values.extract(found);
        cfg.set_values.merge(fresh);
    }
    begin_generation();
}
