#include "err/os/err_os_symbols_linux.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <dwarf.h>
#include <elfutils/libdw.h>
#include <elfutils/libdwfl.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace {

// An address inside the call that returns to `return_address`. The return address itself may belong to the next
// function, if the call is the last instruction of a function that never returns.
std::uintptr_t call_of(void const *return_address)
{
    return reinterpret_cast<std::uintptr_t>(return_address) - 1;
}

// libdw and the functions of it that are used. The library is loaded in the child alone, so that it costs nothing
// and ends nothing in the process itself. If it is missing, all functions are null.
struct LibdwFunctions
{
    LibdwFunctions() : library(dlopen("libdw.so.1", RTLD_NOW | RTLD_LOCAL))
    {
        is_there = find(begin, "dwfl_begin") && find(end, "dwfl_end") && find(find_elf, "dwfl_linux_proc_find_elf") &&
                   find(find_by_build_id, "dwfl_build_id_find_debuginfo") &&
                   find(report_process, "dwfl_linux_proc_report") && find(report_end, "dwfl_report_end") &&
                   find(module_of, "dwfl_addrmodule") && find(symbol_of, "dwfl_module_addrinfo") &&
                   find(line_of, "dwfl_module_getsrc") && find(line_info, "dwfl_lineinfo") &&
                   find(unit_of, "dwfl_module_addrdie") && find(scopes_of, "dwarf_getscopes") &&
                   find(scopes_around, "dwarf_getscopes_die") && find(tag_of, "dwarf_tag") &&
                   find(name_of, "dwarf_diename") && find(attribute_of, "dwarf_attr_integrate") &&
                   find(string_of, "dwarf_formstring") && find(number_of, "dwarf_formudata") &&
                   find(files_of, "dwarf_getsrcfiles") && find(file_of, "dwarf_filesrc");
    }

    void *library;
    decltype(&dwfl_begin) begin = nullptr;
    decltype(&dwfl_end) end = nullptr;
    decltype(&dwfl_linux_proc_find_elf) find_elf = nullptr;
    decltype(&dwfl_build_id_find_debuginfo) find_by_build_id = nullptr;
    decltype(&dwfl_linux_proc_report) report_process = nullptr;
    decltype(&dwfl_report_end) report_end = nullptr;
    decltype(&dwfl_addrmodule) module_of = nullptr;
    decltype(&dwfl_module_addrinfo) symbol_of = nullptr;
    decltype(&dwfl_module_getsrc) line_of = nullptr;
    decltype(&dwfl_lineinfo) line_info = nullptr;
    decltype(&dwfl_module_addrdie) unit_of = nullptr;
    decltype(&dwarf_getscopes) scopes_of = nullptr;
    decltype(&dwarf_getscopes_die) scopes_around = nullptr;
    decltype(&dwarf_tag) tag_of = nullptr;
    decltype(&dwarf_diename) name_of = nullptr;
    decltype(&dwarf_attr_integrate) attribute_of = nullptr;
    decltype(&dwarf_formstring) string_of = nullptr;
    decltype(&dwarf_formudata) number_of = nullptr;
    decltype(&dwarf_getsrcfiles) files_of = nullptr;
    decltype(&dwarf_filesrc) file_of = nullptr;
    bool is_there = false;

private:
    template <typename Function>
    bool find(Function &function, char const *name) const
    {
        function = library == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(library, name));
        return function != nullptr;
    }
};

LibdwFunctions const &libdw()
{
    static LibdwFunctions const functions;
    return functions;
}

// Symbol tables and line tables of the modules in this process. Where it fails, it leaves a frame as it is.
class DebugInfo
{
public:
    DebugInfo()
    {
        if (!libdw().is_there)
            return;
        // Separate debugging files are searched for on this machine alone, by build id: the standard search of the
        // library may use the network.
        static Dwfl_Callbacks const CALLBACKS = {libdw().find_elf, libdw().find_by_build_id, nullptr, nullptr};
        m_dwfl.reset(libdw().begin(&CALLBACKS));
        if (m_dwfl != nullptr && libdw().report_process(m_dwfl.get(), getpid()) == 0)
            libdw().report_end(m_dwfl.get(), nullptr, nullptr);
    }

    // Puts more into what the loader knows of the function that contains a call.
    void complete(ERR_OS_LINE &function, std::uintptr_t call) const
    {
        // There is a session only if all the functions were found. NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
        Dwfl_Module *module = m_dwfl == nullptr ? nullptr : libdw().module_of(m_dwfl.get(), call);
        if (module == nullptr)
            return;
        // The symbol table has names that the loader does not know, since the loader knows the exported ones alone.
        GElf_Off offset = 0;
        GElf_Sym symbol;
        if (char const *name = libdw().symbol_of(module, call, &offset, &symbol, nullptr, nullptr, nullptr)) {
            function.function = name;
            function.function_offset = offset + 1;
        }
        Dwfl_Line *line = libdw().line_of(module, call);
        if (line == nullptr)
            return;
        if (char const *file = libdw().line_info(line, nullptr, &function.line, nullptr, nullptr, nullptr))
            function.file = file;
    }

