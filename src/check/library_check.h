#pragma once

#include "check/finding.h"

namespace quorin::check {

// Adds a finding for each library that is loaded at run time and cannot be: the gateway library,
// the logging library and the system's library for folders. Loads them, but calls none of their
// functions.
void checkLibraries(Findings& findings);

} // namespace quorin::check
