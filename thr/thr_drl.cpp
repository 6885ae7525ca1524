#include "thr_sys.h"

#include "sys/sys_module.h"
#include "thr/os/thr_os.h"

#include <cstring>

// The loaders of both platforms need no preparation: the functions below work before and after these two.
void thr_drl_init(char const *) {}

void thr_drl_fini() {}

void thr_drl_construct_library_name(char *buffer, std::size_t size, char const *stem)
{
    if (buffer == nullptr || size == 0)
        return;
    *buffer = '\0';
    if (stem == nullptr || *stem == '\0')
        return;
    std::size_t const prefix_length = std::strlen(THR_OS_LIBRARY_PREFIX);
    std::size_t const stem_length = std::strlen(stem);
    std::size_t const suffix_size = std::strlen(THR_OS_LIBRARY_SUFFIX) + 1;
    if (stem_length >= size || prefix_length + stem_length + suffix_size > size)
        return;
    std::memcpy(buffer, THR_OS_LIBRARY_PREFIX, prefix_length);
    std::memcpy(buffer + prefix_length, stem, stem_length);
    std::memcpy(buffer + prefix_length + stem_length, THR_OS_LIBRARY_SUFFIX, suffix_size);
}

bool thr_drl_is_loaded(char const *name)
{
    return name != nullptr && *name != '\0' && sys_is_library_loaded(name);
}
