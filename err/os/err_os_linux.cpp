#include "err/os/err_os.h"

#include "sys/sys_module.h"

#include <dlfcn.h>
#include <dwarf.h>
#include <elfutils/libdw.h>
#include <elfutils/libdwfl.h>
#include <link.h>
#include <unistd.h>
#include <unwind.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <memory>

namespace {

// The addresses of a function's code.
struct CodeRange
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;

    bool contains(std::uintptr_t address) const { return begin <= address && address < end; }
};

// The walk over the stack: the result, and the code of the two functions that run exit handlers.
struct StackWalk
{
    ERR_OS_STACK &stack;
    CodeRange exit;
    CodeRange quick_exit;
};

CodeRange code_range_of(void *function)
{
    Dl_info info;
    void *symbol = nullptr;
    if (dladdr1(function, &info, &symbol, RTLD_DL_SYMENT) == 0 || symbol == nullptr)
        return {};
    std::uintptr_t const begin = reinterpret_cast<std::uintptr_t>(info.dli_saddr);
    return {begin, begin + static_cast<ElfW(Sym) const *>(symbol)->st_size};
}

// An address inside the call that returns to `return_address`. The return address itself may belong to the next
// function, if the call is the last instruction of a function that never returns.
std::uintptr_t call_of(void const *return_address)
{
    return reinterpret_cast<std::uintptr_t>(return_address) - 1;
}

_Unwind_Reason_Code record_frame(_Unwind_Context *context, void *data)
{
    StackWalk &walk = *static_cast<StackWalk *>(data);
    std::uintptr_t const address = _Unwind_GetIP(context);
    if (address == 0)
        return _URC_END_OF_STACK;
    if (walk.stack.count < ERR_OS_STACK::CAPACITY)
        walk.stack.addresses[walk.stack.count++] = reinterpret_cast<void *>(address);
    if (walk.exit.contains(address - 1) || walk.quick_exit.contains(address - 1))
        walk.stack.is_in_exit = true;
    return _URC_NO_REASON;
}

// libdw and the functions of it that are used. The library is loaded by the first report, so that it costs nothing at
// the start of a process. If it is missing, all functions are null.
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
    // Never released: an internal error may be reported until the very end of the process.
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

    void complete(ERR_OS_FRAME &frame, std::uintptr_t call) const
    {
        // There is a session only if all the functions were found. NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
        Dwfl_Module *module = m_dwfl == nullptr ? nullptr : libdw().module_of(m_dwfl.get(), call);
        if (module == nullptr)
            return;
        // The symbol table has names that the loader does not know, since the loader knows the exported ones alone.
        GElf_Off offset = 0;
        GElf_Sym symbol;
        if (char const *name = libdw().symbol_of(module, call, &offset, &symbol, nullptr, nullptr, nullptr)) {
            frame.function = name;
            frame.function_offset = offset + 1;
        }
        Dwfl_Line *line = libdw().line_of(module, call);
        if (line == nullptr)
            return;
        if (char const *file = libdw().line_info(line, nullptr, &frame.line, nullptr, nullptr, nullptr))
            frame.file = file;
    }

    // The line table gives the innermost place, and the entry of each inlined function gives the place of its call.
    void add_inlined(ERR_OS_FRAME &frame, std::uintptr_t call) const
    {
        // As above. NOLINTBEGIN(clang-analyzer-core.CallAndMessage)
        Dwfl_Module *module = m_dwfl == nullptr ? nullptr : libdw().module_of(m_dwfl.get(), call);
        Dwarf_Addr bias = 0;
        Dwarf_Die *unit = module == nullptr ? nullptr : libdw().unit_of(module, call, &bias);
        if (unit == nullptr)
            return;
        InlineScopes const scopes(unit, call - bias);
        ERR_OS_LINE place{{}, frame.file, frame.line};
        for (Dwarf_Die &scope : scopes) {
            int const tag = libdw().tag_of(&scope);
            if (tag == DW_TAG_subprogram)
                break;
            if (tag != DW_TAG_inlined_subroutine)
                continue;
            place.function = function_name(scope);
            frame.inlined.push_back(place);
            place = call_place(unit, scope);
        }
        if (frame.inlined.empty())
            return;
        place.function = frame.function;
        frame.inlined.push_back(place);
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

    static std::string function_name(Dwarf_Die &function)
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
        ERR_OS_LINE place;
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

ERR_OS_FRAME describe_by_loader(void const *address)
{
    ERR_OS_FRAME frame;
    std::uintptr_t const call = call_of(address);
    SYS_MODULE module;
    if (!sys_find_module(call, module))
        return frame;
    frame.object = module.name;
    frame.object_offset = call + 1 - module.begin;
    Dl_info info;
    if (dladdr(reinterpret_cast<void const *>(call), &info) != 0 && info.dli_sname != nullptr) {
        frame.function = info.dli_sname;
        frame.function_offset = call + 1 - reinterpret_cast<std::uintptr_t>(info.dli_saddr);
    }
    return frame;
}

} // namespace

std::uint64_t err_os_process_id()
{
    return static_cast<std::uint64_t>(getpid());
}

std::string err_os_executable()
{
    char path[PATH_MAX];
    ssize_t const length = readlink("/proc/self/exe", path, sizeof(path));
    return length <= 0 ? std::string() : std::string(path, static_cast<std::size_t>(length));
}

void err_os_capture_stack(ERR_OS_STACK &stack)
{
    StackWalk walk{stack, code_range_of(reinterpret_cast<void *>(&std::exit)),
                   code_range_of(reinterpret_cast<void *>(&std::quick_exit))};
    _Unwind_Backtrace(record_frame, &walk);
}

std::vector<ERR_OS_FRAME> err_os_describe(void const *const *addresses, std::size_t count, bool with_inlined)
{
    DebugInfo const debug_info;
    std::vector<ERR_OS_FRAME> frames;
    frames.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        frames.push_back(describe_by_loader(addresses[i]));
        debug_info.complete(frames.back(), call_of(addresses[i]));
        if (with_inlined)
            debug_info.add_inlined(frames.back(), call_of(addresses[i]));
    }
    return frames;
}

void err_os_write_error_stream(char const *text, std::size_t size)
{
    // If the reader of the stream is gone, the process must still end with its own status, and not by this signal.
    std::signal(SIGPIPE, SIG_IGN);
    while (size != 0) {
        ssize_t const written = write(STDERR_FILENO, text, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        text += written;
        size -= static_cast<std::size_t>(written);
    }
}

void err_os_call_at_exit(void (*function)())
{
    std::atexit(function);
}

void err_os_end_at_once(int status)
{
    _exit(status);
}

void err_os_wait_for_the_end()
{
    for (;;)
        pause();
}
