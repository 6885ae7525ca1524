#include "mem/messages/mem_msg.h"

#include "mem/base/mem_line.h"
#include "mem/config/mem_cfg.h"
#include "mem/os/mem_os_stream.h"
#include "mem_sys.h"
#include "sys/sys_module.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <new>

namespace {

constexpr char DEBUG_KEY[] = "mem_show_debug_messages";

// A file that messages are appended to. It is closed when messages go elsewhere and no thread writes to it any more.
struct File
{
    std::FILE *stream;
    int user_count; // 1 while messages go to it, and 1 for each thread that writes to it; changed under the mutex
    MEM_LINE_LOSSES losses;
};

// Where messages go: to the function if there is one, else to the file, else to the standard streams.
struct Destination
{
    MEM_MSG_SINK sink;
    void *context;
    File *file;
};

// All state is constant-initialised and is not destroyed by the exit, so a message can be emitted at any time. A file
// that is still open then is closed by the C library.

// Written by the redirections, under the mutex, which is held for some nanoseconds: nothing is written or called
// meanwhile.
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

void release(File *file)
{
    {
        std::lock_guard<std::mutex> const lock(l_mutex);
        if (--file->user_count != 0)
            return;
    }
    std::fclose(file->stream);
    delete file;
}

void set_destination(Destination const &destination)
{
    File *former = nullptr;
    {
        std::lock_guard<std::mutex> const lock(l_mutex);
        former = l_destination.file;
        l_destination = destination;
        l_has_sink.store(destination.sink != nullptr, std::memory_order_release);
    }
    if (former != nullptr)
        release(former);
}

// The file that messages go to, which stays open during the scope.
class UsedFile
{
public:
    UsedFile()
    {
        std::lock_guard<std::mutex> const lock(l_mutex);
        m_file = l_destination.file;
        if (m_file != nullptr)
            ++m_file->user_count;
    }
    ~UsedFile()
    {
        if (m_file != nullptr)
            release(m_file);
    }
    UsedFile(UsedFile const &) = delete;
    UsedFile &operator=(UsedFile const &) = delete;

    File *get() const { return m_file; }

private:
    File *m_file = nullptr;
};

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

    UsedFile const file;
    if (file.get() != nullptr)
        return mem_line_write(file.get()->stream, file.get()->losses, line);
    return kind == MEM_MSG_DEBUG ? mem_line_write_error(line) : mem_line_write_output(line);
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
    File *file = nullptr;
    if (path != nullptr) {
        std::FILE *const stream = mem_os_open_to_append(path);
        if (stream == nullptr)
            return false;
        file = new (std::nothrow) File{stream, /*user_count=*/1, {}};
        if (file == nullptr) {
            std::fclose(stream);
            return false;
        }
        sys_keep_loaded(); // with the file, which a next redirection closes
    }
    set_destination({nullptr, nullptr, file});
    return true;
}

void mem_msg_lock()
{
    l_mutex.lock();
}

void mem_msg_unlock()
{
    l_mutex.unlock();
}
