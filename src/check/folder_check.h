#pragma once

#include "check/finding.h"

#include <QString>

namespace quorin::check {

// Adds findings for the document root, the staging folder of notifications and the log folder: what
// is missing, what the account of this process may not read or write, what every account may
// write, and disks that are nearly full. `settingsFile` must not be writable for every account
// either. Creates nothing.
void checkFolders(const QString& settingsFile, Findings& findings);

} // namespace quorin::check
