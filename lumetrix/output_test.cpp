#include "output.h"

#include "log_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace lumetrix2 {
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

    void logOn(int day, const std::string& text) { logAt(noonIn(day), text); }
    void logNow(const std::string& text) { logAt(spdlog::log_clock::now(), text); }

    LogDirectory log;
    Output output;
};

// ---- rotation by date

TEST_F(OutputTest, FileIsNamedAfterBaseAndDate) {
    output.setFile(log.path(), "Gateway");
    logOn(0, "today");
    EXPECT_THAT(log.fileNames(), ElementsAre(dayFile("Gateway", 0)));
    EXPECT_THAT(log.messages(), ElementsAre("today"));
}

TEST_F(OutputTest, DotsInTheBaseNameStay) {
    output.setFile(log.path(), "gateway.v5");
    EXPECT_THAT(log.fileNames(), ElementsAre(dayFile("gateway.v5", 0)));
}

TEST_F(OutputTest, NewFileBeginsWithTheFirstLineOfADay) {
    output.setFile(log.path(), "Gateway");
    logOn(0, "one");
    logOn(1, "two");
    logOn(1, "three");
    logOn(2, "four");
    EXPECT_THAT(log.fileNames(),
                ElementsAre(dayFile("Gateway", 0), dayFile("Gateway", 1), dayFile("Gateway", 2)));
    EXPECT_THAT(log.content(dayFile("Gateway", 1)), HasSubstr("msg:two"));
    EXPECT_THAT(log.content(dayFile("Gateway", 1)), HasSubstr("msg:three"));
    EXPECT_THAT(log.messages(), ElementsAre("one", "two", "three", "four"));
}

TEST_F(OutputTest, AppendsToAnEarlierRun) {
    log.write(dayFile("Gateway", 0), "earlier\n");
    output.setFile(log.path(), "Gateway");
    logOn(0, "now");
    EXPECT_THAT(log.messages(), ElementsAre("earlier", "now"));
}

TEST_F(OutputTest, LineCutOffInAnEarlierRunIsEndedFirst) {
    log.write(dayFile("Gateway", 0), "first\n_dt:2024");
    output.setFile(log.path(), "Gateway");
    logOn(0, "now");
    EXPECT_THAT(log.messages(), ElementsAre("first", "_dt:2024", "now"));
}

TEST_F(OutputTest, KeepsTheGivenNumberOfDays) {
    output.setRotation({3, {}});
    output.setFile(log.path(), "Gateway");
    for (int day = 0; day < 6; ++day) {
        logOn(day, std::to_string(day));
    }
    EXPECT_THAT(log.fileNames(),
                ElementsAre(dayFile("Gateway", 3), dayFile("Gateway", 4), dayFile("Gateway", 5)));
    EXPECT_THAT(log.messages(), ElementsAre("3", "4", "5"));
}

TEST_F(OutputTest, KeepsOneDay) {
    output.setRotation({1, {}});
    output.setFile(log.path(), "Gateway");
    logOn(0, "zero");
    logOn(1, "one");
    EXPECT_THAT(log.fileNames(), ElementsAre(dayFile("Gateway", 1)));
}

TEST_F(OutputTest, RemovesOldFilesOfEarlierRunsAlthoughDaysAreMissing) {
    for (const int day : {-400, -30, -9, -2}) {
        log.write(dayFile("Gateway", day), "old\n");
    }
    output.setRotation({3, {}});
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.fileNames(),
                ElementsAre(dayFile("Gateway", -9), dayFile("Gateway", -2), dayFile("Gateway", 0)));
}

TEST_F(OutputTest, RemovesNothingElse) {
    const std::string stranger = "Gateway_" + std::string(10, 'x') + ".log";
    for (const auto& name :
         {std::string("Gateway_2001-01-01.log.bak"), std::string("Gateway.log"),
          std::string("Gateway_2001-01-01.txt"), stranger,
          std::string("OtherGateway_2001-01-01.log"), std::string("Gateway_App_2001-01-01.log")}) {
        log.write(name, "other\n");
    }
    output.setRotation({1, {}});
    output.setFile(log.path(), "Gateway");
    logOn(1, "next day");
    EXPECT_THAT(log.fileNames(), SizeIs(7));
    EXPECT_THAT(log.fileNames(), Contains(dayFile("Gateway", 1)));
}

