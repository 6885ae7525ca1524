// A library that leaves a file in the current directory when it is loaded.
#include <cstdio>

namespace {

struct Trace
{
    Trace()
    {
        if (std::FILE *const file = std::fopen("planted_library_was_loaded", "w"))
            std::fclose(file);
    }
};

Trace const l_trace;

} // namespace
