#include "tests/support/machine_dump.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

// Reads the lines of a dump one after the other.
class DumpReader
{
public:
    bool take_line(std::string const &line)
    {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string word;
        if (!(words >> word))
            return true;
        return take_entry(word, words) && (words >> std::ws).eof();
    }

    MachineDump finish()
    {
        MachineDump dump;
        std::uint64_t described = 0;
        for (auto const &[number, own] : m_own_leaves) {
            described |= std::uint64_t{1} << number;
            DumpedLeaves &leaves = dump.processors[number] = own;
            leaves.insert(m_common_leaves.begin(), m_common_leaves.end());
        }
        dump.has_masks = m_has_masks;
        dump.system_mask = m_system_mask.value_or(described);
        dump.process_mask = m_process_mask.value_or(dump.system_mask);
        dump.online_count = m_online_count.value_or(static_cast<int>(m_own_leaves.size()));
        return dump;
    }

private:
    bool take_entry(std::string const &word, std::istringstream &rest)
    {
        if (word == "system")
            return take_mask(rest, m_system_mask);
        if (word == "process")
            return take_mask(rest, m_process_mask);
        if (word == "online")
            return static_cast<bool>(rest >> m_online_count.emplace());
        if (word == "masks") {
            m_has_masks = false;
            std::string fail;
            return rest >> fail && fail == "fail";
        }
        if (word == "all") {
            m_block = &m_common_leaves;
            return true;
        }
        if (word == "cpu") {
            unsigned number;
            if (!(rest >> number) || number >= 64)
                return false;
            m_block = &m_own_leaves[number];
            return true;
        }
        return take_leaf(word, rest);
    }

    static bool take_mask(std::istringstream &rest, std::optional<std::uint64_t> &mask)
    {
        return static_cast<bool>(rest >> std::hex >> mask.emplace());
    }

    bool take_leaf(std::string const &word, std::istringstream &rest)
    {
        char *end;
        auto const leaf = static_cast<std::uint32_t>(std::strtoul(word.c_str(), &end, 16));
        std::string equal;
        if (m_block == nullptr || word.size() != 8 || *end != '\0' || !(rest >> equal) || equal != "=")
            return false;
        std::vector<std::optional<GEN_CPUID>> &answers = (*m_block)[leaf];
        std::istringstream::pos_type const start = rest.tellg();
        std::string fault;
        if (rest >> fault && fault == "fault") {
            answers.emplace_back();
            return true;
        }
        rest.seekg(start);
        GEN_CPUID answer;
        if (!(rest >> std::hex >> answer.m_eax >> answer.m_ebx >> answer.m_ecx >> answer.m_edx))
            return false;
        answers.emplace_back(answer);
        return true;
    }

    bool m_has_masks = true;
    std::optional<std::uint64_t> m_system_mask;
    std::optional<std::uint64_t> m_process_mask;
    std::optional<int> m_online_count;
    DumpedLeaves m_common_leaves;
    std::map<unsigned, DumpedLeaves> m_own_leaves;
    DumpedLeaves *m_block = nullptr;
};

} // namespace

MachineDump read_machine_dump(std::string const &text, int &error)
{
    DumpReader reader;
    std::istringstream lines(text);
    std::string line;
    error = 0;
    for (int number = 1; std::getline(lines, line); ++number)
        if (!reader.take_line(line) && error == 0)
            error = number;
    return reader.finish();
}

MachineDump load_machine_dump(std::string const &name)
{
    std::string const path = std::string(GEN_TEST_CPUID_DIRECTORY) + '/' + name + ".txt";
    std::ifstream file(path);
    std::ostringstream text;
    int error = 0;
    if (!file || !(text << file.rdbuf())) {
        std::fprintf(stderr, "%s: can't be read\n", path.c_str());
        std::abort();
    }
    MachineDump dump = read_machine_dump(text.str(), error);
    if (error != 0) {
        std::fprintf(stderr, "%s:%d: is no line of a dump\n", path.c_str(), error);
        std::abort();
    }
    return dump;
}
