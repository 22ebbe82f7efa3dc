#include "json/testing/small_stack.h"

#include <QThread>

#include <memory>

void runOnSmallStack(const std::function<void()>& work) {
    constexpr unsigned kStackBytes = 512 * 1024;
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->setStackSize(kStackBytes);
    thread->start();
    thread->wait();
}
