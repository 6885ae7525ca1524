#include "tests/support/gen_os_host_fake.h"

#include "gen/os/gen_os_host.h"

namespace {

template <typename Value>
bool answer(std::optional<Value> const &value, Value &out)
{
    if (value)
        out = *value;
    return value.has_value();
}

} // namespace

GEN_OS_HOST_FAKE_SCRIPT &gen_os_host_fake()
{
    static GEN_OS_HOST_FAKE_SCRIPT script;
    return script;
}

bool gen_os_read_memory(GEN_HOST_MEMORY &memory)
{
    auto const &facts = gen_os_host_fake().memory;
    if (facts)
        memory = {facts->physical, facts->total, facts->available};
    return facts.has_value();
}

bool gen_os_read_version(GEN_OS_VERSION &version)
{
    auto const &facts = gen_os_host_fake().version;
    if (facts)
        version = {facts->major, facts->minor, facts->is_workstation};
    return facts.has_value();
}

bool gen_os_read_distribution(GEN_HOST_DISTRIBUTION &distribution)
{
    auto const &facts = gen_os_host_fake().distribution;
    if (facts)
        distribution = {facts->name, facts->version};
    return facts.has_value();
}

char const *gen_os_platform_name()
{
    return "fake";
}

bool gen_os_read_host_name(std::string &name)
{
    return answer(gen_os_host_fake().host_name, name);
}

bool gen_os_read_user_name(std::string &name)
{
    return answer(gen_os_host_fake().user_name, name);
}

bool gen_os_look_up_host(char const *name, std::vector<std::vector<unsigned char>> &addresses)
{
    GEN_OS_HOST_FAKE_SCRIPT &script = gen_os_host_fake();
    script.look_ups.emplace_back(name);
    auto const host = script.hosts.find(name);
    if (host == script.hosts.end())
        return false;
    addresses = host->second;
    return true;
}

bool gen_os_read_browser_version(std::string &version)
{
    return answer(gen_os_host_fake().browser_version, version);
}

char const *gen_os_container_file()
{
    auto const &file = gen_os_host_fake().container_file;
    return file ? file->c_str() : nullptr;
}
