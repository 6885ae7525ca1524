// Configuration files. The input is the text of a file.
#include "mem/config/mem_cfg_file.h"

#include "fuzz_target.h"

#include <map>

namespace {

constexpr char const *BLANKS = " \t\r\v\f";

std::string trimmed(std::string const &text)
{
    std::size_t const first = text.find_first_not_of(BLANKS);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

bool is_ignored(std::string const &line)
{
    if (line.empty() || line[0] == '#' || line[0] == ';')
        return true;
    std::size_t const end = line.find(']');
    if (line[0] != '[' || end == std::string::npos)
        return false;
    std::string const rest = trimmed(line.substr(end + 1));
    return rest.empty() || rest[0] == '#' || rest[0] == ';';
}

struct Expected
{
    struct Value
    {
        std::string text;
        std::size_t line;
    };
    std::map<std::string, Value> values;
    std::size_t unreadable = 0;
};

void expect_line(std::string const &line, std::size_t number, Expected &expected)
{
    if (is_ignored(line))
        return;
    std::size_t const equals = line.find('=');
    std::string const key = trimmed(line.substr(0, equals));
    if (equals == std::string::npos || line.find('\0') != std::string::npos || key.empty() || key[0] == '[')
        ++expected.unreadable;
    else
        expected.values[key] = {trimmed(line.substr(equals + 1)), number};
}

Expected expected_values(std::string text)
{
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        text.erase(0, 3);
    Expected expected;
    std::size_t number = 0;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t const end = std::min(text.find('\n', start), text.size());
        expect_line(trimmed(text.substr(start, end - start)), ++number, expected);
        start = end + 1;
    }
    return expected;
}

void check_value(std::string const &value)
{
    bool is_on = false;
    int number = -77;
    bool const is_number = mem_cfg_parse_number(value, number);
    require(is_number || number == -77);
    if (mem_cfg_parse_switch(value, is_on) && is_number)
        require(number == (is_on ? 1 : 0));
    std::string const quoted = mem_cfg_quoted(value);
    require(quoted.size() >= 2 && quoted.front() == '"' && quoted.back() == '"');
    require(std::none_of(quoted.begin(), quoted.end(), [](char c) { return c == '\n' || c == '\x1b' || c == '\0'; }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string const text(data, data + size);
    Expected const expected = expected_values(text);

    MEM_CFG_ENTRIES entries;
    std::vector<std::string> problems;
    mem_cfg_parse("f", text, entries, problems);

    require(entries.size() == expected.values.size());
    for (auto const &[key, value] : expected.values) {
        auto const found = entries.find(key);
        require(found != entries.end() && found->second->value == value.text);
        require(found->second->origin == "f:" + std::to_string(value.line));
        check_value(value.text);
    }
    require(problems.size() == std::min(expected.unreadable, MEM_CFG_MOST_REPORTS + 1));
    return 0;
}
