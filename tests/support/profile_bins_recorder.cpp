// A stand-in for the profile bins under the sources of the process frame: it records its calls in mem_record().
#include "gen_profile_bins_sys.h"
#include "tests/support/mem_recorder.h"

#include <cstdio>

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open_with_tag(char const *code_prefix, char const *name, unsigned flags,
                                                       char const *tag)
{
    char text[200];
    std::snprintf(text, sizeof text, "open %s %s 0x%x %s", code_prefix, name, flags, tag == nullptr ? "null" : tag);
    mem_record().calls.emplace_back(text);
    return nullptr;
}

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open_with_user_tag(char const *code_prefix, char const *name, unsigned flags,
                                                            char const *tag, char const *user_tag)
{
    mem_record().calls.push_back(std::string("user tag ") + user_tag);
    return open_with_tag(code_prefix, name, flags, tag);
}

void GEN_PROFILE_BINS::close(char const *name)
{
    mem_record().calls.push_back(std::string("close ") + (name == nullptr ? "null" : name));
}