    // Passes on the lines of the functions that are inlined at a call, innermost first. The line table gives the
    // innermost place, and the entry of each inlined function gives the place of its call. Then sets the place in
    // `function` to the one at which it would call them. False if there are none.
    bool send_inlined(std::size_t index, ERR_OS_LINE &function, std::uintptr_t call, ERR_OS_RECEIVER &receiver) const
    {
        // As above. NOLINTBEGIN(clang-analyzer-core.CallAndMessage)
        Dwfl_Module *module = m_dwfl == nullptr ? nullptr : libdw().module_of(m_dwfl.get(), call);
        Dwarf_Addr bias = 0;
        Dwarf_Die *unit = module == nullptr ? nullptr : libdw().unit_of(module, call, &bias);
        if (unit == nullptr)
            return false;
        InlineScopes const scopes(unit, call - bias);
        ERR_OS_LINE place{{}, 0, function.file, function.line};
        bool is_first = true;
        for (Dwarf_Die &scope : scopes) {
            int const tag = libdw().tag_of(&scope);
            if (tag == DW_TAG_subprogram)
                break;
            if (tag != DW_TAG_inlined_subroutine)
                continue;
            place.function = function_name(scope);
            receiver.take(index, is_first, place);
            is_first = false;
            place = call_place(unit, scope);
        }
        if (is_first)
            return false;
        function.file = place.file;
        function.line = place.line;
        return true;
    }

private:
    // The scopes around an address, innermost first. Found in two steps: dwarf_getscopes() gives the innermost scope,
    // but goes from an inlined function to its definition; dwarf_getscopes_die() goes to the function around the call.
    class InlineScopes
    {
    public:
        InlineScopes(Dwarf_Die *unit, Dwarf_Addr address)
        {
            Dwarf_Die *scopes = nullptr;
            int const count = libdw().scopes_of(unit, address, &scopes);
            Array const innermost(scopes);
            if (count <= 0)
                return;
            scopes = nullptr;
            m_count = libdw().scopes_around(&innermost[0], &scopes);
            m_scopes.reset(scopes);
        }

        Dwarf_Die *begin() const { return m_scopes.get(); }
        Dwarf_Die *end() const { return m_count > 0 ? begin() + m_count : begin(); }

    private:
        struct Free
        {
            void operator()(Dwarf_Die *scopes) const { std::free(scopes); }
        };
        using Array = std::unique_ptr<Dwarf_Die[], Free>;

        Array m_scopes;
        int m_count = 0;
    };

    static char const *function_name(Dwarf_Die &function)
    {
        Dwarf_Attribute attribute;
        // The text of a missing attribute is null.
        char const *name = libdw().string_of(libdw().attribute_of(&function, DW_AT_linkage_name, &attribute));
        if (name == nullptr)
            name = libdw().name_of(&function);
        return name == nullptr ? "" : name;
    }

    static ERR_OS_LINE call_place(Dwarf_Die *unit, Dwarf_Die &inlined)
    {
        ERR_OS_LINE place{};
        Dwarf_Attribute attribute;
        Dwarf_Word number = 0;
        if (libdw().number_of(libdw().attribute_of(&inlined, DW_AT_call_line, &attribute), &number) == 0)
            place.line = static_cast<int>(number);
        Dwarf_Files *files = nullptr;
        std::size_t count = 0;
        if (libdw().files_of(unit, &files, &count) == 0 &&
            libdw().number_of(libdw().attribute_of(&inlined, DW_AT_call_file, &attribute), &number) == 0) {
            char const *const file = libdw().file_of(files, number, nullptr, nullptr);
            place.file = file == nullptr ? "" : file;
        }
        return place;
    }

    // NOLINTEND(clang-analyzer-core.CallAndMessage)

    struct End
    {
        void operator()(Dwfl *dwfl) const { libdw().end(dwfl); }
    };
    std::unique_ptr<Dwfl, End> m_dwfl;
};

// The exported function that contains a call.
ERR_OS_LINE describe_by_loader(std::uintptr_t call)
{
    ERR_OS_LINE function{};
    Dl_info info;
    if (dladdr(reinterpret_cast<void const *>(call), &info) != 0 && info.dli_sname != nullptr) {
        function.function = info.dli_sname;
        function.function_offset = call + 1 - reinterpret_cast<std::uintptr_t>(info.dli_saddr);
    }
    return function;
}

// The name in the source of a function that has this name in the linker; any other text is returned unchanged. It stays
// in memory: the process is a child that ends soon.
std::string_view demangled(std::string_view name)
{
    int status = 0;
    char const *const text = abi::__cxa_demangle(name.data(), nullptr, nullptr, &status);
    return text == nullptr ? name : text;
}

void send_function(ERR_OS_QUESTION const &question, std::size_t index, bool is_first, ERR_OS_LINE function,
                   ERR_OS_RECEIVER &receiver)
{
    if (function.function.empty() && is_first)
        return;
    if (question.is_demangled)
        function.function = demangled(function.function);
    receiver.take(index, is_first, function);
}

} // namespace

void err_os_describe_by_loader(ERR_OS_QUESTION const &question, ERR_OS_RECEIVER &receiver)
{
    for (std::size_t i = 0; i < question.count; ++i)
        send_function(question, i, /*is_first=*/true, describe_by_loader(call_of(question.addresses[i])), receiver);
}

void err_os_describe_by_debug_info(ERR_OS_QUESTION const &question, ERR_OS_RECEIVER &receiver)
{
    DebugInfo const debug_info;
    for (std::size_t i = 0; i < question.count; ++i) {
        std::uintptr_t const call = call_of(question.addresses[i]);
        ERR_OS_LINE function = describe_by_loader(call);
        debug_info.complete(function, call);
        bool const has_inlined = question.with_inlined && debug_info.send_inlined(i, function, call, receiver);
        send_function(question, i, !has_inlined, function, receiver);
    }
}
