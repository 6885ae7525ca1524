#include "thr_sys.h"

#include "sys/sys_module.h"
#include "thr/os/thr_os.h"

#include <cstring>
#include <new>
#include <string>

namespace {

// The module that thr_drl_init() named; null before it and after thr_drl_fini(). No exit handler
// releases it, so that the two calls work at any point of the exit.
std::string *l_module_fullpath = nullptr;

} // namespace

void thr_drl_init(char const *module_fullpath)
{
    thr_drl_fini();
    try {
        l_module_fullpath = new std::string(module_fullpath == nullptr ? "" : module_fullpath);
    } catch (std::bad_alloc const &) {
        // Nothing depends on it.
    }
}

void thr_drl_fini()
{
    delete l_module_fullpath;
    l_module_fullpath = nullptr;
}

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
