#include "platform/secret.h"

#include <QByteArray>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <string>
#include <type_traits>
#include <utility>

namespace quorin::platform {
namespace {

using testing::Each;

std::string toText(const SecretBytes& bytes) {
    return bytes.view().toByteArray().toStdString();
}

TEST(SecretTest, WipeOverwritesOnlyGivenBytes) {
    std::array<char, 6> memory{'a', 'b', 'c', 'd', 'e', 'f'};
    wipe(memory.data() + 1, 4);
    EXPECT_EQ(std::string(memory.data(), memory.size()), std::string("a\0\0\0\0f", 6));
}

TEST(SecretBytesTest, NewBytesAreZero) {
    SecretBytes bytes(1000);
    EXPECT_EQ(bytes.size(), 1000u);
    EXPECT_THAT(bytes.view(), Each('\0'));
}

TEST(SecretBytesTest, JoinsPartsInOrder) {
    EXPECT_EQ(toText(SecretBytes::joined({"one", "", "two", "3"})), "onetwo3");
    EXPECT_TRUE(SecretBytes::joined({}).empty());
    EXPECT_TRUE(SecretBytes::joined({"", ""}).empty());
}

TEST(SecretBytesTest, TruncateWipesDroppedBytes) {
    SecretBytes bytes = SecretBytes::joined({"secret"});
    const char* const memory = bytes.data();
    bytes.truncate(9);
    EXPECT_EQ(toText(bytes), "secret");
    bytes.truncate(3);
    EXPECT_EQ(toText(bytes), "sec");
    EXPECT_EQ(std::string(memory, 6), std::string("sec\0\0\0", 6));
    bytes.truncate(0);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(std::string(memory, 6), std::string(6, '\0'));
}

TEST(SecretBytesTest, MoveDoesNotCopyBytes) {
    static_assert(!std::is_copy_constructible_v<SecretBytes>);
    static_assert(!std::is_copy_assignable_v<SecretBytes>);
    static_assert(std::is_nothrow_move_constructible_v<SecretBytes>);
    SecretBytes first = SecretBytes::joined({"secret"});
    const char* const memory = first.data();
    SecretBytes second(std::move(first));
    EXPECT_EQ(second.data(), memory);
    EXPECT_EQ(toText(second), "secret");
    SecretBytes third;
    third = std::move(second);
    EXPECT_EQ(third.data(), memory);
    EXPECT_EQ(toText(third), "secret");
}

TEST(SecretBytesTest, MovedFromObjectIsEmpty) {
    SecretBytes first = SecretBytes::joined({"secret"});
    const SecretBytes second(std::move(first));
    EXPECT_TRUE(first.empty()); // NOLINT(bugprone-use-after-move): the subject of the test
    EXPECT_EQ(first.view().size(), 0);
}

} // namespace
} // namespace quorin::platform
