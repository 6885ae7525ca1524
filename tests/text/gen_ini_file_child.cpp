// Sets keys in the file of the first argument: "w<writer>k<number>" to the number, for the writer of the second
// argument and as many numbers as the third requests. Fails if one can't be set.
#include "gen_string_sys.h"

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argument_count, char const **arguments)
{
    if (argument_count != 4)
        return 2;
    long const count = std::strtol(arguments[3], nullptr, 10);
    for (long number = 0; number < count; ++number) {
        std::string const value = std::to_string(number);
        std::string const key = std::string("w") + arguments[2] + "k" + value;
        if (gen_writeprivateprofilestring("keys", key.c_str(), value.c_str(), arguments[1]) == 0) {
            std::printf("can't set %s\n", key.c_str());
            return 1;
        }
    }
    return 0;
}
