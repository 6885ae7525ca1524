#include "mem/config/mem_cfg_file.h"

#include "mem/os/mem_os_file.h"
#include "sys/sys_text.h"

#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

namespace {

constexpr std::string_view BLANKS = " \t\r\v\f";
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

// Bytes of a user's text that a message quotes at most.
constexpr std::size_t LONGEST_QUOTATION = 60;

std::string_view without_blanks(std::string_view text)
{
    std::size_t const first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

bool starts_with(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

bool equal_without_case(std::string_view text, std::string_view lower)
{
    if (text.size() != lower.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const c = text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] - 'A' + 'a') : text[i];
        if (c != lower[i])
            return false;
    }
    return true;
}

bool is_empty_or_comment(std::string_view line)
{
    return line.empty() || line.front() == '#' || line.front() == ';';
}

// A section in brackets, with nothing but a comment after it.
bool is_section(std::string_view line)
{
    if (line.front() != '[')
        return false;
    std::size_t const end = line.find(']');
    return end != std::string_view::npos && is_empty_or_comment(without_blanks(line.substr(end + 1)));
}

// Adds the value of a line; false if the line can't be read.
bool parse_line(std::string_view line, std::string const &origin, MEM_CFG_ENTRIES &entries)
{
    std::size_t const equals = line.find('=');
    if (equals == std::string_view::npos || line.find('\0') != std::string_view::npos)
        return false;
    std::string_view const key = without_blanks(line.substr(0, equals));
    if (key.empty() || key.front() == '[')
        return false;
    auto entry = std::make_shared<MEM_CFG_ENTRY>();
    entry->value = without_blanks(line.substr(equals + 1));
    entry->origin = origin;
    entries.insert_or_assign(std::string(key), std::move(entry));
    return true;
}

} // namespace

bool mem_cfg_read_file(std::string const &path, bool is_named, std::string &text, std::set<std::string> &files,
                       std::vector<std::string> &problems)
{
    MEM_OS_FILE file = mem_os_read_file(path.c_str(), MEM_CFG_LARGEST_FILE);
    bool const is_read = file.state == MEM_OS_FILE_STATE::READ;
    if (is_read && file.text.size() <= MEM_CFG_LARGEST_FILE) {
        text = std::move(file.text);
        return true;
    }
    if (file.state == MEM_OS_FILE_STATE::ABSENT && !is_named)
        return false;
    if (!file.identity.empty() && !files.insert(file.identity).second)
        return false;
    problems.push_back(path + (is_read ? ": the file is larger than " + std::to_string(MEM_CFG_LARGEST_FILE >> 20) +
                                             " MiB and is not read"
                                       : ": the file can't be read: " + file.reason));
    return false;
}

void mem_cfg_parse(std::string const &path, std::string_view text, MEM_CFG_ENTRIES &entries,
                   std::vector<std::string> &problems)
{
    if (starts_with(text, BYTE_ORDER_MARK))
        text.remove_prefix(BYTE_ORDER_MARK.size());

    std::size_t unreadable = 0;
    for (std::size_t number = 1; !text.empty(); ++number) {
        std::size_t const end = text.find('\n');
        std::string_view const line = without_blanks(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (is_empty_or_comment(line) || is_section(line))
            continue;
        std::string const origin = path + ':' + std::to_string(number);
        if (parse_line(line, origin, entries))
            continue;
        if (++unreadable <= MEM_CFG_MOST_REPORTS)
            problems.push_back(origin + ": expected \"key = value\", found " + mem_cfg_quoted(line));
    }
    if (unreadable > MEM_CFG_MOST_REPORTS)
        problems.push_back(path + ": " + std::to_string(unreadable - MEM_CFG_MOST_REPORTS) +
                           " more lines can't be read");
}

bool mem_cfg_parse_switch(std::string_view text, bool &is_on)
{
    text = without_blanks(text);
    for (char const *const on : {"on", "true", "yes", "1"})
        if (equal_without_case(text, on)) {
            is_on = true;
            return true;
        }
    for (char const *const off : {"off", "false", "no", "0"})
        if (equal_without_case(text, off)) {
            is_on = false;
            return true;
        }
    return false;
}

bool mem_cfg_parse_number(std::string_view text, int &number)
{
    text = without_blanks(text);
    bool const negative = starts_with(text, "-");
    if (negative || starts_with(text, "+"))
        text.remove_prefix(1);
    bool const hexadecimal = starts_with(text, "0x") || starts_with(text, "0X");
    if (hexadecimal)
        text.remove_prefix(2);

    // Unsigned, so that a second sign is refused; 64 bits, so that the magnitude of the smallest number fits.
    std::uint64_t magnitude = 0;
    char const *const end = text.data() + text.size();
    std::from_chars_result const result = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
    std::uint64_t const largest = negative ? 2147483648U : 2147483647U;
    if (result.ec != std::errc() || result.ptr != end || magnitude > largest)
        return false;
    auto const value = static_cast<std::int64_t>(magnitude);
    number = static_cast<int>(negative ? -value : value);
    return true;
}

std::string mem_cfg_quoted(std::string_view text)
{
    std::string quoted = '"' + sys_printable(sys_whole_characters(text, LONGEST_QUOTATION), '?');
    if (text.size() > LONGEST_QUOTATION)
        quoted += "...";
    return quoted += '"';
}
