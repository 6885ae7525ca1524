// Two locks. The first is held while files are read, so that they are read once and every thread sees them; the second
// guards the tables and is held for a look-up or a splice alone. Under the second nothing is allocated or released, and
// a question that a thread asks while it reads (from the callback, from the counting of an allocation) is answered from
// what is there, so no question can wait for itself. No lock is held while the callback runs or a problem is reported.
#include "mem_sys.h"

#include "mem/config/mem_callbacks.h"
#include "mem/config/mem_cfg.h"
#include "mem/config/mem_cfg_file.h"
#include "mem/messages/mem_msg.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace {

constexpr char FILE_NAME[] = "kalvern.ini";
constexpr char FILE_VARIABLE[] = "KALVERN_INI";

// Kinds of questions, as bits of MEM_CFG_ENTRY::reported.
constexpr unsigned AS_SWITCH = 1;
constexpr unsigned AS_NUMBER = 2;

using Problems = std::vector<std::string>;

struct Configuration
{
    std::mutex reading;
    std::atomic<bool> has_start_files{false};
    std::atomic<bool> has_root_file{false};
    // Texts read so far: the installation may be the current directory, and a file is one source however it is reached.
    std::vector<std::string> texts;

    std::mutex tables;
    MEM_CFG_ENTRIES set_values;
    MEM_CFG_ENTRIES file_values;
};

std::atomic<std::uint64_t> l_generation{1};

// Set while this thread reads configuration files or asks for the place of one.
thread_local bool l_is_reading = false;

class ReadingScope
{
public:
    ReadingScope() { l_is_reading = true; }
    ~ReadingScope() { l_is_reading = false; }
    ReadingScope(ReadingScope const &) = delete;
    ReadingScope &operator=(ReadingScope const &) = delete;
};

// Made once, and never released: questions come from exit handlers too.
Configuration &configuration()
{
    static Configuration *const s_configuration = new Configuration;
    return *s_configuration;
}

// Adds what a file has and the files before it have not. Under the lock of reading.
void read_source(Configuration &cfg, std::string const &path, Problems &problems)
{
    std::string text;
    if (!mem_cfg_read_file(path, text, problems))
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
        read_source(cfg, named, problems);
    read_source(cfg, FILE_NAME, problems);
    cfg.has_start_files = true;
    mem_cfg_changed();
}

void read_root_file(Configuration &cfg, std::string root, Problems &problems)
{
    std::lock_guard<std::mutex> const lock(cfg.reading);
    if (cfg.has_root_file)
        return;
    if (!root.empty()) {
        if (root.back() != '/' && root.back() != '\\')
            root += '/';
        read_source(cfg, root + FILE_NAME, problems);
    }
    cfg.texts = {};
    cfg.has_root_file = true;
    mem_cfg_changed();
}

// Reads what is due. Threads that come together may each ask the callback; one of them reads the file.
void read_files(Configuration &cfg, Problems &problems)
{
    ReadingScope const scope;
    if (!cfg.has_start_files)
        read_start_files(cfg, problems);
    if (cfg.has_root_file)
        return;
    if (auto const get_kalvern_path = mem_gen_get_kalvern_path())
        read_root_file(cfg, get_kalvern_path(), problems);
}

bool has_unread_files(Configuration const &cfg)
{
    if (l_is_reading)
        return false;
    return !cfg.has_start_files || (!cfg.has_root_file && mem_gen_get_kalvern_path() != nullptr);
}

std::shared_ptr<MEM_CFG_ENTRY> find_entry(char const *key)
{
    if (key == nullptr)
        return nullptr;
    Configuration &cfg = configuration();
    if (has_unread_files(cfg)) {
        Problems problems;
        read_files(cfg, problems);
        for (std::string const &problem : problems)
            mem_msg_warn(problem);
    }
    std::lock_guard<std::mutex> const lock(cfg.tables);
    for (MEM_CFG_ENTRIES const *const entries : {&cfg.set_values, &cfg.file_values}) {
        auto const found = entries->find(std::string_view(key));
        if (found != entries->end())
            return found->second;
    }
    return nullptr;
}

// Reports a value that can't be read, once for each kind of question.
void report_value(MEM_CFG_ENTRY &entry, char const *key, unsigned kind, char const *expected)
{
    if ((entry.reported.fetch_or(kind) & kind) != 0)
        return;
    mem_msg_warn(entry.origin + ": the value of " + mem_cfg_quoted(key) + " is " + mem_cfg_quoted(entry.value) +
                 ", expected " + expected);
}

} // namespace

void mem_cfg_prepare()
{
    configuration();
}

std::uint64_t mem_cfg_generation()
{
    return l_generation.load(std::memory_order_acquire);
}

void mem_cfg_changed()
{
    l_generation.fetch_add(1, std::memory_order_acq_rel);
}

bool mem_cfg_is_on(char const *key, bool default_value)
{
    bool answer = default_value;
    std::shared_ptr<MEM_CFG_ENTRY> const entry = find_entry(key);
    if (entry != nullptr && !mem_cfg_parse_switch(entry->value, answer))
        report_value(*entry, key, AS_SWITCH, "on, off, true, false, yes, no, 1 or 0");
    return answer;
}

int mem_cfg_get_int_value(char const *key, int default_value)
{
    int answer = default_value;
    std::shared_ptr<MEM_CFG_ENTRY> const entry = find_entry(key);
    if (entry != nullptr && !mem_cfg_parse_number(entry->value, answer))
        report_value(*entry, key, AS_NUMBER, "a whole number from -2147483648 to 2147483647");
    return answer;
}

std::string mem_cfg_get_value(char const *key)
{
    std::shared_ptr<MEM_CFG_ENTRY> const entry = find_entry(key);
    return entry == nullptr ? std::string() : entry->value;
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
    Configuration &cfg = configuration();
    MEM_CFG_ENTRIES::node_type former; // released behind the lock
    {
        std::lock_guard<std::mutex> const lock(cfg.tables);
        auto const found = cfg.set_values.find(std::string_view(key));
        if (found != cfg.set_values.end())
            former = cfg.set_values.extract(found);
        cfg.set_values.merge(fresh);
    }
    mem_cfg_changed();
}
