// The parts of the formatter: the buffer of its text, and the rendering of single values.
#ifndef MEM_FORMAT_H
#define MEM_FORMAT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

/// Largest field width, and largest precision of a number. It limits the text that one conversion can make.
constexpr int MEM_FORMAT_LARGEST_FIELD = 1 << 20;

/// A text under construction. It is copied into the caller's string only when it is complete, so that arguments may
/// point into that string, and the string grows once. Short texts need no memory of the heap.
class MEM_FORMAT_BUFFER
{
public:
    MEM_FORMAT_BUFFER() = default;
    MEM_FORMAT_BUFFER(MEM_FORMAT_BUFFER const &) = delete;
    MEM_FORMAT_BUFFER &operator=(MEM_FORMAT_BUFFER const &) = delete;

    void append(char const *text, std::size_t size)
    {
        if (size > sizeof m_short - m_short_size || !m_long.empty()) {
            spill().append(text, size);
            return;
        }
        std::memcpy(m_short + m_short_size, text, size);
        m_short_size += size;
    }
    void append(std::size_t count, char c)
    {
        if (count > sizeof m_short - m_short_size || !m_long.empty()) {
            spill().append(count, c);
            return;
        }
        std::memset(m_short + m_short_size, c, count);
        m_short_size += count;
    }
    char const *data() const { return m_long.empty() ? m_short : m_long.data(); }
    std::size_t size() const { return m_long.empty() ? m_short_size : m_long.size(); }

private:
    // From the first text that does not fit on, the whole text is in the string.
    std::string &spill()
    {
        if (m_long.empty())
            m_long.assign(m_short, m_short_size);
        return m_long;
    }

    std::size_t m_short_size = 0;
    std::string m_long;
    char m_short[480];
};

/// Flags, width and precision of one conversion.
struct MEM_FORMAT_OPTIONS
{
    bool left = false;        // -
    bool plus = false;        // +
    bool blank = false;       // space
    bool alternative = false; // #
    bool zero = false;        // 0
    int width = 0;
    int precision = -1; // negative: none given
};

/// Appends a whole number. `radix` is 8, 10 or 16; `sign` is the sign character, 0 for none.
void mem_format_whole(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, std::uint64_t magnitude,
                      unsigned radix, bool upper, char sign);

/// Appends a floating-point number by the conversion e, f, g, a or its capital.
void mem_format_real(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, double value, char conversion);
void mem_format_real(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, long double value, char conversion);

/// Appends a text with blanks up to the width; flags other than left do not matter.
void mem_format_padded(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, char const *text, std::size_t size);

#endif
