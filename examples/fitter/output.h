// A file of results: it is complete, or it isn't there.
#ifndef FITTER_OUTPUT_H
#define FITTER_OUTPUT_H

#include <filesystem>
#include <string>

namespace fitter {

/// A file that is written in a directory of its own, next to its later place, and moved there when it is complete.
///
///     NewFile file("results/a.txt");
///     write(file.path());
///     file.move_into_place();
///
/// The directory has a random name and is for the user alone, so that nobody can put a link to another file where the
/// new one is going to be created. The destructor removes the directory, with the file if it was not moved.
class NewFile
{
public:
    /// @param place  the later path of the file
    ///
    /// Throws an Error if the directory of `place` is missing or can't be written to.
    explicit NewFile(std::filesystem::path place);
    ~NewFile();
    NewFile(NewFile const &) = delete;
    NewFile &operator=(NewFile const &) = delete;

    /// The directory to write to, with forward slashes.
    std::string directory() const;

    /// The path to write to: the name of the later file, in directory().
    std::string path() const;

    /// Moves the file to its place, where it replaces an existing file. Throws an Error if it can't.
    void move_into_place();

    /// Throws the Error that the file can't be written, with the reason if there is one.
    [[noreturn]] void fail(std::error_code const &reason = {}) const;

private:
    std::filesystem::path m_place;
    std::filesystem::path m_directory;
};

} // namespace fitter

#endif
