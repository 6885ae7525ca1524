// Messages: each test is a process of its own, since the destination of the messages is a state of the process.
#include "mem_sys.h"

#include "tests/support/argument_slots.h"
#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;

// Built before any other static object of this file, as in a library of a tool.
MEM_INITIALIZER l_initializer("TEST");

struct EarlyUser
{
    EarlyUser()
    {
        MEM_INITIALIZER const outer("OUTER");
        MEM_INITIALIZER const inner(nullptr);
        mem_cfg_set("early", "12");
        ArgumentSlots slots(34);
        char *cursor = slots.begin();
        stl_output(&text, "%d", cursor);
    }
    // At the end of the process, when messages still have to appear.
    ~EarlyUser()
    {
        if (prints_its_end)
            mem_msg_local_vinfo("TEST", "the end", nullptr);
    }

    std::string text;
    bool prints_its_end = false;
};
EarlyUser l_early_user;

struct Line
{
    MEM_MSG_KIND kind;
    std::string module;
    std::string text;
};

bool operator==(Line const &left, Line const &right)
{
    return left.kind == right.kind && left.module == right.module && left.text == right.text;
}

std::ostream &operator<<(std::ostream &out, Line const &line)
{
    return out << (line.kind == MEM_MSG_DEBUG ? "debug" : "info") << " [" << line.module << "] " << line.text;
}

void collect(MEM_MSG_KIND kind, char const *module, char const *text, void *context)
{
    static_cast<std::vector<Line> *>(context)->push_back({kind, module, text});
}

template <typename... Values>
bool info(char const *module, char const *format, Values... values)
{
    ArgumentSlots slots(values...);
    return mem_msg_local_vinfo(module, format, slots.begin());
}

template <typename... Values>
bool debug(char const *module, char const *format, Values... values)
{
    ArgumentSlots slots(values...);
    return mem_msg_local_vdebug(module, format, slots.begin());
}

// The output on both standard streams while a function runs.
struct Output
{
    std::string standard;
    std::string error;
};

template <typename Function>
Output output_of(Function const &function)
{
    Output output;
    output.standard =
        output_to(StandardStream::OUTPUT, [&] { output.error = output_to(StandardStream::ERROR_OUTPUT, function); });
    return output;
}

