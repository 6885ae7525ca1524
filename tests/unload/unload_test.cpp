// Plug-ins over the libraries are loaded and unloaded. zel_gen goes with the last of them and keeps nothing. zel_mem
// stays once it has something that outlives a call: a counting thread, a file, a slot, the configuration.
#include "tests/support/environment.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"
#include "tests/unload/loaded_module.h"

#include <gtest/gtest.h>

#include <future>
#include <ostream>
#include <thread>
#include <vector>

using testing::ExitedWithCode;

namespace {

// A thread that counts in a plug-in, and ends with the object.
class CountingThread
{
public:
    explicit CountingThread(LoadedModule const &plugin)
        : m_thread([this, count = plugin.function<void()>("plugin_count")] {
              count();
              m_has_counted.set_value();
              m_may_end.get_future().wait();
          })
    {
        m_has_counted.get_future().wait();
    }
    ~CountingThread()
    {
        m_may_end.set_value();
        m_thread.join();
    }
    CountingThread(CountingThread const &) = delete;
    CountingThread &operator=(CountingThread const &) = delete;

private:
    std::promise<void> m_has_counted;
    std::promise<void> m_may_end;
    std::thread m_thread; // last: it uses the others
};

struct PluginCase
{
    char const *file;
    bool has_operators;
    char const *name;
};
constexpr PluginCase PLUGIN_CASES[] = {
    {PLUGIN, false, "Plain"},
    {COUNTING_PLUGIN, true, "Counting"},
};
std::ostream &operator<<(std::ostream &out, PluginCase const &c)
{
    return out << c.name;
}

// What the process has left, after a round.
struct Resources
{
    std::size_t descriptors = open_descriptor_count();
    std::size_t free_slots = free_slot_count();
};
bool operator==(Resources const &a, Resources const &b)
{
    return a.descriptors == b.descriptors && a.free_slots == b.free_slots;
}
std::ostream &operator<<(std::ostream &out, Resources const &r)
{
    return out << r.descriptors << " descriptors, " << r.free_slots << " free slots";
}

class Unload : public testing::TestWithParam<PluginCase>
{
protected:
    // Loads the plug-in, works in it, and unloads it. Threads that counted in it end afterwards.
    void run_round() const
    {
        std::vector<std::unique_ptr<CountingThread>> threads;
        {
            LoadedModule const plugin(GetParam().file);
            plugin.function<void(char const *)>("plugin_work")((m_directory.text() + "/").c_str());
            for (int i = 0; i < 4; ++i)
                threads.push_back(std::make_unique<CountingThread>(plugin));
        }
        ASSERT_FALSE(is_module_loaded(GEN_LIBRARY));
    }

    void run_rounds(int count) const
    {
        for (int i = 0; i < count; ++i)
            ASSERT_NO_FATAL_FAILURE(run_round()) << "round " << i;
    }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
};

std::string case_name(testing::TestParamInfo<PluginCase> const &info)
{
    return info.param.name;
}

} // namespace

TEST_P(Unload, ManyRoundsLeaveAsMuchAsOne)
{
    ASSERT_NO_FATAL_FAILURE(run_round()); // on Windows the first use of this macro opens a handle
    Resources expected;
    run_rounds(200);
    // A lock of Windows opens a handle when threads first meet at it, whenever that is. Another 200 rounds decide.
    if (ON_WINDOWS && !(Resources() == expected)) {
        expected = Resources();
        run_rounds(200);
    }
    EXPECT_EQ(Resources(), expected);
}

TEST_P(Unload, StartsAnewAfterALoad)
{
    for (int i = 0; i < 2; ++i) {
        LoadedModule const plugin(GetParam().file);
        EXPECT_TRUE(plugin.function<bool(char const *)>("plugin_has_command_line")("")) << "load " << i;
        plugin.function<void(char const *)>("plugin_set_command_line")("fit --all");
        EXPECT_TRUE(plugin.function<bool(char const *)>("plugin_has_command_line")("fit --all")) << "load " << i;
    }
}

TEST_P(Unload, CountsAfterEachLoad)
{
    for (int i = 0; i < 3; ++i) {
        LoadedModule const plugin(GetParam().file);
        EXPECT_EQ(plugin.function<bool()>("plugin_counts")(), GetParam().has_operators) << "load " << i;
    }
}

TEST_P(Unload, LeavesNoCallback)
{
    // gen_exe_init finds its key in the environment and doesn't query the configuration. So its files are still to be
    // read when zel_gen, whose function names one of them, is gone.
    Environment const reserve("reserve_4gb_of_virtual_memory", "1");
    LoadedModule(GetParam().file).function<void()>("plugin_start")();
    LoadedModule const plugin(MEM_PLUGIN);
    plugin.function<void()>("plugin_query")();
    EXPECT_FALSE(is_module_loaded(GEN_LIBRARY));
}

using UnloadDeathTest = Unload;

TEST_P(UnloadDeathTest, LeavesNoExitHandler)
{
    EXPECT_EXIT(
        {
            run_round();
            std::exit(0);
        },
        ExitedWithCode(0), "");
}

TEST(UnloadMem, GoesIfNothingIsKept)
{
    {
        LoadedModule const plugin(MEM_PLUGIN);
        EXPECT_TRUE(is_module_loaded(MEM_LIBRARY));
    }
    EXPECT_FALSE(is_module_loaded(MEM_LIBRARY));
}

TEST(UnloadMem, StaysWithTheFileOfTheMessages)
{
    TempDir const directory;
    std::string const path = directory.text("messages.txt");
    LoadedModule(MEM_PLUGIN).function<void(char const *)>("plugin_redirect")(nullptr);
    std::size_t const before = open_descriptor_count();
    for (int i = 0; i < 3; ++i)
        LoadedModule(MEM_PLUGIN).function<void(char const *)>("plugin_redirect")(path.c_str());
    LoadedModule(MEM_PLUGIN).function<void(char const *)>("plugin_redirect")(nullptr);
    EXPECT_EQ(open_descriptor_count(), before);
}

TEST(UnloadMem, LeavesAsMuchAfterManyRoundsAsAfterOne)
{
    for (char const *const function : {"plugin_measure", "plugin_query"}) {
        LoadedModule(MEM_PLUGIN).function<void()>(function)();
        Resources const after_one;
        for (int i = 1; i < 200; ++i)
            LoadedModule(MEM_PLUGIN).function<void()>(function)();
        EXPECT_EQ(Resources(), after_one) << function;
    }
}

INSTANTIATE_TEST_SUITE_P(Plugins, Unload, testing::ValuesIn(PLUGIN_CASES), case_name);
INSTANTIATE_TEST_SUITE_P(Plugins, UnloadDeathTest, testing::ValuesIn(PLUGIN_CASES), case_name);
