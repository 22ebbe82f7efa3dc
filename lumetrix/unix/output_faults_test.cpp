#include "log_directory.h"
#include "output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace lumetrix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// The log file is a symbolic link to /dev/full, so every write fails with ENOSPC.
class FullDiskTest : public testing::Test {
protected:
    FullDiskTest() {
        for (const int day : {0, 1}) { // the test may run across midnight
            std::filesystem::create_symlink("/dev/full",
                                            log.path() / dailyFileName("Gateway", day));
        }
    }

    void freeSpace() {
        for (const int day : {0, 1}) {
            std::filesystem::remove(log.path() / dailyFileName("Gateway", day));
        }
    }

    void logAt(spdlog::log_clock::time_point time, const std::string& text) {
        output.log({time, spdlog::source_loc{}, {}, spdlog::level::info, text});
    }

    LogDirectory log;
    Output output;
    const spdlog::log_clock::time_point start = spdlog::log_clock::now();
};

TEST_F(FullDiskTest, ReportsErrorOnce) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    for (int second = 0; second < 60; ++second) {
        logAt(start + std::chrono::seconds(second), std::string(10000, 'x'));
        output.flush();
    }
    output.close();
    const auto errors = LogDirectory::splitLines(GetCapturedStderr());
    ASSERT_THAT(errors, SizeIs(1));
    EXPECT_THAT(errors[0], HasSubstr("lumetrix: the log cannot be written: "));
    EXPECT_THAT(errors[0], HasSubstr("No space left on device"));
}

TEST_F(FullDiskTest, ResumesAndLogsThatLinesAreMissing) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    logAt(start, "lost");
    output.flush();
    freeSpace();
    logAt(start + Output::kRetryInterval / 2, "lost too");
    const auto retryTime = spdlog::log_clock::now() + Output::kRetryInterval;
    logAt(retryTime, "written");
    logAt(retryTime, "next");
    output.flush();
    EXPECT_THAT(LogDirectory::splitLines(GetCapturedStderr()), SizeIs(1));
    EXPECT_THAT(log.messages(), ElementsAre("lines are missing here: the log could not be written",
                                            "written", "next"));
}

TEST_F(FullDiskTest, RetriesAlthoughClockWasSetBack) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    logAt(start, "lost");
    output.flush();
    freeSpace();
    logAt(start - std::chrono::hours(1), "written");
    output.flush();
    EXPECT_THAT(LogDirectory::splitLines(GetCapturedStderr()), SizeIs(1));
    EXPECT_THAT(log.messages(), testing::Contains("written"));
}

TEST_F(FullDiskTest, ReportsNextErrorAfterRecovery) {
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    logAt(start, "lost");
    output.flush();
    freeSpace();
    const auto retryTime = spdlog::log_clock::now() + Output::kRetryInterval;
    logAt(retryTime, "written");
    output.flush();
    EXPECT_THAT(LogDirectory::splitLines(GetCapturedStderr()), SizeIs(1));

    CaptureStderr();
    std::filesystem::remove_all(log.path()); // replace the directory with a file
    std::ofstream(log.path()) << "a file";
    logAt(retryTime + std::chrono::hours(48), "lost"); // the date change opens a new file
    logAt(retryTime + std::chrono::hours(48), "lost");
    EXPECT_THAT(LogDirectory::splitLines(GetCapturedStderr()), SizeIs(1));
}

TEST_F(FullDiskTest, ReportsErrorOnceWithHeldLines) {
    logAt(start, "held");
    CaptureStderr();
    output.setFile(log.path(), "Gateway");
    for (int second = 0; second < 60; ++second) {
        logAt(start + std::chrono::seconds(second), "lost");
        output.flush();
    }
    output.close();
    EXPECT_THAT(LogDirectory::splitLines(GetCapturedStderr()), SizeIs(1));
}

} // namespace
} // namespace lumetrix