std::vector<std::string> lines_of(std::string const &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

// A directory without configuration.
class MemMsg : public testing::Test
{
protected:
    TempDir m_dir;
    Environment m_variable{"KALVERN_INI", nullptr};
    CurrentDirectory m_current_directory{m_dir.path()};
};

TEST_F(MemMsg, WritesInformationToTheStandardOutput)
{
    Output const output = output_of([] {
        EXPECT_TRUE(info("GEN", "%d bins of %s", 3, "fitter"));
        EXPECT_TRUE(info("GEN", "line end\n"));
        EXPECT_TRUE(info("GEN", "two\nlines\n"));
        EXPECT_TRUE(info("GEN", "\n"));
        EXPECT_TRUE(info("GEN", ""));
        EXPECT_TRUE(info("", "no module"));
        EXPECT_TRUE(info(nullptr, "no module"));
        EXPECT_TRUE(mem_msg_local_vinfo("GEN", "no arguments, 100%%", nullptr));
    });
    EXPECT_THAT(lines_of(output.standard),
                ElementsAre("Info (GEN): 3 bins of fitter", "Info (GEN): line end", "Info (GEN): two", "lines",
                            "Info (GEN): ", "Info (GEN): ", "Info: no module", "Info: no module",
                            "Info (GEN): no arguments, 100%"));
    EXPECT_EQ(output.error, "");
}

TEST_F(MemMsg, HidesDebugMessagesWithoutLookingAtTheirArguments)
{
    Output const output = output_of([] {
        EXPECT_FALSE(mem_msg_local_vdebug("GEN", "%s", nullptr));
        EXPECT_FALSE(mem_msg_local_vdebug(nullptr, nullptr, nullptr));
    });
    EXPECT_EQ(output.standard + output.error, "");
}

TEST_F(MemMsg, ShowsDebugMessagesWhenTheKeyIsOn)
{
    m_dir.write("kalvern.ini", "mem_show_debug_messages = on\n");
    Output const output = output_of([] {
        EXPECT_TRUE(debug("GEN", "%d", 1));
        EXPECT_TRUE(info("GEN", "%d", 2));
    });
    EXPECT_THAT(lines_of(output.error), ElementsAre("Debug (GEN): 1"));
    EXPECT_THAT(lines_of(output.standard), ElementsAre("Info (GEN): 2"));
}

TEST_F(MemMsg, FollowsTheKeyAtOnce)
{
    Output const output = output_of([] {
        for (int round = 0; round < 3; ++round) {
            EXPECT_FALSE(debug("GEN", "hidden"));
            mem_cfg_set("mem_show_debug_messages", "on");
            EXPECT_TRUE(debug("GEN", "shown %d", round));
            mem_cfg_set("mem_show_debug_messages", nullptr);
        }
    });
    EXPECT_THAT(lines_of(output.error),
                ElementsAre("Debug (GEN): shown 0", "Debug (GEN): shown 1", "Debug (GEN): shown 2"));
}

std::string l_root;

TEST_F(MemMsg, FollowsTheKeyOfTheInstallation)
{
    l_root = m_dir.text("root/");
    m_dir.write("root/kalvern.ini", "mem_show_debug_messages = yes\n");
    Output const output = output_of([] {
        EXPECT_FALSE(debug("GEN", "before"));
        mem_set_gen_get_kalvern_path_callback([] { return l_root; });
        EXPECT_TRUE(debug("GEN", "behind"));
    });
    EXPECT_THAT(lines_of(output.error), ElementsAre("Debug (GEN): behind"));
}

TEST_F(MemMsg, EmitsNothingThatCantBeFormatted)
{
    std::vector<Line> lines;
    Output const output = output_of([&] {
        EXPECT_FALSE(info("GEN", "%2147483647d", 1));
        mem_msg_redirect(collect, &lines);
        EXPECT_FALSE(info("GEN", "%2147483647d", 1));
        EXPECT_FALSE(debug("GEN", "%2147483647d", 1));
    });
    EXPECT_EQ(output.standard + output.error, "");
    EXPECT_THAT(lines, ElementsAre());
}

// Redirection to a function.

TEST_F(MemMsg, SendsEverythingToAFunction)
{
    std::vector<Line> lines;
    Output const output = output_of([&] {
        mem_msg_redirect(collect, &lines);
        EXPECT_TRUE(info("GEN", "%s", "one"));
        EXPECT_TRUE(debug("PB", "two\n"));
        EXPECT_TRUE(debug(nullptr, "%c\n\n", 'x'));
        EXPECT_TRUE(info("", ""));
    });
    EXPECT_THAT(lines, ElementsAre(Line{MEM_MSG_INFO, "GEN", "one"}, Line{MEM_MSG_DEBUG, "PB", "two"},
                                   Line{MEM_MSG_DEBUG, "", "x\n"}, Line{MEM_MSG_INFO, "", ""}));
    EXPECT_EQ(output.standard + output.error, "");
}

TEST_F(MemMsg, GoesBackToTheStandardStreams)
{
    std::vector<Line> lines;
    Output const output = output_of([&] {
        mem_msg_redirect(collect, &lines);
        mem_msg_redirect(nullptr, nullptr);
        EXPECT_TRUE(info("GEN", "back"));
        EXPECT_FALSE(debug("GEN", "hidden"));
    });
    EXPECT_THAT(lines_of(output.standard), ElementsAre("Info (GEN): back"));
    EXPECT_THAT(lines, ElementsAre());
}

int l_depth = 0;

void answer_messages(MEM_MSG_KIND kind, char const *module, char const *text, void *context)
{
    collect(kind, module, text, context);
    if (++l_depth < 3)
        debug("SINK", "answer to %s", text);
    EXPECT_FALSE(mem_cfg_is_on("mem_show_debug_messages", false));
}

TEST_F(MemMsg, LetsTheFunctionEmitMessages)
{
    std::vector<Line> lines;
    mem_msg_redirect(answer_messages, &lines);
    EXPECT_TRUE(info("GEN", "one"));
    EXPECT_THAT(lines, ElementsAre(Line{MEM_MSG_INFO, "GEN", "one"}, Line{MEM_MSG_DEBUG, "SINK", "answer to one"},
                                   Line{MEM_MSG_DEBUG, "SINK", "answer to answer to one"}));
}

void redirect_to_collect(MEM_MSG_KIND, char const *, char const *, void *context)
{
    mem_msg_redirect(collect, context);
    std::thread([] { info("GEN", "from a thread"); }).join();
}

TEST_F(MemMsg, LetsTheFunctionRedirectAndWaitForOtherThreads)
{
    std::vector<Line> lines;
    mem_msg_redirect(redirect_to_collect, &lines);
    EXPECT_TRUE(info("GEN", "one"));
    EXPECT_THAT(lines, ElementsAre(Line{MEM_MSG_INFO, "GEN", "from a thread"}));
}

TEST_F(MemMsg, KeepsWarningsOfTheConfigurationOnTheStandardError)
{
    std::vector<Line> lines;
    Output const output = output_of([&] {
        mem_msg_redirect(collect, &lines);
        mem_cfg_set("key", "perhaps");
        EXPECT_FALSE(mem_cfg_is_on("key", false));
    });
    EXPECT_THAT(lines, ElementsAre());
    EXPECT_THAT(output.error, testing::StartsWith("Warning: mem_cfg_set: the value of \"key\" is \"perhaps\""));
}

// Redirection to a file.

TEST_F(MemMsg, AppendsToAFile)
{
    m_dir.write("log.txt", "former\n");
    Output const output = output_of([this] {
        EXPECT_TRUE(mem_msg_redirect_to_file(m_dir.text("log.txt").c_str()));
        EXPECT_TRUE(info("GEN", "one"));
        EXPECT_FALSE(debug("GEN", "hidden"));
        mem_cfg_set("mem_show_debug_messages", "1");
        EXPECT_TRUE(debug("GEN", "two\n"));
        EXPECT_THAT(lines_of(m_dir.read("log.txt")), ElementsAre("former", "Info (GEN): one", "Debug (GEN): two"));
        EXPECT_TRUE(mem_msg_redirect_to_file(nullptr));
        EXPECT_TRUE(info("GEN", "three"));
    });
    EXPECT_THAT(lines_of(m_dir.read("log.txt")), ElementsAre("former", "Info (GEN): one", "Debug (GEN): two"));
    EXPECT_THAT(lines_of(output.standard), ElementsAre("Info (GEN): three"));
    EXPECT_EQ(output.error, "");
}

TEST_F(MemMsg, WritesToAFileWhateverTheLengthOfItsPath)
{
    // In the form that the standard library takes at any length; the system's common form has a limit of 260
    // characters.
    std::filesystem::path const top = (ON_WINDOWS ? "\\\\?\\" : "") + m_dir.path().string();
    std::filesystem::path deep = top;
    while (deep.string().size() < 300)
        deep /= std::string(50, 'd');
    std::filesystem::create_directories(deep);
    std::string const path = deep.string().substr(ON_WINDOWS ? 4 : 0) + "/log.txt";
    EXPECT_TRUE(mem_msg_redirect_to_file(path.c_str())) << path;
    EXPECT_TRUE(info("GEN", "deep"));
    mem_msg_redirect(nullptr, nullptr);
    std::ifstream file(deep / "log.txt");
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(line, "Info (GEN): deep");
}

TEST_F(MemMsg, KeepsTheFormerRedirectionIfAFileCantBeOpened)
{
    std::vector<Line> lines;
    mem_msg_redirect(collect, &lines);
    for (std::string const &path : {std::string(), m_dir.text("missing/log.txt"), m_dir.text()})
        EXPECT_FALSE(mem_msg_redirect_to_file(path.c_str())) << path;
    EXPECT_TRUE(info("GEN", "one"));
    EXPECT_THAT(lines, ElementsAre(Line{MEM_MSG_INFO, "GEN", "one"}));
}

TEST_F(MemMsg, ReplacesAFileByAFunctionAndBack)
{
    std::vector<Line> lines;
    EXPECT_TRUE(mem_msg_redirect_to_file(m_dir.text("a.txt").c_str()));
    EXPECT_TRUE(info("GEN", "a"));
    mem_msg_redirect(collect, &lines);
    EXPECT_TRUE(info("GEN", "sink"));
    EXPECT_TRUE(mem_msg_redirect_to_file(m_dir.text("b.txt").c_str()));
    EXPECT_TRUE(info("GEN", "b"));
    mem_msg_redirect(nullptr, nullptr);
    EXPECT_THAT(lines_of(m_dir.read("a.txt")), ElementsAre("Info (GEN): a"));
    EXPECT_THAT(lines_of(m_dir.read("b.txt")), ElementsAre("Info (GEN): b"));
    EXPECT_THAT(lines, ElementsAre(Line{MEM_MSG_INFO, "GEN", "sink"}));
}

// Threads.

constexpr int THREADS = 6;
constexpr int ROUNDS = 200;

// Lines of many lengths, each showing whether it is whole.
std::string line_text(int thread, int round)
{
    return std::to_string(thread) + "." + std::to_string(round) + " " +
           std::string(static_cast<std::size_t>(round % 97) * 11, static_cast<char>('a' + thread)) + "|";
}

void emit_from_threads()
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread)
        threads.emplace_back([thread] {
            for (int round = 0; round < ROUNDS; ++round)
                EXPECT_TRUE(info("GEN", "%s", line_text(thread, round).c_str()));
        });
    for (std::thread &thread : threads)
        thread.join();
}

