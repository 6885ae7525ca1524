#include "mem/tracking/mem_table.h"

#include "sys/sys_text.h"

#include <ostream>

std::string mem_table_number(std::int64_t number)
{
    return mem_table_heading(std::to_string(number));
}

std::string mem_table_heading(std::string const &text)
{
    constexpr std::size_t WIDTH = 14;
    return std::string(text.size() < WIDTH ? WIDTH - text.size() : 0, ' ') + text + '\t';
}

std::string mem_table_text(std::string const &text)
{
    return sys_printable(text, ' ');
}

bool mem_table_write(std::ostream &out, std::string const &text)
{
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.flush();
    return out.good();
}
