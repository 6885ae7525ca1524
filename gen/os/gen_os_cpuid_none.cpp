// For processors of other architectures.
#include "gen/os/gen_os_machine.h"

bool gen_os_cpuid(GEN_CPUID &)
{
    return false;
}
