#include "err_sys.h"

#include "err/err_demangle.h"
#include "err/os/err_os.h"

#include <algorithm>
#include <string_view>

namespace {

bool begins_with(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// The file decides if it is known, because a program may define functions with names of the library. Otherwise the name
// decides, in the form of the linker, which begins with the function's own scope and not with the type of its result.
bool is_standard_library(ERR_OS_LINE const &line)
{
    if (!line.file.empty())
        return line.file.find("/include/c++/") != std::string::npos;
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
    return {without_clones(err_demangled(line.function)), line.file, line.line, is_standard_library(line)};
}

} // namespace

std::vector<ERR_PLACE> err_describe_calls(void const *const *return_addresses, std::size_t count)
{
    std::vector<ERR_PLACE> places;
    places.reserve(count);
    for (ERR_OS_FRAME const &frame : err_os_describe(return_addresses, count, /*with_inlined=*/true)) {
        ERR_PLACE place{frame.object, frame.object_offset, {}};
        for (ERR_OS_LINE const &line : frame.inlined)
            place.lines.push_back(line_of(line));
        if (place.lines.empty() && !frame.function.empty())
            place.lines.push_back(line_of({frame.function, frame.file, frame.line}));
        places.push_back(std::move(place));
    }
    return places;
}
