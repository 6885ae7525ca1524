// Makes temporary files, as many as the third argument requests, in the directory of the first with the prefix of the
// second, and prints their paths, one a line. Fails if one can't be made.
#include "gen_path_sys.h"

#include <cstdio>
#include <cstdlib>

int main(int argument_count, char const **arguments)
{
    if (argument_count != 4)
        return 2;
    for (long count = std::strtol(arguments[3], nullptr, 10); count > 0; --count) {
        std::string const path = gen_create_temp_file(arguments[1], arguments[2]);
        if (path.empty())
            return 1;
        std::printf("%s\n", path.c_str());
    }
    return 0;
}
