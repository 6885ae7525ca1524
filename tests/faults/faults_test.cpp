// Each call of the system that an operation of the libraries makes fails once, in each of several ways, and each
// allocation too. Whatever fails: the operation has one of its documented results, the files are whole, no descriptor
// is lost, no lock stays held, and the process goes on.
//
// Each fault has a process of its own, which is forked and runs the operation in an empty directory.
#include "gen_cookie_sys.h"
#include "gen_dyn_flag_sys.h"
#include "gen_exe_sys.h"
#include "gen_fstream_sys.h"
#include "gen_machine_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"
#include "gen_string_sys.h"
#include "gen_tracq_sys.h"
#include "gen_undo_redo_sys.h"
#include "mem_sys.h"

#include "tests/faults/fault_layer.h"
#include "tests/support/temp_dir.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

// The result of an operation that ran out of memory.
constexpr char const *NO_MEMORY = "no memory";

// Seconds after which an operation counts as hanging.
constexpr unsigned LONGEST_RUN = 30;

// The runs of one operation whose faults are tried at most. Of more, every second, third ... is.
constexpr std::size_t MOST_RUNS = 400;

// The directory of the run, which is the current one. Made before the faults.
std::string const *l_directory = nullptr;

std::string content_of(std::string const &name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(std::string const &name, std::string const &text)
{
    std::ofstream(name, std::ios::binary) << text;
}

bool contains(std::string const &text, std::string const &part)
{
    return text.find(part) != std::string::npos;
}

std::size_t count_descriptors()
{
    std::filesystem::directory_iterator const entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

struct Operation
{
    char const *name;
    void (*prepare)();
    // Returns the result as a text.
    std::string (*run)();
    // Returns what is wrong with the result and with the files; empty if nothing is. What the process wrote is in the
    // files "stdout" and "stderr".
    std::string (*complaint)(std::string const &result);
};

void prepare_nothing() {}

std::string none(std::string const & /*result*/)
{
    return {};
}

// Configuration

std::string read_key()
{
    return std::to_string(mem_cfg_get_int_value("fault_key", -1));
}

std::string complain_of_key(std::string const &result)
{
    if (result == "7" || result == NO_MEMORY)
        return {};
    if (result != "-1")
        return "unexpected value " + result;
    return {};
}

// Messages

std::string write_messages()
{
    bool is_whole = true;
    for (char const *const text : {"first", "second", "third"})
        is_whole = mem_msg_local_vinfo("GEN", text, nullptr) && is_whole;
    return is_whole ? "true" : "false";
}

// Each line in the file is one that was emitted, or says that some were lost.
std::string complain_of_lines(std::string const &text)
{
    if (!text.empty() && text.back() != '\n')
        return "a line without its end: " + text;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.find("Info") != 0 && std::string("Info (GEN): ").find(line.substr(0, 12)) != 0 &&
            !contains(line, "lost"))
            return "a strange line: " + line;
    return {};
}

std::string complain_of_output(std::string const &result)
{
    std::string const text = content_of("stdout");
    if (result == "true" && text != "Info (GEN): first\nInfo (GEN): second\nInfo (GEN): third\n")
        return "all were emitted, but the output is " + text;
    if (result == "false" && !contains(text, "second") && !contains(text, "third"))
        return "one fault lost more than one line: " + text;
    return complain_of_lines(text);
}

std::string write_messages_to_file()
{
    if (!mem_msg_redirect_to_file("messages.txt"))
        return "not opened";
    struct Redirection
    {
        ~Redirection() { mem_msg_redirect(nullptr, nullptr); }
    } const redirection;
    return write_messages();
}

std::string complain_of_message_file(std::string const &result)
{
    return result == NO_MEMORY ? std::string() : complain_of_lines(content_of("messages.txt"));
}

// The private profile

constexpr char const *FORMER_PROFILE = "[other]\na=1\n";

void prepare_profile()
{
    write_file("p.ini", FORMER_PROFILE);
}

std::string write_profile()
{
    return std::to_string(gen_writeprivateprofilestring("section", "key", "value", "p.ini"));
}

std::string complain_of_profile(std::string const &result)
{
    std::string const text = content_of("p.ini");
    bool const is_former = text == FORMER_PROFILE;
    if (!is_former && text != "[other]\na=1\n[section]\nkey=value\n")
        return "the file is damaged: " + text;
    if (result == "1" && is_former)
        return "1 was returned, and nothing was written";
    if (result == "0" && !is_former)
        return "0 was returned, and the key was written";
    if (result != "0" && result != "1" && result != NO_MEMORY)
        return "unexpected result " + result;
    return {};
}

// Temporary files

// The result is the name that was returned.
std::string create_temp_file()
{
    return gen_create_temp_file(*l_directory, "zel");
}

std::string create_temp_file_with_extension()
{
    return gen_create_temp_file_with_extension(*l_directory, "zel", ".v");
}

std::string create_unique_directory()
{
    std::string name;
    return gen_create_unique_dir(*l_directory, name, true) ? name : std::string();
}

std::string complain_of_creation(std::string const &result)
{
    bool const is_right = result.empty() || result == NO_MEMORY || std::filesystem::exists(result);
    return is_right ? "" : "a name was returned, and there is no such file: " + result;
}

// Searches

void prepare_search()
{
    std::filesystem::create_directories("rtl/deep");
    for (char const *const name : {"rtl/a.v", "rtl/b.v", "rtl/deep/a.v"})
        write_file(name, "x");
    gen_set_project_dir_path(std::filesystem::current_path().string());
    gen_set_project_library_paths("rtl");
}

std::string find_file()
{
    return gen_find_file("a.v").filename();
}

std::string find_file_with_cache()
{
    std::string const name = gen_find_file_cache_assisted("a.v").filename();
    gen_destroy_find_file_cache();
    return name;
}

std::string complain_of_file(std::string const &result)
{
    return result.empty() || result == "a.v" || result == NO_MEMORY ? "" : "unexpected file " + result;
}

std::string find_all_files()
{
    FIO_FIND find("rtl");
    std::list<FIO_PATH> found;
    bool const is_found = find.find_all("*", {"v"}, &found, true, true);
    return is_found == !found.empty() ? "agrees" : "differs";
}

std::string scan_files()
{
    FIO_FIND find("rtl/*.v");
    std::string names = find.find_first();
    for (std::string name = find.find_next(); !name.empty(); name = find.find_next())
        names += ' ' + name;
    return names;
}

std::string find_sources()
{
    std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> files;
    return gen_get_source_files("a", &files) == !files.empty() ? "agrees" : "differs";
}

std::string complain_of_difference(std::string const &result)
{
    return result == "differs" ? "the result and the list differ" : "";
}

std::string complain_of_scan(std::string const &result)
{
    return result.empty() || result == "a.v" || result == "b.v" || result == "a.v b.v" || result == NO_MEMORY
               ? ""
               : "unexpected names " + result;
}

std::string ask_file_system()
{
    struct _stat64i32 record;
    bool const is_there = FIO_FILE_SYSTEM::exists("rtl/a.v");
    bool const has_status = FIO_FILE_SYSTEM::status("rtl/a.v", &record);
    bool const is_made = FIO_FILE_SYSTEM::create("made");
    FIO_FILE_SYSTEM::get_current_directory();
    struct _finddata64i32_t data;
    std::intptr_t const handle = FIO_FILE_SYSTEM::findfirst("rtl/*.v", &data);
    if (handle != -1) {
        FIO_FILE_SYSTEM::findnext(handle, &data);
        FIO_FILE_SYSTEM::findclose(handle);
    }
    if (std::FILE *const file = FIO_FILE_SYSTEM::fopen("rtl/a.v", "r"))
        std::fclose(file);
    return is_there || has_status || is_made ? "some" : "none";
}

// The layout of the installation

std::string ask_layout()
{
    gen_get_module_fullpath();
    gen_get_executable_fullpath();
    gen_get_library_fullpath("zel_gen");
    gen_get_kalvern_path();
    gen_get_user_profile_directory();
    gen_find_in_path("sh", false);
    gen_get_all_device_files();
    return gen_get_temp_path().empty() ? "empty" : "set";
}

std::string start_and_end()
{
    char const *arguments[] = {"tool", "design"};
    gen_exe_init(2, arguments);
    gen_exe_fini();
    return gen_get_command_line();
}

// The machine

std::string ask_machine()
{
    int count = 0;
    unsigned size = 0;
    unsigned line = 0;
    int mhz = 0;
    bool const is_known = GEN_MACHINE_INFO::get_logical_cpu_count(&count);
    GEN_MACHINE_INFO::get_physical_cpu_count(&count);
    GEN_MACHINE_INFO::get_cache_size(1, &size, &line, 1);
    GEN_MACHINE_INFO::get_cpu_frequency(&mhz);
    return is_known && count < 1 ? "nothing" : "counted";
}

std::string ask_host()
{
    std::uint64_t bytes = 0;
    std::string text;
    GEN_MACHINE_INFO::get_physical_ram(&bytes);
    GEN_MACHINE_INFO::get_available_ram(&bytes);
    GEN_MACHINE_INFO::get_os_name(&text);
    GEN_MACHINE_INFO::get_os_version(&text);
    gen_get_host_name();
    gen_get_ip_addr("localhost");
    gen_get_user_name();
    gen_is_running_in_container();
    return "asked";
}

// The profile bins

void prepare_reports()
{
    for (char const *const key : {"gen_print_profile_bins", "gen_print_cookie_log"})
        mem_cfg_set(key, "on");
}

std::string run_bins()
{
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    {
        GEN_PROFILER const place("FIT", "Place", GEN_PB_FLAG_IMMEDIATE, "TAG");
        gen_log_cookie("placement", 7);
        GEN_PROFILER const inner("FIT", "Anneal", GEN_PB_FLAG_RECORD);
    }
    GEN_PROFILE_BINS::finalize("fitter", /*close_root=*/true);
    return "finalized";
}

// What the process wrote on its information channel, and what the libraries left in the directory.
std::string complain_of_reports(std::string const &result)
{
    if (result == NO_MEMORY)
        return {};
    std::string const messages = content_of("stdout");
    for (auto const &entry : std::filesystem::directory_iterator(".")) {
        std::string const name = entry.path().filename().string();
        if (name == "stdout" || name == "stderr")
            continue;
        std::string const text = content_of(name);
        bool const is_whole = contains(name, "cookie") ? contains(text, "placement") : contains(text, "Anneal");
        if (!is_whole && !contains(messages, name))
            return "the file " + name + " is not whole, and no message names it";
    }
    return {};
}

void prepare_memory_logs()
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "Place");
}

