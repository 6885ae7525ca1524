// Each call of the system that an operation of the libraries makes fails once, in each of several ways, and each
// allocation too. Whatever fails: the operation has one of its documented results, the files are whole, no descriptor
// is lost, no lock stays held, and the process goes on.
//
// Each fault has a process of its own, which is forked and runs the operation in an empty directory.
#include "err_sys.h"
#include "gen_cookie_sys.h"
#include "gen_dyn_flag_sys.h"
#include "gen_exe_sys.h"
#include "gen_fstream_sys.h"
#include "gen_machine_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"
#include "gen_string_sys.h"
#include "gen_time_sys.h"
#include "gen_tracq_sys.h"
#include "gen_undo_redo_sys.h"
#include "mem_sys.h"
#include "thr_sys.h"

#include "tests/faults/fault_layer.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/temp_dir.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <new>
#include <set>
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

// The calls of one function that are made to fail in one operation at most. Of more, every second, third ... is made to
// fail.
constexpr std::size_t MOST_CALLS = 200;

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

// Whether the call that failed was one of a function; has_failed("") is whether none failed.
bool has_failed(char const *function)
{
    return std::strcmp(fault_layer_failed(), function) == 0;
}

// The files and directories of the run, without its outputs.
std::set<std::string> made_names()
{
    std::set<std::string> names = entry_names(".");
    names.erase("stdout");
    names.erase("stderr");
    return names;
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
    // The result without a fault; null if it differs from run to run.
    char const *success;
    // The exit status, if the operation ends the process.
    int status = 0;
    // Descriptors that it keeps open for later calls.
    std::size_t kept_descriptors = 0;
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

// The default comes with a warning that names the file.
std::string complain_of_key_of(std::string const &result, char const *file)
{
    if (result == "7" || result == NO_MEMORY)
        return {};
    if (result != "-1")
        return "unexpected value " + result;
    return contains(content_of("stderr"), file) ? "" : "the default was returned without a warning";
}

void prepare_key()
{
    write_file("kalvern.ini", "fault_key = 7\n");
}

std::string complain_of_key(std::string const &result)
{
    return complain_of_key_of(result, "kalvern.ini");
}

void prepare_named_key()
{
    write_file("named.ini", "fault_key = 7\n");
    setenv("KALVERN_INI", "named.ini", 1);
}

std::string complain_of_named_key(std::string const &result)
{
    return complain_of_key_of(result, "named.ini");
}

void prepare_key_of_root()
{
    std::filesystem::create_directory("root");
    write_file("root/kalvern.ini", "fault_key = 7\n");
    mem_set_gen_get_kalvern_path_callback([] { return std::string("root"); });
}

std::string complain_of_key_of_root(std::string const &result)
{
    return complain_of_key_of(result, "root/kalvern.ini");
}

// Messages

std::string write_messages()
{
    bool is_whole = true;
    for (char const *const text : {"first", "second", "third"})
        is_whole = mem_msg_local_vinfo("GEN", text, nullptr) && is_whole;
    return is_whole ? "true" : "false";
}

// The lines in the file are those that were emitted. One fault loses one of them at most, and the next line says so;
// each begins on a line of its own, and is whole or the part before its loss.
std::string complain_of_lines(std::string const &head, std::string const &result, std::string const &text)
{
    if (!text.empty() && text.back() != '\n')
        return "a line without its end: " + text;
    std::vector<std::string> lost;
    std::string rest = '\n' + text;
    for (char const *const name : {"first", "second", "third"}) {
        std::string const line = '\n' + head + name + '\n';
        std::size_t const at = rest.find(line);
        if (at == std::string::npos)
            lost.emplace_back(name);
        else
            rest.erase(at, line.size() - 1);
    }
    if (lost.size() > 1)
        return "one fault lost more than one line: " + text;
    if ((result == "true") != lost.empty())
        return "the result is " + result + ", but the output is " + text;
    bool const is_reported = contains(rest, "Warning: 1 message was lost here: ");
    if (is_reported != (!lost.empty() && lost[0] != "third"))
        return "a loss is not reported by the next line: " + text;
    // A failed flush may have cut a line of the stream.
    bool const may_have_rest = is_reported || has_failed("fflush") || !lost.empty();
    return may_have_rest || rest == "\n" ? "" : "a strange line: " + rest;
}

std::string complain_of_output(std::string const &result)
{
    return result == NO_MEMORY ? "" : complain_of_lines("Info (GEN): ", result, content_of("stdout"));
}

void prepare_debug_messages()
{
    mem_cfg_set("mem_show_debug_messages", "on");
}

std::string write_debug_messages()
{
    bool is_whole = true;
    for (char const *const text : {"first", "second", "third"})
        is_whole = mem_msg_local_vdebug("GEN", text, nullptr) && is_whole;
    return is_whole ? "true" : "false";
}

std::string complain_of_debug_output(std::string const &result)
{
    return result == NO_MEMORY ? "" : complain_of_lines("Debug (GEN): ", result, content_of("stderr"));
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
    if (result == NO_MEMORY)
        return {};
    if (result != "not opened")
        return complain_of_lines("Info (GEN): ", result, content_of("messages.txt"));
    return has_failed("fopen") || has_failed("malloc") ? "" : "the file was not opened";
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
    // The file that gets the new text is removed, unless that fails.
    bool const is_clean = made_names() == std::set<std::string>{"p.ini"};
    return is_clean || has_failed("unlink") ? "" : "a file is left";
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
    if (result.empty())
        return has_failed("") ? "nothing was created" : "";
    bool const is_right = result == NO_MEMORY || std::filesystem::exists(result);
    return is_right ? "" : "a name was returned, and there is no such file: " + result;
}

// The same, if an operation makes one file: it is left without a name only if there was no memory for the name.
std::string complain_of_one_creation(std::string const &result)
{
    std::size_t const expected = result.empty() ? 0 : 1;
    if (made_names().size() > expected)
        return "a file is left";
    return complain_of_creation(result);
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

std::string find_include_file()
{
    std::string full;
    std::string relative;
    bool const is_found = gen_find_include_file("b.v", "rtl/a.v", "rtl/a.v", &full, &relative);
    return is_found == !full.empty() ? FIO_PATH(full).filename() : "differs";
}

std::string complain_of_include_file(std::string const &result)
{
    return result.empty() || result == "b.v" || result == NO_MEMORY ? "" : "unexpected file " + result;
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
    return is_there && has_status && is_made && handle != -1 ? "all" : "some";
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
    std::string const directory = *l_directory;
    gen_generate_pdb_filename("a", "b", &directory);
    FIO_PATH("a").become_absolute("");
    bool const has_path = !fio_get_unc_full_path("a").empty();
    return has_path && !gen_get_temp_path().empty() ? "set" : "empty";
}

void prepare_environment()
{
    setenv("PATH", "/former", 1);
}

std::string start_and_end()
{
    char const *arguments[] = {"tool", "design"};
    gen_exe_init(2, arguments);
    gen_exe_fini();
    return gen_get_module_path();
}

std::string complain_of_environment(std::string const &result)
{
    if (result == NO_MEMORY || has_failed("setenv"))
        return {};
    char const *const root = std::getenv("KALVERN_ROOTDIR");
    char const *const bin = std::getenv("KALVERN_BINDIR");
    if (root == nullptr || bin == nullptr || bin != result)
        return "the directories are not in the environment";
    std::string const path = std::getenv("PATH");
    bool const is_extended = path.size() > 8 && path.compare(path.size() - 8, 8, ":/former") == 0;
    return is_extended ? "" : "unexpected PATH " + path;
}

void prepare_reservation()
{
    mem_cfg_set("reserve_4gb_of_virtual_memory", "on");
}

std::string reserve()
{
    gen_exe_init(0, nullptr);
    std::fflush(stdout);
    return "reserved";
}

std::string complain_of_reservation(std::string const &result)
{
    if (result == NO_MEMORY || has_failed("fflush"))
        return {};
    bool const is_right = contains(content_of("stdout"), has_failed("mmap") ? "FAILED!" : "SUCCESS!");
    return is_right || has_failed("malloc") ? "" : "unexpected output: " + content_of("stdout");
}

std::string set_variable()
{
    thr_setenv("FAULT_VARIABLE", "value");
    char const *const value = std::getenv("FAULT_VARIABLE");
    return value == nullptr ? "unset" : value;
}

std::string complain_of_variable(std::string const &result)
{
    return result == "value" || (result == "unset" && has_failed("setenv")) ? "" : "the variable is " + result;
}

// Libraries, threads, source positions

// The name of the library's file, which the loader found by a link with a shorter name.
std::string l_library_name;

void prepare_libraries()
{
    l_library_name = FIO_PATH(gen_get_library_fullpath("zel_gen")).filename();
}

std::string ask_libraries()
{
    return thr_drl_is_loaded(l_library_name.c_str()) && !thr_drl_is_loaded("libnone.so") ? "loaded" : "differs";
}

std::string complain_of_libraries(std::string const &result)
{
    return result == "loaded" || has_failed("realpath") ? "" : "a loaded library is not found, or one that isn't is";
}

std::string make_mutex()
{
    THR_MUTEX_OBJ mutex = thr_mutex_create();
    std::string const result = mutex == nullptr ? "null" : "made";
    {
        THR_SCOPED_MUTEX const lock(mutex);
    }
    thr_mutex_destroy(mutex);
    thr_sleep(/*milliseconds=*/1);
    return result;
}

std::string complain_of_mutex(std::string const &result)
{
    return result == "made" || has_failed("malloc") ? "" : "no mutex was made";
}

// No debugger is attached.
std::string break_into_debugger()
{
    thr_debug_break();
    return "continued";
}

std::string describe_calls()
{
    void const *const addresses[] = {__builtin_return_address(0), reinterpret_cast<void const *>(&thr_sleep)};
    std::vector<ERR_PLACE> const places = err_describe_calls(addresses, 2);
    bool const has_objects = places.size() == 2 && !places[0].object.empty() && places[1].object != places[0].object;
    return has_objects ? places[0].lines.empty() ? "objects" : "lines" : "no objects";
}

std::string complain_of_calls(std::string const &result)
{
    return result != "no objects" ? "" : "calls have no object";
}

// The internal error

std::string report_error()
{
    err_report_internal_error("fault_probe", "TEST", "faults.cpp", 77);
}

// If a write fails, its part of the block is lost and the rest may be.
std::string complain_of_block(std::string const & /*result*/)
{
    std::string const text = content_of("stderr");
    std::string const head = "Internal error: fault_probe\n  Library: TEST\n  Source:  faults.cpp, line 77\n";
    bool const is_whole = contains(text, head) && contains(text, "  Module:  ") && contains(text, "  Stack:\n    #0 ");
    return is_whole || has_failed("write") ? "" : "the block is not whole: " + text;
}

// The machine

std::string ask_machine()
{
    int count = 0;
    unsigned size = 0;
    unsigned line = 0;
    int mhz = 0;
    GEN_MACHINE_INFO::recapture_cpu_info();
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

// Clocks and memory

std::string ask_clocks()
{
    std::uint64_t user = 77;
    std::uint64_t kernel = 77;
    gen_get_usec_user_and_kernel(&user, &kernel);
    gen_get_usec_cpu();
    gen_get_usec_wallclock();
    gen_get_hires_tick_frequency();
    std::string const date = gen_get_date_and_time(0);
    std::string text;
    bool const is_formatted = gen_format_date_and_time(0, &text, "%Y");
    return date.empty() || !is_formatted ? "no date" : "a date";
}

std::string complain_of_clocks(std::string const &result)
{
    return result != "no date" || has_failed("localtime_r") ? "" : "a date is missing";
}

std::string ask_memory()
{
    std::size_t const now = mem_info_get_process_current_working_set_size();
    std::size_t const peak = mem_info_get_process_peak_working_set_size();
    std::size_t const virtual_peak = mem_info_get_process_peak_virtual_used();
    MEM_MANAGER::current_total_memory();
    return now != 0 && peak != 0 && virtual_peak != 0 ? "figures" : "0";
}

void prepare_library_report()
{
    for (char const *const key :
         {"profile_dll_usage", "list_dll_details", "report_modules_flow", "mem_show_debug_messages"})
        mem_cfg_set(key, "on");
}

std::string report_libraries()
{
    gen_meminfo_report_dll_usage("tool", nullptr);
    return "reported";
}

// One fault loses one of the lines at most.
std::string complain_of_library_report(std::string const &result)
{
    std::string const text = content_of("stderr");
    bool const has_libraries = contains(text, "DLL usage") || contains(text, "No *.dll files found!");
    bool const has_memory = contains(text, "memory usage(bytes)");
    if (result == NO_MEMORY || (has_libraries && has_memory))
        return {};
    return (has_libraries || has_memory) && has_failed("write") ? "" : "lines are missing: " + text;
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
    for (std::string const &name : made_names()) {
        std::string const text = content_of(name);
        bool const is_whole = contains(name, "cookie") ? contains(text, "placement") : contains(text, "Anneal");
        // A cookie file that can't be opened is skipped silently.
        bool const is_skipped = contains(name, "cookie") && text.empty() && has_failed("fopen64");
        if (!is_whole && !is_skipped && !contains(messages, name))
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
    // If the file can't be opened, no error is reported.
    bool const is_opened = made_names().count("undo_redo.txt") != 0;
    if (!is_opened && has_failed("fopen64"))
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

std::string read_stream()
{
    std::brisel_ifstream in("stream.txt", std::ios::in, GEN_SHARE_ALL);
    std::string text;
    for (std::string line; gen_getline(&in, &line, '\n');)
        text += line + '|';
    return in.bad() ? "failed" : text;
}

std::string complain_of_read(std::string const &result)
{
    bool const is_known_loss = has_failed("fopen64") || has_failed("read") || has_failed("malloc");
    return result == "first|second||" || is_known_loss ? "" : "unexpected text " + result;
}

// The self-test of the flags

class NoObjects final : public GEN_DYN_FLAG_CLEARER
{
public:
    void clear_flags(GEN_DYN_FLAG const & /*flag*/) override {}
};

std::string test_flags()
{
    NoObjects clearer;
    GEN_DYN_FLAG_MANAGER manager(&clearer);
    GEN_DYN_FLAG::test_myself_out(&manager);
    int used = 0;
    int dirty = 0;
    int clean = 0;
    manager.get_usage_stats(&used, &dirty, &clean);
    return std::to_string(used) + " flags";
}

// Whether the file can be written has no effect on the flags.
std::string complain_of_flags(std::string const &result)
{
    if (result == NO_MEMORY)
        return {};
    if (result != "0 flags")
        return "the flags of the test are left: " + result;
    bool const is_written = contains(content_of("gen_dyn_flag_test.txt"), "f1 | f5");
    return is_written || !has_failed("") ? "" : "the file is not written";
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
    {"configuration", prepare_key, read_key, complain_of_key, "7"},
    {"configuration_named", prepare_named_key, read_key, complain_of_named_key, "7"},
    {"configuration_of_installation", prepare_key_of_root, read_key, complain_of_key_of_root, "7"},
    {"messages", prepare_nothing, write_messages, complain_of_output, "true"},
    {"debug_messages", prepare_debug_messages, write_debug_messages, complain_of_debug_output, "true"},
    {"message_file", prepare_nothing, write_messages_to_file, complain_of_message_file, "true"},
    {"private_profile", prepare_profile, write_profile, complain_of_profile, "1"},
    {"temp_file", prepare_nothing, create_temp_file, complain_of_one_creation, nullptr},
    {"temp_file_with_extension", prepare_nothing, create_temp_file_with_extension, complain_of_creation, nullptr},
    {"unique_directory", prepare_nothing, create_unique_directory, complain_of_one_creation, nullptr},
    {"find_file", prepare_search, find_file, complain_of_file, "a.v"},
    {"find_file_with_cache", prepare_search, find_file_with_cache, complain_of_file, "a.v"},
    {"find_include_file", prepare_search, find_include_file, complain_of_include_file, "b.v"},
    {"find_all", prepare_search, find_all_files, complain_of_difference, "agrees"},
    {"scan", prepare_search, scan_files, complain_of_scan, "a.v b.v"},
    {"source_files", prepare_search, find_sources, complain_of_difference, "agrees"},
    {"file_system", prepare_search, ask_file_system, none, "all"},
    {"layout", prepare_nothing, ask_layout, none, "set"},
    {"start_and_end", prepare_environment, start_and_end, complain_of_environment, nullptr},
    {"reservation", prepare_reservation, reserve, complain_of_reservation, "reserved"},
    {"variable", prepare_nothing, set_variable, complain_of_variable, "value"},
    {"libraries", prepare_libraries, ask_libraries, complain_of_libraries, "loaded"},
    {"mutex", prepare_nothing, make_mutex, complain_of_mutex, "made"},
    {"debugger", prepare_nothing, break_into_debugger, none, "continued"},
    {"calls", prepare_nothing, describe_calls, complain_of_calls, "lines"},
    {"internal_error", prepare_nothing, report_error, complain_of_block, nullptr, /*status=*/3},
    {"machine", prepare_nothing, ask_machine, none, "counted"},
    {"host", prepare_nothing, ask_host, none, "asked"},
    {"clocks", prepare_nothing, ask_clocks, complain_of_clocks, "a date"},
    {"memory", prepare_nothing, ask_memory, none, "figures", /*status=*/0, /*kept_descriptors=*/1},
    {"library_report", prepare_library_report, report_libraries, complain_of_library_report, "reported", /*status=*/0,
     /*kept_descriptors=*/1},
    {"profile_bins", prepare_reports, run_bins, complain_of_reports, "finalized"},
    {"memory_logs", prepare_memory_logs, run_bins, none, "finalized"},
    {"undo_file", prepare_nothing, commit_commands, complain_of_commands, "committed"},
    {"stream", prepare_nothing, write_stream, complain_of_stream, "good"},
    {"input_stream", [] { write_file("stream.txt", "first\nsecond\n"); }, read_stream, complain_of_read,
     "first|second||"},
    {"gui_stream", prepare_gui_stream, open_gui_stream, none, "open"},
    {"flags", prepare_nothing, test_flags, complain_of_flags, "0 flags"},
    {"tracking", prepare_nothing, track, complain_of_tracking, "tracked"},
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

// What a run gave that had a process of its own.
struct Outcome
{
    int calls = 0;
    std::vector<FaultKind const *> kinds; // of the calls
    std::string complaint;
};

// The run of this process, which its last lines or its exit handler report.
struct Run
{
    Operation const *operation;
    bool has_kinds;
    int pipe;
    std::size_t descriptors; // before the operation
};
Run l_run;

// Returns what is wrong after the operation. No further call fails.
std::string complaint_of_run(std::string const &result)
{
    Operation const &operation = *l_run.operation;
    if (has_failed("") && operation.success != nullptr && result != operation.success)
        return "the result without a fault is " + result;
    std::string const complaint = operation.complaint(result);
    if (complaint.empty() && open_descriptor_count() > l_run.descriptors + operation.kept_descriptors)
        return "a descriptor is lost";
    return complaint;
}

// Writes the outcome into the pipe. The kinds are static objects, so that their addresses hold in the parent too.
void report_run(std::string const &result)
{
    int const calls = fault_layer_end();
    std::string const complaint = complaint_of_run(result);
    FILE *const out = fdopen(l_run.pipe, "wb");
    std::fwrite(&calls, sizeof calls, 1, out);
    for (int i = 0; l_run.has_kinds && i < std::min(calls, FAULT_MOST_CALLS); ++i) {
        FaultKind const *const kind = fault_layer_kind(i);
        std::fwrite(&kind, sizeof kind, 1, out);
    }
    std::fwrite(complaint.data(), 1, complaint.size(), out);
    std::fclose(out);
}

// For an operation that ends the process.
void report_run_at_exit()
{
    report_run({});
}

std::string result_of(Operation const &operation)
{
    try {
        return operation.run();
    } catch (std::bad_alloc const &) {
        return NO_MEMORY;
    }
}

// In the child. The locks are taken last, since a lock that is held ends the process by the alarm.
[[noreturn]] void run_child(Operation const &operation, int number, int error, std::string const &directory, int pipe)
{
    alarm(LONGEST_RUN);
    std::filesystem::current_path(directory);
    l_directory = &directory;
    redirect(STDOUT_FILENO, "stdout");
    redirect(STDERR_FILENO, "stderr");
    operation.prepare();
    l_run = {&operation, /*has_kinds=*/number < 0, pipe, open_descriptor_count()};
    if (operation.status != 0)
        std::atexit(report_run_at_exit);
    fault_layer_begin(number, error);
    std::string const result = result_of(operation);
    report_run(result);
    take_every_lock();
    _exit(0);
}

Outcome parsed(std::string const &bytes, bool has_kinds)
{
    Outcome run;
    if (bytes.size() < sizeof run.calls)
        return {0, {}, "the process ended without a report"};
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
    if (WEXITSTATUS(status) != operation.status)
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
    std::map<std::string, std::size_t> counts;
    for (FaultKind const *const kind : kinds)
        ++counts[kind->function];
    std::map<std::string, std::size_t> seen;
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        std::size_t const step = counts[kinds[i]->function] / MOST_CALLS + 1;
        if (seen[kinds[i]->function]++ % step != 0)
            continue;
        for (int const *error = kinds[i]->errors; *error != 0; ++error)
            faults.push_back({static_cast<int>(i), kinds[i], *error});
    }
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
    RecordProperty("calls", static_cast<int>(whole.kinds.size()));
    RecordProperty("faults", static_cast<int>(faults.size()));
    for (Fault const &fault : faults)
        EXPECT_EQ(run_in_child(operation, fault.number, fault.error).complaint, "") << text_of(fault);
}

INSTANTIATE_TEST_SUITE_P(Operations, Faults, testing::ValuesIn(OPERATIONS),
                         [](testing::TestParamInfo<Operation> const &each) { return std::string(each.param.name); });

} // namespace
