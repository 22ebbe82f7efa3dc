#include "support/free_port.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace quorin::test {
namespace {

TEST(FreePortTest, IsGivenOnce) {
    constexpr std::size_t count = 500; // of 17,000: random numbers would repeat
    const std::vector<FreePort> ports(count);
    std::set<quint16> numbers;
    for (const FreePort& port : ports) {
        numbers.insert(port.number());
    }
    EXPECT_EQ(numbers.size(), count);
}

} // namespace
} // namespace quorin::test
