#include "err_sys.h"
#include "fio_sys.h"
#include "thr_sys.h"
#include "ver_sys.h"

#include "tests/support/operations.h"

namespace {

void make_and_destroy_a_mutex()
{
    THR_MUTEX_OBJ const mutex = thr_mutex_create();
    thr_mutex_lock(mutex);
    thr_mutex_unlock(mutex);
    thr_mutex_destroy(mutex);
}

void describe_a_call()
{
    void const *const address = reinterpret_cast<void const *>(&describe_a_call);
    err_describe_calls(&address, 1);
}

void scan()
{
    _finddata64i32_t data;
    std::intptr_t const handle = FIO_FILE_SYSTEM::findfirst("*.txt", &data);
    if (handle == -1)
        return;
    FIO_FILE_SYSTEM::findnext(handle, &data);
    FIO_FILE_SYSTEM::findclose(handle);
}

void search()
{
    FIO_FIND find("a;b");
    find.find_first_relative_path("c.v");
    FIO_FIND pattern("*.v");
    pattern.find_first();
    pattern.find_next();
}

} // namespace

Operations operations_of_siblings()
{
    return {
        {"err_set_module_fullpath", [] { err_set_module_fullpath("module"); }},
        {"err_is_in_abnormal_exit", [] { err_is_in_abnormal_exit(); }},
        {"err_describe_calls", describe_a_call},
        {"thr_mutex", make_and_destroy_a_mutex},
        {"thr_thread_self", [] { thr_thread_self(); }},
        {"thr_sleep", [] { thr_sleep(0); }},
        {"thr_debug_break", thr_debug_break},
        {"thr_drl",
         [] {
             char name[64];
             thr_drl_init("module");
             thr_drl_construct_library_name(name, sizeof name, "zel_thr");
             thr_drl_is_loaded(name);
             thr_drl_fini();
         }},
        {"FIO_PATH", [] { FIO_PATH("a/b.v").become_absolute("").become_simplified(); }},
        {"FIO_FIND", search},
        {"FIO_FILE_SYSTEM scan", scan},
        {"FIO_FILE_SYSTEM",
         [] {
             struct _stat64i32 record;
             FIO_FILE_SYSTEM::exists("missing");
             FIO_FILE_SYSTEM::status(".", &record);
             FIO_FILE_SYSTEM::create(".");
             if (std::FILE *const file = FIO_FILE_SYSTEM::fopen("files.txt", "a"))
                 std::fclose(file);
             FIO_FILE_SYSTEM::get_current_directory();
         }},
        {"fio",
         [] {
             fio_get_unc_full_path("a");
             fio_get_default_extension_string(static_cast<FIO_FILE_TYPE>(13));
         }},
        {"ver",
         [] {
             ver_get_brisel_product_filename();
             ver_get_copyright_string();
             ver_get_version_string();
             ver_is_release_branch();
         }},
    };
}
