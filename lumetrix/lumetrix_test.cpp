#include "lumetrix.h"

#include "log_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

extern "C" void log_from_c(const char* directory);

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

class LumetrixTest : public testing::Test {
protected:
    ~LumetrixTest() override { lumetrix_release(logger); }

    // Configures the library the way the gateway does.
    void setUp(int level = LUMETRIX_DEBUG, int files = 8, int queue = 1000) {
        lumetrix_set_rotation_with_date(logger, files);
        lumetrix_set_pool_size(logger, queue);
        lumetrix_set_output_level(logger, level);
        lumetrix_set_output_dir(logger, log.utf8().c_str(), "Gateway");
    }

    void write(const std::string& text, int level = LUMETRIX_INFO) {
        lumetrix_log(logger, "GW", level, text.c_str());
    }

    // Syncs and returns the messages in the files.
    std::vector<std::string> messages() {
        lumetrix_sync(logger);
        return log.messages();
    }

    // Starts threads, at most 10, of which each writes its number and the numbers from 0 to
    // kLines - 1.
    std::vector<std::thread> writeNumberedLines(int count) {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < count; ++thread) {
            threads.emplace_back([this, thread] {
                for (int line = 0; line < kLines; ++line) {
                    write(std::to_string(thread) + " " + std::to_string(line));
                }
            });
        }
        return threads;
    }

    // Waits for the threads and expects the lines of each to be complete and in order.
    void expectLinesInOrder(std::vector<std::thread>& threads) {
        for (auto& thread : threads) {
            thread.join();
        }
        std::map<char, int> next;
        for (const auto& message : messages()) {
            EXPECT_EQ(message.substr(2), std::to_string(next[message[0]]++)) << message;
        }
        for (std::size_t thread = 0; thread < threads.size(); ++thread) {
            EXPECT_EQ(next[static_cast<char>('0' + thread)], kLines);
        }
    }

    static constexpr int kLines = 1000;

    LogDirectory log;
    lumetrix_logger* logger = lumetrix_get_logger();
};

TEST_F(LumetrixTest, WritesToDailyFile) {
    setUp();
    write("Quorin Gateway Http Server Start [Argument] settings.xml primary");
    EXPECT_THAT(messages(),
                ElementsAre("Quorin Gateway Http Server Start [Argument] settings.xml primary"));
    EXPECT_THAT(log.fileNames(), ElementsAre(dailyFileName("Gateway", 0)));
}

TEST_F(LumetrixTest, MapsLevelNumbersToNames) {
    setUp();
    for (int level = 0; level <= 8; ++level) {
        write("message", level);
    }
    messages();
    std::vector<std::string> names;
    for (const auto& line : log.lines()) {
        const auto begin = line.find("_l:") + 3;
        names.push_back(line.substr(begin, line.find('\t', begin) - begin));
    }
    EXPECT_THAT(names, ElementsAre("debug", "debug", "debug", "info", "warning", "error", "error",
                                   "error", "error"));
}

TEST_F(LumetrixTest, WritesIdOfCallingThread) {
    setUp();
    write("here");
    std::thread([this] { write("there"); }).join();
    write("here again");
    messages();
    std::vector<std::string> threads;
    for (const auto& line : log.lines()) {
        threads.push_back(line.substr(line.find("_th:"), line.find("\t_m:") - line.find("_th:")));
    }
    ASSERT_THAT(threads, SizeIs(3));
    EXPECT_EQ(threads[0], threads[2]);
    EXPECT_NE(threads[0], threads[1]);
}

TEST_F(LumetrixTest, EscapesMessageIntoOneField) {
    setUp();
    write("a\nb\r\nc\td\\e\x1b[0m");
    EXPECT_THAT(messages(), ElementsAre(R"(a\nb\r\nc\td\\e\x1b[0m)"));
}

