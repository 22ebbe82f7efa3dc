#pragma once

#include <QString>

namespace quorin {

// Returns the path of the settings file that `argument`, in UTF-8, names: a backslash separates
// folders on every system.
[[nodiscard]] QString settingsPath(const char* argument);

// Reads the settings file at `path` into GatewaySettings::instance(), from the group of the primary
// or the secondary gateway. Sets up the application log as soon as its settings are read.
//
// Throws a fatal GatewayException at the first fault; values read before it stay stored. A path
// that is neither a regular file nor a folder is not opened and counts as malformed XML.
// Call once, before the gateway starts its threads.
void loadSettings(const QString& path, bool primary);

} // namespace quorin
