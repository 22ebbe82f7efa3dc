#pragma once

#include "platform/socket_descriptor.h"
#include "server/descriptor_budget.h"
#include "server/request_queue.h"
#include "worker/server_context.h"

#include <QTcpServer>
#include <QTimer>

#include <memory>

class QCoreApplication;

namespace quorin::platform {
class ControlPipe;
}

namespace quorin {

class QueueWatcher;
class ThreadPoolWatcher;

// The listening socket of the gateway. Owns the request queue, the control pipe and the two watcher
// threads, and shares ownership of the ServerContext with the workers. Main thread only.
class TcpServer : public QTcpServer {
    Q_OBJECT

public:
    // Opens the control pipe and starts the watchers; the caller calls listen() next. Throws a
    // fatal GatewayException if the control pipe cannot be opened, or if HTTPS is enabled and Qt
    // has no usable TLS backend. `application` must outlive the server, which exits its event loop
    // when a quit is complete.
    TcpServer(QCoreApplication* application, const QString& documentRoot);
    // Does not wait for workers.
    ~TcpServer() override;

public Q_SLOTS:
    // Reads one command from the control pipe; waits up to kCommandTimeout for it.
    void LocalServerNewConnection();
    // Ends the event loop. Called when all workers have ended after a quit.
    void QuitWatcherSatisfied();

protected:
    // Queues the connection. In legacy mode, refuses it if MaxUserSession is reached or too few
    // descriptors are free.
    void incomingConnection(qintptr socketDescriptor) override;

private:
    void logReplyScheme() const;
    void logListeningMode() const;
    void loadCertificate();
    void openControlPipe();
    void admit(platform::SocketDescriptor descriptor);
    [[nodiscard]] bool hasDescriptorsForAnother();
    void recoverFromAcceptError();
    // Stops accepting until enough descriptors are free; new connections wait in the system.
    // Without this, waiting connections would use up the descriptors that workers need for their
    // files.
    void pauseAdmission();
    void resumeAdmission();
    void cleanUp();

    std::shared_ptr<ServerContext> serverContext_ = std::make_shared<ServerContext>();
    QCoreApplication* application_;
    RequestQueue requestQueue_;
    DescriptorBudget descriptorBudget_;
    QTimer admissionTimer_; // runs while admission is paused
    std::unique_ptr<platform::ControlPipe> localServer_;
    std::unique_ptr<ThreadPoolWatcher> threadPoolWatcher_;
    std::unique_ptr<QueueWatcher> queueWatcher_;
};

} // namespace quorin
