#include "log_directory.h"
#include "output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace lumetrix2 {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// A log file that is the device whose disk is always full.
class FullDisk : public testing::Test {
protected:
    FullDisk() {
        for (const int day : {0, 1}) { // midnight may come
            std::filesystem::create_symlink("/dev/full", log.path() / dayFile("Gateway", day));
        }
    }

    void makeRoom() {
        for (const int day : {0, 1}) {
            std::filesystem::remove(log.path() / dayFile("Gateway", day));
        }
    }

    void logAt(spdlog::log_clock::time_point time, const std::string& text) {
        output.log({time, spdlog::source_loc{}, {}, spdlog::level::info, text});
    }

    LogDirectory log;
    Output output;
    const spdlog::log_clock::time_point start = spdlog::log_clock::now();
};

TEST_F(FullDisk, IsToldOnce) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    for (int second = 0; second < 60; ++second) {
        logAt(start + std::chrono::seconds(second), std::string(10000, 'x'));
        output.flush();
    }
    output.close();
    const auto told = LogDirectory::split(GetCapturedStderr());
    ASSERT_THAT(told, SizeIs(1));
    EXPECT_THAT(told[0], HasSubstr("lumetrix: the log cannot be written: "));
    EXPECT_THAT(told[0], HasSubstr("No space left on device"));
}

TEST_F(FullDisk, LogGoesOnWhenThereIsRoomAgainAndSaysThatLinesAreMissing) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    logAt(start, "lost");
    output.flush();
    makeRoom();
    logAt(start + Output::kRetryAfter / 2, "lost too");
    const auto room = spdlog::log_clock::now() + Output::kRetryAfter;
    logAt(room, "written");
    logAt(room, "and on");
    output.flush();
    EXPECT_THAT(LogDirectory::split(GetCapturedStderr()), SizeIs(1));
    EXPECT_THAT(log.messages(), ElementsAre("lines are missing here: the log could not be written",
                                            "written", "and on"));
}

TEST_F(FullDisk, ClockThatIsSetBackDoesNotPutOffTheNextAttempt) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    logAt(start, "lost");
    output.flush();
    makeRoom();
    logAt(start - std::chrono::hours(1), "written");
    output.flush();
    EXPECT_THAT(LogDirectory::split(GetCapturedStderr()), SizeIs(1));
    EXPECT_THAT(log.messages(), testing::Contains("written"));
}

TEST_F(FullDisk, FaultIsToldAnewOnceTheLogWasWritten) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    logAt(start, "lost");
    output.flush();
    makeRoom();
    const auto room = spdlog::log_clock::now() + Output::kRetryAfter;
    logAt(room, "written");
    output.flush();
    EXPECT_THAT(LogDirectory::split(GetCapturedStderr()), SizeIs(1));

    CaptureStderr();
    std::filesystem::remove_all(log.path()); // and no directory any more
    std::ofstream(log.path()) << "a file";
    logAt(room + std::chrono::hours(48), "lost"); // a new day's file
    logAt(room + std::chrono::hours(48), "lost");
    EXPECT_THAT(LogDirectory::split(GetCapturedStderr()), SizeIs(1));
}

TEST_F(FullDisk, HeldLinesAreToldOnceToo) {
    logAt(start, "held");
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    for (int second = 0; second < 60; ++second) {
        logAt(start + std::chrono::seconds(second), "lost");
        output.flush();
    }
    output.close();
    EXPECT_THAT(LogDirectory::split(GetCapturedStderr()), SizeIs(1));
}

} // namespace
} // namespace lumetrix2
