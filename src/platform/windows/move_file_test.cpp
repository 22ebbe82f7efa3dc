#include "platform/windows/move_file.h"

#include "platform/windows/system.h"

#include <gtest/gtest.h>

namespace quorin::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// A clock that only sleep() and slow moves advance, and a move with chosen results.
class MoveWithRetriesTest : public testing::Test {
protected:
    // The first `failures` moves fail with `error`.
    bool moveAfter(int failures, unsigned long error) {
        return moveWithRetries({
            .move =
                [=, this] {
                    ++attempts_;
                    now_ += duration_;
                    return attempts_ <= failures ? error : DWORD{ERROR_SUCCESS};
                },
            .now = [this] { return now_; },
            .sleep = [this](milliseconds pause) { now_ += pause; },
        });
    }
    milliseconds elapsed() const {
        return std::chrono::duration_cast<milliseconds>(now_ - steady_clock::time_point());
    }

    static constexpr int kForever = 1'000'000;

    milliseconds duration_{0}; // of one move
    steady_clock::time_point now_;
    int attempts_ = 0;
};

TEST_F(MoveWithRetriesTest, ReturnsTrueAfterFirstSuccess) {
    EXPECT_TRUE(moveAfter(0, ERROR_SUCCESS));
    EXPECT_EQ(attempts_, 1);
    EXPECT_EQ(elapsed(), milliseconds(0));
}

TEST_F(MoveWithRetriesTest, RetriesWhileOthersHoldFile) {
    for (const DWORD error : {DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_SHARING_VIOLATION}}) {
        attempts_ = 0;
        EXPECT_TRUE(moveAfter(7, error)) << error;
        EXPECT_EQ(attempts_, 8);
    }
}

TEST_F(MoveWithRetriesTest, GivesUpAfterTwoSeconds) {
    EXPECT_FALSE(moveAfter(kForever, ERROR_SHARING_VIOLATION));
    EXPECT_EQ(elapsed(), milliseconds(2000));
    EXPECT_EQ(attempts_, 101);
}

TEST_F(MoveWithRetriesTest, CountsTimeOfSlowMoves) {
    duration_ = milliseconds(1500);
    EXPECT_FALSE(moveAfter(kForever, ERROR_ACCESS_DENIED));
    EXPECT_EQ(attempts_, 2);
}

TEST_F(MoveWithRetriesTest, DoesNotRetryAfterOtherErrors) {
    for (const DWORD error : {DWORD{ERROR_FILE_NOT_FOUND}, DWORD{ERROR_PATH_NOT_FOUND},
                              DWORD{ERROR_NOT_SAME_DEVICE}, DWORD{ERROR_DISK_FULL}}) {
        attempts_ = 0;
        EXPECT_FALSE(moveAfter(1, error)) << error;
        EXPECT_EQ(attempts_, 1);
    }
}

} // namespace
} // namespace quorin::platform
