#include "sys/sys_text.h"

#include <algorithm>

namespace {

// The byte at a position, or 0 after the end.
unsigned byte_at(std::string_view text, std::size_t at)
{
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

bool is_continuation(unsigned byte)
{
    return (byte & 0xc0) == 0x80;
}

// The bytes that a UTF-8 character has according to its first byte; 1 for a byte that begins none.
std::size_t length_by_first_byte(unsigned first)
{
    if (first < 0xc2 || first > 0xf4)
        return 1;
    return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

// The bytes of the UTF-8 character with which a text begins; 1 if it begins with none.
std::size_t character_length(std::string_view text)
{
    unsigned const first = byte_at(text, 0);
    std::size_t const length = length_by_first_byte(first);
    // The range of the second byte excludes longer forms than needed, surrogates and codes above U+10FFFF.
    unsigned const smallest = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
    unsigned const largest = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
    unsigned const second = byte_at(text, 1);
    if (length > 1 && (second < smallest || second > largest))
        return 1;
    for (std::size_t at = 2; at < length; ++at)
        if (!is_continuation(byte_at(text, at)))
            return 1;
    return length;
}

// Whether a character of character_length() bytes is a control character.
bool is_control(std::string_view character)
{
    unsigned const first = byte_at(character, 0);
    if (character.size() == 1)
        return first < 0x20 || (first >= 0x7f && first < 0xa0);
    return first == 0xc2 && byte_at(character, 1) < 0xa0;
}

} // namespace

bool sys_find_line(std::string_view text, std::string_view key, std::string_view &rest)
{
    while (!text.empty()) {
        std::string_view const line = text.substr(0, text.find('\n'));
        if (line.substr(0, key.size()) == key) {
            rest = line.substr(key.size());
            return true;
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return false;
}

std::string_view sys_whole_lines(std::string_view text)
{
    return text.substr(0, text.rfind('\n') + 1);
}

void sys_skip_blanks(std::string_view &text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

bool sys_find_number(std::string_view text, std::string_view key, std::uint64_t &number)
{
    std::string_view value;
    if (!sys_find_line(text, key, value))
        return false;
    sys_skip_blanks(value);
    return sys_take_number(value, number);
}

std::string sys_printable(std::string_view text, char replacement)
{
    std::string printable;
    printable.reserve(text.size());
    while (!text.empty()) {
        std::string_view const character = text.substr(0, character_length(text));
        if (is_control(character))
            printable += replacement;
        else
            printable += character;
        text.remove_prefix(character.size());
    }
    return printable;
}

std::string_view sys_whole_characters(std::string_view text, std::size_t size)
{
    if (text.size() <= size)
        return text;
    // A character that the end divides begins at most three bytes before it.
    for (std::size_t back = 1; back <= std::min<std::size_t>(size, 3); ++back)
        if (character_length(text.substr(size - back)) > back)
            return text.substr(0, size - back);
    return text.substr(0, size);
}
