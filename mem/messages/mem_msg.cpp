#include "mem_sys.h"

#include "mem/config/mem_cfg.h"
#include "mem/messages/mem_msg.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <mutex>

namespace {

constexpr char DEBUG_KEY[] = "mem_show_debug_messages";

// Where messages go: to the function if there is one, else to the file, else to the standard streams. All of it is
// constant-initialised and is never taken down, so messages come through at any time.
struct Destination
{
    MEM_MSG_SINK sink;
    void *context;
    std::FILE *file;
};
std::mutex l_mutex; // guards the destination; a line is written under it
Destination l_destination{nullptr, nullptr, nullptr};

// Whether there is a function; the only thing a hidden debug message looks at besides the answer below.
std::atomic<bool> l_has_sink{false};

// The answer for the debug key: twice the configuration's generation it holds for, plus 1 for on.
std::atomic<std::uint64_t> l_debug_answer{0};

bool is_debug_on()
{
    std::uint64_t const generation = mem_cfg_generation();
    std::uint64_t answer = l_debug_answer.load(std::memory_order_relaxed);
    if (answer >> 1 != generation) {
        answer = generation << 1 | (mem_cfg_is_on(DEBUG_KEY, false) ? 1U : 0U);
        l_debug_answer.store(answer, std::memory_order_relaxed);
    }
    return (answer & 1) != 0;
}

// Returns the former file, to be closed by the caller.
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

// One call for the whole line, and nothing of it left behind in the stream. Under the lock.
bool write_line(std::FILE *stream, std::string const &line)
{
    bool const written = std::fwrite(line.data(), 1, line.size(), stream) == line.size();
    return std::fflush(stream) == 0 && written;
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
    return write_line(stream, line);
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

void mem_msg_warn(std::string const &text)
{
    std::string const line = "Warning: " + text + '\n';
    std::lock_guard<std::mutex> const lock(l_mutex);
    write_line(stderr, line);
}

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
    }
    set_destination({nullptr, nullptr, file});
    return true;
}
