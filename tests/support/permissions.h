#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace quorin::test {

// Revokes the owner's write permission for the folder.
void forbidWriting(const QString& folder);
// Grants it again.
void allowWriting(const QString& folder);

// Returns a command prefix that makes file permissions apply to the program that it runs. Returns
// an empty list if they apply to every program that the tests start, and nothing if no such command
// is available.
[[nodiscard]] std::optional<QStringList> prefixBoundByPermissions();

} // namespace quorin::test
