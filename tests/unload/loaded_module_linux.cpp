#include "tests/unload/loaded_module.h"

#include <dlfcn.h>
#include <pthread.h>

#include <stdexcept>
#include <vector>

// The loader searches the directory of the test, since the search path of the test names it.
LoadedModule::LoadedModule(std::string const &file_name) : m_handle(dlopen(file_name.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_handle == nullptr)
        throw std::runtime_error(dlerror());
}

LoadedModule::~LoadedModule()
{
    dlclose(m_handle);
}

void *LoadedModule::address_of(char const *name) const
{
    return dlsym(m_handle, name);
}

bool is_module_loaded(std::string const &file_name)
{
    void *const handle = dlopen(file_name.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
        dlclose(handle);
    return handle != nullptr;
}

std::size_t free_slot_count()
{
    std::vector<pthread_key_t> keys;
    pthread_key_t key;
    while (pthread_key_create(&key, nullptr) == 0)
        keys.push_back(key);
    for (pthread_key_t const made : keys)
        pthread_key_delete(made);
    return keys.size();
}
