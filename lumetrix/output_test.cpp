#include "output.h"

#include "log_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace lumetrix {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

class OutputTest : public testing::Test {
protected:
    void logAt(spdlog::log_clock::time_point time, const std::string& text,
               spdlog::level::level_enum level = spdlog::level::info) {
        output.log({time, spdlog::source_loc{}, {}, level, text});
        output.flush();
    }

    void logOnDay(int day, const std::string& text) { logAt(noonOfDay(day), text); }
    void logNow(const std::string& text) { logAt(spdlog::log_clock::now(), text); }

    LogDirectory log;
    Output output;
};

// ---- rotation by date

TEST_F(OutputTest, NamesFileAfterBaseNameAndDate) {
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "today");
    EXPECT_THAT(log.fileNames(), ElementsAre(dailyFileName("Gateway", 0)));
    EXPECT_THAT(log.messages(), ElementsAre("today"));
}

TEST_F(OutputTest, KeepsDotsInBaseName) {
    output.setFile(log.path(), "gateway.v5");
    EXPECT_THAT(log.fileNames(), ElementsAre(dailyFileName("gateway.v5", 0)));
}

TEST_F(OutputTest, StartsNewFileWithFirstLineOfDay) {
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "one");
    logOnDay(1, "two");
    logOnDay(1, "three");
    logOnDay(2, "four");
    EXPECT_THAT(log.fileNames(),
                ElementsAre(dailyFileName("Gateway", 0), dailyFileName("Gateway", 1),
                            dailyFileName("Gateway", 2)));
    EXPECT_THAT(log.content(dailyFileName("Gateway", 1)), HasSubstr("msg:two"));
    EXPECT_THAT(log.content(dailyFileName("Gateway", 1)), HasSubstr("msg:three"));
    EXPECT_THAT(log.messages(), ElementsAre("one", "two", "three", "four"));
}

TEST_F(OutputTest, AppendsToFileOfEarlierRun) {
    log.write(dailyFileName("Gateway", 0), "earlier\n");
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "now");
    EXPECT_THAT(log.messages(), ElementsAre("earlier", "now"));
}

TEST_F(OutputTest, TerminatesIncompleteLineOfEarlierRun) {
    log.write(dailyFileName("Gateway", 0), "first\n_dt:2024");
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "now");
    EXPECT_THAT(log.messages(), ElementsAre("first", "_dt:2024", "now"));
}

TEST_F(OutputTest, KeepsGivenNumberOfDays) {
    output.setRotation({3, {}});
    output.setFile(log.path(), "Gateway");
    for (int day = 0; day < 6; ++day) {
        logOnDay(day, std::to_string(day));
    }
    EXPECT_THAT(log.fileNames(),
                ElementsAre(dailyFileName("Gateway", 3), dailyFileName("Gateway", 4),
                            dailyFileName("Gateway", 5)));
    EXPECT_THAT(log.messages(), ElementsAre("3", "4", "5"));
}

TEST_F(OutputTest, KeepsOneDay) {
    output.setRotation({1, {}});
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "zero");
    logOnDay(1, "one");
    EXPECT_THAT(log.fileNames(), ElementsAre(dailyFileName("Gateway", 1)));
}

TEST_F(OutputTest, RemovesOldFilesAcrossMissingDays) {
    for (const int day : {-400, -30, -9, -2}) {
        log.write(dailyFileName("Gateway", day), "old\n");
    }
    output.setRotation({3, {}});
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.fileNames(),
                ElementsAre(dailyFileName("Gateway", -9), dailyFileName("Gateway", -2),
                            dailyFileName("Gateway", 0)));
}