TEST_F(LumetrixTest, WritesEmptyAndLongMessages) {
    setUp();
    write("");
    write(std::string(1'000'000, 'x'));
    EXPECT_THAT(messages(), ElementsAre("", std::string(1'000'000, 'x')));
}

TEST_F(LumetrixTest, TreatsMessageAsPlainText) {
    setUp();
    write("%s %n {} {0} %v %Y");
    EXPECT_THAT(messages(), ElementsAre("%s %n {} {0} %v %Y"));
}

TEST_F(LumetrixTest, DecodesDirectoryAndBaseNameAsUtf8) {
    const std::u8string folder = u8"gr\u00fc\u00df \u65e5";
    const auto utf8 = log.utf8() + "/" + std::string(folder.begin(), folder.end());
    lumetrix_set_output_dir(logger, utf8.c_str(), "gr\xc3\xbc\xc3\x9f");
    write("line");
    lumetrix_sync(logger);
    const auto base = log.path() / folder / std::filesystem::path(u8"gr\u00fc\u00df");
    bool found = false;
    for (const int day : {0, -1}) {
        auto file = base;
        file += dailyFileName("", day);
        found = found || std::filesystem::exists(file);
    }
    EXPECT_TRUE(found);
}

// ---- level

TEST_F(LumetrixTest, DropsLinesBelowOutputLevel) {
    setUp(LUMETRIX_WARN);
    write("debug", LUMETRIX_DEBUG);
    write("info", LUMETRIX_INFO);
    write("warn", LUMETRIX_WARN);
    write("error", LUMETRIX_ERROR);
    EXPECT_THAT(messages(), ElementsAre("warn", "error"));
}

TEST_F(LumetrixTest, ChangesOutputLevelWhileRunning) {
    setUp(LUMETRIX_INFO);
    write("1", LUMETRIX_DEBUG);
    lumetrix_set_output_level(logger, LUMETRIX_DEBUG);
    write("2", LUMETRIX_DEBUG);
    lumetrix_set_output_level(logger, LUMETRIX_ERROR);
    write("3", LUMETRIX_WARN);
    EXPECT_THAT(messages(), ElementsAre("2"));
}

TEST_F(LumetrixTest, ClampsLevelNumbers) {
    setUp();
    lumetrix_set_output_level(logger, 99); // clamped to error
    write("warn", LUMETRIX_WARN);
    write("error", LUMETRIX_ERROR);
    lumetrix_set_output_level(logger, -99); // clamped to debug
    write("-5", -5);
    EXPECT_THAT(messages(), ElementsAre("error", "-5"));
}

// ---- lines before the directory is set

TEST_F(LumetrixTest, WritesHeldLinesOnceDirectoryIsSet) {
    write("before 1", LUMETRIX_ERROR);
    write("before 2", LUMETRIX_ERROR);
    setUp();
    write("after");
    EXPECT_THAT(messages(), ElementsAre("before 1", "before 2", "after"));
}

TEST_F(LumetrixTest, AppliesOutputLevelToHeldLines) {
    write("debug", LUMETRIX_DEBUG);
    write("error", LUMETRIX_ERROR);
    setUp(LUMETRIX_INFO);
    EXPECT_THAT(messages(), ElementsAre("error"));
}

TEST_F(LumetrixTest, ReleaseWritesHeldLinesToStandardError) {
    CaptureStderr();
    write("[End] The arguments must be three", LUMETRIX_ERROR);
    write("Quorin Gateway Http Server End [Argument]  : [Status] Failure");
    lumetrix_release(logger);
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::splitLines(GetCapturedStderr())),
                ElementsAre("[End] The arguments must be three",
                            "Quorin Gateway Http Server End [Argument]  : [Status] Failure"));
}

TEST_F(LumetrixTest, OutputAllLogsWritesHeldLinesOnce) {
    CaptureStderr();
    write("early");
    lumetrix_output_all_logs(logger);
    EXPECT_THAT(GetCapturedStderr(), HasSubstr("msg:early"));

    CaptureStderr();
    setUp();
    write("later");
    lumetrix_output_all_logs(logger); // now equivalent to lumetrix_sync
    EXPECT_THAT(log.messages(), ElementsAre("later"));
    lumetrix_release(logger);
    EXPECT_EQ(GetCapturedStderr(), "");
}

