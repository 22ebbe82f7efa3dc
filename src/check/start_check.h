#pragma once

#include "check/finding.h"

#include <QString>

namespace quorin::check {

// Returns all that would make the start of a gateway fail, or the gateway serve other than it was
// set up to, with the settings file `settingsFile`. Uses the functions that the start uses, in this
// process: run it with the account and the environment of the gateway. Creates and changes no file,
// and accepts no connection. Needs a QCoreApplication; call on its thread, while no other thread
// logs.
[[nodiscard]] Findings checkStart(const QString& settingsFile, bool primary);

} // namespace quorin::check
