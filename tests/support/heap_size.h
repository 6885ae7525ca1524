// The size of a block as the platform's heap itself reports it.
#ifndef TESTS_SUPPORT_HEAP_SIZE_H
#define TESTS_SUPPORT_HEAP_SIZE_H

#include <cstdint>

#include <malloc.h>

/// The usable bytes of a block of operator new; not one of an alignment of its own.
inline std::int64_t heap_size(void *block)
{
#ifdef _WIN32
    return static_cast<std::int64_t>(_msize(block));
#else
    return static_cast<std::int64_t>(malloc_usable_size(block));
#endif
}

#endif
