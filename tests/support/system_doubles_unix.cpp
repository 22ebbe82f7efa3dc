#include "support/system_doubles.h"

namespace quorin::test {

void installSystemDoubles() {}

void reportMisuseOfSystemDoubles() {}

} // namespace quorin::test
