#include "gen_string_sys.h"

#include "gen/os/gen_os.h"
#include "gen/text/gen_ini_text.h"

int gen_writeprivateprofilestring(char const *section, char const *key, char const *value, char const *file)
{
    int result = 0;
    if (gen_os_write_private_profile_string(section, key, value, file, result))
        return result;
    std::string former;
    if (file == nullptr || !gen_os_read_file(file, former))
        return 0;
    std::string text = former;
    if (!gen_set_ini_key(text, section, key, value))
        return 0;
    return text == former || gen_os_replace_file(file, text) ? 1 : 0;
}
