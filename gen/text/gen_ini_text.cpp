#include "gen/text/gen_ini_text.h"

#include "gen_string_sys.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace {

bool has_any(char const *text, char const *characters)
{
    return text != nullptr && std::strpbrk(text, characters) != nullptr;
}

std::string_view without_white_space(std::string_view text)
{
    while (!text.empty() && gen_ascii_isspace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && gen_ascii_isspace(text.back()))
        text.remove_suffix(1);
    return text;
}

bool are_equal_names(std::string_view first, std::string_view second)
{
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](char a, char b) { return gen_ascii_tolower(a) == gen_ascii_tolower(b); });
}

// The line end at the end of a text: LF, CR LF, or nothing.
std::string_view line_end_of(std::string_view line)
{
    if (line.empty() || line.back() != '\n')
        return {};
    std::size_t const length = line.size() >= 2 && line[line.size() - 2] == '\r' ? 2 : 1;
    return line.substr(line.size() - length);
}

// The lines of a text, including their line ends.
std::vector<std::string> lines_of(std::string const &text)
{
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t const line_feed = text.find('\n', start);
        std::size_t const end = line_feed == std::string::npos ? text.size() : line_feed + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    return lines;
}

bool is_section_line(std::string_view line)
{
    std::string_view const content = without_white_space(line);
    return !content.empty() && content.front() == '[' && content.find(']') != std::string_view::npos;
}

// Compares the name between the first and the last bracket, which may itself contain brackets.
bool is_line_of_section(std::string_view line, std::string_view section)
{
    if (!is_section_line(line))
        return false;
    std::string_view const content = without_white_space(line);
    return are_equal_names(without_white_space(content.substr(1, content.rfind(']') - 1)), section);
}

bool is_line_of_key(std::string_view line, std::string_view key)
{
    std::string_view const content = without_white_space(line);
    if (content.empty() || content.front() == ';')
        return false;
    return are_equal_names(without_white_space(content.substr(0, content.find('='))), key);
}

// Whether a line with this key and value would be found under the key.
bool is_readable(std::string_view key, char const *value)
{
    std::string const line = std::string(key) + '=' + value;
    return is_line_of_key(line, key) && !is_section_line(line);
}

bool is_blank(std::string_view line)
{
    return without_white_space(line).empty();
}

// The lines of a file, and the range of them that belongs to one section.
class IniText
{
public:
    IniText(std::string const &text, std::string_view section) : m_lines(lines_of(text)), m_line_end("\n")
    {
        for (std::string const &line : m_lines)
            if (!line_end_of(line).empty())
                m_line_end = line_end_of(line);
        m_begin = std::find_if(m_lines.begin(), m_lines.end(),
                               [&](std::string const &line) { return is_line_of_section(line, section); });
        m_end = has_section() ? std::find_if(m_begin + 1, m_lines.end(), is_section_line) : m_lines.end();
    }

    bool has_section() const { return m_begin != m_lines.end(); }

    void remove_section() { m_end = m_begin = m_lines.erase(m_begin, m_end); }

    void remove_key(std::string_view key)
    {
        Line const line = find_key(key);
        if (line != m_end)
            m_lines.erase(line);
    }

    void set_key(std::string_view key, char const *value)
    {
        Line line = find_key(key);
        if (line == m_end) {
            while (is_blank(*(line - 1)))
                --line;
            insert(line, std::string(key) + '=' + value);
            return;
        }
        std::string const line_end(line_end_of(*line));
        std::string const name = line->substr(0, std::min(line->find('='), line->size() - line_end.size()));
        *line = name + '=' + value + line_end;
    }

    void add_section(std::string_view section, std::string_view key, char const *value)
    {
        insert(m_lines.end(), '[' + std::string(section) + ']');
        insert(m_lines.end(), std::string(key) + '=' + value);
    }

    std::string text() const
    {
        std::string result;
        for (std::string const &line : m_lines)
            result += line;
        return result;
    }

private:
    using Line = std::vector<std::string>::iterator;

    Line find_key(std::string_view key) const
    {
        return std::find_if(m_begin + 1, m_end, [&](std::string const &line) { return is_line_of_key(line, key); });
    }

    // Inserts a line before another one.
    void insert(Line line, std::string const &content)
    {
        if (line != m_lines.begin() && line_end_of(*(line - 1)).empty())
            *(line - 1) += m_line_end;
        m_lines.insert(line, content + m_line_end);
    }

    std::vector<std::string> m_lines;
    std::string m_line_end;
    Line m_begin;
    Line m_end;
};

} // namespace

bool gen_set_ini_key(std::string &text, char const *section, char const *key, char const *value)
{
    constexpr char const *LINE_ENDS = "\r\n";
    if (section == nullptr || has_any(section, LINE_ENDS) || has_any(key, "=\r\n") || has_any(value, LINE_ENDS))
        return false;
    if (key != nullptr && value != nullptr && !is_readable(without_white_space(key), value))
        return false;
    std::string_view const section_name = without_white_space(section);
    IniText ini(text, section_name);
    if (key == nullptr) {
        if (ini.has_section())
            ini.remove_section();
    } else if (value == nullptr) {
        if (ini.has_section())
            ini.remove_key(without_white_space(key));
    } else if (ini.has_section()) {
        ini.set_key(without_white_space(key), value);
    } else {
        ini.add_section(section_name, without_white_space(key), value);
    }
    text = ini.text();
    return true;
}
