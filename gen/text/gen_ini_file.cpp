#include "gen_string_sys.h"

#include "gen/os/gen_os_ini.h"
#include "gen/text/gen_ini_text.h"

namespace {

// How long a change waits for those of other threads and processes.
constexpr int LOCK_MSEC = 10'000;

} // namespace

int gen_writeprivateprofilestring(char const *section, char const *key, char const *value, char const *file)
{
    int result = 0;
    if (gen_os_write_private_profile_string(section, key, value, file, LOCK_MSEC, result))
        return result;
    if (file == nullptr)
        return 0;
    auto const set_key = [&](std::string &text) { return gen_set_ini_key(text, section, key, value); };
    return gen_os_change_file(file, LOCK_MSEC, set_key) ? 1 : 0;
}
