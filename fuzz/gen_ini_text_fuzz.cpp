// Initialisation files. The input is a section, a key, a value and the text of the file, each up to a null character.
// A section, key or value that is "-" alone is passed as null.
#include "gen/text/gen_ini_text.h"
#include "gen_string_sys.h"

#include "fuzz_target.h"

#include <optional>

namespace {

std::string trimmed(std::string const &text)
{
    std::size_t first = 0;
    std::size_t last = text.size();
    while (first < last && gen_ascii_isspace(text[first]))
        ++first;
    while (last > first && gen_ascii_isspace(text[last - 1]))
        --last;
    return text.substr(first, last - first);
}

bool are_equal(std::string const &a, std::string const &b)
{
    return gen_stricmp(trimmed(a).c_str(), trimmed(b).c_str()) == 0;
}

bool is_section(std::string const &line)
{
    return !line.empty() && line[0] == '[' && line.find(']') != std::string::npos;
}

// The value of a key in the first section of that name, without the blanks around it.
std::optional<std::string> read(std::string const &text, std::string const &section, std::string const &key)
{
    bool is_inside = false;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t const end = std::min(text.find('\n', start), text.size());
        std::string const line = trimmed(text.substr(start, end - start));
        start = end + 1;
        if (is_section(line)) {
            if (is_inside)
                return {};
            is_inside = are_equal(line.substr(1, line.rfind(']') - 1), section);
        } else if (is_inside && !line.empty() && line[0] != ';') {
            std::size_t const equals = std::min(line.find('='), line.size());
            if (are_equal(line.substr(0, equals), key))
                return trimmed(line.substr(std::min(equals + 1, line.size())));
        }
    }
    return {};
}

std::size_t count_lines(std::string const &text)
{
    std::size_t const ended = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    return ended + (text.empty() || text.back() == '\n' ? 0 : 1);
}

char const *or_null(std::string const &text)
{
    return text == "-" ? nullptr : text.c_str();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::vector<std::string> const parts = split_input(data, size, '\0', 4);
    char const *const section = or_null(parts[0]);
    char const *const key = or_null(parts[1]);
    char const *const value = or_null(parts[2]);
    std::string former = parts[3];
    std::replace(former.begin(), former.end(), '\0', '0'); // the comparison of names here ends at a null character

    std::string text = former;
    if (!gen_set_ini_key(text, section, key, value)) {
        require(text == former);
        return 0;
    }
    require(section != nullptr);
    if (key == nullptr || value == nullptr) {
        require(count_lines(text) <= count_lines(former));
        return 0;
    }
    require(count_lines(text) <= count_lines(former) + 2);
    // A section that contains "]" may not be found again, for instance "a]" with a text after it.
    if (std::string(section).find_first_of("[]") != std::string::npos)
        return 0;
    std::optional<std::string> const found = read(text, section, key);
    require(found.has_value() && *found == trimmed(value));
    std::string again = text;
    require(gen_set_ini_key(again, section, key, value) && again == text);
    return 0;
}
