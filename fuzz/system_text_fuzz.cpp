// The texts in which the system describes itself: of /proc, of os-release, of the processors. The input is a key and,
// after the first line feed, a text.
#include "gen/base/gen_host_text.h"
#include "gen/base/gen_machine_text.h"
#include "mem/base/mem_proc_text.h"
#include "sys/sys_text.h"

#include "fuzz_target.h"

#include <sstream>

namespace {

bool find_line(std::string const &text, std::string const &key, std::string &rest)
{
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.compare(0, key.size(), key) == 0) {
            rest = line.substr(key.size());
            return true;
        }
    return false;
}

void check_lines(std::string const &text, std::string const &key)
{
    std::string expected = "former";
    std::string_view rest = "former";
    require(sys_find_line(text, key, rest) == find_line(text, key, expected));
    require(rest == expected);
    std::string_view const whole = sys_whole_lines(text);
    require(whole.size() <= text.size() && (whole.empty() || whole.back() == '\n'));
    require(text.find('\n', whole.size()) == std::string::npos);

    std::uint64_t number = 77;
    if (!sys_find_number(text, key, number))
        require(number == 77);
    else
        require(rest.find(std::to_string(number)) != std::string_view::npos);
}

void check_host(std::string const &text)
{
    std::string name;
    GEN_HOST_DISTRIBUTION distribution{"former", "former"};
    bool const has_name = find_line(text, "NAME=", name);
    require(gen_read_os_release(text, distribution) == has_name);
    if (has_name)
        require(distribution.m_name.size() <= name.size());
    else
        require(distribution.m_name == "former" && distribution.m_version == "former");

    GEN_HOST_MEMORY memory{77, 78, 79};
    if (gen_read_meminfo(text, memory))
        require(memory.m_physical % 1024 == 0 && memory.m_total % 1024 == 0 && memory.m_available % 1024 == 0);
    else
        require(memory.m_physical == 77 && memory.m_total == 78 && memory.m_available == 79);
}

void check_processors(std::string const &text)
{
    std::uint64_t mask = 77;
    if (!gen_read_processor_list(text, mask))
        require(mask == 77);
    int mhz = 77;
    if (!gen_read_base_frequency(text, mhz))
        require(mhz == 77);
    mhz = 77;
    if (!gen_read_processor_frequency(text, mhz))
        require(mhz == 77);
}

void check_process(std::string const &text, std::string const &key)
{
    std::uint64_t pages = 77;
    if (!mem_proc_statm_resident_pages(text, &pages))
        require(pages == 77);
    std::uint64_t bytes = 77;
    if (mem_proc_status_bytes(text, key, &bytes))
        require(bytes % 1024 == 0);
    else
        require(bytes == 77);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::vector<std::string> const parts = split_input(data, size, '\n', 2);
    check_lines(parts[1], parts[0]);
    check_host(parts[1]);
    check_processors(parts[1]);
    check_process(parts[1], parts[0]);
    return 0;
}
