// Code page 932 under the library, on every platform.
#include "sys/os/sys_os_code_page.h"

bool sys_os_is_lead_byte(char byte)
{
    auto const code = static_cast<unsigned char>(byte);
    return (code >= 0x81 && code <= 0x9f) || (code >= 0xe0 && code <= 0xfc);
}
