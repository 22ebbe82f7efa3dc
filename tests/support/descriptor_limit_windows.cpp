#include "support/descriptor_limit.h"

namespace quorin::test {

// Windows has no such limit.
DescriptorLimit::DescriptorLimit(qint64 /*limit*/) : previous_(0) {}

DescriptorLimit::~DescriptorLimit() = default;

} // namespace quorin::test
