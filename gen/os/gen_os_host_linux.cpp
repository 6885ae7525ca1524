#include "gen/os/gen_os_host.h"

#include "sys/os/sys_os_text_file_linux.h"

#include <cerrno>

#include <netdb.h>
#include <pwd.h>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace {

// Size of the buffer for a name, terminator included.
constexpr std::size_t NAME_SIZE = 512;

// The first and the largest size that is tried for the texts of a record of the system's databases.
constexpr std::size_t FIRST_RECORD_SIZE = 1024;
constexpr std::size_t LAST_RECORD_SIZE = std::size_t{1024} * 1024;

// Repeats a query with twice the room until the texts of the record fit. `query` takes the room and returns the error
// number of the system.
template <typename Query>
bool query_with_growing_buffer(Query query)
{
    std::vector<char> room(FIRST_RECORD_SIZE);
    int error = query(room);
    while (error == ERANGE && room.size() < LAST_RECORD_SIZE) {
        room.resize(room.size() * 2);
        error = query(room);
    }
    return error == 0;
}

} // namespace

bool gen_os_read_memory(GEN_HOST_MEMORY &memory)
{
    SYS_OS_TEXT_FILE const meminfo("/proc/meminfo");
    if (gen_read_meminfo(meminfo.text(), memory))
        return true;
    struct sysinfo info;
    if (sysinfo(&info) != 0)
        return false;
    std::uint64_t const unit = info.mem_unit;
    memory = {info.totalram * unit, (info.totalram + info.totalswap) * unit, (info.freeram + info.freeswap) * unit};
    return true;
}

bool gen_os_read_version(GEN_OS_VERSION &)
{
    return false;
}

bool gen_os_read_distribution(GEN_HOST_DISTRIBUTION &distribution)
{
    return gen_read_os_release(SYS_OS_TEXT_FILE("/etc/os-release").text(), distribution) ||
           gen_read_os_release(SYS_OS_TEXT_FILE("/usr/lib/os-release").text(), distribution);
}

char const *gen_os_platform_name()
{
    return "linux";
}

bool gen_os_read_host_name(std::string &name)
{
    char text[NAME_SIZE] = "";
    if (gethostname(text, sizeof text - 1) != 0)
        return false;
    name = text;
    return true;
}

bool gen_os_read_user_name(std::string &name)
{
    passwd record;
    passwd *found = nullptr;
    return query_with_growing_buffer([&](std::vector<char> &room) {
        int const error = getpwuid_r(geteuid(), &record, room.data(), room.size(), &found);
        if (found != nullptr)
            name = found->pw_name;
        return found == nullptr && error == 0 ? ENOENT : error;
    });
}

bool gen_os_look_up_host(char const *name, std::vector<std::vector<unsigned char>> &addresses)
{
    hostent record;
    hostent *found = nullptr;
    return query_with_growing_buffer([&](std::vector<char> &room) {
        int lookup_error = 0;
        int const error = gethostbyname_r(name, &record, room.data(), room.size(), &found, &lookup_error);
        if (found == nullptr)
            return error == 0 ? ENOENT : error;
        for (char **address = found->h_addr_list; *address != nullptr; ++address)
            addresses.emplace_back(*address, *address + found->h_length);
        return error;
    });
}

bool gen_os_read_browser_version(std::string &)
{
    return false;
}

char const *gen_os_container_file()
{
    return "/proc/1/cgroup";
}
