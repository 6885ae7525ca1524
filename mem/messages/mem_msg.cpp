#include "mem_sys.h"

#include "mem/base/mem_line.h"
#include "mem/config/mem_cfg.h"
#include "sys/sys_module.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <mutex>

namespace {

constexpr char DEBUG_KEY[] = "mem_show_debug_messages";

// Where messages go: to the function if there is one, else to the file, else to the standard streams.
struct Destination
{
    MEM_MSG_SINK sink;
    void *context;
    std::FILE *file;
};

// All state is constant-initialised and is not destroyed by the exit, so a message can be emitted at any time. A file
// that is still open then is closed by the C library.

// Written by the redirections, under the mutex. A line to a stream is written under it too, so that no other thread
// closes the file meanwhile.
std::mutex l_mutex;
Destination l_destination{nullptr, nullptr, nullptr};

// Whether the destination has a function. Written with the destination; any thread reads it without the mutex.
std::atomic<bool> l_has_sink{false};

// The value of the debug key, written by every thread that finds it outdated: twice the generation of the
// configuration for which it is valid, plus 1 for on. Initially 0, which is valid for no generation.
std::atomic<std::uint64_t> l_debug_value{0};

bool is_debug_on()
{
    std::uint64_t const generation = mem_cfg_generation();
    std::uint64_t value = l_debug_value.load(std::memory_order_relaxed);
    if (value >> 1 != generation) {
        value = generation << 1 | (mem_cfg_is_on(DEBUG_KEY, false) ? 1U : 0U);
        l_debug_value.store(value, std::memory_order_relaxed);
    }
    return (value & 1) != 0;
}

// Closes the former file.
void set_destination(Destination const &destination)
{
    std::FILE *former = nullptr;
    {
        std::lock_guard<std::mutex> const lock(l_mutex);
        former = l_destination.file;
        l_destination = destination;
        l_has_sink.store(destination.sink != nullptr, std::memory_order_release);
    }
    if (former != nullptr)
        std::fclose(former);
}

bool emit_to_sink(Destination const &destination, MEM_MSG_KIND kind, char const *module, char const *format,
                  char *arguments)
{
    std::string text;
    if (stl_output(&text, format, arguments) < 0)
        return false;
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    destination.sink(kind, module, text.c_str(), destination.context);
    return true;
}

bool emit_to_stream(MEM_MSG_KIND kind, char const *module, char const *format, char *arguments)
{
    std::string line = kind == MEM_MSG_DEBUG ? "Debug" : "Info";
    if (*module != '\0')
        line.append(" (").append(module).append(1, ')');
    line += ": ";
    if (stl_output(&line, format, arguments) < 0)
        return false;
    if (line.back() != '\n')
        line += '\n';

    std::lock_guard<std::mutex> const lock(l_mutex);
    std::FILE *stream = kind == MEM_MSG_DEBUG ? stderr : stdout;
    if (l_destination.file != nullptr)
        stream = l_destination.file;
    return mem_line_write(stream, line);
}

bool emit(MEM_MSG_KIND kind, char const *module, char const *format, char *arguments)
{
    if (module == nullptr)
        module = "";
    if (l_has_sink.load(std::memory_order_acquire)) {
        Destination destination;
        {
            std::lock_guard<std::mutex> const lock(l_mutex);
            destination = l_destination;
        }
        if (destination.sink != nullptr)
            return emit_to_sink(destination, kind, module, format, arguments);
    }
    return emit_to_stream(kind, module, format, arguments);
}

} // namespace

bool mem_msg_local_vinfo(char const *module, char const *format, char *arguments)
{
    return emit(MEM_MSG_INFO, module, format, arguments);
}

bool mem_msg_local_vdebug(char const *module, char const *format, char *arguments)
{
    if (!l_has_sink.load(std::memory_order_acquire) && !is_debug_on())
        return false;
    return emit(MEM_MSG_DEBUG, module, format, arguments);
}

void mem_msg_redirect(MEM_MSG_SINK sink, void *context)
{
    set_destination({sink, context, nullptr});
}

bool mem_msg_redirect_to_file(char const *path)
{
    std::FILE *file = nullptr;
    if (path != nullptr) {
        file = std::fopen(path, "a");
        if (file == nullptr)
            return false;
        sys_keep_loaded(); // with the file, which a next redirection closes
    }
    set_destination({nullptr, nullptr, file});
    return true;
}
