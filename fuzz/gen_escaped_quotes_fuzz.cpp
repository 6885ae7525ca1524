// Escapes outside double quotes. The input is the text.
#include "gen_string_sys.h"

#include "fuzz_target.h"

#include <cstring>

namespace {

// The expected result, from one pass over the characters with the state in one variable.
std::string decoded(std::string const &text)
{
    enum
    {
        OUTSIDE,
        ESCAPED,
        WITHIN
    } state = OUTSIDE;
    std::string result;
    for (char c : text) {
        if (state == OUTSIDE && c == '\\') {
            state = ESCAPED;
            continue;
        }
        if (state == ESCAPED) {
            result += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
            state = OUTSIDE;
            continue;
        }
        if (c == '"')
            state = state == WITHIN ? OUTSIDE : WITHIN;
        result += c;
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string const text(data, data + size);
    std::string processed = text;
    gen_process_escaped_quotes(processed);
    require(processed == decoded(text));

    std::vector<char> bytes(text.c_str(), text.c_str() + std::strlen(text.c_str()) + 1);
    gen_process_escaped_quotes(bytes.data());
    require(decoded(text.c_str()) == bytes.data());
    return 0;
}
