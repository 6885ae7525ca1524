// An operating-system layer whose clocks never advance and cost nothing.
#include "gen/os/gen_os.h"
#include "gen/os/gen_os_ini.h"

bool gen_os_read_counter(std::uint64_t &ticks)
{
    ticks = 1;
    return true;
}

bool gen_os_read_counter_frequency(std::uint64_t &ticks_per_second)
{
    ticks_per_second = 10000000;
    return true;
}

bool gen_os_read_process_cpu_sum(std::uint64_t &sum)
{
    sum = 1;
    return true;
}

bool gen_os_read_cpu_sum_and_counter(std::uint64_t &sum, std::uint64_t &ticks)
{
    sum = 1;
    ticks = 1;
    return true;
}

bool gen_os_read_job_cpu(std::uint64_t &, std::uint64_t &)
{
    return false;
}
bool gen_os_read_process_cpu(std::uint64_t &, std::uint64_t &)
{
    return false;
}
std::int64_t gen_os_read_calendar_msec()
{
    return 0;
}
bool gen_os_local_time(std::int64_t, std::tm &)
{
    return false;
}
bool gen_os_read_executable_path(std::string &)
{
    return false;
}
bool gen_os_read_library_path(char const *, std::string &)
{
    return false;
}
bool gen_os_case_matters_in_paths()
{
    return true;
}
char gen_os_path_list_separator()
{
    return ':';
}
char const *gen_os_library_pattern()
{
    return "*.so*";
}
bool gen_os_library_links_count()
{
    return false;
}
bool gen_os_reserve_address_space(std::size_t)
{
    return false;
}
void gen_os_debug_output(char const *) {}
bool gen_os_write_private_profile_string(char const *, char const *, char const *, char const *, int, int &)
{
    return false;
}
bool gen_os_change_file(char const *, int, std::function<bool(std::string &text)> const &)
{
    return false;
}
bool gen_os_create_temp_file(char const *, char const *, std::string &)
{
    return false;
}
bool gen_os_read_temp_directory(std::string &)
{
    return false;
}
bool gen_os_open_stream(std::filebuf &, char const *, std::ios_base::openmode, int)
{
    return false;
}
bool gen_os_create_file(char const *)
{
    return false;
}
int gen_os_random_number()
{
    return 0;
}
