// The host, its user and its surroundings.
#include "gen_machine_sys.h"

#include "fio_sys.h"
#include "gen/os/gen_os_host.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>

namespace {

// The longest part of a line that is examined, terminator included.
constexpr std::size_t LINE_SIZE = 1025;

// The first digit of the lowest version of the browser that is valid.
constexpr signed char FIRST_VALID_BROWSER = '4';

// The first two octets of the site's networks, each followed by a point; set when the suite is built.
constexpr char const *SITE_NETWORKS[] = {ZEL_SITE_NETWORKS};
static_assert(std::size(SITE_NETWORKS) == 9, "ZEL_SITE_NETWORKS has nine prefixes");

// Addresses of this host; empty until a look-up has succeeded. Two threads must not fill it at the same time.
std::string l_local_addresses;

std::string address_text(std::vector<unsigned char> const &address)
{
    std::string text;
    char const *separator = "";
    for (unsigned const byte : address) {
        text += separator + std::to_string(byte);
        separator = ".";
    }
    return text;
}

std::string resolve_addresses(std::string const &host)
{
    std::vector<std::vector<unsigned char>> addresses;
    gen_os_look_up_host(host.c_str(), addresses);
    std::string texts;
    char const *separator = "";
    for (std::vector<unsigned char> const &address : addresses) {
        texts += separator + address_text(address);
        separator = ",";
    }
    return texts;
}

struct CloseFile
{
    void operator()(std::FILE *file) const { std::fclose(file); }
};

} // namespace

std::string gen_get_host_name()
{
    std::string name;
    gen_os_read_host_name(name);
    return name;
}

std::string gen_get_ip_addr(char const *host)
{
    if (host != nullptr)
        return resolve_addresses(host);
    if (l_local_addresses.empty())
        l_local_addresses = resolve_addresses(gen_get_host_name());
    return l_local_addresses;
}

bool gen_is_brisel_ip_addr(char const *host)
{
    std::string const addresses = gen_get_ip_addr(host);
    return std::any_of(std::begin(SITE_NETWORKS), std::end(SITE_NETWORKS), [&addresses](char const *network) {
        return addresses.compare(0, std::strlen(network), network) == 0;
    });
}

std::string gen_get_user_name()
{
    std::string name;
    gen_os_read_user_name(name);
    return name;
}

bool gen_is_valid_web_browser()
{
    std::string version;
    // Only the first character is compared: version 9 is valid, version 11 is not.
    return gen_os_read_browser_version(version) && static_cast<signed char>(version.c_str()[0]) >= FIRST_VALID_BROWSER;
}

bool gen_check_is_running_in_container_for_file(std::string const &path)
{
    std::unique_ptr<std::FILE, CloseFile> const file(FIO_FILE_SYSTEM::fopen(path.c_str(), "r"));
    if (!file)
        return false;
    // Only the last line is searched, or the last part of it if it is long.
    char line[LINE_SIZE];
    std::string last;
    while (std::fgets(line, sizeof line, file.get()) != nullptr)
        last = line;
    return last.find("/docker") != std::string::npos || last.find("/lxc") != std::string::npos;
}

int gen_is_running_in_container()
{
    char const *const file = gen_os_container_file();
    return file != nullptr && gen_check_is_running_in_container_for_file(file) ? 1 : 0;
}