// The undo file

std::string commit_commands()
{
    GEN_UNDO_REDO_MGR commands;
    commands.start_new_file(*l_directory);
    commands.begin_section("Rename");
    commands.add_undo_command("rename_net b a", "");
    commands.end_section();
    commands.commit_file();
    return "committed";
}

std::string complain_of_commands(std::string const &result)
{
    if (result == NO_MEMORY || contains(content_of("undo_redo.txt"), "rename_net b a"))
        return {};
    return contains(content_of("stdout"), "undo_redo.txt") ? "" : "the file is not whole, and no message names it";
}

// Streams

std::string write_stream()
{
    std::brisel_ofstream out("stream.txt", std::ios::out, GEN_SHARE_ALL);
    out << "line\n";
    out.close();
    return out ? "good" : "failed";
}

std::string complain_of_stream(std::string const &result)
{
    return result == "good" && content_of("stream.txt") != "line\n" ? "the stream is good and the file is not" : "";
}

void prepare_gui_stream()
{
    std::filesystem::create_directory("db");
    gen_set_project_dir_path(std::filesystem::current_path().string());
    gen_set_db_dir_path("db");
}

std::string open_gui_stream()
{
    gen_set_gui_profile_stream();
    std::brisel_ofstream *const stream = gen_get_gui_profile_stream();
    if (stream == nullptr)
        return "none";
    stream->close();
    return "open";
}

