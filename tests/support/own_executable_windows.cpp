#include "tests/support/own_executable.h"

#include <windows.h>

std::filesystem::path own_executable()
{
    char path[MAX_PATH];
    DWORD const size = GetModuleFileNameA(nullptr, path, MAX_PATH);
    return size < MAX_PATH ? std::filesystem::path(path, path + size) : std::filesystem::path();
}
