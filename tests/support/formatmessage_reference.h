// Message templates expanded by the plainest means: two scans, character by character, with a string for the conversion
// of each insert. The conversions have room without limit; if those of a template fill the area of the library, the
// results differ.
#ifndef TESTS_SUPPORT_FORMATMESSAGE_REFERENCE_H
#define TESTS_SUPPORT_FORMATMESSAGE_REFERENCE_H

#include "mem_sys.h"

#include <cstddef>
#include <string>

class FormatMessageReference
{
public:
    FormatMessageReference(std::string const &format, char *slots)
        : m_format(format.c_str()), m_slots(slots), m_cursor(slots)
    {
    }

    std::string text()
    {
        scan(/*prints=*/false);
        scan(/*prints=*/true);
        return m_out;
    }

private:
    void scan(bool prints)
    {
        for (char const *p = m_format; *p != '\0';) {
            std::string const two(p, p[1] == '\0' ? 1 : 2);
            bool const is_pair = two == "\r\n" || two == "\n\r";
            if (two[0] != '%') {
                print(prints, is_pair ? "\r\n" : two.substr(0, 1));
                p += is_pair ? 2 : 1;
            } else if (two == "%0")
                return;
            else if (two.size() == 2 && two[1] >= '1' && two[1] <= '9')
                p = insert(prints, p + 1);
            else {
                print(prints, two == "%%" ? "%" : two);
                p += two.size();
            }
        }
    }

    char const *insert(bool prints, char const *p)
    {
        std::size_t number = static_cast<std::size_t>(*p++ - '0');
        if (*p >= '0' && *p <= '9')
            number = 10 * number + static_cast<std::size_t>(*p++ - '0');
        std::string spec = "%s";
        if (*p == '!') {
            std::string const rest = p + 1;
            std::size_t const end = rest.find('!');
            spec = "%" + rest.substr(0, end);
            p += end == std::string::npos ? 1 + rest.size() : 2 + end;
        }
        m_specs[number] = spec;
        if (prints)
            print_argument(number);
        return p;
    }

    void print_argument(std::size_t number)
    {
        if (number <= m_position) {
            m_position = 0;
            m_cursor = m_slots;
        }
        std::string value;
        while (m_position < number) {
            value.clear();
            ++m_position;
            if (m_specs[m_position].empty())
                m_cursor += 8;
            else
                stl_output(&value, m_specs[m_position].c_str(), m_cursor);
        }
        m_out += value;
    }

    void print(bool prints, std::string const &text)
    {
        if (prints)
            m_out += text;
    }

    char const *m_format;
    char *m_slots;
    char *m_cursor;
    std::size_t m_position = 0;
    std::string m_specs[100];
    std::string m_out;
};

#endif
