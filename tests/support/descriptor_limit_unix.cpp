#include "support/descriptor_limit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace quorin::test {

namespace {

// Sets the limit and returns the previous one.
qint64 exchangeLimit(qint64 limit) {
    rlimit limits{};
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &limits), 0);
    const auto previous = static_cast<qint64>(limits.rlim_cur);
    limits.rlim_cur = static_cast<rlim_t>(limit);
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limits), 0);
    return previous;
}

} // namespace

DescriptorLimit::DescriptorLimit(qint64 limit) : previous_(exchangeLimit(limit)) {}

DescriptorLimit::~DescriptorLimit() {
    exchangeLimit(previous_);
}

} // namespace quorin::test
