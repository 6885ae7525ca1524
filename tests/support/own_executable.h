// The program that this process runs.
#ifndef TESTS_SUPPORT_OWN_EXECUTABLE_H
#define TESTS_SUPPORT_OWN_EXECUTABLE_H

#include <filesystem>

/// The full path of the test executable, in the platform's own form; empty if the system can't return it.
std::filesystem::path own_executable();

#endif
