// The system's call reads the file, changes a key and writes the file. Not every system keeps two calls apart, so that
// each runs under a mutex of the machine, whose name is made of the file's path.
#include "gen/os/gen_os_ini.h"

#include <cstdint>
#include <cstdio>

#include <windows.h>

namespace {

// The full path of a file, in lower case. A name without a directory means a file in the directory of Windows, and null
// the file of the system.
std::string full_path(char const *file)
{
    std::string path = file == nullptr ? "win.ini" : file;
    char buffer[MAX_PATH + 1] = {};
    if (path.find_first_of("/\\:") == std::string::npos && GetWindowsDirectoryA(buffer, MAX_PATH) != 0)
        path = std::string(buffer) + '\\' + path;
    if (DWORD const size = GetFullPathNameA(path.c_str(), sizeof buffer, buffer, nullptr);
        0 < size && size < sizeof buffer)
        path = buffer;
    CharLowerBuffA(path.data(), static_cast<DWORD>(path.size()));
    return path;
}

// A path may be longer than the name of a mutex, and contains separators, which such a name must not.
std::string mutex_name(std::string const &path)
{
    std::uint64_t hash = 14695981039346656037U; // FNV-1a
    for (char const c : path)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    char name[64];
    std::snprintf(name, sizeof name, "Global\\zel_gen_ini_%016llx", static_cast<unsigned long long>(hash));
    return name;
}

// A mutex that all users of the machine may lock.
HANDLE open_mutex(std::string const &name)
{
    SECURITY_DESCRIPTOR descriptor;
    if (!InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(&descriptor, /*bDaclPresent=*/TRUE, /*pDacl=*/nullptr, /*bDaclDefaulted=*/FALSE))
        return nullptr;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, &descriptor, /*bInheritHandle=*/FALSE};
    return CreateMutexA(&attributes, /*bInitialOwner=*/FALSE, name.c_str());
}

class FileLock
{
public:
    FileLock(char const *file, int msec) : m_mutex(open_mutex(mutex_name(full_path(file))))
    {
        if (m_mutex == nullptr)
            return;
        DWORD const result = WaitForSingleObject(m_mutex, static_cast<DWORD>(msec));
        // Abandoned by a process that was killed.
        m_is_locked = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    }
    ~FileLock()
    {
        if (m_is_locked)
            ReleaseMutex(m_mutex);
        if (m_mutex != nullptr)
            CloseHandle(m_mutex);
    }
    FileLock(FileLock const &) = delete;
    FileLock &operator=(FileLock const &) = delete;

    bool is_locked() const { return m_is_locked; }

private:
    HANDLE m_mutex;
    bool m_is_locked = false;
};

} // namespace

bool gen_os_write_private_profile_string(char const *section, char const *key, char const *value, char const *file,
                                         int lock_msec, int &result)
{
    FileLock const lock(file, lock_msec);
    result = lock.is_locked() ? WritePrivateProfileStringA(section, key, value, file) : 0;
    return true;
}

bool gen_os_change_file(char const *, int, std::function<bool(std::string &text)> const &)
{
    return false;
}
