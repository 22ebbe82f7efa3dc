#pragma once

#include <QtGlobal>

namespace quorin::test {

// Sets this process's limit of open files and sockets; the destructor restores it. Does nothing on
// systems without such a limit. Only one object may exist at a time.
class DescriptorLimit {
public:
    // `limit` must not exceed the current limit.
    explicit DescriptorLimit(qint64 limit);
    ~DescriptorLimit();

    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    qint64 previous_;
};

} // namespace quorin::test