TEST_F(OutputTest, NeverRemovesTheFileItWritesTo) {
    log.write(dayFile("Gateway", 5), "written while the clock was wrong\n");
    output.setRotation({1, {}});
    output.setFile(log.path(), "Gateway");
    logOn(0, "today");
    EXPECT_THAT(log.messages(), ElementsAre("today"));
}

TEST_F(OutputTest, KeepsAllDaysWhenTheNumberIsBelowOne) {
    for (const int number : {0, -1}) {
        log.write(dayFile("Gateway", -400), "old\n");
        output.setRotation({number, {}});
        output.setFile(log.path(), "Gateway");
        EXPECT_THAT(log.fileNames(), SizeIs(2));
    }
}

// ---- rotation by size

TEST_F(OutputTest, RotatesBySizeAndKeepsTheGivenNumber) {
    output.setRotation({3, 200});
    output.setFile(log.path(), "Gateway");
    for (int line = 0; line < 20; ++line) { // about 80 bytes each
        logNow("line " + std::to_string(line));
    }
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.1.log", "Gateway.2.log", "Gateway.log"));
    for (const auto& name : log.fileNames()) {
        EXPECT_LE(log.content(name).size(), 200U) << name;
    }
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::split(log.content("Gateway.log"))),
                Contains("line 19"));
}

TEST_F(OutputTest, RotationBySizeWithOneFileBeginsItAnew) {
    output.setRotation({1, 200});
    output.setFile(log.path(), "Gateway");
    for (int line = 0; line < 20; ++line) {
        logNow("line " + std::to_string(line));
    }
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.log"));
    EXPECT_LE(log.content("Gateway.log").size(), 200U);
}

TEST_F(OutputTest, RotationBySizeRemovesWhatALargerNumberLeft) {
    for (const char* name : {"Gateway.log", "Gateway.1.log", "Gateway.2.log", "Gateway.3.log"}) {
        log.write(name, "old\n");
    }
    output.setRotation({2, 1000});
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.1.log", "Gateway.log"));
}

TEST_F(OutputTest, NumberOfFilesBySizeIsClamped) {
    output.setFile(log.path(), "Gateway");
    for (const int number : {-1, 0, 200001, 2147483647}) {
        output.setRotation({number, 1000});
        logNow(std::to_string(number));
    }
    EXPECT_THAT(log.content("Gateway.log"), HasSubstr("msg:2147483647"));
}

TEST_F(OutputTest, RotationOfAnOpenFileCanBeChanged) {
    output.setFile(log.path(), "Gateway");
    logOn(0, "by date");
    output.setRotation({2, 1000});
    logNow("by size");
    EXPECT_THAT(log.fileNames(), ElementsAre("Gateway.log", dayFile("Gateway", 0)));
    EXPECT_THAT(log.content("Gateway.log"), HasSubstr("msg:by size"));
}

// ---- lines before the file is known

TEST_F(OutputTest, HeldLinesAreWrittenFirstWithTheirOwnTimes) {
    logOn(-3, "early");
    logOn(-2, "later");
    output.setFile(log.path(), "Gateway");
    logOn(0, "now");
    EXPECT_THAT(log.messages(), ElementsAre("early", "later", "now"));
    EXPECT_LT(log.lines()[0].substr(0, 12), log.lines()[2].substr(0, 12));
}

TEST_F(OutputTest, HeldLinesBelowTheLevelAreLeftOut) {
    logAt(noonIn(0), "debug", spdlog::level::debug);
    logAt(noonIn(0), "warn", spdlog::level::warn);
    output.set_level(spdlog::level::warn);
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.messages(), ElementsAre("warn"));
}

