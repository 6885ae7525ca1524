// What the library itself has to tell. Any thread.
#ifndef MEM_MSG_H
#define MEM_MSG_H

#include <string>

/// Writes "Warning: " and the text as a line to the standard error stream, whatever is redirected.
void mem_msg_warn(std::string const &text);

#endif
