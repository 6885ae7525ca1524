// The configuration: each test is a process of its own, since files are read once.
#include "mem_sys.h"

#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::HasSubstr;

// The installation root as the callback gives it.
std::string l_root;
std::atomic<int> l_root_questions{0};

std::string get_root()
{
    ++l_root_questions;
    return l_root;
}

// Two directories, the current one and the installation root, and no file named by the environment.
class MemCfg : public testing::Test
{
protected:
    MemCfg() : m_current_directory(make("current")) { l_root = m_dir.text("root/"); }

    void set_root_callback() { mem_set_gen_get_kalvern_path_callback(get_root); }

    std::string make(std::string const &name)
    {
        std::filesystem::create_directories(m_dir.path() / name);
        return m_dir.text(name);
    }

    TempDir m_dir;
    Environment m_variable{"KALVERN_INI", nullptr};
    CurrentDirectory m_current_directory;
};

// The output on the standard error stream while a function runs.
template <typename Function>
std::string errors_of(Function const &function)
{
    return output_to(StandardStream::ERROR_OUTPUT, function);
}

// Sources.

TEST_F(MemCfg, TakesTheFirstSourceThatHasTheKey)
{
    std::string const named = m_dir.write("named.cfg", "a = named\nb = named\nc = named\n");
    m_dir.write("current/kalvern.ini", "a = current\nb = current\nd = current\ne = current\n");
    m_dir.write("root/kalvern.ini", "a = root\nc = root\nd = root\nf = root\n");
    Environment const variable("KALVERN_INI", named.c_str());
    mem_cfg_set("a", "set");
    set_root_callback();
    struct
    {
        char const *key;
        char const *value;
    } const cases[] = {
        {"a", "set"}, {"b", "named"}, {"c", "named"}, {"d", "current"}, {"e", "current"}, {"f", "root"}, {"g", ""},
    };
    for (auto const &c : cases)
        EXPECT_EQ(mem_cfg_get_value(c.key), c.value) << c.key;
}

TEST_F(MemCfg, ReturnsDefaultsWithoutAnySource)
{
    EXPECT_TRUE(mem_cfg_is_on("key", true));
    EXPECT_FALSE(mem_cfg_is_on("key", false));
    EXPECT_EQ(mem_cfg_get_int_value("key", -7), -7);
    EXPECT_EQ(mem_cfg_get_value("key"), "");
    EXPECT_TRUE(mem_cfg_is_on(nullptr, true));
    EXPECT_EQ(mem_cfg_get_int_value(nullptr, 3), 3);
    EXPECT_EQ(mem_cfg_get_value(nullptr), "");
    mem_cfg_set(nullptr, "value");
    EXPECT_EQ(mem_cfg_get_value(""), "");
}

TEST_F(MemCfg, SetsAndTakesBack)
{
    m_dir.write("current/kalvern.ini", "key = file\n");
    EXPECT_EQ(mem_cfg_get_value("key"), "file");
    mem_cfg_set("key", "one");
    EXPECT_EQ(mem_cfg_get_value("key"), "one");
    mem_cfg_set("key", " two ");
    EXPECT_EQ(mem_cfg_get_value("key"), " two ");
    mem_cfg_set("key", "");
    EXPECT_EQ(mem_cfg_get_value("key"), "");
    mem_cfg_set("key", nullptr);
    EXPECT_EQ(mem_cfg_get_value("key"), "file");
    mem_cfg_set("key", nullptr);
    EXPECT_EQ(mem_cfg_get_value("key"), "file");
}

TEST_F(MemCfg, ReadsFilesOnceAtTheFirstQuestion)
{
    mem_cfg_set("set", "before");
    m_dir.write("current/kalvern.ini", "a = 1\n");
    EXPECT_EQ(mem_cfg_get_value("a"), "1");
    m_dir.write("current/kalvern.ini", "a = 2\nb = 2\n");
    std::string const named = m_dir.write("named.cfg", "a = 3\n");
    Environment const variable("KALVERN_INI", named.c_str());
    EXPECT_EQ(mem_cfg_get_value("a"), "1");
    EXPECT_EQ(mem_cfg_get_value("b"), "");
}

TEST_F(MemCfg, TakesAnEmptyVariableForNone)
{
    Environment const variable("KALVERN_INI", "");
    m_dir.write("current/kalvern.ini", "a = current\n");
    EXPECT_EQ(errors_of([] { EXPECT_EQ(mem_cfg_get_value("a"), "current"); }), "");
}

