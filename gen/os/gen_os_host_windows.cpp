#include "gen/os/gen_os_host.h"

#include <winsock2.h>

#include <windows.h>

#include "sys/os/sys_os_function_windows.h"

#include <memory>

namespace {

// Sizes that are passed to the calls for names and for the browser's version.
constexpr DWORD HOST_NAME_SIZE = 512;
constexpr DWORD USER_NAME_SIZE = 256;
constexpr DWORD BROWSER_VERSION_SIZE = 30;

using RtlGetVersionFunction = LONG(WINAPI *)(OSVERSIONINFOEXW *);

struct CloseKey
{
    void operator()(HKEY key) const { RegCloseKey(key); }
};

// The socket library stays with its initialisation, so that a process that loads this library again finds it done.
void keep_socket_library()
{
    HMODULE library = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN, "ws2_32.dll", &library);
}

// The socket library is initialised only when a look-up reports that it isn't.
hostent *resolve_host_name(char const *name)
{
    hostent *record = gethostbyname(name);
    if (WSAGetLastError() != WSANOTINITIALISED)
        return record;
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0)
        return nullptr;
    keep_socket_library();
    return gethostbyname(name);
}

} // namespace

bool gen_os_read_memory(GEN_HOST_MEMORY &memory)
{
    MEMORYSTATUS status;
    status.dwLength = sizeof status;
    GlobalMemoryStatus(&status);
    memory = {status.dwTotalPhys, status.dwTotalPageFile, status.dwAvailPageFile};
    return true;
}

bool gen_os_read_version(GEN_OS_VERSION &version)
{
    auto const rtl_get_version = sys_os_find_function<RtlGetVersionFunction>("ntdll.dll", "RtlGetVersion");
    OSVERSIONINFOEXW record{};
    record.dwOSVersionInfoSize = sizeof record;
    if (rtl_get_version == nullptr || rtl_get_version(&record) != 0)
        return false;
    version = {record.dwMajorVersion, record.dwMinorVersion, record.wProductType == VER_NT_WORKSTATION};
    return true;
}

bool gen_os_read_distribution(GEN_HOST_DISTRIBUTION &)
{
    return false;
}

char const *gen_os_platform_name()
{
    return "windows";
}

bool gen_os_read_host_name(std::string &name)
{
    char text[HOST_NAME_SIZE] = "";
    DWORD size = sizeof text;
    if (!GetComputerNameExA(ComputerNameDnsHostname, text, &size))
        return false;
    name = text;
    return true;
}

bool gen_os_read_user_name(std::string &name)
{
    char text[USER_NAME_SIZE + 1] = "";
    DWORD size = USER_NAME_SIZE;
    if (!GetUserNameA(text, &size))
        return false;
    name = text;
    return true;
}

bool gen_os_look_up_host(char const *name, std::vector<std::vector<unsigned char>> &addresses)
{
    hostent const *const record = resolve_host_name(name);
    if (record == nullptr)
        return false;
    for (char **address = record->h_addr_list; *address != nullptr; ++address)
        addresses.emplace_back(*address, *address + record->h_length);
    return true;
}

bool gen_os_read_browser_version(std::string &version)
{
    HKEY opened;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Internet Explorer", 0, KEY_QUERY_VALUE, &opened) !=
        ERROR_SUCCESS)
        return false;
    std::unique_ptr<HKEY__, CloseKey> const key(opened);
    char text[BROWSER_VERSION_SIZE + 1] = "";
    DWORD size = BROWSER_VERSION_SIZE;
    if (RegQueryValueExA(key.get(), "Version", nullptr, nullptr, reinterpret_cast<BYTE *>(text), &size) !=
        ERROR_SUCCESS)
        return false;
    version = text;
    return true;
}

char const *gen_os_container_file()
{
    return nullptr;
}
