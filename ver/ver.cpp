#include "ver_sys.h"

// Every fact is fixed when the library is built, so no file of the installation is looked up and the directory isn't
// kept.
void ver_set_module_path(char const *) {}

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
