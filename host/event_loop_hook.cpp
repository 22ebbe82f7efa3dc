#include "event_loop_hook.h"

#include <QCoreApplication>
#include <QTimer>

#include <utility>

namespace quorin {

namespace {

struct Functions {
    std::function<void()> onEnter;
    std::function<void()> onLeave;
};

Functions hooked;

void hookApplication() {
    QCoreApplication* const application = QCoreApplication::instance();
    // Expires in the event loop, and therefore after the loop has been entered.
    QTimer::singleShot(0, application, [] {
        if (hooked.onEnter) {
            hooked.onEnter();
        }
    });
    QObject::connect(application, &QCoreApplication::aboutToQuit, application, [] {
        if (hooked.onLeave) {
            hooked.onLeave();
        }
    });
}

} // namespace

EventLoopHook::EventLoopHook(std::function<void()> onEnter, std::function<void()> onLeave) {
    hooked = {std::move(onEnter), std::move(onLeave)};
    qAddPreRoutine(&hookApplication);
}

EventLoopHook::~EventLoopHook() {
    hooked = {};
}

} // namespace quorin
