// The code page of narrow text.
#ifndef SYS_OS_CODE_PAGE_H
#define SYS_OS_CODE_PAGE_H

/// Whether a byte can be the first of a character of two bytes in the active code page; never on Linux.
bool sys_os_is_lead_byte(char byte);

#endif