std::multiset<std::string> expected_lines()
{
    std::multiset<std::string> lines;
    for (int thread = 0; thread < THREADS; ++thread)
        for (int round = 0; round < ROUNDS; ++round)
            lines.insert("Info (GEN): " + line_text(thread, round));
    return lines;
}

std::multiset<std::string> sorted_lines_of(std::string const &text)
{
    std::vector<std::string> const lines = lines_of(text);
    return {lines.begin(), lines.end()};
}

TEST_F(MemMsg, TearsNoLineOfTheStandardOutput)
{
    Output const output = output_of(emit_from_threads);
    EXPECT_EQ(sorted_lines_of(output.standard), expected_lines());
}

TEST_F(MemMsg, TearsNoLineOfAFile)
{
    EXPECT_TRUE(mem_msg_redirect_to_file(m_dir.text("log.txt").c_str()));
    emit_from_threads();
    mem_msg_redirect(nullptr, nullptr);
    EXPECT_EQ(sorted_lines_of(m_dir.read("log.txt")), expected_lines());
}

// Each file gets whole lines, and together they get every line.
TEST_F(MemMsg, LosesNoLineWhileTheFileChanges)
{
    EXPECT_TRUE(mem_msg_redirect_to_file(m_dir.text("0.txt").c_str()));
    std::thread emitter(emit_from_threads);
    for (int round = 0; round < 50; ++round)
        EXPECT_TRUE(mem_msg_redirect_to_file(m_dir.text(round % 2 == 0 ? "1.txt" : "0.txt").c_str()));
    emitter.join();
    mem_msg_redirect(nullptr, nullptr);
    EXPECT_EQ(sorted_lines_of(m_dir.read("0.txt") + m_dir.read("1.txt")), expected_lines());
}

