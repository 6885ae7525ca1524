#include "err_sys.h"

#include "err/err_demangle.h"
#include "err/os/err_os.h"
#include "sys/sys_module.h"

#include <algorithm>
#include <string_view>

namespace {

// Large debug information may take long; but if nothing more comes, the caller goes on without the rest.
constexpr int TOTAL_MILLISECONDS = 600'000;
constexpr int SILENCE_MILLISECONDS = 30'000;

// Names of templates may be long.
constexpr std::size_t BUFFER_SIZE = std::size_t{256} * 1024;

bool begins_with(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// The file decides if it is known, because a program may define functions with names of the library. Otherwise the name
// decides, in the form of the linker, which begins with the function's own scope and not with the type of its result.
bool is_standard_library(ERR_OS_LINE const &line)
{
    if (!line.file.empty())
        return line.file.find("/include/c++/") != std::string_view::npos;
    constexpr std::string_view BEGINNINGS[] = {"_ZNSt", "_ZNKSt", "_ZSt", "_ZNSs", "_ZNKSs",        "_ZNSa",
                                               "_ZNSo", "_ZNSi",  "_Znw", "_Zna",  "_ZN9__gnu_cxx", "_ZNK9__gnu_cxx"};
    return std::any_of(std::begin(BEGINNINGS), std::end(BEGINNINGS),
                       [&line](std::string_view beginning) { return begins_with(line.function, beginning); });
}

// The compiler makes copies of a function for some of its calls. To the reader they are one function.
std::string without_clones(std::string const &function)
{
    return function.substr(0, function.find(" [clone "));
}

ERR_LINE line_of(ERR_OS_LINE const &line)
{
    return {without_clones(err_demangled(std::string(line.function))), std::string(line.file), line.line,
            is_standard_library(line)};
}

// Adds the lines to the places.
class PlaceLines final : public ERR_OS_RECEIVER
{
public:
    explicit PlaceLines(std::vector<ERR_PLACE> &places) : m_places(places) {}

    void take(std::size_t index, bool is_first, ERR_OS_LINE const &line) override
    {
        std::vector<ERR_LINE> &lines = m_places[index].lines;
        if (is_first)
            lines.clear();
        lines.push_back(line_of(line));
    }

private:
    std::vector<ERR_PLACE> &m_places;
};

ERR_PLACE place_of(void const *return_address)
{
    std::uintptr_t const address = reinterpret_cast<std::uintptr_t>(return_address);
    SYS_MODULE module;
    // The call lies before its return address, which may belong to the next module.
    if (!sys_find_module(address - 1, module))
        return {};
    return {module.name, address - module.begin, {}};
}

} // namespace

std::vector<ERR_PLACE> err_describe_calls(void const *const *return_addresses, std::size_t count)
{
    std::vector<ERR_PLACE> places;
    places.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        places.push_back(place_of(return_addresses[i]));
    if (count == 0)
        return places;
    std::vector<char> buffer(BUFFER_SIZE);
    PlaceLines lines(places);
    err_os_describe({return_addresses, count, /*with_inlined=*/true, /*is_demangled=*/false, TOTAL_MILLISECONDS,
                     SILENCE_MILLISECONDS, buffer.data(), buffer.size()},
                    lines);
    return places;
}
