#include "tests/support/child_pipe.h"

#include <sys/wait.h>

std::FILE *open_pipe(std::string const &command)
{
    return popen(command.c_str(), "r");
}

int close_pipe(std::FILE *pipe)
{
    int const status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