TEST_F(OutputTest, KeepsUnrelatedFiles) {
    const std::string invalidDate = "Gateway_" + std::string(10, 'x') + ".log";
    for (const auto& name :
         {std::string("Gateway_2001-01-01.log.bak"), std::string("Gateway.log"),
          std::string("Gateway_2001-01-01.txt"), invalidDate,
          std::string("OtherGateway_2001-01-01.log"), std::string("Gateway_App_2001-01-01.log")}) {
        log.write(name, "other\n");
    }
    output.setRotation({1, {}});
    output.setFile(log.path(), "Gateway");
    logOnDay(1, "next day");
    EXPECT_THAT(log.fileNames(), SizeIs(7));
    EXPECT_THAT(log.fileNames(), Contains(dailyFileName("Gateway", 1)));
}

TEST_F(OutputTest, KeepsCurrentFile) {
    log.write(dailyFileName("Gateway", 5), "written while the clock was wrong\n");
    output.setRotation({1, {}});
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "today");
    EXPECT_THAT(log.messages(), ElementsAre("today"));
}

TEST_F(OutputTest, KeepsAllDaysIfLimitIsBelowOne) {
    for (const int number : {0, -1}) {
        log.write(dailyFileName("Gateway", -400), "old\n");
        output.setRotation({number, {}});
        output.setFile(log.path(), "Gateway");
        EXPECT_THAT(log.fileNames(), SizeIs(2));
    }
}

// ---- rotation by size

TEST_F(OutputTest, RotatesBySizeAndKeepsGivenNumber) {
    output.setRotation({3, 200});
    output.setFile(log.path(), "Gateway");
    for (int line = 0; line < 20; ++line) { // about 80 bytes each
        logNow("line " + std::to_string(line));
    }
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.1.log", "Gateway.2.log", "Gateway.log"));
    for (const auto& name : log.fileNames()) {
        EXPECT_LE(log.content(name).size(), 200U) << name;
    }
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::splitLines(log.content("Gateway.log"))),
                Contains("line 19"));
}

TEST_F(OutputTest, SingleFileIsTruncatedAtSizeLimit) {
    output.setRotation({1, 200});
    output.setFile(log.path(), "Gateway");
    for (int line = 0; line < 20; ++line) {
        logNow("line " + std::to_string(line));
    }
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.log"));
    EXPECT_LE(log.content("Gateway.log").size(), 200U);
}

TEST_F(OutputTest, RotationBySizeRemovesExcessFiles) {
    for (const char* name : {"Gateway.log", "Gateway.1.log", "Gateway.2.log", "Gateway.3.log"}) {
        log.write(name, "old\n");
    }
    output.setRotation({2, 1000});
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.1.log", "Gateway.log"));
}

TEST_F(OutputTest, ClampsFileLimitOfRotationBySize) {
    output.setFile(log.path(), "Gateway");
    for (const int number : {-1, 0, 200001, 2147483647}) {
        output.setRotation({number, 1000});
        logNow(std::to_string(number));
    }
    EXPECT_THAT(log.content("Gateway.log"), HasSubstr("msg:2147483647"));
}

TEST_F(OutputTest, ChangesRotationOfOpenFile) {
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "by date");
    output.setRotation({2, 1000});
    logNow("by size");
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.log", dailyFileName("Gateway", 0)));
    EXPECT_THAT(log.content("Gateway.log"), HasSubstr("msg:by size"));
}

// ---- lines before the file is set

TEST_F(OutputTest, WritesHeldLinesFirstWithTheirTimes) {
    logOnDay(-3, "early");
    logOnDay(-2, "later");
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "now");
    EXPECT_THAT(log.messages(), ElementsAre("early", "later", "now"));
    EXPECT_LT(log.lines()[0].substr(0, 12), log.lines()[2].substr(0, 12));
}

TEST_F(OutputTest, DropsHeldLinesBelowLevel) {
    logAt(noonOfDay(0), "debug", spdlog::level::debug);
    logAt(noonOfDay(0), "warn", spdlog::level::warn);
    output.set_level(spdlog::level::warn);
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.messages(), ElementsAre("warn"));
}

