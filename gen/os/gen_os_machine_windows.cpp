#include "gen/os/gen_os_machine.h"

#include <windows.h>

#include <memory>

namespace {

struct CloseKey
{
    void operator()(HKEY key) const { RegCloseKey(key); }
};

// The registry key of the first processor; null if it can't be opened. It stays open, because every query reads it.
HKEY processor_key()
{
    static std::unique_ptr<HKEY__, CloseKey> const KEY([] {
        HKEY opened = nullptr;
        return RegOpenKeyExA(HKEY_LOCAL_MACHINE, "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", 0, KEY_READ,
                             &opened) == ERROR_SUCCESS
                   ? opened
                   : nullptr;
    }());
    return KEY.get();
}

} // namespace

bool gen_os_read_processor_count(int &count)
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    count = static_cast<int>(info.dwNumberOfProcessors);
    return true;
}

bool gen_os_read_affinity(std::uint64_t &process_mask, std::uint64_t &system_mask)
{
    DWORD_PTR process, system;
    if (!GetProcessAffinityMask(GetCurrentProcess(), &process, &system))
        return false;
    process_mask = process;
    system_mask = system;
    return true;
}

bool gen_os_move_thread(std::uint32_t processor_bit)
{
    return SetThreadAffinityMask(GetCurrentThread(), processor_bit) != 0;
}

bool gen_os_release_thread(std::uint64_t process_mask)
{
    return SetThreadAffinityMask(GetCurrentThread(), process_mask) != 0;
}

bool gen_os_read_nominal_mhz(int &mhz)
{
    HKEY const key = processor_key();
    DWORD value;
    DWORD size = sizeof value;
    if (key == nullptr ||
        RegQueryValueExA(key, "~MHz", nullptr, nullptr, reinterpret_cast<BYTE *>(&value), &size) != ERROR_SUCCESS)
        return false;
    mhz = static_cast<int>(value);
    return true;
}
