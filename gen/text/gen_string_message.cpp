// Message templates with numbered inserts. An insert "%2!d!" prints argument 2 by the specification "%d"; without a
// specification it prints by "%s". The arguments lie in slots one after the other, and the cursor can only move
// forward: it passes an argument by printing it. So insert 3 can only be printed after the specifications of inserts 1
// and 2 are known, wherever in the template they are. The expansion therefore scans the template twice.
//
// The template "%2 %1!d!" with the arguments 7 and "b" gives "b 7":
//
//     first pass     %2      insert 2 is used, its specification is "%s"
//                    %1!d!   insert 1 is used, its specification is "%d"
//     second pass    %2      the cursor is at argument 1: step over it by "%d", then print argument 2 by "%s"
//                    %1!d!   the cursor is after argument 2: move it back to the start, then print argument 1 by "%d"
//
// Both passes write the same specifications to the same places of one area, so in the second pass the specifications
// of inserts that are still to come are those of the first pass.
//
// If the numbers first appear in the order 1, 2, 3 and so on, the first pass finds nothing that the second one doesn't
// find in time. So the second pass is tried alone. When it comes to an insert that skips a number, its text is dropped
// and both passes run.
#include "gen_string_sys.h"

#include "gen/base/gen_assert.h"
#include "mem_sys.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int INSERT_NUMBERS = 100; // 1 to 99
constexpr int SPEC_TEXT_SIZE = 4096;
constexpr int SLOT_BYTES = 8;

constexpr char const *NO_TABLES =
    "gen_formatmessage: FORMAT_MESSAGE_FROM_SYSTEM and FORMAT_MESSAGE_FROM_HMODULE are not supported";

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// Which inserts are used, and their specifications; valid for numbers up to the largest one seen.
class InsertTables
{
public:
    // Reads an insert after its per-cent sign and returns its end.
    char const *read(char const *p, int &number)
    {
        number = *p++ - '0';
        if (is_digit(*p))
            number = number * 10 + (*p++ - '0');
        for (; m_largest < number; ++m_largest)
            m_used[m_largest + 1] = false;
        m_used[number] = true;
        m_spec[number] = m_filled;
        return read_spec(p);
    }

    void start_pass() { m_filled = 0; }

    int largest() const { return m_largest; }
    bool is_used(int number) const { return m_used[number]; }
    char const *spec(int number) const { return m_spec_text + m_spec[number]; }

private:
    char const *read_spec(char const *p)
    {
        int const start = m_filled;
        put('%');
        if (*p == '!') {
            for (++p; *p != '\0' && *p != '!'; ++p)
                put(*p);
            if (*p == '!')
                ++p;
        } else
            put('s');
        bool const has_room = m_filled < SPEC_TEXT_SIZE - 1;
        m_spec_text[has_room ? m_filled++ : start] = '\0';
        return p;
    }

    // The last byte is reserved for a terminator: a specification that begins when the area is full is the empty text.
    void put(char c)
    {
        if (m_filled < SPEC_TEXT_SIZE - 1)
            m_spec_text[m_filled++] = c;
    }

    int m_largest = 0;
    std::int32_t m_filled = 0;
    bool m_used[INSERT_NUMBERS];
    std::int32_t m_spec[INSERT_NUMBERS];
    char m_spec_text[SPEC_TEXT_SIZE];
};

// The text under construction. It is collected in a buffer and appended to the caller's string in large pieces, so that
// the string grows once for a message of ordinary length.
class MessageText
{
public:
    explicit MessageText(std::string &out) : m_out(out) {}

    void append(char const *text, std::size_t size)
    {
        if (size > sizeof m_piece - m_size) {
            finish();
            if (size > sizeof m_piece) {
                m_out.append(text, size);
                return;
            }
        }
        std::memcpy(m_piece + m_size, text, size);
        m_size += size;
    }

