#pragma once

#include "platform/windows/handle.h"

#include <QString>

namespace quorin::platform {

// Creates the mutex `name`, which no thread owns, with `create`, which tests replace. Returns null
// if an object of that name exists already, whether this account may open it or not, and on any
// other failure. Every account may open the mutex to see that it exists; no account may do more.
//
// This does not prevent a denial of service: no privilege is necessary to create a mutex in the
// global namespace, so that any process can create it first, or open it and keep it in existence.
// A private namespace would prevent this, but also that processes of different accounts see each
// other's mutex.
[[nodiscard]] Handle createMutex(const QString& name,
                                 decltype(&CreateMutexExW) create = &CreateMutexExW);

} // namespace quorin::platform
