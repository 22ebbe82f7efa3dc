#pragma once

#include "check/finding.h"

namespace quorin::check {

class SettingsRecord;

// Adds a warning for each valid value with which the gateway would serve nothing, slowly, or other
// than the value suggests. Considers the limit of open files of this process.
void checkValues(const SettingsRecord& record, Findings& findings);

} // namespace quorin::check