TEST_F(OutputTest, OnlyTheNewestLinesAreHeldAndTheLogSaysSo) {
    for (std::size_t line = 0; line < Output::kHeldLines + 5; ++line) {
        output.log({noonIn(0), {}, {}, spdlog::level::info, std::to_string(line)});
    }
    output.setFile(log.path(), "Gateway");
    const auto messages = log.messages();
    ASSERT_THAT(messages, SizeIs(Output::kHeldLines + 1));
    EXPECT_EQ(messages[0], "5 lines are missing here: too many before the log was set up");
    EXPECT_EQ(messages[1], "5");
    EXPECT_EQ(messages.back(), std::to_string(Output::kHeldLines + 4));
}

TEST_F(OutputTest, HeldLinesGoToStandardErrorWhenGivenUp) {
    logOn(0, "start failed\nbadly");
    CaptureStderr();
    output.giveUpHeldLines();
    output.giveUpHeldLines();
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::split(GetCapturedStderr())),
                ElementsAre("start failed\\nbadly"));
    output.setFile(log.path(), "Gateway");
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(OutputTest, NothingToGiveUpOnceTheFileIsKnown) {
    logOn(0, "line");
    output.setFile(log.path(), "Gateway");
    CaptureStderr();
    output.giveUpHeldLines();
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST_F(OutputTest, TurnsToAnotherFile) {
    LogDirectory other;
    output.setFile(log.path(), "Gateway");
    logOn(0, "one");
    output.setFile(other.path(), "Gateway");
    logOn(0, "two");
    EXPECT_THAT(log.messages(), ElementsAre("one"));
    EXPECT_THAT(other.messages(), ElementsAre("two"));
}

TEST_F(OutputTest, MakesTheDirectoryWithItsParents) {
    output.setFile(log.path() / "a" / "b", "Gateway");
    logOn(0, "line");
    EXPECT_TRUE(std::filesystem::exists(log.path() / "a" / "b" / dayFile("Gateway", 0)));
}

TEST_F(OutputTest, LineIsWrittenAtTheLatestWhenClosed) {
    output.setFile(log.path(), "Gateway");
    output.log({noonIn(0), {}, {}, spdlog::level::info, "not flushed"});
    output.close();
    EXPECT_THAT(log.messages(), ElementsAre("not flushed"));
}

// ---- a file that cannot be written

TEST_F(OutputTest, UnusableDirectoryIsToldOnceAndNothingThrows) {
    log.write("file", "");
    CaptureStderr();
    output.setFile(log.path() / "file", "Gateway");
    for (int line = 0; line < 100; ++line) {
        logOn(0, "lost");
    }
    output.close();
    output.giveUpHeldLines();
    const auto told = LogDirectory::split(GetCapturedStderr());
    ASSERT_THAT(told, SizeIs(1));
    EXPECT_THAT(told[0], MatchesRegex("lumetrix: the log cannot be written: .*Gateway_.*"));
}

TEST_F(OutputTest, UnusableDirectoryIsTriedAgainAndHeldLinesComeThen) {
    const auto later = log.path() / "later";
    log.write("later", "");
    logOn(0, "held");
    CaptureStderr();
    output.setFile(later, "Gateway");
    const auto failed = spdlog::log_clock::now();
    std::filesystem::remove(later);
    logAt(failed + Output::kRetryAfter / 2, "held too");
    EXPECT_FALSE(std::filesystem::exists(later));
    logAt(failed + Output::kRetryAfter, "written");
    EXPECT_THAT(LogDirectory::split(GetCapturedStderr()), SizeIs(1));
    EXPECT_THAT(LogDirectory::messagesOf(LogDirectory::linesIn(later)),
                ElementsAre("held", "held too", "written"));
}

TEST_F(OutputTest, NewDirectoryThatFailsIsToldAgain) {
    log.write("file", "");
    CaptureStderr();
    output.setFile(log.path() / "file" / "a", "Gateway");
    output.setFile(log.path() / "file" / "b", "Gateway");
    EXPECT_THAT(LogDirectory::split(GetCapturedStderr()), SizeIs(2));
}

} // namespace
} // namespace lumetrix2
