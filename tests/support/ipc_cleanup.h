#pragma once

#include <QString>

namespace quorin::test {

// Removes the shared memory and the semaphores that processes with the temporary folder `folder`
// created through Qt and did not remove because they were killed. Shared memory that a process has
// attached is kept. Does nothing where the system removes both with the process.
void removeIpcObjects(const QString& folder);

} // namespace quorin::test
