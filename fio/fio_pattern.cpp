#include "fio/fio_pattern.h"

#include <cstddef>

bool fio_pattern_is_wild(std::string_view text)
{
    return text.find_first_of("*?") != std::string_view::npos;
}

// After a mismatch only the last star is extended by a character: the stars before it have matched as few characters as
// possible, so extending them gains nothing. The work is therefore at most the product of the two lengths.
//
//     pattern "a*b*c", name "aXbYbZc": the first star matches "X", which is final; the second one "", "Y", "Yb", "YbZ".
bool fio_pattern_matches(std::string_view pattern, std::string_view name)
{
    constexpr std::size_t NONE = std::string_view::npos;
    if (pattern == "*.*")
        return true;
    std::size_t at = 0;
    std::size_t star = NONE;
    std::size_t star_end = 0; // end of the characters that the last star matches
    for (std::size_t i = 0; i < name.size();) {
        if (at < pattern.size() && pattern[at] == '*') {
            star = at++;
            star_end = i;
        } else if (at < pattern.size() && (pattern[at] == '?' || pattern[at] == name[i])) {
            ++at;
            ++i;
        } else if (star != NONE) {
            at = star + 1;
            i = ++star_end;
        } else
            return false;
    }
    return pattern.find_first_not_of('*', at) == NONE;
}
