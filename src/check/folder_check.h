#pragma once

#include "check/finding.h"

#include <QString>

namespace quorin::check {

// Adds findings for the document root, the staging folder of notifications and the log folder: what
// is missing, what the account of this process may not read or write, what accounts without
// privileges may change (`settingsFile` as well), and disks that are nearly full. Creates nothing.
void checkFolders(const QString& settingsFile, Findings& findings);

} // namespace quorin::check