TEST_F(MemCfg, TakesANamedFileFromTheCurrentDirectory)
{
    Environment const variable("KALVERN_INI", "sub/other.cfg");
    m_dir.write("current/sub/other.cfg", "a = other\n");
    EXPECT_EQ(mem_cfg_get_value("a"), "other");
}

TEST_F(MemCfg, ReadsTheInstallationsFileOnceItsCallbackIsSet)
{
    m_dir.write("current/kalvern.ini", "a = current\n");
    m_dir.write("root/kalvern.ini", "a = root\nb = root\n");
    EXPECT_EQ(mem_cfg_get_value("a"), "current");
    EXPECT_EQ(mem_cfg_get_value("b"), "");
    set_root_callback();
    EXPECT_EQ(l_root_questions, 0);
    EXPECT_EQ(mem_cfg_get_value("b"), "root");
    EXPECT_EQ(mem_cfg_get_value("a"), "current");
    EXPECT_EQ(l_root_questions, 1);
    m_dir.write("root/kalvern.ini", "c = root\n");
    set_root_callback();
    EXPECT_EQ(mem_cfg_get_value("c"), "");
    EXPECT_EQ(l_root_questions, 1);
}

TEST_F(MemCfg, TakesARootWithoutASlash)
{
    l_root = m_dir.text("root");
    m_dir.write("root/kalvern.ini", "a = root\n");
    set_root_callback();
    EXPECT_EQ(mem_cfg_get_value("a"), "root");
}

TEST_F(MemCfg, TakesAnEmptyRootForNone)
{
    l_root = "";
    set_root_callback();
    EXPECT_EQ(errors_of([] { EXPECT_EQ(mem_cfg_get_value("a"), ""); }), "");
    EXPECT_EQ(l_root_questions, 1);
}

TEST_F(MemCfg, TakesANullCallbackForNone)
{
    m_dir.write("root/kalvern.ini", "a = root\n");
    mem_set_gen_get_kalvern_path_callback(nullptr);
    EXPECT_EQ(mem_cfg_get_value("a"), "");
    set_root_callback();
    EXPECT_EQ(mem_cfg_get_value("a"), "root");
}

std::string get_root_with_questions()
{
    ++l_root_questions;
    EXPECT_EQ(mem_cfg_get_value("a"), "current");
    EXPECT_EQ(mem_cfg_get_value("b"), "");
    EXPECT_FALSE(mem_msg_local_vdebug("GEN", "hidden", nullptr));
    mem_cfg_set("c", "callback");
    return l_root;
}

TEST_F(MemCfg, LetsTheCallbackReadAndWriteKeys)
{
    m_dir.write("current/kalvern.ini", "a = current\n");
    m_dir.write("root/kalvern.ini", "b = root\nc = root\n");
    mem_set_gen_get_kalvern_path_callback(get_root_with_questions);
    EXPECT_EQ(mem_cfg_get_value("b"), "root");
    EXPECT_EQ(mem_cfg_get_value("c"), "callback");
    EXPECT_EQ(l_root_questions, 1);
}

std::string get_root_after_another_thread()
{
    std::thread([] { EXPECT_EQ(mem_cfg_get_value("a"), "current"); }).join();
    return l_root;
}

// The other thread finds the installation's file unread as well and reads it too.
std::string get_root_after_one_thread()
{
    return ++l_root_questions == 1 ? get_root_after_another_thread() : l_root;
}

TEST_F(MemCfg, HoldsNoLockWhileTheCallbackRuns)
{
    m_dir.write("current/kalvern.ini", "a = current\n");
    m_dir.write("root/kalvern.ini", "b = root\n");
    mem_set_gen_get_kalvern_path_callback(get_root_after_one_thread);
    EXPECT_EQ(mem_cfg_get_value("b"), "root");
}

TEST_F(MemCfg, TakesAFileThatIsReachedTwiceAsOneSource)
{
    std::string const file = m_dir.write("current/kalvern.ini", "a = 1\nnonsense\n");
    Environment const variable("KALVERN_INI", file.c_str());
    l_root = m_dir.text("current");
    set_root_callback();
    std::string const errors = errors_of([] { EXPECT_EQ(mem_cfg_get_value("a"), "1"); });
    EXPECT_EQ(count_of(errors, "nonsense"), 1U) << errors;
}

// Size.

