#include "expect.h"
#include "gen_machine_sys.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

char l_logged[1000];

void log(char const *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(l_logged, sizeof l_logged, format, arguments);
    va_end(arguments);
}

} // namespace

int main()
{
    // example
    expect(available > 0, "memory is available");
    expect(std::string(l_logged).find(", " + platform) != std::string::npos && !platform.empty(),
           "the platform has a name");
}
