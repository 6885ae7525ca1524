#include "gen_path_sys.h"

#include "sys/sys_path_text.h"

std::string gen_sync_path_separators(std::string const &text)
{
    std::string synced = text;
    sys_use_forward_slashes(synced);
    return synced;
}