// Tracking

std::string track()
{
    mem_enable_tracking(static_cast<MEM_TRACKING_GRANULARITY>(14));
    mem_set_timeline_label("label");
    mem_open_profile_bin("bin", "tag");
    std::string const text(1000, 'x');
    std::size_t open = 0;
    std::size_t close = 0;
    std::size_t peak = 0;
    mem_close_profile_bin("tag", &open, &close, &peak);
    std::ostringstream out;
    mem_dump_tbb_fileline_tracking(out);
    mem_dump_tbb_profile_bin_stats_tracking(out);
    mem_dump_tbb_module_tracking(out, out);
    mem_reset_tracking_entries();
    return peak >= open && peak >= close ? "tracked" : "a peak that is none";
}

std::string complain_of_tracking(std::string const &result)
{
    return result == "tracked" || result == NO_MEMORY ? "" : result;
}

constexpr Operation OPERATIONS[] = {
    {"configuration", [] { write_file("kalvern.ini", "fault_key = 7\n"); }, read_key, complain_of_key},
    {"messages", prepare_nothing, write_messages, complain_of_output},
    {"message_file", prepare_nothing, write_messages_to_file, complain_of_message_file},
    {"private_profile", prepare_profile, write_profile, complain_of_profile},
    {"temp_file", prepare_nothing, create_temp_file, complain_of_creation},
    {"temp_file_with_extension", prepare_nothing, create_temp_file_with_extension, complain_of_creation},
    {"unique_directory", prepare_nothing, create_unique_directory, complain_of_creation},
    {"find_file", prepare_search, find_file, complain_of_file},
    {"find_file_with_cache", prepare_search, find_file_with_cache, complain_of_file},
    {"find_all", prepare_search, find_all_files, complain_of_difference},
    {"scan", prepare_search, scan_files, complain_of_scan},
    {"source_files", prepare_search, find_sources, complain_of_difference},
    {"file_system", prepare_search, ask_file_system, none},
    {"layout", prepare_nothing, ask_layout, none},
    {"start_and_end", prepare_nothing, start_and_end, none},
    {"machine", prepare_nothing, ask_machine, none},
    {"host", prepare_nothing, ask_host, none},
    {"profile_bins", prepare_reports, run_bins, complain_of_reports},
    {"memory_logs", prepare_memory_logs, run_bins, none},
    {"undo_file", prepare_nothing, commit_commands, complain_of_commands},
    {"stream", prepare_nothing, write_stream, complain_of_stream},
    {"gui_stream", prepare_gui_stream, open_gui_stream, none},
    {"tracking", prepare_nothing, track, complain_of_tracking},
};

