// The sources of the process frame stand in this executable itself, over a stand-in for zel_mem, so that the building
// and the release of their static objects can be watched from both ends. What they release goes through the operators
// at the end of this file.
#include "fio_sys.h"
#include "gen/gen_calendar.h"
#include "gen/gen_profile_bins_impl.h"
#include "gen/gen_statics.h"
#include "gen_cookie_sys.h"
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "gen_time_sys.h"
#include "tests/support/mem_recorder.h"
#include "tests/support/platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;

namespace {

// A static of a source file in front of the library's in link order.
bool const l_state_before_first_static = gen_path_state() != nullptr;

// Addresses whose release is told on the standard error stream.
struct Watched
{
    void const *address;
    char const *name;
};
Watched l_watched[20];
std::size_t l_watched_count = 0;

void watch(void const *address, char const *name)
{
    l_watched[l_watched_count++] = {address, name};
}

void tell_release(void const *address)
{
    for (std::size_t i = 0; i < l_watched_count; ++i)
        if (l_watched[i].address == address)
            std::fprintf(stderr, "%s ", l_watched[i].name);
}

// The mutex of the cookie log; null where its block doesn't come from the operators at the end of this file.
void const *l_cookie_mutex = nullptr;

// A block of this size, which no other has, is the text of a cookie.
constexpr std::size_t COOKIE_BLOCK_SIZE = 4322;

void watch_if_cookie(void *block, std::size_t size)
{
    if (size == COOKIE_BLOCK_SIZE)
        l_watched[l_watched_count++] = {block, "cookie"};
}

// Texts that live on the heap.
std::string long_text(char const *name)
{
    return std::string(name) + std::string(100, '/');
}

void fill_state()
{
    gen_set_db_dir_path("/p/db/");
    gen_set_db_dir_full_name(FIO_PATH("/p/db/full"));
    gen_set_project_dir_path("/p/" + std::string(100, 'd'));
    gen_set_project_library_paths(long_text("/lib"));
    gen_set_user_library_paths(long_text("/user"));
    gen_set_user_ip_search_paths(long_text("/ip"));
    gen_set_project_output_directory(("/out/" + std::string(100, 'o')).c_str());
    gen_set_command_line(long_text("line").c_str());
}

void exit_and_tell_releases()
{
    fill_state();
    GEN_PATH_STATE const &state = *gen_path_state();
    watch(state.db_dir_path, "db_dir_path");
    watch(state.db_dir_full_name, "db_dir_full_name");
    watch(state.project_ipblocks_dir_path, "project_ipblocks_dir_path");
    watch(state.project_dir_libs, "project_dir_libs");
    watch(state.db_dir_libs, "db_dir_libs");
    watch(state.project_libs, "project_libs");
    watch(state.user_libs, "user_libs");
    watch(state.project_ipblocks_libs, "project_ipblocks_libs");
    watch(state.project_dir.data(), "project_dir");
    watch(state.project_library_paths.data(), "project_library_paths");
    watch(state.user_library_paths.data(), "user_library_paths");
    watch(state.project_output_directory.data(), "project_output_directory");
    watch(state.command_line.data(), "command_line");
    watch(state.user_ip_search_paths.data(), "user_ip_search_paths");
    watch(l_cookie_mutex, "mutex");
    static char cookie[COOKIE_BLOCK_SIZE];
    std::fill_n(cookie, COOKIE_BLOCK_SIZE - 1, 'c');
    gen_log_cookie(cookie, 1);
    mem_record().at_release = [] { std::fputs("MEM_INITIALIZER", stderr); };
    std::exit(0);
}

struct TextGetter
{
    char const *name;
    std::function<std::string()> get;
};
std::vector<TextGetter> text_getters()
{
    return {
        {"db_dir_path", [] { return gen_get_db_dir_path().fullpath(); }},
        {"db_dir_path_string", gen_get_db_dir_path_string},
        {"db_dir_full_name", [] { return gen_get_db_dir_full_name().fullpath(); }},
        {"incr_db_dir", gen_get_incr_db_dir_path_string},
        {"project_dir", gen_get_project_dir_path},
        {"ipblocks", [] { return gen_get_project_ipblocks_dir_path().fullpath(); }},
        {"persona", gen_get_persona_dir_path_string},
        {"output_directory", [] { return std::string(gen_get_project_output_directory()); }},
        {"project_library_paths", gen_get_project_library_paths},
        {"user_library_paths", gen_get_user_library_paths},
        {"user_ip_search_paths", gen_get_user_ip_search_paths},
        {"command_line", gen_get_command_line},
    };
}

void tell_texts()
{
    for (TextGetter const &getter : text_getters())
        std::fprintf(stderr, "%s=%s;", getter.name, getter.get().c_str());
    std::fprintf(stderr, "check=%d;", gen_check_db_dir_path());
}

} // namespace

TEST(GenStaticOrder, BuildsTheMemInitializerFirst)
{
    EXPECT_THAT(mem_record().calls, ElementsAre("MEM_INITIALIZER GEN"));
    EXPECT_FALSE(mem_record().state_before_initializer);
}

TEST(GenStaticOrder, BuildsTheStateBeforeOrdinaryStaticsOnEitherSideOfTheLinkOrder)
{
    EXPECT_TRUE(l_state_before_first_static);
    EXPECT_TRUE(mem_record().state_before_last_static);
}