// ---- queue

TEST_F(LumetrixTest, FullQueueLosesNoLine) {
    for (const int queue : {1, 2, 0, -1, std::numeric_limits<int>::min()}) {
        lumetrix_logger* const restarted = lumetrix_get_logger();
        const LogDirectory directory;
        lumetrix_set_pool_size(restarted, queue);
        lumetrix_set_output_dir(restarted, directory.utf8().c_str(), "Gateway");
        for (int line = 0; line < 3000; ++line) {
            lumetrix_log(restarted, "GW", LUMETRIX_INFO, "line");
        }
        lumetrix_release(restarted);
        EXPECT_THAT(directory.messages(), SizeIs(3000)) << queue;
    }
}

TEST_F(LumetrixTest, AcceptsLargestQueueSize) {
    setUp(LUMETRIX_DEBUG, 8, std::numeric_limits<int>::max());
    write("line");
    EXPECT_THAT(messages(), ElementsAre("line"));
}

TEST_F(LumetrixTest, QueueSizeChangeKeepsLinesInOrder) {
    setUp();
    std::vector<std::thread> threads = writeNumberedLines(4);
    for (int queue = 1; queue < 50; ++queue) {
        lumetrix_set_pool_size(logger, queue);
    }
    expectLinesInOrder(threads);
}

// ---- threads

TEST_F(LumetrixTest, KeepsLineOrderOfEachThread) {
    setUp(LUMETRIX_DEBUG, 8, 16);
    std::vector<std::thread> threads = writeNumberedLines(8);
    expectLinesInOrder(threads);
}

TEST_F(LumetrixTest, CallsAllFunctionsConcurrently) {
    setUp();
    const LogDirectory other;
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    threads.reserve(5);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, &stop] {
            while (!stop) {
                write("line");
            }
        });
    }
    threads.emplace_back([this, &stop] {
        while (!stop) {
            lumetrix_sync(logger);
        }
    });
    CaptureStdout();
    CaptureStderr();
    for (int round = 0; round < 20; ++round) {
        lumetrix_set_output_level(logger, 2 + round % 4);
        lumetrix_set_output_dir(logger, (round % 2 ? other : log).utf8().c_str(), "Gateway");
        lumetrix_set_rotation(logger, 10000, 3);
        lumetrix_set_enabled_console_out(logger, round % 2);
        lumetrix_set_rotation_with_date(logger, 3);
        lumetrix_set_pool_size(logger, 10 + round);
        lumetrix_output_all_logs(logger);
        lumetrix_release(logger);
        EXPECT_EQ(lumetrix_get_logger(), logger);
    }
    stop = true;
    for (auto& thread : threads) {
        thread.join();
    }
    lumetrix_release(logger);
    GetCapturedStdout();
    GetCapturedStderr();
    for (const auto& messages : {log.messages(), other.messages()}) {
        EXPECT_THAT(messages,
                    testing::Each(testing::AnyOf(
                        "line", testing::EndsWith("too many before the log was set up"))));
    }
}

// ---- release

TEST_F(LumetrixTest, ReleaseWritesQueuedLines) {
    setUp(LUMETRIX_DEBUG, 8, 5000);
    for (int line = 0; line < 5000; ++line) {
        write("line");
    }
    lumetrix_release(logger);
    EXPECT_THAT(log.messages(), SizeIs(5000));
}

TEST_F(LumetrixTest, ReleaseKeepsLinesOfRunningThreads) {
    setUp(LUMETRIX_DEBUG, 8, 4);
    std::atomic<bool> stop{false};
    std::atomic<int> logged{0};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (; !stop; ++logged) {
                write("line");
            }
        });
    }
    while (logged < 1000) {
        std::this_thread::yield();
    }
    const int before = logged;
    lumetrix_release(logger);
    const auto written = log.messages();
    EXPECT_GE(written.size(), static_cast<std::size_t>(before));
    EXPECT_THAT(written, testing::Each("line"));
    stop = true;
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(log.messages().size(), written.size());
}

