#include "tests/support/child_pipe.h"

// The command interpreter removes the outer quotes.
std::FILE *open_pipe(std::string const &command)
{
    return _popen(('"' + command + '"').c_str(), "rb");
}

int close_pipe(std::FILE *pipe)
{
    return _pclose(pipe);
}
