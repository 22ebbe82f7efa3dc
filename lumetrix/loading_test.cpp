#include "loaded_library.h"
#include "log_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::SizeIs;

const std::filesystem::path kLibrary = LUMETRIX_LIBRARY;

using GetLogger = void*();
using Release = void(void*);
using Log = void(void*, const char*, int, const char*);
using SetOutputDir = void(void*, const char*, const char*);

void logOneLine(const LoadedLibrary& library, const std::string& directory,
                const std::string& text) {
    void* const logger = library.function<GetLogger>("lumetrix_get_logger")();
    library.function<SetOutputDir>("lumetrix_set_output_dir")(logger, directory.c_str(), "Gateway");
    library.function<Log>("lumetrix_log")(logger, "GW", 3, text.c_str());
}

void release(const LoadedLibrary& library) {
    void* const logger = library.function<GetLogger>("lumetrix_get_logger")();
    library.function<Release>("lumetrix_release")(logger);
}

TEST(Loading, AllTwelveFunctionsAreFoundByName) {
    const LoadedLibrary library(kLibrary);
    for (const char* name :
         {"lumetrix_get_logger", "lumetrix_create", "lumetrix_release", "lumetrix_log",
          "lumetrix_set_output_dir", "lumetrix_set_output_level",
          "lumetrix_set_enabled_console_out", "lumetrix_set_pool_size", "lumetrix_set_rotation",
          "lumetrix_set_rotation_with_date", "lumetrix_sync", "lumetrix_output_all_logs"}) {
        EXPECT_NE(library.function<void()>(name), nullptr) << name;
    }
    EXPECT_EQ(library.function<void()>("lumetrix_flush"), nullptr);
}

TEST(Loading, LibraryLeavesMemoryAfterReleaseAndCanComeBack) {
    const LogDirectory log;
    std::vector<std::string> texts;
    for (int cycle = 0; cycle < 20; ++cycle) {
        {
            const LoadedLibrary library(kLibrary);
            texts.push_back("cycle " + std::to_string(cycle));
            logOneLine(library, log.utf8(), texts.back());
            release(library);
        }
        ASSERT_FALSE(LoadedLibrary::isLoaded(kLibrary)) << cycle;
    }
    EXPECT_EQ(log.messages(), texts);
}

TEST(Loading, LibraryThatWasNeverUsedLeavesMemory) {
    { const LoadedLibrary library(kLibrary); }
    EXPECT_FALSE(LoadedLibrary::isLoaded(kLibrary));
}

TEST(Loading, UnloadedBeforeReleaseItStaysUntilReleased) {
    const LogDirectory log;
    {
        const LoadedLibrary library(kLibrary);
        logOneLine(library, log.utf8(), "first");
    }
    EXPECT_TRUE(LoadedLibrary::isLoaded(kLibrary));
    {
        const LoadedLibrary library(kLibrary);
        logOneLine(library, log.utf8(), "second");
        release(library);
    }
    EXPECT_FALSE(LoadedLibrary::isLoaded(kLibrary));
    EXPECT_THAT(log.messages(), ElementsAre("first", "second"));
}

class Exit : public testing::Test {
protected:
    Exit() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    const LogDirectory log;
};

TEST_F(Exit, WithoutReleaseWhileThreadsLog) {
    EXPECT_EXIT(
        {
            auto* const library = new LoadedLibrary(kLibrary); // not unloaded either
            logOneLine(*library, log.utf8(), "before");
            std::atomic<int> lines{0};
            for (int thread = 0; thread < 4; ++thread) {
                std::thread([library, &lines] {
                    auto* const get = library->function<GetLogger>("lumetrix_get_logger");
                    auto* const write = library->function<Log>("lumetrix_log");
                    for (void* const logger = get();; ++lines) {
                        write(logger, "GW", 3, "line");
                    }
                }).detach();
            }
            while (lines < 1000)
                std::this_thread::yield();
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(Exit, WithoutReleaseAndUnloaded) {
    EXPECT_EXIT(
        {
            {
                const LoadedLibrary library(kLibrary);
                logOneLine(library, log.utf8(), "before");
            }
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(Exit, RightAfterReleaseWhileThreadsLog) {
    EXPECT_EXIT(
        {
            auto* const library = new LoadedLibrary(kLibrary);
            logOneLine(*library, log.utf8(), "before");
            std::atomic<int> lines{0};
            void* const logger = library->function<GetLogger>("lumetrix_get_logger")();
            for (int thread = 0; thread < 4; ++thread) {
                std::thread([library, logger, &lines] {
                    auto* const write = library->function<Log>("lumetrix_log");
                    for (;; ++lines) {
                        write(logger, "GW", 2, "line");
                    }
                }).detach();
            }
            while (lines < 1000)
                std::this_thread::yield();
            release(*library);
            std::exit(1);
        },
        testing::ExitedWithCode(1), "");
}

TEST_F(Exit, StartUpFailureIsSeenThoughNoDirectoryWasGiven) {
    EXPECT_EXIT(
        {
            const LoadedLibrary library(kLibrary);
            void* const logger = library.function<GetLogger>("lumetrix_get_logger")();
            library.function<Log>("lumetrix_log")(logger, "GW", 5, "[End] failed to start");
            release(library);
            std::exit(1);
        },
        testing::ExitedWithCode(1), "_l:error.*msg:\\[End\\] failed to start");
}

} // namespace