TEST(GenStaticOrder, HoldsTheTextsInTheOrderOfTheirBuilding)
{
    GEN_PATH_STATE const &state = *gen_path_state();
    std::string const *const texts[] = {
        &state.project_dir,  &state.project_library_paths, &state.user_library_paths, &state.project_output_directory,
        &state.command_line, &state.user_ip_search_paths,
    };
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        EXPECT_EQ(*texts[i], "") << "text " << i;
        EXPECT_TRUE(i == 0 || texts[i - 1] < texts[i]) << "text " << i;
    }
}

TEST(GenStaticOrderDeathTest, ReleasesTheCookiesThenTheObjectsThenTheTextsThenTheMemInitializer)
{
    // On Windows the blocks of other libraries, in which a text is made too, don't come from here.
    std::string const cookies = ON_WINDOWS ? "" : "mutex cookie ";
    EXPECT_EXIT(exit_and_tell_releases(), ExitedWithCode(0),
                HasSubstr(cookies +
                          "project_ipblocks_libs project_ipblocks_dir_path user_libs project_libs project_dir_libs "
                          "db_dir_libs db_dir_path db_dir_full_name user_ip_search_paths command_line "
                          "project_output_directory user_library_paths project_library_paths project_dir "
                          "MEM_INITIALIZER"));
}

TEST(GenStaticOrderDeathTest, ReleasesAStateWithoutObjects)
{
    EXPECT_EXIT(
        {
            mem_record().at_release = [] { std::fputs("MEM_INITIALIZER", stderr); };
            std::exit(0);
        },
        ExitedWithCode(0), HasSubstr("MEM_INITIALIZER"));
}

TEST(GenStaticOrderDeathTest, GettersAnswerInExitHandlersOfTheExecutable)
{
    EXPECT_EXIT(
        {
            fill_state();
            std::atexit(tell_texts);
            std::exit(0);
        },
        ExitedWithCode(0),
        testing::AllOf(HasSubstr("db_dir_path_string=/p/db/;"), HasSubstr("incr_db_dir=/p/incremental_db/;"),
                       HasSubstr("project_dir=/p/ddd"), HasSubstr("command_line=line//"), HasSubstr("check=1;")));
}

TEST(GenStaticOrderDeathTest, GettersAnswerWithEmptyTextsAfterTheRelease)
{
    EXPECT_EXIT(
        {
            fill_state();
            mem_record().at_release = tell_texts;
            std::exit(0);
        },
        ExitedWithCode(0),
        HasSubstr("db_dir_path=;db_dir_path_string=;db_dir_full_name=;incr_db_dir=;project_dir=;ipblocks=;persona=;"
                  "output_directory=;project_library_paths=;user_library_paths=;user_ip_search_paths=;command_line=;"
                  "check=0;"));
}

TEST(GenStaticOrderDeathTest, SettersDoNothingAfterTheRelease)
{
    EXPECT_EXIT(
        {
            mem_record().at_release = [] {
                fill_state();
                gen_set_project_output_directory(nullptr);
                tell_texts();
            };
            std::exit(0);
        },
        ExitedWithCode(0), HasSubstr("command_line=;check=0;"));
}

// Tells whether a cookie is taken, which is said.
void tell_cookie(char const *description)
{
    std::size_t const before = mem_record().calls.size();
    gen_log_cookie(description, 1);
    std::fprintf(stderr, "%s=%d;", description, static_cast<int>(mem_record().calls.size() - before));
}

TEST(GenStaticOrderDeathTest, CookiesAreTakenUntilTheirRelease)
{
    EXPECT_EXIT(
        {
            std::atexit([] { tell_cookie("in_a_handler"); });
            mem_record().at_release = [] { tell_cookie("after_the_release"); };
            std::exit(0);
        },
        ExitedWithCode(0), HasSubstr("in_a_handler=1;after_the_release=0;"));
}

TEST(GenStaticOrderDeathTest, FactsOfTheProcessOutliveTheRelease)
{
    EXPECT_EXIT(
        {
            gen_exe_init(0, nullptr);
            gen_set_is_ui_process(true);
            mem_record().at_release = [] {
                std::fprintf(stderr, "[%s][%s][%d]", mem_record().get_kalvern_path().c_str(),
                             mem_record().get_module_filename().c_str(), mem_record().get_is_ui_process());
            };
            std::exit(0);
        },
        ExitedWithCode(0), HasSubstr("[/fake/][tool][1]"));
}

// Stand-ins for what the cookie log and the streams ask of other sources. There are no bins: cookies have no path.

std::vector<std::string> gen_pb_current_path()
{
    return {};
}

std::int64_t gen_get_current_time_seconds()
{
    return 0;
}

std::string gen_asctime_text(std::int64_t /*seconds*/)
{
    return {};
}

void *operator new(std::size_t size)
{
    if (void *const block = std::malloc(size == 0 ? 1 : size)) {
        watch_if_cookie(block, size);
        return block;
    }
    throw std::bad_alloc();
}

// The first such block of the process is the mutex of the cookie log, where the thread library takes its blocks from
// here.
void *operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    void *const block = std::malloc(size == 0 ? 1 : size);
    if (l_cookie_mutex == nullptr)
        l_cookie_mutex = block;
    return block;
}

void operator delete(void *block) noexcept
{
    tell_release(block);
    std::free(block);
}

void operator delete(void *block, std::size_t) noexcept
{
    tell_release(block);
    std::free(block);
}