// Takes every lock of the libraries, on a thread that holds none of its own.
void take_every_lock()
{
    std::thread([] {
        mem_cfg_set("fault_probe", "1");
        mem_cfg_get_int_value("fault_probe", 0);
        mem_msg_redirect([](MEM_MSG_KIND, char const *, char const *, void *) {}, nullptr);
        mem_msg_local_vinfo("GEN", "probe", nullptr);
        gen_log_cookie("probe", 1);
        int count = 0;
        GEN_MACHINE_INFO::get_logical_cpu_count(&count);
        write_file("probe.ini", "");
        gen_writeprivateprofilestring("a", "b", "c", "probe.ini");
        mem_enable_tracking(MEM_TRACKING_STATISTICS);
        mem_open_profile_bin("probe", "");
        std::size_t figures[3];
        mem_close_profile_bin("", &figures[0], &figures[1], &figures[2]);
        std::ostringstream out;
        mem_dump_tbb_profile_bin_stats_tracking(out);
        mem_dump_tbb_subsystem_tracking(out);
    }).join();
}

void redirect(int descriptor, char const *name)
{
    int const file = open(name, O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(file, descriptor);
    close(file);
}

// One run in the current process and directory. Returns what is wrong.
std::string complaint_of_run(Operation const &operation, int number, int error, int &calls)
{
    redirect(STDOUT_FILENO, "stdout");
    redirect(STDERR_FILENO, "stderr");
    operation.prepare();
    std::size_t const descriptors = count_descriptors();
    std::string result;
    result.reserve(200);
    fault_layer_begin(number, error);
    try {
        result = operation.run();
    } catch (std::bad_alloc const &) {
        result = NO_MEMORY;
    }
    calls = fault_layer_end();
    std::string complaint = operation.complaint(result);
    if (complaint.empty() && count_descriptors() > descriptors)
        complaint = "a descriptor is lost";
    take_every_lock();
    return complaint;
}

// What a run gave that had a process of its own.
struct Outcome
{
    int calls = 0;
    std::vector<FaultKind const *> kinds; // of the calls
    std::string complaint;
};

// In the child. The kinds are static objects, so that their addresses hold in the parent too.
[[noreturn]] void run_child(Operation const &operation, int number, int error, std::string const &directory, int pipe)
{
    alarm(LONGEST_RUN);
    std::filesystem::current_path(directory);
    l_directory = &directory;
    Outcome run;
    run.complaint = complaint_of_run(operation, number, error, run.calls);
    FILE *const out = fdopen(pipe, "wb");
    std::fwrite(&run.calls, sizeof run.calls, 1, out);
    for (int i = 0; number < 0 && i < std::min(run.calls, FAULT_MOST_CALLS); ++i) {
        FaultKind const *const kind = fault_layer_kind(i);
        std::fwrite(&kind, sizeof kind, 1, out);
    }
    std::fwrite(run.complaint.data(), 1, run.complaint.size(), out);
    std::fclose(out);
    _exit(0);
}

Outcome parsed(std::string const &bytes, bool has_kinds)
{
    Outcome run;
    if (bytes.size() < sizeof run.calls)
        return run;
    std::memcpy(&run.calls, bytes.data(), sizeof run.calls);
    std::size_t at = sizeof run.calls;
    if (has_kinds) {
        run.kinds.resize(static_cast<std::size_t>(std::min(run.calls, FAULT_MOST_CALLS)));
        std::memcpy(run.kinds.data(), bytes.data() + at, run.kinds.size() * sizeof run.kinds[0]);
        at += run.kinds.size() * sizeof run.kinds[0];
    }
    run.complaint = bytes.substr(at);
    return run;
}

std::string read_to_end(int descriptor)
{
    std::string bytes;
    char block[4096];
    for (ssize_t count; (count = read(descriptor, block, sizeof block)) > 0;)
        bytes.append(block, static_cast<std::size_t>(count));
    return bytes;
}

Outcome run_in_child(Operation const &operation, int number, int error)
{
    TempDir const directory;
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    pid_t const child = fork();
    if (child == 0) {
        close(ends[0]);
        run_child(operation, number, error, directory.text(), ends[1]);
    }
    close(ends[1]);
    std::string const bytes = read_to_end(ends[0]);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status))
        return {0, {}, "ended by signal " + std::to_string(WTERMSIG(status)) + ": " + directory.read("stderr")};
    if (WEXITSTATUS(status) != 0)
        return {0, {}, "ended with status " + std::to_string(WEXITSTATUS(status)) + ": " + directory.read("stderr")};
    return parsed(bytes, number < 0);
}

