#include "sys/os/sys_os_code_page.h"

#include <windows.h>

bool sys_os_is_lead_byte(char byte)
{
    return IsDBCSLeadByte(static_cast<BYTE>(byte)) != FALSE;
}
