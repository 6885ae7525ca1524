// Prints, one line each, what the library knows of the installation that this program finds itself in. Its arguments
// are done in order before that: "init" starts the process as a tool does, "qt" declares it a Qt process, "replace"
// replaces the program's file as an update does, where the system permits it.
#include "gen_exe_sys.h"
#include "gen_path_sys.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

void replace_file(std::filesystem::path const &file)
{
    std::filesystem::path fresh = file;
    fresh += ".new";
    std::error_code ignored;
    std::filesystem::copy_file(file, fresh, ignored);
    std::filesystem::rename(fresh, file, ignored);
}

void print(char const *name, std::string const &text)
{
    std::printf("%s=%s\n", name, text.c_str());
}

void print_variable(char const *name)
{
    char const *const value = std::getenv(name);
    print(name, value == nullptr ? "" : value);
}

} // namespace

int main(int argument_count, char const **arguments)
{
    for (int i = 1; i < argument_count; ++i) {
        if (std::strcmp(arguments[i], "init") == 0)
            gen_exe_init(argument_count, arguments);
        if (std::strcmp(arguments[i], "qt") == 0)
            gen_set_is_qt(true);
        if (std::strcmp(arguments[i], "replace") == 0)
            replace_file(arguments[0]);
    }
    print("executable", gen_get_executable_fullpath());
    print("library", gen_get_library_fullpath("zel_gen"));
    print("module", gen_get_module_fullpath());
    print("module_path", gen_get_module_path());
    print("module_filename", gen_get_module_filename());
    print("root", gen_get_kalvern_path());
    print("is_kalvern", gen_get_is_kalvern_exe() ? "yes" : "no");
    print("ip", gen_get_ip_path());
    print_variable("KALVERN_ROOTDIR");
    print_variable("KALVERN_BINDIR");
    gen_exe_fini();
    print("root_after_fini", gen_get_kalvern_path());
    return 0;
}
