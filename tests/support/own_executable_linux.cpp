#include "tests/support/own_executable.h"

#include <system_error>

std::filesystem::path own_executable()
{
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}
