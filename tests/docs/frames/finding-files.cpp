#include "expect.h"
#include "gen_path_sys.h"

#include <list>
#include <string>
#include <utility>
#include <vector>

int main()
{
    // example

    expect(gen_project_lib_fio_paths()->size() == 3, "case doesn't count in the list of libraries");
    expect(files.empty(), "there are no such files");
    char const *const text = top;
    expect(*text == '\0' && top.fullpath().empty(), "an empty path says that nothing was found");
}