TEST_F(LumetrixTest, CallsAfterReleaseDoNothing) {
    setUp();
    write("line");
    lumetrix_release(logger);
    CaptureStdout();
    CaptureStderr();
    const LogDirectory other;
    write("after");
    lumetrix_set_rotation_with_date(logger, 1);
    lumetrix_set_rotation(logger, 10, 1);
    lumetrix_set_pool_size(logger, 10);
    lumetrix_set_output_level(logger, LUMETRIX_DEBUG);
    lumetrix_set_enabled_console_out(logger, 1);
    lumetrix_set_output_dir(logger, other.utf8().c_str(), "Gateway");
    write("after");
    lumetrix_sync(logger);
    lumetrix_output_all_logs(logger);
    lumetrix_release(logger);
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_THAT(log.messages(), ElementsAre("line"));
    EXPECT_THAT(other.fileNames(), IsEmpty());
}

TEST_F(LumetrixTest, RestartsWithDefaultsAfterRelease) {
    setUp(LUMETRIX_ERROR);
    write("first", LUMETRIX_ERROR);
    lumetrix_release(logger);

    const LogDirectory second;
    EXPECT_EQ(lumetrix_get_logger(), logger);
    write("second", LUMETRIX_DEBUG);
    lumetrix_set_output_dir(logger, second.utf8().c_str(), "Gateway");
    lumetrix_release(logger);
    EXPECT_THAT(log.messages(), ElementsAre("first"));
    EXPECT_THAT(second.messages(), ElementsAre("second"));
}

TEST_F(LumetrixTest, ProcessHasOneLogger) {
    EXPECT_NE(logger, nullptr);
    EXPECT_EQ(lumetrix_get_logger(), logger);
    EXPECT_EQ(lumetrix_create(), logger);
    setUp();
    lumetrix_get_logger(); // changes no setting
    write("line");
    EXPECT_THAT(messages(), ElementsAre("line"));
}

// ---- invalid arguments

TEST_F(LumetrixTest, IgnoresNullAndUnknownHandles) {
    int something = 0;
    for (auto* const handle :
         {static_cast<lumetrix_logger*>(nullptr), reinterpret_cast<lumetrix_logger*>(&something)}) {
        lumetrix_set_rotation_with_date(handle, 1);
        lumetrix_set_rotation(handle, 10, 1);
        lumetrix_set_pool_size(handle, 10);
        lumetrix_set_output_level(handle, LUMETRIX_ERROR);
        lumetrix_set_enabled_console_out(handle, 1);
        lumetrix_set_output_dir(handle, log.utf8().c_str(), "Gateway");
        lumetrix_log(handle, "GW", LUMETRIX_ERROR, "line");
        lumetrix_sync(handle);
        lumetrix_output_all_logs(handle);
        lumetrix_release(handle);
    }
    EXPECT_THAT(log.fileNames(), IsEmpty());
    setUp();
    write("the logger is still on", LUMETRIX_DEBUG);
    EXPECT_THAT(messages(), ElementsAre("the logger is still on"));
}

TEST_F(LumetrixTest, IgnoresNullStrings) {
    setUp();
    lumetrix_log(logger, nullptr, LUMETRIX_INFO, "no name");
    lumetrix_log(logger, "GW", LUMETRIX_INFO, nullptr);
    lumetrix_set_output_dir(logger, nullptr, "Gateway");
    lumetrix_set_output_dir(logger, log.utf8().c_str(), nullptr);
    lumetrix_set_output_dir(logger, log.utf8().c_str(), "");
    write("line");
    EXPECT_THAT(messages(), ElementsAre("line"));
    EXPECT_THAT(log.fileNames(), ElementsAre(dailyFileName("Gateway", 0)));
}

