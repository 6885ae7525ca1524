#include "gen_string_sys.h"

#include <boost/numeric/conversion/cast.hpp>

#include <cstring>

namespace {

// The character that a backslash and `c` encode.
char decoded(char c)
{
    switch (c) {
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return c;
    }
}

} // namespace

void gen_process_escaped_quotes(std::string &text)
{
    bool is_in_quotes = false;
    std::size_t write = 0;
    for (std::size_t read = 0; read < text.size(); ++read) {
        if (text[read] == '\\' && !is_in_quotes) {
            ++read;
            if (read < text.size())
                text[write++] = decoded(text[read]);
            continue;
        }
        if (text[read] == '"')
            is_in_quotes = !is_in_quotes;
        text[write++] = text[read];
    }
    text.resize(write);
}

void gen_process_escaped_quotes(char *text)
{
    if (text == nullptr)
        return;
    int const length = boost::numeric_cast<int>(std::strlen(text));
    std::string processed(text, static_cast<std::size_t>(length));
    gen_process_escaped_quotes(processed);
    std::memcpy(text, processed.c_str(), processed.size() + 1);
}
