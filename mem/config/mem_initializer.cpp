#include "mem_sys.h"

#include "mem/config/mem_cfg.h"

// Everything else of the library is constant-initialised and needs no set-up.
MEM_INITIALIZER::MEM_INITIALIZER(char const *)
{
    mem_cfg_prepare();
}

// Exit handlers of other libraries may still ask and tell, so nothing is taken down.
MEM_INITIALIZER::~MEM_INITIALIZER() = default;
