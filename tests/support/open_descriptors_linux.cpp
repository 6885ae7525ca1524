#include "tests/support/open_descriptors.h"

#include <filesystem>
#include <iterator>

std::size_t open_descriptor_count()
{
    // One of them is the descriptor of the directory itself.
    std::filesystem::directory_iterator const open("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open))) - 1;
}
