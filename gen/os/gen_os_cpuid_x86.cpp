#include "gen/os/gen_os_machine.h"

#include <cpuid.h>

bool gen_os_cpuid(GEN_CPUID &query)
{
    __cpuid_count(query.m_eax, query.m_ecx, query.m_eax, query.m_ebx, query.m_ecx, query.m_edx);
    return true;
}
