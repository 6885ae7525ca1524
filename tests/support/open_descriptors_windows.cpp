#include "tests/support/open_descriptors.h"

#include <windows.h>

#include <cstdint>

// Each number is asked for, since wine doesn't know the sum. The system gives the numbers from the lowest on, in steps
// of four.
std::size_t open_descriptor_count()
{
    constexpr std::uintptr_t STEP = 4;
    constexpr std::uintptr_t END = 0x4000;
    std::size_t count = 0;
    for (std::uintptr_t number = STEP; number < END; number += STEP) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags))
            ++count;
    }
    return count;
}
