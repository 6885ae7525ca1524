// Functions of libraries that are in every process of Windows, or may be, but for which there is no import library.
#ifndef SYS_OS_FUNCTION_WINDOWS_H
#define SYS_OS_FUNCTION_WINDOWS_H

#include <windows.h>

/// Null if the library is not loaded or has no function of that name.
template <typename Function>
Function sys_os_find_function(char const *library, char const *name)
{
    HMODULE const module = GetModuleHandleA(library);
    FARPROC const function = module == nullptr ? nullptr : GetProcAddress(module, name);
    return reinterpret_cast<Function>(reinterpret_cast<void *>(function));
}

#endif
