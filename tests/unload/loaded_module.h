// A library that a test loads and unloads while it runs, and the resources of the process that a library may keep.
#ifndef TESTS_UNLOAD_LOADED_MODULE_H
#define TESTS_UNLOAD_LOADED_MODULE_H

#include <cstddef>
#include <string>

class LoadedModule
{
public:
    /// Loads a library from the directory of the test. Throws std::runtime_error with the loader's message.
    explicit LoadedModule(std::string const &file_name);
    ~LoadedModule();
    LoadedModule(LoadedModule const &) = delete;
    LoadedModule &operator=(LoadedModule const &) = delete;

    template <typename Function>
    Function *function(char const *name) const
    {
        return reinterpret_cast<Function *>(address_of(name));
    }

private:
    void *address_of(char const *name) const;

    void *m_handle;
};

/// Whether a library of that file name, from the directory of the test, is in the process.
bool is_module_loaded(std::string const &file_name);

/// The slots for values of threads that the process can still make.
std::size_t free_slot_count();

#endif
