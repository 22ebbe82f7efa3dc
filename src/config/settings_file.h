#pragma once

#include <QString>

namespace quorin {

// Reads the settings file at `path` into GatewaySettings::instance() and sets the application log
// up on the way, as soon as the log's own settings are known. `primary` chooses which of the
// file's two groups counts.
//
// Throws a fatal GatewayException at the first fault; what was read before it stays stored.
// Called once, before the gateway starts its threads.
void loadSettings(const QString& path, bool primary);

} // namespace quorin
