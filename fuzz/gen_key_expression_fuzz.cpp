// Regular expressions in keys. The input is the expression that selects the bins of a memory log and, after the first
// line feed, up to 20 names of bins, one for each line. An expression that can't be compiled is an internal error, so
// it is left out here.
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"

#include "fuzz_target.h"

#include <boost/regex.hpp>

#include <filesystem>

namespace {

// The log of a selected bin is written into the current directory: one of our own, which has nothing else.
class Directory
{
public:
    Directory() : m_path(std::filesystem::temp_directory_path() / "gen_key_expression_fuzz")
    {
        std::filesystem::create_directories(m_path);
        std::filesystem::current_path(m_path);
    }

    void clear() const
    {
        for (std::filesystem::directory_entry const &entry : std::filesystem::directory_iterator(m_path))
            std::filesystem::remove(entry.path());
    }

private:
    std::filesystem::path m_path;
};

void ignore_message(MEM_MSG_KIND /*kind*/, char const * /*module*/, char const * /*text*/, void * /*context*/) {}

bool can_be_compiled(std::string const &expression)
{
    return boost::regex(expression, boost::regex::perl | boost::regex::no_except).status() == 0;
}

// The name is a part of a file name.
std::string bin_name(std::string const &text)
{
    std::string name = text.substr(0, 100);
    for (char &c : name)
        if (c == '\0' || c == '/' || c == '\\' || c == ':')
            c = '_';
    return name;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    static Directory const s_directory;
    std::vector<std::string> parts = split_input(data, size, '\n', 22);
    std::replace(parts[0].begin(), parts[0].end(), '\0', '0'); // keys end at a null character
    if (!can_be_compiled(parts[0]))
        return 0;
    mem_msg_redirect(ignore_message, nullptr);
    mem_cfg_set("gen_mem_fileline_profile_bin", parts[0].c_str());
    GEN_PROFILE_BINS::initialize("fuzz", /*primary=*/true, /*debug_messages=*/false);
    for (std::size_t i = 1; i + 1 < parts.size(); ++i) {
        std::string const name = bin_name(parts[i]);
        GEN_PROFILER const bin("FUZZ", name.c_str(), GEN_PB_FLAG_IMMEDIATE);
        GEN_PROFILER const inner("FUZZ", "inner", GEN_PB_FLAG_IMMEDIATE);
    }
    GEN_PROFILE_BINS::finalize("fuzz", /*close_root=*/true);
    s_directory.clear();
    return 0;
}
