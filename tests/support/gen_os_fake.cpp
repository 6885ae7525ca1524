#include "tests/support/gen_os_fake.h"

#include "gen/os/gen_os.h"
#include "gen/os/gen_os_ini.h"
#include "tests/support/platform.h"

#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Script
{
    std::uint64_t cpu_units = 0; // of 100 ns
    std::uint64_t ticks = 0;
    std::uint64_t cpu_step = 0;
    std::uint64_t tick_step = 0;
    std::uint64_t reading_count = 0;
    std::uint64_t frequency = 10000000;
    GEN_OS_FAKE_ANSWERS answers;
    std::uint64_t job_user = 0;
    std::uint64_t job_kernel = 0;
    std::uint64_t process_user = 0;
    std::uint64_t process_kernel = 0;
    std::uint64_t split_reading_count = 0;
    std::int64_t calendar_msec = 0;
    std::string executable_path = "/fake/bin/tool";
    std::string library_path;
    bool case_matters = true;
    std::size_t reservation_limit = std::numeric_limits<std::size_t>::max();
    std::size_t reservation_count = 0;
    GEN_OS_FAKE_PROFILE_CALL profile_call;
    int profile_result = 0;
    std::string file_text;
    std::string file_calls;
    std::string debug_output;
    std::istringstream temp_file_names;
    std::string temp_file_requests;
    std::string temp_directory;
};

// Made at the first use and kept, since the library asks before and after every static object of a test.
Script &script()
{
    static Script *const the_script = new Script;
    return *the_script;
}

bool answer_path(std::string const &scripted, std::string &path)
{
    if (scripted.empty())
        return false;
    path = scripted;
    return true;
}

} // namespace

void gen_os_fake_set_clocks(std::uint64_t cpu_usec, std::uint64_t ticks)
{
    script().cpu_units = cpu_usec * 10;
    script().ticks = ticks;
}

void gen_os_fake_set_clock_steps(std::uint64_t cpu_usec, std::uint64_t ticks)
{
    script().cpu_step = cpu_usec * 10;
    script().tick_step = ticks;
}

void gen_os_fake_advance(std::int64_t cpu_usec, std::int64_t ticks)
{
    script().cpu_units += static_cast<std::uint64_t>(cpu_usec * 10);
    script().ticks += static_cast<std::uint64_t>(ticks);
}

std::uint64_t gen_os_fake_reading_count()
{
    return script().reading_count;
}
void gen_os_fake_set_frequency(std::uint64_t ticks_per_second)
{
    script().frequency = ticks_per_second;
}
void gen_os_fake_set_answers(GEN_OS_FAKE_ANSWERS const &answers)
{
    script().answers = answers;
}

void gen_os_fake_set_job_cpu(std::uint64_t user, std::uint64_t kernel)
{
    script().job_user = user;
    script().job_kernel = kernel;
}

void gen_os_fake_set_process_cpu(std::uint64_t user, std::uint64_t kernel)
{
    script().process_user = user;
    script().process_kernel = kernel;
}
std::uint64_t gen_os_fake_split_reading_count()
{
    return script().split_reading_count;
}

void gen_os_fake_set_calendar_msec(std::int64_t msec)
{
    script().calendar_msec = msec;
}
void gen_os_fake_set_executable_path(char const *path)
{
    script().executable_path = path;
}
void gen_os_fake_set_library_path(char const *path)
{
    script().library_path = path;
}
void gen_os_fake_set_case_matters(bool case_matters)
{
    script().case_matters = case_matters;
}
void gen_os_fake_set_reservation_limit(std::size_t count)
{
    script().reservation_limit = count;
}
void gen_os_fake_set_temp_file_names(char const *names)
{
    script().temp_file_names.clear();
    script().temp_file_names.str(names);
    script().temp_file_requests.clear();
}
char const *gen_os_fake_temp_file_requests()
{
    return script().temp_file_requests.c_str();
}
void gen_os_fake_set_temp_directory(char const *path)
{
    script().temp_directory = path;
}
std::size_t gen_os_fake_reservation_count()
{
    return script().reservation_count;
}
GEN_OS_FAKE_PROFILE_CALL gen_os_fake_last_profile_call()
{
    return script().profile_call;
}

void gen_os_fake_set_profile_result(int result)
{
    script().profile_result = result;
}
void gen_os_fake_set_file_text(char const *text)
{
    script().file_text = text;
    script().file_calls.clear();
}
char const *gen_os_fake_file_text()
{
    return script().file_text.c_str();
}
char const *gen_os_fake_file_calls()
{
    return script().file_calls.c_str();
}

