// For processors that are not of the x86 family.
#include "gen/os/gen_os_machine.h"

bool gen_os_cpuid(GEN_CPUID &)
{
    return false;
}
