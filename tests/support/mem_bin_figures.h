// The figures of a bin of the memory library, as its close gives them.
#ifndef TESTS_SUPPORT_MEM_BIN_FIGURES_H
#define TESTS_SUPPORT_MEM_BIN_FIGURES_H

#include "mem_sys.h"

#include <cstddef>
#include <string>

/// 1 where the close gives none.
struct Figures
{
    std::size_t open_bytes = 1;
    std::size_t close_bytes = 1;
    std::size_t peak_bytes = 1;
};

inline Figures close_bin(std::string const &tag = "")
{
    Figures f;
    mem_close_profile_bin(tag, &f.open_bytes, &f.close_bytes, &f.peak_bytes);
    return f;
}

#endif
