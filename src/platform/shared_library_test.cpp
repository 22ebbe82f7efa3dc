#include "platform/shared_library.h"

#include <QString>

#include <gtest/gtest.h>

namespace quorin::platform {
namespace {

// Built together with this test; the build defines the path.
constexpr const char* kModule = QUORIN_TEST_MODULE;

TEST(SharedLibraryTest, FindsFunctionByName) {
    const SharedLibrary library = SharedLibrary::load(kModule);
    ASSERT_TRUE(library) << SharedLibrary::lastError();
    auto* const answer = library.function<int()>("quorin_test_module_answer");
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(library.function<int()>("quorin_test_module_missing"), nullptr);
}

TEST(SharedLibraryTest, MissingLibraryGivesError) {
    const SharedLibrary library = SharedLibrary::load("liblumetrix2_missing.so");
    EXPECT_FALSE(library);
    EXPECT_STRNE(SharedLibrary::lastError(), "");
    EXPECT_EQ(library.function<void()>("anything"), nullptr);
}

TEST(SharedLibraryTest, MoveTransfersLibrary) {
    SharedLibrary first = SharedLibrary::load(kModule);
    ASSERT_TRUE(first);
    const SharedLibrary second = std::move(first);
    EXPECT_NE(second.function<int()>("quorin_test_module_answer"), nullptr);
}

} // namespace
} // namespace quorin::platform