void count_call(MEM_MSG_KIND, char const *, char const *, void *context)
{
    ++*static_cast<std::atomic<int> *>(context);
}

TEST_F(MemMsg, CallsTheFunctionFromManyThreads)
{
    std::atomic<int> calls{0};
    mem_msg_redirect(count_call, &calls);
    emit_from_threads();
    EXPECT_EQ(calls, THREADS * ROUNDS);
}

TEST_F(MemMsg, LetsThreadsChangeTheKeyWhileOthersSendMessages)
{
    std::thread setter([] {
        for (int round = 0; round < 500; ++round)
            mem_cfg_set("mem_show_debug_messages", round % 2 == 0 ? "on" : "off");
    });
    int shown = 0;
    Output const output = output_of([&] {
        for (int round = 0; round < 500; ++round)
            shown += debug("GEN", "%d", round) ? 1 : 0;
    });
    setter.join();
    EXPECT_EQ(lines_of(output.error).size(), static_cast<std::size_t>(shown));
}

// Set-up and end of the process.

TEST_F(MemMsg, WorksInStaticConstructors)
{
    EXPECT_EQ(l_early_user.text, "34");
    EXPECT_EQ(mem_cfg_get_int_value("early", 0), 12);
}

TEST_F(MemMsg, WorksInStaticDestructors)
{
    EXPECT_TRUE(mem_msg_redirect_to_file(m_dir.text("log.txt").c_str()));
    EXPECT_TRUE(mem_msg_redirect_to_file(nullptr));
    EXPECT_EXIT(
        {
            mem_msg_redirect(
                [](MEM_MSG_KIND, char const *, char const *text, void *) {
                    std::fprintf(stderr, "received %s\n", text);
                    std::fflush(stderr);
                },
                nullptr);
            l_early_user.prints_its_end = true;
            std::exit(0);
        },
        testing::ExitedWithCode(0), testing::HasSubstr("received the end"));
}

} // namespace
