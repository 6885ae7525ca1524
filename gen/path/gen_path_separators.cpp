#include "gen_path_sys.h"

#include <algorithm>

std::string gen_sync_path_separators(std::string const &text)
{
    std::string synced = text;
    std::replace(synced.begin(), synced.end(), '\\', '/');
    return synced;
}
