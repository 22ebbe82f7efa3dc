#pragma once

#include <gtest/gtest.h>

#include <cstddef>

#include <pthread.h>

namespace quorin::test {

// Makes starting a thread fail during its lifetime: new threads would get a stack that is larger
// than the address space. For Linux.
class NoNewThreads {
public:
    NoNewThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t attributes{};
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 48U);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }
    ~NoNewThreads() {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoNewThreads(const NoNewThreads&) = delete;
    NoNewThreads& operator=(const NoNewThreads&) = delete;

private:
    pthread_attr_t before_{};
};

} // namespace quorin::test
