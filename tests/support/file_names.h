#pragma once

#include <QString>

namespace quorin::test {

// Returns the short name that the system has given the last name of the existing path, or an empty
// text if it has none. Only Windows has short names.
[[nodiscard]] QString shortName(const QString& path);

// Replaces the file `to` by the file `from` in one step, as a publisher of files should do while
// `to` may be open. Returns false if the system refuses.
[[nodiscard]] bool publish(const QString& from, const QString& to);

} // namespace quorin::test
