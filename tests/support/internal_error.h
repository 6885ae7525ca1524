// Expectations on a process that ends by an internal error:
//
//     EXPECT_EXIT(gen_itoa(5, out, 1), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with("radix > 1", "gen_string*"));
#ifndef TESTS_SUPPORT_INTERNAL_ERROR_H
#define TESTS_SUPPORT_INTERNAL_ERROR_H

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

/// Exit status of a process that reported an internal error.
constexpr int INTERNAL_ERROR_STATUS = 3;

/// Matches the output of a process if at least one report in it has a certain text, library and source. dies_with() and
/// dies_in_source() make it.
class InternalErrorMatcher
{
public:
    using is_gtest_matcher = void;

    /// @param source  the source file as the report names it; a "*" stands for any letters, digits, underscores and
    /// points
    InternalErrorMatcher(std::string const &text, std::string const &library, std::string source)
        : m_head("Internal error: " + text + "\n  Library: " + library + "\n  Source:  "), m_source(std::move(source))
    {
    }

    bool MatchAndExplain(std::string const &output, testing::MatchResultListener *listener) const
    {
        bool has_head = false;
        for (std::size_t at = output.find(m_head); at != std::string::npos; at = output.find(m_head, at + 1)) {
            if (at != 0 && output[at - 1] != '\n')
                continue;
            std::size_t const source_at = at + m_head.size();
            std::size_t const end = output.find('\n', source_at);
            std::string const line = output.substr(source_at, end - source_at);
            if (end != std::string::npos && names_source(line))
                return true;
            has_head = true;
            *listener << "which names its source as \"" << line << "\"";
        }
        if (!has_head)
            *listener << "which contains no such text and library";
        return false;
    }

    void DescribeTo(std::ostream *out) const { *out << "reports \"" << m_head << m_source << ", line <number>\\n\""; }

    void DescribeNegationTo(std::ostream *out) const
    {
        *out << "doesn't report \"" << m_head << m_source << ", line <number>\\n\"";
    }

private:
    static bool is_digit(char c) { return c >= '0' && c <= '9'; }
    static bool is_of_name(char c)
    {
        return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '.';
    }

    // Whether a line consists of the source and a line number.
    bool names_source(std::string_view line) const
    {
        constexpr std::string_view BETWEEN = ", line ";
        std::size_t const name_size = line.rfind(BETWEEN);
        if (name_size == std::string_view::npos)
            return false;
        std::string_view const number = line.substr(name_size + BETWEEN.size());
        return !number.empty() && std::all_of(number.begin(), number.end(), is_digit) &&
               is_source(line.substr(0, name_size));
    }

    bool is_source(std::string_view name) const
    {
        std::string_view const source = m_source;
        std::size_t const star = source.find('*');
        if (star == std::string_view::npos)
            return name == source;
        std::string_view const end = source.substr(star + 1);
        if (name.size() < star + end.size() || name.substr(0, star) != source.substr(0, star) ||
            name.substr(name.size() - end.size()) != end)
            return false;
        std::string_view const middle = name.substr(star, name.size() - star - end.size());
        return std::all_of(middle.begin(), middle.end(), is_of_name);
    }

    std::string m_head;
    std::string m_source;
};

/// The report of an internal error of zel_gen: exactly this text, and a source directly in gen/, without a room and
/// without a path before it.
///
/// @param text  the failed condition or the sentence, a whole line of the report or several
/// @param stem  name of the source without ".cpp"; "gen_path_*" stands for all sources that begin with "gen_path_"
inline InternalErrorMatcher dies_with(std::string const &text, std::string const &stem)
{
    return {text, "GEN", "gen/" + stem + ".cpp"};
}

/// Same as dies_with(), for a check that is written in a header, or whose file the test leaves open.
///
/// @param source  the source file as the report names it: "h/gen_iterator_sys.h", "gen/gen_string*"
inline InternalErrorMatcher dies_in_source(std::string const &text, std::string const &source)
{
    return {text, "GEN", source};
}

#endif
