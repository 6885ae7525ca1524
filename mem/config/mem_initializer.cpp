#include "mem_sys.h"

#include "mem/config/mem_cfg.h"

// The rest of the library's state is constant-initialised or made by its first user.
MEM_INITIALIZER::MEM_INITIALIZER(char const *)
{
    mem_cfg_prepare();
}

// Exit handlers of other libraries may still query keys and emit messages, so nothing is destroyed.
MEM_INITIALIZER::~MEM_INITIALIZER() = default;
