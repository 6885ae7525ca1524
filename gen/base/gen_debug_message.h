// Debug messages of the library, which go to the channel of zel_mem.
#ifndef GEN_DEBUG_MESSAGE_H
#define GEN_DEBUG_MESSAGE_H

#include "gen/base/gen_argument_slots.h"
#include "mem_sys.h"

/// Writes a debug message under the module "GEN".
template <typename... Arguments>
void gen_debug_message(char const *format, Arguments const &...arguments)
{
    mem_msg_local_vdebug("GEN", format, GEN_ARGUMENT_SLOTS<Arguments...>(arguments...).cursor());
}

#endif
