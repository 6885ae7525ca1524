#include "sys/os/sys_os_function_windows.h"
#include "sys/os/sys_os_thread.h"
#include "sys/sys_fork.h"
#include "sys/sys_module.h"
#include "sys/sys_path_text.h"
#include "sys/sys_process.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

using ShutdownQuery = BOOLEAN(NTAPI *)();

// Whether the library is kept. Each library has this state of its own, since it has these functions of its own.
std::atomic<bool> l_is_kept{false};

// The text of the module table, which is cut at 260 characters.
bool read_module_path(HMODULE module, char (&path)[MAX_PATH + 1])
{
    DWORD const length = GetModuleFileNameA(module, path, MAX_PATH);
    path[std::min<DWORD>(length, MAX_PATH)] = '\0';
    return length != 0;
}

// Null if the library is not loaded.
HMODULE find_loaded(char const *name)
{
    char native[MAX_PATH];
    std::size_t const size = std::strlen(name) + 1;
    if (size == 1 || size > sizeof native)
        return nullptr;
    // The system takes no "/" in the names of its modules.
    std::replace_copy(name, name + size, native, '/', '\\');
    return GetModuleHandleA(native);
}

} // namespace

bool sys_is_library_loaded(char const *name)
{
    return find_loaded(name) != nullptr;
}

bool sys_find_library(char const *name, std::string &path)
{
    HMODULE const module = find_loaded(name);
    char text[MAX_PATH + 1];
    if (module == nullptr || !read_module_path(module, text))
        return false;
    path = text;
    return true;
}

bool sys_find_module(std::uintptr_t address, SYS_MODULE &module)
{
    constexpr DWORD FLAGS = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE handle = nullptr;
    char path[MAX_PATH + 1];
    // For a null address the system would give the executable.
    if (address == 0 || !GetModuleHandleExA(FLAGS, reinterpret_cast<char const *>(address), &handle) ||
        !read_module_path(handle, path))
        return false;
    std::string_view name = path;
    name.remove_prefix(sys_find_last_separator(name) + 1); // npos + 1 is 0
    std::size_t const length = name.copy(module.name, sizeof module.name - 1);
    module.name[length] = '\0';
    module.begin = reinterpret_cast<std::uintptr_t>(handle);
    return true;
}

std::size_t sys_read_executable_path(char *path, std::size_t size)
{
    DWORD const length = GetModuleFileNameA(nullptr, path, static_cast<DWORD>(size));
    return length == size ? 0 : length; // a path that does not fit is cut
}

bool sys_keep_loaded()
{
    if (l_is_kept.load(std::memory_order_relaxed))
        return true;
    constexpr DWORD FLAGS = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN;
    HMODULE self = nullptr;
    if (!GetModuleHandleExA(FLAGS, reinterpret_cast<char const *>(&l_is_kept), &self))
        return false;
    l_is_kept.store(true, std::memory_order_relaxed);
    return true;
}

bool sys_is_debugged()
{
    return IsDebuggerPresent() != FALSE;
}

bool sys_is_last_thread_of_exit()
{
    auto const query = sys_os_find_function<ShutdownQuery>("ntdll.dll", "RtlDllShutdownInProgress");
    return query != nullptr && query() != FALSE;
}

bool sys_watch_forks(void (*)(), void (*)(), void (*)())
{
    return true;
}

bool sys_is_unloading()
{
    // An exit releases the static objects of the libraries after it has ended the other threads, and those of an
    // executable, which is never unloaded, before that.
    constexpr DWORD FLAGS = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE self = nullptr;
    bool const is_library = GetModuleHandleExA(FLAGS, reinterpret_cast<char const *>(&l_is_kept), &self) != FALSE &&
                            self != GetModuleHandleA(nullptr);
    return is_library && !sys_is_last_thread_of_exit();
}

std::int64_t sys_thread_self()
{
    return GetCurrentThreadId();
}
