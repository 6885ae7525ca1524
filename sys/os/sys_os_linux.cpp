#include "sys/os/sys_os_text_file_linux.h"
#include "sys/sys_module.h"
#include "sys/sys_process.h"
#include "sys/sys_text.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>

namespace {

// Whether `loaded` is a link with a part of the version of `asked`, and leads to it: "libx.so.1.0" is asked for, and
// the loader has loaded "libx.so.1", a link to that file.
bool is_target_of_version_link(std::string_view asked, char const *loaded)
{
    if (!sys_is_version_of(sys_file_name(loaded), sys_file_name(asked)))
        return false;
    char target[PATH_MAX];
    return realpath(loaded, target) != nullptr && sys_library_names(asked, target);
}

// Each library has this state of its own, since it has these functions of its own.

// Whether the library is kept. Threads may find that out at once; the loader takes any number of references.
std::atomic<bool> l_is_kept{false};

// Set before the static objects of the library are released if it is unloaded, and after that if the process ends.
bool l_is_unloading = false;

// The exit releases the static objects of all libraries first, and then has the loader call the functions of this kind.
// An unload calls them first: the last of them, which the compiler adds to each library, releases its static objects.
[[gnu::destructor]] void begin_unload()
{
    l_is_unloading = true;
}

struct LibraryQuery
{
    std::string_view asked;
    char const *loaded; // the loader's own text, which is valid while the library is loaded; null until it is found
};

int compare_library(dl_phdr_info *info, std::size_t, void *data)
{
    LibraryQuery &query = *static_cast<LibraryQuery *>(data);
    char const *const loaded = info->dlpi_name;
    if (loaded == nullptr ||
        (!sys_library_names(query.asked, loaded) && !is_target_of_version_link(query.asked, loaded)))
        return 0;
    query.loaded = loaded;
    return 1;
}

// Null if the library is not loaded.
char const *find_loaded(char const *name)
{
    LibraryQuery query{name, nullptr};
    dl_iterate_phdr(compare_library, &query);
    return query.loaded;
}

struct ModuleQuery
{
    std::uintptr_t address;
    SYS_MODULE &module;
};

bool contains(dl_phdr_info const &info, std::uintptr_t address)
{
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        ElfW(Phdr) const &header = info.dlpi_phdr[i];
        if (header.p_type == PT_LOAD && address - info.dlpi_addr - header.p_vaddr < header.p_memsz)
            return true;
    }
    return false;
}

// The address of the first segment. Segments are in ascending order, and each is mapped from the start of a page.
std::uintptr_t begin_of(dl_phdr_info const &info)
{
    for (int i = 0; i < info.dlpi_phnum; ++i) {
        ElfW(Phdr) const &header = info.dlpi_phdr[i];
        if (header.p_type == PT_LOAD)
            return info.dlpi_addr + header.p_vaddr - (header.p_align > 1 ? header.p_vaddr % header.p_align : 0);
    }
    return info.dlpi_addr;
}

int compare_module(dl_phdr_info *info, std::size_t, void *data)
{
    ModuleQuery const &query = *static_cast<ModuleQuery *>(data);
    if (!contains(*info, query.address))
        return 0;
    // The executable has the empty name in the loader's list.
    std::string_view const name =
        *info->dlpi_name == '\0' ? program_invocation_short_name : sys_file_name(info->dlpi_name).data();
    std::size_t const length = name.copy(query.module.name, sizeof query.module.name - 1);
    query.module.name[length] = '\0';
    query.module.begin = begin_of(*info);
    return 1;
}

} // namespace

bool sys_is_library_loaded(char const *name)
{
    return find_loaded(name) != nullptr;
}

bool sys_find_library(char const *name, std::string &path)
{
    char const *const loaded = find_loaded(name);
    if (loaded == nullptr)
        return false;
    path = loaded;
    return true;
}

bool sys_find_module(std::uintptr_t address, SYS_MODULE &module)
{
    ModuleQuery query{address, module};
    return dl_iterate_phdr(compare_module, &query) != 0;
}

bool sys_keep_loaded()
{
    if (l_is_kept.load(std::memory_order_relaxed))
        return true;
    Dl_info info;
    void *map = nullptr;
    if (dladdr1(&l_is_kept, &info, &map, RTLD_DL_LINKMAP) == 0)
        return false;
    // The executable has the empty name.
    char const *const name = static_cast<link_map const *>(map)->l_name;
    if (*name != '\0' && dlopen(name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE) == nullptr)
        return false;
    l_is_kept.store(true, std::memory_order_relaxed);
    return true;
}

bool sys_is_debugged()
{
    // The number of the process that traces this one; 0 if there is none.
    std::uint64_t tracer = 0;
    return sys_find_number(SYS_OS_TEXT_FILE("/proc/self/status").text(), "TracerPid:", tracer) && tracer != 0;
}

bool sys_is_last_thread_of_exit()
{
    return false;
}

bool sys_is_unloading()
{
    return l_is_unloading;
}