    void finish()
    {
        m_out.append(m_piece, m_size);
        m_size = 0;
    }

    void append_formatted(char const *spec, char *&cursor)
    {
        finish();
        stl_output(&m_out, spec, cursor);
    }

    // Moves a cursor past the arguments that a specification takes.
    void skip_formatted(char const *spec, char *&cursor)
    {
        finish();
        std::size_t const size = m_out.size();
        stl_output(&m_out, spec, cursor);
        m_out.resize(size);
    }

    // Removes the text that was appended after the first `size` characters of the string.
    void drop(std::size_t size)
    {
        m_out.resize(size);
        m_size = 0;
    }

private:
    std::string &m_out;
    std::size_t m_size = 0;
    char m_piece[512];
};

// The conversion character of "%s" and "%d", which are the specifications of most inserts; 0 for all others.
char plain_conversion(char const *spec)
{
    bool const is_plain = spec[0] == '%' && (spec[1] == 's' || spec[1] == 'd') && spec[2] == '\0';
    return is_plain ? spec[1] : '\0';
}

// The argument slots; the position is the number of the last one consumed.
class Arguments
{
public:
    explicit Arguments(char *slots) : m_slots(slots), m_cursor(slots) {}

    void print(MessageText &out, int number, InsertTables const &tables)
    {
        if (number <= m_position) {
            m_cursor = m_slots;
            m_position = 0;
        }
        while (++m_position < number)
            step_over(out, tables);

        char const *const spec = tables.spec(number);
        switch (plain_conversion(spec)) {
        case 's':
            print_text(out, next<char const *>());
            break;
        case 'd':
            print_number(out, static_cast<std::int32_t>(next<std::int64_t>())); // the low half counts
            break;
        default:
            out.append_formatted(spec, m_cursor);
            break;
        }
    }

private:
    template <typename Value>
    Value next()
    {
        static_assert(sizeof(Value) == SLOT_BYTES, "a slot has 8 bytes");
        Value value;
        std::memcpy(&value, m_cursor, sizeof value);
        m_cursor += SLOT_BYTES;
        return value;
    }

    static void print_text(MessageText &out, char const *text)
    {
        if (text == nullptr)
            text = "(null)";
        out.append(text, std::strlen(text));
    }

    static void print_number(MessageText &out, std::int32_t number)
    {
        char digits[11];
        char *const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        out.append(digits, static_cast<std::size_t>(end - digits));
    }

    // An argument is formatted to pass it, unless its conversion is known to take one slot.
    void step_over(MessageText &out, InsertTables const &tables)
    {
        if (!tables.is_used(m_position) || plain_conversion(tables.spec(m_position)) != '\0')
            m_cursor += SLOT_BYTES;
        else
            out.skip_formatted(tables.spec(m_position), m_cursor);
    }

    char *m_slots;
    char *m_cursor;
    int m_position = 0;
};

// Copies a text without inserts. "\n\r" is copied as "\r\n", unless a "\r" precedes the "\n"; all other line ends are
// copied unchanged.
void append_text(MessageText &out, char const *text, char const *end)
{
    char const *rest = text;
    while (void const *const found = std::memchr(rest, '\n', static_cast<std::size_t>(end - rest))) {
        char const *const feed = static_cast<char const *>(found);
        out.append(rest, static_cast<std::size_t>(feed - rest));
        bool const is_reversed = feed + 1 != end && feed[1] == '\r' && (feed == rest || feed[-1] != '\r');
        if (is_reversed)
            out.append("\r\n", 2);
        else
            out.append("\n", 1);
        rest = feed + (is_reversed ? 2 : 1);
    }
    out.append(rest, static_cast<std::size_t>(end - rest));
}

// The first pass.
void collect_inserts(InsertTables &tables, char const *p)
{
    tables.start_pass();
    while ((p = std::strchr(p, '%')) != nullptr) {
        ++p;
        if (*p == '0' || *p == '\0')
            return;
        int number;
        p = is_digit(*p) ? tables.read(p, number) : p + 1;
    }
}