TEST_F(LumetrixTest, HeaderCompilesAsC) {
    log_from_c(log.utf8().c_str());
    EXPECT_THAT(log.messages(), ElementsAre("from C"));
}

// ---- rotation, console, sync

TEST_F(LumetrixTest, RotationWithDateRemovesOldFiles) {
    for (const int day : {-40, -20, -1}) {
        log.write(dailyFileName("Gateway", day), "");
    }
    setUp(LUMETRIX_INFO, 2);
    EXPECT_THAT(log.fileNames(),
                ElementsAre(dailyFileName("Gateway", -1), dailyFileName("Gateway", 0)));
}

TEST_F(LumetrixTest, RotatesBySizeAndCount) {
    lumetrix_set_rotation(logger, 1000, 3);
    lumetrix_set_output_dir(logger, log.utf8().c_str(), "Gateway");
    for (int line = 0; line < 100; ++line) {
        write(std::to_string(line));
    }
    lumetrix_sync(logger);
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.1.log", "Gateway.2.log", "Gateway.log"));
    for (const auto& name : log.fileNames()) {
        EXPECT_LE(log.content(name).size(), 1000U);
    }
    EXPECT_THAT(log.content("Gateway.log"), HasSubstr("msg:99"));
}

TEST_F(LumetrixTest, IgnoresSizeBelowOne) {
    lumetrix_set_rotation(logger, 0, 3);
    lumetrix_set_rotation(logger, -1, 3);
    setUp();
    EXPECT_THAT(log.fileNames(), ElementsAre(dailyFileName("Gateway", 0)));
}

TEST_F(LumetrixTest, WritesToConsoleOnlyWhileEnabled) {
    setUp();
    CaptureStdout();
    write("1");
    lumetrix_set_enabled_console_out(logger, 1);
    write("2", LUMETRIX_WARN);
    write("3\n4");
    lumetrix_set_enabled_console_out(logger, 0);
    write("5");
    lumetrix_sync(logger);
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::splitLines(GetCapturedStdout())),
                ElementsAre("2", "3\\n4"));
    EXPECT_THAT(log.messages(), ElementsAre("1", "2", "3\\n4", "5"));
}

TEST_F(LumetrixTest, ConsoleWorksWithoutDirectory) {
    CaptureStderr();
    CaptureStdout();
    lumetrix_set_enabled_console_out(logger, 7);
    write("line");
    lumetrix_sync(logger);
    EXPECT_THAT(GetCapturedStdout(), HasSubstr("\tmsg:line"));
    lumetrix_release(logger);
    EXPECT_THAT(GetCapturedStderr(), HasSubstr("\tmsg:line"));
}

TEST_F(LumetrixTest, SyncWritesLineToFile) {
    setUp();
    for (int line = 1; line <= 100; ++line) {
        write("line");
        lumetrix_sync(logger);
        ASSERT_THAT(log.messages(), SizeIs(line));
    }
}

TEST_F(LumetrixTest, WritesLineToFileWithoutSync) {
    setUp();
    write("line");
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (log.messages().empty() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_THAT(log.messages(), ElementsAre("line"));
}

// ---- errors

TEST_F(LumetrixTest, ReportsUnusableDirectoryInOneLine) {
    log.write("file", "");
    CaptureStderr();
    lumetrix_set_pool_size(logger, 10);
    write("before");
    lumetrix_set_output_dir(logger, (log.utf8() + "/file/log").c_str(), "Gateway");
    for (int line = 0; line < 1000; ++line) {
        write("lost");
    }
    lumetrix_sync(logger);
    lumetrix_release(logger);
    const auto errors = LogDirectory::splitLines(GetCapturedStderr());
    ASSERT_THAT(errors, SizeIs(1));
    EXPECT_THAT(errors[0], StartsWith("lumetrix: the log cannot be written: "));
}

} // namespace
