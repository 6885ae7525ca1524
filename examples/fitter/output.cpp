#include "output.h"

#include "error.h"

#include <random>
#include <system_error>
#include <utility>

namespace fitter {
namespace {

std::string random_name()
{
    std::random_device random;
    return "fitter_" + std::to_string(random()) + "_" + std::to_string(random()) + ".tmp";
}

// Creates the directory; false, with the reason, if it can't be created or somebody else put a file into it before it
// was closed to others.
bool make_private_directory(std::filesystem::path const &directory, std::error_code &reason)
{
    if (!std::filesystem::create_directory(directory, reason))
        return false;
    std::filesystem::permissions(directory, std::filesystem::perms::owner_all, reason);
    return !reason && std::filesystem::is_empty(directory, reason) && !reason;
}

} // namespace

NewFile::NewFile(std::filesystem::path place)
    : m_place(std::move(place)), m_directory(m_place.parent_path() / random_name())
{
    std::error_code reason;
    if (!make_private_directory(m_directory, reason))
        fail(reason);
}

NewFile::~NewFile()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_directory, ignored);
}

std::string NewFile::directory() const
{
    return m_directory.generic_string();
}

std::string NewFile::path() const
{
    return (m_directory / m_place.filename()).generic_string();
}

void NewFile::move_into_place()
{
    std::error_code reason;
    std::filesystem::rename(path(), m_place, reason);
    if (reason)
        fail(reason);
}

void NewFile::fail(std::error_code const &reason) const
{
    throw Error("cannot write \"" + m_place.generic_string() + "\"" + (reason ? ": " + reason.message() : ""));
}

} // namespace fitter
