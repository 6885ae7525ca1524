#include "sys/os/sys_os_text_file_linux.h"
#include "sys/sys_fork.h"
#include "sys/sys_module.h"
#include "sys/sys_process.h"
#include "sys/sys_text.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <mutex>

#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

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

// Held during a walk over the loader's list of libraries, and over a fork. The list has a lock of its own, which stays
// locked in the child of a fork that finds another thread in a walk.
std::mutex l_walk_mutex;

// Set when the library is loaded that this file is linked into.
[[maybe_unused]] bool const l_walk_is_watched =
    sys_watch_forks([] { l_walk_mutex.lock(); }, [] { l_walk_mutex.unlock(); }, [] { l_walk_mutex.unlock(); });

// Null if the library is not loaded.
char const *find_loaded(char const *name)
{
    std::lock_guard<std::mutex> const lock(l_walk_mutex);
    LibraryQuery query{name, nullptr};
    dl_iterate_phdr(compare_library, &query);
    return query.loaded;
}

void set_module(char const *path, std::uintptr_t begin, SYS_MODULE &module)
{
    // The executable has the empty name in the loader's list.
    std::string_view const name = *path == '\0' ? program_invocation_short_name : sys_file_name(path).data();
    std::size_t const length = name.copy(module.name, sizeof module.name - 1);
    module.name[length] = '\0';
    module.begin = begin;
}

#if __GLIBC_PREREQ(2, 35)

bool find_module(std::uintptr_t address, SYS_MODULE &module)
{
    dl_find_object object;
    if (_dl_find_object(reinterpret_cast<void *>(address), &object) != 0)
        return false;
    set_module(object.dlfo_link_map->l_name, reinterpret_cast<std::uintptr_t>(object.dlfo_map_start), module);
    return true;
}

#else

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
    set_module(info->dlpi_name, begin_of(*info), query.module);
    return 1;
}

bool find_module(std::uintptr_t address, SYS_MODULE &module)
{
    ModuleQuery query{address, module};
    return dl_iterate_phdr(compare_module, &query) != 0;
}

#endif

bool is_same_file(char const *a, char const *b)
{
    struct stat a_facts, b_facts;
    return stat(a, &a_facts) == 0 && stat(b, &b_facts) == 0 && a_facts.st_dev == b_facts.st_dev &&
           a_facts.st_ino == b_facts.st_ino;
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
    return find_module(address, module);
}

std::size_t sys_read_executable_path(char *path, std::size_t size)
{
    constexpr char const *LINK = "/proc/self/exe";
    ssize_t const count = readlink(LINK, path, size);
    std::size_t const length = count < 0 ? 0 : static_cast<std::size_t>(count);
    if (length == size)
        return 0;
    // What the system appends if the file has no longer this name. A file may have such a name, too.
    constexpr std::string_view MARK = " (deleted)";
    path[length] = '\0';
    bool const is_marked = length > MARK.size() && std::string_view(path, length).substr(length - MARK.size()) == MARK;
    return is_marked && !is_same_file(path, LINK) ? length - MARK.size() : length;
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

bool sys_watch_forks(void (*before)(), void (*in_parent)(), void (*in_child)())
{
    // Linked into each library, which the system therefore takes for the owner of the functions.
    return pthread_atfork(before, in_parent, in_child) == 0;
}

bool sys_is_unloading()
{
    return l_is_unloading;
}
