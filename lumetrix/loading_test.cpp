#include "loaded_lumetrix.h"
#include "log_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(LoadingTest, ExportsTwelveFunctions) {
    const LoadedLumetrix library;
    for (const char* name :
         {"lumetrix_get_logger", "lumetrix_create", "lumetrix_release", "lumetrix_log",
          "lumetrix_set_output_dir", "lumetrix_set_output_level",
          "lumetrix_set_enabled_console_out", "lumetrix_set_pool_size", "lumetrix_set_rotation",
          "lumetrix_set_rotation_with_date", "lumetrix_sync", "lumetrix_output_all_logs"}) {
        EXPECT_NE(library.function<void()>(name), nullptr) << name;
    }
    EXPECT_EQ(library.function<void()>("lumetrix_flush"), nullptr);
}

TEST(LoadingTest, UnloadsAfterReleaseAndLoadsAgain) {
    const LogDirectory log;
    std::vector<std::string> texts;
    for (int cycle = 0; cycle < 20; ++cycle) {
        {
            const LoadedLumetrix library;
            texts.push_back("cycle " + std::to_string(cycle));
            library.logOneLine(log.utf8(), texts.back());
            library.release(library.getLogger());
        }
        ASSERT_FALSE(LoadedLumetrix::isLoaded()) << cycle;
    }
    EXPECT_EQ(log.messages(), texts);
}

TEST(LoadingTest, UnloadsUnusedLibrary) {
    { const LoadedLumetrix library; }
    EXPECT_FALSE(LoadedLumetrix::isLoaded());
}

TEST(LoadingTest, StaysLoadedUntilRelease) {
    const LogDirectory log;
    {
        const LoadedLumetrix library;
        library.logOneLine(log.utf8(), "first");
    }
    EXPECT_TRUE(LoadedLumetrix::isLoaded());
    {
        const LoadedLumetrix library;
        library.logOneLine(log.utf8(), "second");
        library.release(library.getLogger());
    }
    EXPECT_FALSE(LoadedLumetrix::isLoaded());
    EXPECT_THAT(log.messages(), testing::ElementsAre("first", "second"));
}

} // namespace
