// The command line that the executable gave, kept for its readers outside the library.
#ifndef GEN_COMMAND_LINE_H
#define GEN_COMMAND_LINE_H

#include <string>

struct GEN_COMMAND_LINE
{
    std::string text; // empty until gen_set_command_line()
};

/// The command line; null before it is built and after its release at exit.
GEN_COMMAND_LINE *gen_command_line();

#endif