char const *gen_os_fake_debug_output()
{
    return script().debug_output.c_str();
}

bool gen_os_read_counter(std::uint64_t &ticks)
{
    Script &s = script();
    ++s.reading_count;
    if (!s.answers.counter)
        return false;
    ticks = s.ticks;
    s.ticks += s.tick_step;
    return true;
}

bool gen_os_read_counter_frequency(std::uint64_t &ticks_per_second)
{
    if (!script().answers.frequency)
        return false;
    ticks_per_second = script().frequency;
    return true;
}

bool gen_os_read_job_cpu(std::uint64_t &user, std::uint64_t &kernel)
{
    if (!script().answers.job_cpu)
        return false;
    user = script().job_user;
    kernel = script().job_kernel;
    return true;
}

bool gen_os_read_process_cpu(std::uint64_t &user, std::uint64_t &kernel)
{
    ++script().split_reading_count;
    if (!script().answers.process_cpu)
        return false;
    user = script().process_user;
    kernel = script().process_kernel;
    return true;
}

bool gen_os_read_process_cpu_sum(std::uint64_t &sum)
{
    Script &s = script();
    ++s.reading_count;
    if (!s.answers.process_cpu_sum)
        return false;
    sum = s.cpu_units;
    s.cpu_units += s.cpu_step;
    return true;
}

bool gen_os_read_cpu_sum_and_counter(std::uint64_t &sum, std::uint64_t &ticks)
{
    GEN_OS_FAKE_ANSWERS const &answers = script().answers;
    if (!answers.cpu_sum_and_counter || answers.job_cpu || !answers.process_cpu_sum || !answers.counter)
        return false;
    return gen_os_read_process_cpu_sum(sum) && gen_os_read_counter(ticks);
}

std::int64_t gen_os_read_calendar_msec()
{
    return script().calendar_msec;
}

bool gen_os_local_time(std::int64_t seconds, std::tm &local)
{
    if (!script().answers.local_time)
        return false;
    std::time_t const time = seconds;
    std::tm const *const utc = std::gmtime(&time);
    if (utc == nullptr)
        return false;
    local = *utc;
    return true;
}

bool gen_os_read_executable_path(std::string &path)
{
    return script().answers.executable_path && answer_path(script().executable_path, path);
}

bool gen_os_read_library_path(char const *, std::string &path)
{
    return answer_path(script().library_path, path);
}
bool gen_os_case_matters_in_paths()
{
    return script().case_matters;
}
char gen_os_path_list_separator()
{
    return ':';
}
char const *gen_os_library_pattern()
{
    return ON_WINDOWS ? "*.dll" : "*.so*";
}
bool gen_os_library_links_count()
{
    return false;
}

bool gen_os_open_stream(std::filebuf &buffer, char const *path, std::ios_base::openmode mode, int)
{
    return buffer.open(path, mode) != nullptr;
}

// Of the real file system, like the streams.
bool gen_os_create_file(char const *path)
{
    int const file = open(path, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    return file >= 0 && close(file) == 0;
}

bool gen_os_write_private_profile_string(char const *section, char const *key, char const *value, char const *file,
                                         int lock_msec, int &result)
{
    script().profile_call = {section, key, value, file, lock_msec};
    if (!script().answers.private_profile_string)
        return false;
    result = script().profile_result;
    return true;
}

bool gen_os_change_file(char const *path, int lock_msec, std::function<bool(std::string &text)> const &change)
{
    Script &s = script();
    s.file_calls += "change " + std::string(path) + " within " + std::to_string(lock_msec) + '\n';
    std::string text = s.file_text;
    if (!s.answers.change_file || !change(text))
        return false;
    s.file_text = text;
    return true;
}

bool gen_os_create_temp_file(char const *directory, char const *prefix, std::string &path)
{
    Script &s = script();
    s.temp_file_requests += std::string(directory) + '|' + prefix + '\n';
    std::string name;
    if (!std::getline(s.temp_file_names, name) || name.empty())
        return false;
    path = std::string(directory) + '/' + name;
    return std::ofstream(path).is_open();
}

// The runtime's own, which tests seed.
int gen_os_random_number()
{
    return std::rand(); // NOLINT(cert-msc30-c,cert-msc50-cpp)
}

bool gen_os_read_temp_directory(std::string &path)
{
    return answer_path(script().temp_directory, path);
}

bool gen_os_reserve_address_space(std::size_t)
{
    Script &s = script();
    return s.reservation_count++ < s.reservation_limit;
}

void gen_os_debug_output(char const *text)
{
    script().debug_output += text;
}