TEST_F(MemCfg, RefusesAFileThatIsTooLarge)
{
    std::string const limit(std::size_t(16) << 20, '#');
    std::string const named = m_dir.write("large.cfg", "a = large\n" + limit);
    Environment const variable("KALVERN_INI", named.c_str());
    m_dir.write("current/kalvern.ini", "a = current\n");
    EXPECT_EQ(errors_of([] { EXPECT_EQ(mem_cfg_get_value("a"), "current"); }),
              "Warning: " + named + ": the file is larger than 16 MiB and is not read\n");
}

TEST_F(MemCfg, ReadsAFileOfTheLargestSize)
{
    std::string text = "a = large\n";
    text.resize(std::size_t(16) << 20, '#');
    m_dir.write("current/kalvern.ini", text);
    EXPECT_EQ(errors_of([] { EXPECT_EQ(mem_cfg_get_value("a"), "large"); }), "");
}

// Lines.

TEST_F(MemCfg, ReadsLines)
{
    std::string const long_value(100000, 'v');
    m_dir.write("current/kalvern.ini", "\xEF\xBB\xBF"
                                       "first=behind the mark\n"
                                       "plain = text\n"
                                       "\t blanks \t = \t some  text \t \n"
                                       "tight=text\n"
                                       "dos = text\r\n"
                                       "\r\n"
                                       "\n"
                                       "   \t\n"
                                       "# comment = 1\n"
                                       "  ; comment2 = 2\n"
                                       "[section = 3]\n"
                                       " [section] \n"
                                       "[section] ; comment = 5\n"
                                       "[section]# comment = 5\n"
                                       "in_section = 4\n"
                                       "marks = a # b ; c\n"
                                       "equal = a = b\n"
                                       "empty =\n"
                                       "empty_blanks =  \t\n"
                                       "quoted = \"text\"\n"
                                       "twice = 1\n"
                                       "Twice = other\n"
                                       "twice = 2\n"
                                       "umlaut\xC3\xA4 = \xC3\xB6\n"
                                       "long = " +
                                           long_value +
                                           "\n"
                                           "last = no line end");
    struct
    {
        char const *key;
        char const *value;
    } const cases[] = {
        {"first", "behind the mark"},
        {"plain", "text"},
        {"blanks", "some  text"},
        {"tight", "text"},
        {"dos", "text"},
        {"comment", ""},
        {"# comment", ""},
        {"comment2", ""},
        {"section", ""},
        {"[section", ""},
        {"in_section", "4"},
        {"marks", "a # b ; c"},
        {"equal", "a = b"},
        {"empty", ""},
        {"empty_blanks", ""},
        {"quoted", "\"text\""},
        {"twice", "2"},
        {"Twice", "other"},
        {"TWICE", ""},
        {"umlaut\xC3\xA4", "\xC3\xB6"},
        {"last", "no line end"},
        {"PLAIN", ""},
        {" plain", ""},
        {"", ""},
    };
    std::string const errors = errors_of([&] {
        for (auto const &c : cases)
            EXPECT_EQ(mem_cfg_get_value(c.key), c.value) << '"' << c.key << '"';
        EXPECT_EQ(mem_cfg_get_value("long"), long_value);
    });
    EXPECT_EQ(errors, "");
}

TEST_F(MemCfg, ReportsLinesThatCantBeReadAndSkipsThem)
{
    std::string const null_byte(1, '\0');
    m_dir.write("current/kalvern.ini", "a = 1\n"
                                       "no equals sign\r\n"
                                       "= no key\n"
                                       "b = 2\n"
                                       "[open = section\n"
                                       "[section] x = 1\n"
                                       "nu" +
                                           null_byte +
                                           "ll = 3\n"
                                           "control\x01\x1b\n"
                                           "\n" +
                                           std::string(100, 'x') + "\n" + std::string(60, 'y') + "\nc = 3\n" +
                                           "\x9b"
                                           "2J \xc2\x9b"
                                           "2J \xc3\xa4\n" +
                                           std::string(59, 'z') + "\xc3\xa4\n");
    std::string const errors = errors_of([] {
        EXPECT_EQ(mem_cfg_get_value("a"), "1");
        EXPECT_EQ(mem_cfg_get_value("b"), "2");
        EXPECT_EQ(mem_cfg_get_value("c"), "3");
        EXPECT_EQ(mem_cfg_get_value(""), "");
    });
    EXPECT_EQ(errors, "Warning: kalvern.ini:2: expected \"key = value\", found \"no equals sign\"\n"
                      "Warning: kalvern.ini:3: expected \"key = value\", found \"= no key\"\n"
                      "Warning: kalvern.ini:5: expected \"key = value\", found \"[open = section\"\n"
                      "Warning: kalvern.ini:6: expected \"key = value\", found \"[section] x = 1\"\n"
                      "Warning: kalvern.ini:7: expected \"key = value\", found \"nu?ll = 3\"\n"
                      "Warning: kalvern.ini:8: expected \"key = value\", found \"control??\"\n"
                      "Warning: kalvern.ini:10: expected \"key = value\", found \"" +
                          std::string(60, 'x') +
                          "...\"\n"
                          "Warning: kalvern.ini:11: expected \"key = value\", found \"" +
                          std::string(60, 'y') +
                          "\"\n"
                          "Warning: kalvern.ini:13: expected \"key = value\", found \"?2J ?2J \xc3\xa4\"\n"
                          "Warning: kalvern.ini:14: expected \"key = value\", found \"" +
                          std::string(59, 'z') + "...\"\n");
}

