#include "platform/pause.h"

#include <QThread>

namespace quorin::platform {

void pause(std::chrono::microseconds time) {
    if (time.count() > 0) {
        QThread::usleep(static_cast<unsigned long>(time.count()));
    }
}

} // namespace quorin::platform
