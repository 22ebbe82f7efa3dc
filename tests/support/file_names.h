#pragma once

#include <QString>

namespace quorin::test {

// Replaces the file `to` by the file `from` in one step, as a publisher of files should do while
// `to` may be open. Returns false if the system refuses.
[[nodiscard]] bool publish(const QString& from, const QString& to);

} // namespace quorin::test