TEST_F(MemCfg, CountsLinesBeyondTheTwentiethThatCantBeRead)
{
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "line\n";
    m_dir.write("root/kalvern.ini", text + "a = 1\n");
    set_root_callback();
    std::string const errors = errors_of([] { EXPECT_EQ(mem_cfg_get_value("a"), "1"); });
    EXPECT_EQ(count_of(errors, "\n"), 21U) << errors;
    EXPECT_THAT(errors, HasSubstr("root/kalvern.ini:20: expected"));
    EXPECT_THAT(errors, HasSubstr("root/kalvern.ini: 980 more lines can't be read\n"));
}

// Bytes of no meaning, rich in those that have one.
TEST_F(MemCfg, SurvivesRandomBytes)
{
    unsigned const seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::string const rich("=\n\r#;[] \t\"ab\0\xEF\xBB\xBF", 16);
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += random() % 4 == 0 ? static_cast<char>(random()) : rich[random() % rich.size()];
    m_dir.write("current/kalvern.ini", text + "\nthe last key = 1\n");
    std::string const errors = errors_of([] { EXPECT_EQ(mem_cfg_get_value("the last key"), "1"); });
    EXPECT_EQ(count_of(errors, "\n"), 21U) << errors;
}

// Values.

struct SwitchCase
{
    char const *text;
    bool is_on;
};

TEST_F(MemCfg, ReadsSwitches)
{
    SwitchCase const cases[] = {
        {"on", true},     {"On", true},  {"ON", true},   {"true", true}, {"TRUE", true},   {"yes", true},
        {"Yes", true},    {"1", true},   {" on ", true}, {"off", false}, {"OFF", false},   {"false", false},
        {"False", false}, {"no", false}, {"NO", false},  {"0", false},   {"\toff", false},
    };
    for (SwitchCase const &c : cases) {
        mem_cfg_set("key", c.text);
        EXPECT_EQ(mem_cfg_is_on("key", false), c.is_on) << c.text;
        EXPECT_EQ(mem_cfg_is_on("key", true), c.is_on) << c.text;
    }
}

struct NumberCase
{
    char const *text;
    int number;
};

TEST_F(MemCfg, ReadsNumbers)
{
    NumberCase const cases[] = {
        {"0", 0},
        {"-0", 0},
        {"42", 42},
        {"+42", 42},
        {"-42", -42},
        {" 7\t", 7},
        {"010", 10},
        {"0x10", 16},
        {"0XfF", 255},
        {"-0x10", -16},
        {"0x7fffffff", INT_MAX},
        {"2147483647", INT_MAX},
        {"-2147483648", INT_MIN},
        {"-0x80000000", INT_MIN},
        {"00000000000000000000000001", 1},
    };
    for (NumberCase const &c : cases) {
        mem_cfg_set("key", c.text);
        EXPECT_EQ(mem_cfg_get_int_value("key", 99), c.number) << c.text;
    }
}

