// Former name of gen_debug_message.h.
#ifndef GEN_MESSAGE_H
#define GEN_MESSAGE_H

#include "gen/base/gen_debug_message.h"

template <typename... ARGUMENTS>
void gen_say(char const *format, ARGUMENTS const &...arguments)
{
    gen_debug_message(format, arguments...);
}

#endif
