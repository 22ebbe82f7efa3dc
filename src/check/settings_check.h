#pragma once

#include "check/finding.h"

namespace quorin::check {

class SettingsRecord;

// Adds a finding for each fault of the settings file and for each value and element that the
// gateway does not use as written. A finding is an error if, and only if, loadSettings() would
// throw because of it.
void checkSettings(const SettingsRecord& record, Findings& findings);

} // namespace quorin::check
