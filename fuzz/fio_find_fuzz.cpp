// Lists of directories and patterns as texts. The input is the text; nothing accesses the disk.
#include "fio_sys.h"

#include "fuzz_target.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string text(data, data + size);
    std::replace(text.begin(), text.end(), '\0', '0'); // paths end at a null character

    bool const is_list =
        text.find(';') != std::string::npos || FIO_PATH(text).filename().find_first_of("*?") == std::string::npos;
    std::vector<std::string> expected;
    for (std::size_t start = 0; is_list && start < text.size();) {
        std::size_t const end = std::min(text.find(';', start), text.size());
        if (end != start)
            expected.push_back(FIO_PATH(text.substr(start, end - start)).fullpath());
        start = end + 1;
    }

    FIO_FIND find(text);
    std::list<FIO_PATH> *const paths = find.get_paths();
    require(paths != nullptr && paths->size() == expected.size());
    require(std::equal(paths->begin(), paths->end(), expected.begin(),
                       [](FIO_PATH const &path, std::string const &wanted) { return path.fullpath() == wanted; }));

    // A second text replaces the first, and the list keeps its address.
    find.init("a;b");
    require(find.get_paths() == paths && paths->size() == 2);
    find.init(text);
    require(paths->size() == expected.size());
    FIO_FIND const copy(*paths);
    return 0;
}
