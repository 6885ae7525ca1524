// The memory of libraries and process, over a scripted place of the module and scripted memory figures.
#include "gen_profile_bins_sys.h"

#include "gen_path_sys.h"
#include "mem_sys.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A library that is in this process, and names of some that are not.
constexpr char const *LOADED = ON_WINDOWS ? "zel_err.dll" : "libzel_err.so.1";
constexpr char const *OTHER = ON_WINDOWS ? "other.dll" : "libother.so";
constexpr char NO_LIBRARY[] = "readme.txt";

class GenMeminfo : public testing::Test
{
protected:
    GenMeminfo()
    {
        place_module(m_directory);
        gen_os_fake_set_calendar_msec(1794683027123); // 2026-11-14 19:03:47
        mem_fake_set_current_total(111);
        mem_fake_set_working_set(5000000000);
        mem_fake_set_peak_working_set(6000000000);
    }

    static void place_module(TempDir const &directory)
    {
        gen_os_fake_set_executable_path(directory.text("tool.exe").c_str());
        gen_os_fake_set_library_path(directory.text("libzel_gen.so").c_str());
    }

    std::vector<std::string> report(char const *tool, char const *point)
    {
        m_messages.clear();
        gen_meminfo_report_dll_usage(tool, point);
        for (RecordedMessage const &message : m_messages.messages()) {
            EXPECT_EQ(message.kind, MEM_MSG_DEBUG);
            EXPECT_EQ(message.module, "GEN");
        }
        return m_messages.lines();
    }

    void write_libraries()
    {
        m_directory.write(LOADED, std::string(1234, 'x'));
        m_directory.write(OTHER, std::string(500, 'x'));
        m_directory.write(std::string("2") + OTHER, std::string(66, 'x'));
        m_directory.write(NO_LIBRARY, std::string(7, 'x'));
    }

    TempDir m_directory;
    MessageRecorder m_messages;
};

constexpr char MEMORY[] = "Fitter     at_end at Sat Nov 14 19:03:47 2026 memory usage(bytes): transient 111 WS "
                          "5000000000 WS Peak 6000000000";

} // namespace

// One process: the module's place is looked for once.
TEST_F(GenMeminfo, WritesWhatTheKeysAskFor)
{
    // The first search for libraries fixes their place, here a wrong one.
    TempDir const elsewhere;
    place_module(elsewhere);
    // With all keys off nothing is written, and details alone have no effect.
    EXPECT_THAT(report("Fitter", "at_end"), IsEmpty());
    mem_cfg_set("list_dll_details", "on");
    EXPECT_THAT(report("Fitter", "at_end"), IsEmpty());

    mem_cfg_set("report_modules_flow", "on");
    EXPECT_THAT(report("Fitter", "at_end"), ElementsAre(MEMORY));
    place_module(m_directory);

    // A directory without libraries.
    mem_cfg_set("profile_dll_usage", "on");
    m_directory.write(NO_LIBRARY, "text");
    EXPECT_THAT(report("Fitter", "at_end"), ElementsAre("No *.dll files found!", MEMORY));

    write_libraries();
    std::string const details = std::string("LOADED: ") + LOADED + (ON_WINDOWS ? " " : "") + "       1234";
    EXPECT_THAT(report("Fitter", "at_end"),
                ElementsAre(details, "Fitter     at_end DLL usage(bytes): Loaded 1234 Not Loaded 566", MEMORY));

    mem_cfg_set("list_dll_details", "off");
    mem_cfg_set("report_modules_flow", "off");
    // Ten characters of the tool, and a moment without a name.
    EXPECT_THAT(report("A very long tool", nullptr),
                ElementsAre("A very lon start DLL usage(bytes): Loaded 1234 Not Loaded 566"));
    mem_cfg_set("profile_dll_usage", "off");
    EXPECT_THAT(report("Fitter", "at_end"), IsEmpty());
}

// A link is another name of a library, and a directory is none.
TEST_F(GenMeminfo, CountsEachLibraryOnce)
{
    mem_cfg_set("profile_dll_usage", "on");
    write_libraries();
    std::filesystem::create_directory(m_directory.path() / (std::string("a") + OTHER));
    if (!ON_WINDOWS) {
        std::filesystem::create_symlink(LOADED, m_directory.path() / "libzel_err.so");
        std::filesystem::create_symlink(OTHER, m_directory.path() / "libother2.so");
    }
    EXPECT_THAT(report("Fitter", "x"), ElementsAre("Fitter     x DLL usage(bytes): Loaded 1234 Not Loaded 566"));
}