TEST_F(OutputTest, HoldsNewestLinesAndLogsDroppedCount) {
    for (std::size_t line = 0; line < Output::kMaxHeldLines + 5; ++line) {
        output.log({noonOfDay(0), {}, {}, spdlog::level::info, std::to_string(line)});
    }
    output.setFile(log.path(), "Gateway");
    const auto messages = log.messages();
    ASSERT_THAT(messages, SizeIs(Output::kMaxHeldLines + 1));
    EXPECT_EQ(messages[0], "5 lines are missing here: too many before the log was set up");
    EXPECT_EQ(messages[1], "5");
    EXPECT_EQ(messages.back(), std::to_string(Output::kMaxHeldLines + 4));
}

TEST_F(OutputTest, WritesHeldLinesToStandardErrorOnce) {
    logOnDay(0, "start failed\nbadly");
    CaptureStderr();
    output.writeHeldLinesToStandardError();
    output.writeHeldLinesToStandardError();
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::splitLines(GetCapturedStderr())),
                ElementsAre("start failed\\nbadly"));
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(OutputTest, HoldsNothingOnceFileIsSet) {
    logOnDay(0, "line");
    output.setFile(log.path(), "Gateway");
    CaptureStderr();
    output.writeHeldLinesToStandardError();
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST_F(OutputTest, SwitchesToAnotherFile) {
    LogDirectory other;
    output.setFile(log.path(), "Gateway");
    logOnDay(0, "one");
    output.setFile(other.path(), "Gateway");
    logOnDay(0, "two");
    EXPECT_THAT(log.messages(), ElementsAre("one"));
    EXPECT_THAT(other.messages(), ElementsAre("two"));
}

TEST_F(OutputTest, CreatesDirectoryWithParents) {
    output.setFile(log.path() / "a" / "b", "Gateway");
    logOnDay(0, "line");
    EXPECT_TRUE(std::filesystem::exists(log.path() / "a" / "b" / dailyFileName("Gateway", 0)));
}

TEST_F(OutputTest, CloseFlushesFile) {
    output.setFile(log.path(), "Gateway");
    output.log({noonOfDay(0), {}, {}, spdlog::level::info, "not flushed"});
    output.close();
    EXPECT_THAT(log.messages(), ElementsAre("not flushed"));
}

// ---- files that cannot be written

TEST_F(OutputTest, ReportsUnusableDirectoryOnce) {
    log.write("file", "");
    CaptureStderr();
    output.setFile(log.path() / "file", "Gateway");
    for (int line = 0; line < 100; ++line) {
        logOnDay(0, "lost");
    }
    output.close();
    output.writeHeldLinesToStandardError();
    const auto errors = LogDirectory::splitLines(GetCapturedStderr());
    ASSERT_THAT(errors, SizeIs(1));
    EXPECT_THAT(errors[0], MatchesRegex("lumetrix: the log cannot be written: .*Gateway_.*"));
}

TEST_F(OutputTest, RetriesDirectoryAndWritesHeldLines) {
    const auto later = log.path() / "later";
    log.write("later", "");
    logOnDay(0, "held");
    CaptureStderr();
    output.setFile(later, "Gateway");
    const auto failedAt = spdlog::log_clock::now();
    std::filesystem::remove(later);
    logAt(failedAt + Output::kRetryInterval / 2, "held too");
    EXPECT_FALSE(std::filesystem::exists(later));
    logAt(failedAt + Output::kRetryInterval, "written");
    EXPECT_THAT(LogDirectory::splitLines(GetCapturedStderr()), SizeIs(1));
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::linesIn(later)),
                ElementsAre("held", "held too", "written"));
}

TEST_F(OutputTest, ReportsEachUnusableDirectory) {
    log.write("file", "");
    CaptureStderr();
    output.setFile(log.path() / "file" / "a", "Gateway");
    output.setFile(log.path() / "file" / "b", "Gateway");
    EXPECT_THAT(LogDirectory::splitLines(GetCapturedStderr()), SizeIs(2));
}

} // namespace
} // namespace lumetrix
