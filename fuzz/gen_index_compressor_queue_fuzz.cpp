// The index queue. The first byte chooses the type and how the names are composed from the rest:
//
// - even: each line is a name. The test is that merging ends and that the queue gets empty.
// - odd: names are composed of well-formed pieces and all end in ";", so that no merge loses the end of a name. The
//   test is that the expanded entries are the pushed names, in any order.
#include "gen_index_compressor_queue_sys.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Queue = GEN_INDEX_COMPRESSOR_QUEUE;
using Names = std::vector<std::string>;

// A name with more single names than this is not expanded, and no name is pushed after it.
constexpr std::size_t MOST_NAMES = 200;

void require(bool condition, char const *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool is_digit(char ch)
{
    return ch >= '0' && ch <= '9';
}

// Reads a number at the beginning of a text and removes it; false if there is none of up to nine digits.
bool take_index(std::string_view &text, bool with_sign, int &value)
{
    std::size_t const sign = with_sign && !text.empty() && text.front() == '-' ? 1 : 0;
    std::size_t end = sign;
    while (end < text.size() && is_digit(text[end]))
        ++end;
    if (end == sign || end - sign > 9)
        return false;
    value = std::atoi(std::string(text.substr(0, end)).c_str());
    text.remove_prefix(end);
    return true;
}

// Reads an index at the beginning of a text, with or without brackets, and removes it.
bool take_index(std::string_view &text, int &low, int &high)
{
    std::string_view rest = text;
    bool const bracketed = !rest.empty() && rest.front() == '[';
    if (bracketed)
        rest.remove_prefix(1);
    if (!take_index(rest, bracketed, low))
        return false;
    high = low;
    if (!rest.empty() && rest.front() == ':') {
        std::string_view second = rest.substr(1);
        if (take_index(second, bracketed, high))
            rest = second;
    }
    if (bracketed) {
        if (rest.empty() || rest.front() != ']')
            return false;
        rest.remove_prefix(1);
    }
    if (high < low)
        std::swap(low, high);
    text = rest;
    return true;
}

// Every single name that a text with ranges describes. Its indices have no brackets and no leading zeros, and a ">"
// after each. Empty if there are too many names.
Names single_names(std::string_view text)
{
    Names names = {""};
    while (!text.empty()) {
        int low = 0;
        int high = 0;
        if (!take_index(text, low, high)) {
            for (std::string &name : names)
                name += text.front();
            text.remove_prefix(1);
            continue;
        }
        if ((static_cast<std::size_t>(high) - static_cast<std::size_t>(low) + 1) > MOST_NAMES / names.size())
            return {};
        Names longer;
        for (std::string const &name : names)
            for (int value = low; value <= high; ++value)
                longer.push_back(name + std::to_string(value) + ">");
        names.swap(longer);
    }
    return names;
}

void append(Names &names, Names const &more)
{
    names.insert(names.end(), more.begin(), more.end());
}

void merge_lines(std::string_view text, Queue::BRACKET_TYPE type)
{
    Queue queue(true, type);
    while (!text.empty()) {
        std::size_t const end = std::min(text.find('\n'), text.size());
        queue.push_back(std::string(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (queue.ready() && queue.front().size() % 2 == 0)
            queue.pop_front();
    }
    for (; !queue.empty(); queue.pop_front())
        if (!single_names(queue.front()).empty())
            queue.expand_front();
}

// Reads a name of several pieces, each of two bytes of input, and removes them with the piece that ends the name.
std::string take_name(std::string_view &bytes)
{
    std::string name;
    while (bytes.size() >= 2) {
        unsigned const kind = static_cast<unsigned char>(bytes[0]) % 9;
        int const value = static_cast<unsigned char>(bytes[1]) % 16;
        bytes.remove_prefix(2);
        std::string const number = std::to_string(value);
        switch (kind) {
        case 0:
            return name + ';';
        case 1:
            name += static_cast<char>('a' + value % 2);
            break;
        case 2:
            name += "~|:"[value % 3];
            break;
        case 3:
            name += '[' + number + ']';
            break;
        case 4:
            name += '[' + number + ':' + std::to_string(value / 2 + 1) + ']';
            break;
        case 5:
            name += "[-" + number + ']';
            break;
        case 6:
            name += "[0" + number + ']';
            break;
        default:
            name += number;
            break;
        }
    }
    return name + ';';
}

void merge_and_expand(std::string_view bytes, Queue::BRACKET_TYPE type)
{
    Queue queue(true, type);
    Names pushed;
    Names expanded;
    while (!bytes.empty() && pushed.size() < MOST_NAMES) {
        std::string const name = take_name(bytes);
        Names const singles = single_names(name);
        if (singles.empty())
            continue;
        append(pushed, singles);
        queue.push_back(name);
        if (bytes.size() < 2)
            break;
    }
    for (; !queue.empty(); queue.pop_front())
        append(expanded, single_names(queue.expand_front()));
    std::sort(pushed.begin(), pushed.end());
    std::sort(expanded.begin(), expanded.end());
    require(expanded == pushed, "what comes out is not what was pushed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0)
        return 0;
    auto const type = static_cast<Queue::BRACKET_TYPE>(data[0] / 2 % 3);
    std::string_view const rest(reinterpret_cast<char const *>(data) + 1, size - 1);
    if (data[0] % 2 == 0)
        merge_lines(rest, type);
    else
        merge_and_expand(rest, type);
    return 0;
}