// The second pass. False if an insert skips a number that was not seen before.
bool expand(MessageText &out, InsertTables &tables, char const *p, char *args)
{
    tables.start_pass();
    Arguments arguments(args);
    bool const has_reversed_ends = std::strstr(p, "\n\r") != nullptr;
    for (;;) {
        char const *const percent = std::strchr(p, '%');
        char const *const end = percent != nullptr ? percent : p + std::strlen(p);
        if (has_reversed_ends)
            append_text(out, p, end);
        else
            out.append(p, static_cast<std::size_t>(end - p));
        if (percent == nullptr || percent[1] == '0')
            return true;

        p = percent + 1;
        if (is_digit(*p)) {
            int const largest = tables.largest();
            int number;
            p = tables.read(p, number);
            if (number > largest + 1)
                return false;
            arguments.print(out, number, tables);
            continue;
        }
        if (*p != '%')
            out.append("%", 1);
        if (*p == '\0')
            return true;
        out.append(p++, 1);
    }
}

// Several faults may be present; the order of the checks decides which one is reported.
void check_flags(unsigned long flags)
{
    bool const from_system = (flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0;
    bool const from_module = (flags & FORMAT_MESSAGE_FROM_HMODULE) != 0;
    bool const from_string = (flags & FORMAT_MESSAGE_FROM_STRING) != 0;
    GEN_ASSERT(!(from_system && from_module), NO_TABLES);
    GEN_ASSERT(from_string, "gen_formatmessage: The FORMAT_MESSAGE_FROM_STRING flag must be used");
    GEN_ASSERT(!(from_system || from_module), NO_TABLES);
    GEN_ASSERT((flags & FORMAT_MESSAGE_MAX_WIDTH_MASK) == 0,
               "gen_formatmessage: FORMAT_MESSAGE_MAX_WIDTH_MASK is not supported.\n");
}

// `buffer` is really a char **, which receives a block from malloc.
std::uint32_t store_in_block(std::string const &text, char *buffer, unsigned long size)
{
    char *&block = *reinterpret_cast<char **>(buffer);
    block = nullptr;
    if (text.empty())
        return 0;
    std::size_t const smallest = std::min<std::size_t>(size, UINT32_MAX);
    std::size_t const length = std::max(text.size(), smallest);
    block = static_cast<char *>(std::malloc(length + 1));
    if (block == nullptr)
        return 0;
    std::strncpy(block, text.c_str(), length);
    block[length] = '\0';
    return static_cast<std::uint32_t>(length);
}

std::uint32_t store_in_buffer(std::string const &text, char *buffer, unsigned long size)
{
    if (text.empty() || size == 0)
        return 0;
    std::uint32_t const length = static_cast<std::uint32_t>(std::min<std::size_t>(text.size(), size - 1));
    std::strncpy(buffer, text.c_str(), length);
    buffer[length] = '\0';
    return length;
}

} // namespace

std::uint32_t gen_formatmessage(std::string &out, char const *format, char *args)
{
    std::size_t const size = out.size();
    InsertTables tables;
    MessageText text(out);
    if (!expand(text, tables, format, args)) {
        text.drop(size);
        collect_inserts(tables, format);
        expand(text, tables, format, args);
    }
    text.finish();
    return static_cast<std::uint32_t>(out.size());
}

std::uint32_t gen_formatmessage(unsigned long flags, void const *source, unsigned long /*message_id*/,
                                unsigned long /*language_id*/, char *buffer, unsigned long size, char *args)
{
    check_flags(flags);

    auto const *const format = static_cast<char const *>(source);
    std::string text;
    if ((flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0)
        text = format;
    else
        gen_formatmessage(text, format, args);

    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0)
        return store_in_block(text, buffer, size);
    return store_in_buffer(text, buffer, size);
}