TEST_F(MemCfg, TakesAValueThatCantBeReadForAbsent)
{
    char const *const no_switches[] = {"",  " ", "2",      "-1",           "o", "onn", "on off",
                                       "y", "t", "enable", "on # comment", "01"};
    char const *const no_numbers[] = {"",
                                      " ",
                                      "-",
                                      "+",
                                      "x",
                                      "on",
                                      "1.5",
                                      "1 2",
                                      "1x",
                                      "--1",
                                      "+-1",
                                      "0x",
                                      "0xg",
                                      "1e3",
                                      "- 1",
                                      "2147483648",
                                      "-2147483649",
                                      "99999999999999999999",
                                      "0x80000000",
                                      "0x-1",
                                      "4294967296",
                                      "18446744073709551617"};
    for (char const *const text : no_switches) {
        mem_cfg_set("key", text);
        EXPECT_THAT(errors_of([&] {
                        EXPECT_TRUE(mem_cfg_is_on("key", true)) << text;
                        EXPECT_FALSE(mem_cfg_is_on("key", false)) << text;
                    }),
                    HasSubstr("Warning: mem_cfg_set: the value of \"key\" is \"" + std::string(text) + "\""));
    }
    for (char const *const text : no_numbers) {
        mem_cfg_set("key", text);
        EXPECT_THAT(errors_of([&] {
                        EXPECT_EQ(mem_cfg_get_int_value("key", 99), 99) << text;
                        EXPECT_EQ(mem_cfg_get_int_value("key", 98), 98) << text;
                    }),
                    HasSubstr("Warning: mem_cfg_set: the value of \"key\" is \"" + std::string(text) + "\""));
    }
}

TEST_F(MemCfg, ReportsAValueThatCantBeReadOnceForEachKindOfQuestion)
{
    m_dir.write("current/kalvern.ini", "\ndebug_gen_bins = maybe\n");
    m_dir.write("root/kalvern.ini", "debug_gen_bins = on\n");
    set_root_callback();
    std::string const errors = errors_of([] {
        for (int i = 0; i < 3; ++i) {
            EXPECT_FALSE(mem_cfg_is_on("debug_gen_bins", false));
            EXPECT_EQ(mem_cfg_get_int_value("debug_gen_bins", 5), 5);
            EXPECT_EQ(mem_cfg_get_value("debug_gen_bins"), "maybe");
        }
    });
    EXPECT_EQ(errors, "Warning: kalvern.ini:2: the value of \"debug_gen_bins\" is \"maybe\", expected on, off, true, "
                      "false, yes, no, 1 or 0\n"
                      "Warning: kalvern.ini:2: the value of \"debug_gen_bins\" is \"maybe\", expected a whole number "
                      "from -2147483648 to 2147483647\n");
}

// Threads.

TEST_F(MemCfg, ShowsEveryThreadTheFilesAtItsFirstQuestion)
{
    m_dir.write("current/kalvern.ini", "a = current\nnonsense\n");
    m_dir.write("root/kalvern.ini", "b = 17\n");
    set_root_callback();
    std::string const errors = errors_of([] {
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&ready] {
                ++ready;
                while (ready < 8)
                    std::this_thread::yield();
                EXPECT_EQ(mem_cfg_get_int_value("b", 0), 17);
                EXPECT_EQ(mem_cfg_get_value("a"), "current");
            });
        for (std::thread &thread : threads)
            thread.join();
    });
    EXPECT_EQ(count_of(errors, "nonsense"), 1U) << errors;
}

TEST_F(MemCfg, LetsThreadsSetAndAsk)
{
    m_dir.write("current/kalvern.ini", "key = file\n");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([i] {
            std::string const own = "own" + std::to_string(i);
            for (int round = 0; round < 500; ++round) {
                mem_cfg_set("key", round % 2 == 0 ? "set" : nullptr);
                std::string const value = mem_cfg_get_value("key");
                EXPECT_TRUE(value == "set" || value == "file") << value;
                mem_cfg_set(own.c_str(), std::to_string(round).c_str());
                EXPECT_EQ(mem_cfg_get_int_value(own.c_str(), -1), round);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
}

// The other callbacks are kept for later; setting them calls none of them.

bool l_is_called = false;

TEST_F(MemCfg, TakesTheOtherCallbacksWithoutCallingThem)
{
    mem_set_gen_get_db_dir_path_string_callback([] { return l_is_called = true, std::string("db/"); });
    mem_set_gen_get_is_ui_process_callback([] { return l_is_called = true; });
    mem_set_gen_get_module_filename_callback([] { return l_is_called = true, std::string("kalvern_fit"); });
    mem_set_gen_get_project_output_directory_callback([]() -> char const * { return l_is_called = true, "out/"; });
    EXPECT_EQ(mem_cfg_get_value("key"), "");
    EXPECT_FALSE(l_is_called);
}

} // namespace
