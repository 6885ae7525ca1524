#include "err/err_demangle.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

std::string err_demangled(std::string const &name)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void *)> const text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status),
                                                       std::free);
    return text == nullptr ? name : text.get();
}
