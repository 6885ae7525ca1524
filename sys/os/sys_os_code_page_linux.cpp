#include "sys/os/sys_os_code_page.h"

bool sys_os_is_lead_byte(char)
{
    return false;
}