struct Fault
{
    int number;
    FaultKind const *kind;
    int error;
};

std::vector<Fault> faults_of(std::vector<FaultKind const *> const &kinds)
{
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < kinds.size(); ++i)
        for (int const *error = kinds[i]->errors; *error != 0; ++error)
            faults.push_back({static_cast<int>(i), kinds[i], *error});
    return faults;
}

std::string text_of(Fault const &fault)
{
    return "call " + std::to_string(fault.number) + " (" + fault.kind->function +
           "): " + (fault.error == FAULT_SHORT ? "a part" : std::strerror(fault.error));
}

class Faults : public testing::TestWithParam<Operation>
{
};

TEST_P(Faults, LeaveTheProcessWhole)
{
    Operation const &operation = GetParam();
    Outcome const whole = run_in_child(operation, -1, 0);
    ASSERT_EQ(whole.complaint, "");
    ASSERT_FALSE(whole.kinds.empty());

    std::vector<Fault> const faults = faults_of(whole.kinds);
    std::size_t const step = faults.size() / MOST_RUNS + 1;
    RecordProperty("faults", static_cast<int>(faults.size()));
    for (std::size_t i = 0; i < faults.size(); i += step)
        EXPECT_EQ(run_in_child(operation, faults[i].number, faults[i].error).complaint, "") << text_of(faults[i]);
}

INSTANTIATE_TEST_SUITE_P(Operations, Faults, testing::ValuesIn(OPERATIONS),
                         [](testing::TestParamInfo<Operation> const &each) { return std::string(each.param.name); });

} // namespace
