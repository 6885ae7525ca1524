#include "mem/os/mem_os_thread.h"

#include "sys/sys_module.h"

#include <pthread.h>

// The state of this file. Each thread writes its own record. The record is valid until after the thread's last
// destructor; the exit leaves it.
__thread MEM_THREAD_COUNT mem_thread_record __attribute__((tls_model("initial-exec")));

namespace {

// Written once, by the thread that makes the key, before it makes it. The exit leaves both.
void (*l_ended)(MEM_THREAD_COUNT &count) = nullptr;

struct EndKey
{
    pthread_key_t key;
    bool is_made;
};

EndKey make_end_key(void (*ended)(MEM_THREAD_COUNT &count))
{
    l_ended = ended;
    EndKey result{};
    result.is_made =
        pthread_key_create(&result.key, [](void *count) { l_ended(*static_cast<MEM_THREAD_COUNT *>(count)); }) == 0;
    return result;
}

} // namespace

bool mem_os_watch_thread_end(void (*ended)(MEM_THREAD_COUNT &count))
{
    // The key calls into the library when the thread ends. Not inside the guard of the static: another thread that
    // waits for it may hold the loader's lock.
    if (!sys_keep_loaded())
        return false;
    // The C++ destructors of a thread run before the destructors of its keys.
    static EndKey const END_KEY = make_end_key(ended);
    return END_KEY.is_made && pthread_setspecific(END_KEY.key, &mem_thread_record) == 0;
}
