#include "tests/unload/loaded_module.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

LoadedModule::LoadedModule(std::string const &file_name) : m_handle(LoadLibraryA(file_name.c_str()))
{
    if (m_handle == nullptr)
        throw std::runtime_error("cannot load " + file_name + ": error " + std::to_string(GetLastError()));
}

LoadedModule::~LoadedModule()
{
    FreeLibrary(static_cast<HMODULE>(m_handle));
}

void *LoadedModule::address_of(char const *name) const
{
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
}

bool is_module_loaded(std::string const &file_name)
{
    return GetModuleHandleA(file_name.c_str()) != nullptr;
}

std::size_t free_slot_count()
{
    std::vector<DWORD> slots;
    for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc())
        slots.push_back(slot);
    std::vector<DWORD> fiber_slots;
    for (DWORD slot = FlsAlloc(nullptr); slot != FLS_OUT_OF_INDEXES; slot = FlsAlloc(nullptr))
        fiber_slots.push_back(slot);
    for (DWORD const slot : slots)
        TlsFree(slot);
    for (DWORD const slot : fiber_slots)
        FlsFree(slot);
    return slots.size() + fiber_slots.size();
}
