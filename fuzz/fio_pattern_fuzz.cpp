// Patterns of file names. The input is a pattern and, after the first line feed, a name.
#include "fio/fio_pattern.h"

#include "fuzz_target.h"

namespace {

// Whether a pattern matches a whole name, by a table of all pairs of their beginnings.
bool matches(std::string const &pattern, std::string const &name)
{
    if (pattern == "*.*")
        return true;
    std::vector<bool> matched(name.size() + 1, false);
    matched[0] = true;
    for (char const c : pattern) {
        std::vector<bool> next(name.size() + 1, false);
        for (std::size_t end = 0; end <= name.size(); ++end)
            if (c == '*')
                next[end] = matched[end] || (end > 0 && next[end - 1]);
            else
                next[end] = end > 0 && matched[end - 1] && (c == '?' || c == name[end - 1]);
        matched = next;
    }
    return matched.back();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::vector<std::string> const parts = split_input(data, size, '\n', 2);
    require(fio_pattern_is_wild(parts[0]) == (parts[0].find_first_of("*?") != std::string::npos));
    require(fio_pattern_matches(parts[0], parts[1]) == matches(parts[0], parts[1]));
    return 0;
}
