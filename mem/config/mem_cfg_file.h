// Configuration files: their bytes, their lines and the values in them. All functions but the first are pure.
#ifndef MEM_CFG_FILE_H
#define MEM_CFG_FILE_H

#include <atomic>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// One value of the configuration.
struct MEM_CFG_ENTRY
{
    std::string value;
    std::string origin; // "<file>:<line>" or the call that set it
    // The kinds of queries for which its value was reported as unreadable, as bits.
    std::atomic<unsigned> reported{0};
};

using MEM_CFG_ENTRIES = std::map<std::string, std::shared_ptr<MEM_CFG_ENTRY>, std::less<>>;

/// A larger file is not read.
constexpr std::size_t MEM_CFG_LARGEST_FILE = std::size_t(16) << 20;

/// Lines of one file that are reported one by one; the others are counted.
constexpr std::size_t MEM_CFG_MOST_REPORTS = 20;

/// Reads a whole regular file. If it can't, or if the file is too large, the reason is added to the problems.
///
/// @param is_named  whether the user named the file. Otherwise a missing one is no problem
/// @param files     the identities of the files whose reasons are known by now; a reason is added once for each file
bool mem_cfg_read_file(std::string const &path, bool is_named, std::string &text, std::set<std::string> &files,
                       std::vector<std::string> &problems);

/// Adds the values of a file's text, named `path` in reports. A key that occurs twice has its last value.
void mem_cfg_parse(std::string const &path, std::string_view text, MEM_CFG_ENTRIES &entries,
                   std::vector<std::string> &problems);

/// Return false, and leave the output alone, if the text is not a switch, or not a signed number of 32 bits.
bool mem_cfg_parse_switch(std::string_view text, bool &is_on);
bool mem_cfg_parse_number(std::string_view text, int &number);

/// The text in double quotes, for a message: "?" for each control character, and cut to a readable length.
std::string mem_cfg_quoted(std::string_view text);

#endif
