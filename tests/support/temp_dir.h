// A fresh directory of its own for a test, removed with everything in it at the end.
#ifndef TESTS_SUPPORT_TEMP_DIR_H
#define TESTS_SUPPORT_TEMP_DIR_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <system_error>

class TempDir
{
public:
    TempDir()
    {
        std::random_device random;
        do
            m_path = std::filesystem::canonical(std::filesystem::temp_directory_path()) /
                     ("zel_test_" + std::to_string(random()) + std::to_string(random()));
        while (!std::filesystem::create_directory(m_path));
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(TempDir const &) = delete;
    TempDir &operator=(TempDir const &) = delete;

    std::filesystem::path const &path() const { return m_path; }

    /// The directory with forward slashes and without one at the end, or a name under it.
    std::string text() const { return m_path.generic_string(); }
    std::string text(std::string const &name) const { return (m_path / name).generic_string(); }

    /// Writes a file under the directory, with the directories above it; the bytes stay as they are.
    std::string write(std::string const &name, std::string const &content) const
    {
        std::filesystem::path const file = m_path / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file.generic_string();
    }

    /// A file's bytes; empty if there is none.
    std::string read(std::string const &name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path m_path;
};

/// The names of the files and directories in a directory.
inline std::set<std::string> entry_names(std::filesystem::path const &directory)
{
    std::set<std::string> names;
    for (std::filesystem::directory_entry const &entry : std::filesystem::directory_iterator(directory))
        names.insert(entry.path().filename().string());
    return names;
}

/// The current directory of the process, put back at the end.
class CurrentDirectory
{
public:
    explicit CurrentDirectory(std::filesystem::path const &path) : m_former(std::filesystem::current_path())
    {
        std::filesystem::current_path(path);
    }
    ~CurrentDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_former, ignored);
    }
    CurrentDirectory(CurrentDirectory const &) = delete;
    CurrentDirectory &operator=(CurrentDirectory const &) = delete;

private:
    std::filesystem::path m_former;
};

#endif
