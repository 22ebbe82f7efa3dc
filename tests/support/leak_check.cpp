#include "support/leak_check.h"

#ifdef __SANITIZE_ADDRESS__

#include "support/deadline.h"

#include <QDir>
#include <QThreadPool>

#include <sanitizer/lsan_interface.h>

namespace quorin::test {

namespace {

// Includes threads that Qt reports as finished while they still run their last destructors.
qsizetype threadCount() {
    return QDir(QStringLiteral("/proc/self/task"))
        .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
        .size();
}

} // namespace

void checkForLeaks() {
    // Null after the destruction of the application object, which waits for the pool itself.
    if (QThreadPool* const pool = QThreadPool::globalInstance()) {
        pool->waitForDone();
    }
    // A thread that still exists after this time is idle, which does not disturb the check.
    static_cast<void>(waitUntil([] { return threadCount() <= 1; }, std::chrono::seconds(5)));
    __lsan_do_leak_check();
}

} // namespace quorin::test

#else

namespace quorin::test {

void checkForLeaks() {}

} // namespace quorin::test

#endif
