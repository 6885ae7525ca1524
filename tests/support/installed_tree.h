// A small installation in a fresh directory: the libraries and one tool, copied from where they were built.
#ifndef TESTS_SUPPORT_INSTALLED_TREE_H
#define TESTS_SUPPORT_INSTALLED_TREE_H

#include "gen_path_sys.h"
#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <map>
#include <sstream>
#include <string>

/// The probe as it was built: in a directory of its own under that of the libraries.
inline std::filesystem::path foreign_probe()
{
    std::filesystem::path const directory = std::filesystem::path(gen_get_module_path()) / "foreign";
    return directory / (ON_WINDOWS ? "gen_path_probe.exe" : "gen_path_probe");
}

class InstalledTree
{
public:
    /// Copies the libraries, and the probe under the name `tool`, into <root>/<bin>/.
    InstalledTree(std::string const &bin, std::string const &tool)
        : m_tool(m_dir.path() / "suite" / bin / (ON_WINDOWS ? tool + ".exe" : tool))
    {
        std::filesystem::create_directories(m_tool.parent_path());
        for (auto const &entry : std::filesystem::directory_iterator(gen_get_module_path()))
            if (is_library(entry.path().filename().string()))
                std::filesystem::copy_file(entry.path(), m_tool.parent_path() / entry.path().filename());
        std::filesystem::copy_file(foreign_probe(), m_tool);
    }

    std::filesystem::path const &tool() const { return m_tool; }
    /// The installation's root; its neighbours are in dir() too.
    std::string root() const { return m_dir.text("suite/"); }
    TempDir const &dir() const { return m_dir; }

private:
    static bool is_library(std::string const &name)
    {
        return ON_WINDOWS ? name.size() > 4 && name.substr(name.size() - 4) == ".dll"
                          : name.rfind("libzel_", 0) == 0 && name.find(".so.") != std::string::npos;
    }

    TempDir m_dir;
    std::filesystem::path m_tool;
};

/// The output of the probe: the text after the "=" of each line, by the word before it.
inline std::map<std::string, std::string> probe(std::filesystem::path const &tool, std::string const &arguments = "")
{
    ChildResult const result = run_child(tool.string(), arguments);
    std::map<std::string, std::string> lines{{"status", std::to_string(result.status)}, {"output", result.output}};
    std::istringstream in(result.output);
    for (std::string line; std::getline(in, line);)
        if (std::size_t const equals = line.find('='); equals != std::string::npos)
            lines[line.substr(0, equals)] = line.substr(equals + 1);
    return lines;
}

/// The output of the probe that lies where it was built.
inline std::map<std::string, std::string> probe_foreign()
{
    std::string path = gen_get_module_path(); // where Windows looks for the libraries
    if (char const *const former = std::getenv("PATH"))
        path += (ON_WINDOWS ? ';' : ':') + std::string(former);
    Environment const with_libraries("PATH", path.c_str());
    return probe(foreign_probe());
}

#endif
