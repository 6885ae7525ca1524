// Memory that the system has to find pages for.
#ifndef TESTS_SUPPORT_RESIDENT_MEMORY_H
#define TESTS_SUPPORT_RESIDENT_MEMORY_H

#include <cstddef>
#include <memory>

/// Every page of it is written.
inline std::unique_ptr<char[]> resident_bytes(std::size_t bytes)
{
    std::unique_ptr<char[]> memory(new char[bytes]);
    for (std::size_t i = 0; i < bytes; i += 1024)
        static_cast<char volatile *>(memory.get())[i] = 1;
    return memory;
}

#endif
