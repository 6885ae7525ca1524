#include "ver_sys.h"

#include <new>

namespace {

// The directory that ver_set_module_path() named; null before it. No exit handler releases it.
std::string *l_module_path = nullptr;

} // namespace

void ver_set_module_path(char const *directory)
{
    delete l_module_path;
    l_module_path = nullptr;
    try {
        l_module_path = new std::string(directory == nullptr ? "" : directory);
    } catch (std::bad_alloc const &) {
        // Nothing depends on it.
    }
}

char const *ver_get_brisel_product_filename()
{
    return ZEL_PRODUCT_FILENAME;
}

std::string ver_get_copyright_string()
{
    return ZEL_COPYRIGHT;
}

char const *ver_get_version_string()
{
    return ZEL_VERSION_TEXT;
}

bool ver_is_release_branch()
{
    return ZEL_RELEASE_BRANCH != 0;
}
