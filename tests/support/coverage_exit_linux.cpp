// In builds for coverage alone. Many tests end a process without its exit handlers, as an internal error does; the
// counts of what it ran would be lost. Each library has counts of its own, and a function that writes them.
#include <dlfcn.h>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace {

using Writer = void (*)();

// Found when the process starts, since the loader may not be used where the process ends.
struct Writers
{
    Writers() { dl_iterate_phdr(add, this); }

    static int add(dl_phdr_info *info, std::size_t, void *data)
    {
        Writers &writers = *static_cast<Writers *>(data);
        if (std::strstr(info->dlpi_name, "/libzel_") == nullptr || writers.count == writers.functions.size())
            return 0;
        void *const library = dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD);
        if (void *const function = library == nullptr ? nullptr : dlsym(library, "__gcov_dump"))
            writers.functions[writers.count++] = reinterpret_cast<Writer>(function);
        return 0;
    }

    std::array<Writer, 16> functions{};
    std::size_t count = 0;
};
Writers const l_writers;

} // namespace

// Visible, so that the libraries find it before that of the C library.
extern "C" [[gnu::noreturn, gnu::visibility("default")]] void _exit(int status)
{
    for (std::size_t i = 0; i < l_writers.count; ++i)
        l_writers.functions[i]();
    for (;;)
        syscall(SYS_exit_group, status);
}
