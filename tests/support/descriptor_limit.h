#pragma once

#include <QtGlobal>

namespace quorin::test {

// Sets this process's limit of open files and sockets while the object lives. One object at a time;
// only where platform::descriptorLimit() reports a limit.
class DescriptorLimit {
public:
    // `limit` is at most the limit in force.
    explicit DescriptorLimit(qint64 limit);
    ~DescriptorLimit();

    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    qint64 previous_;
};

} // namespace quorin::test
