#pragma once

#include "server/descriptor_budget.h"
#include "server/request_queue.h"
#include "worker/worker.h"

#include <QTcpServer>
#include <QTimer>

#include <memory>

class QCoreApplication;
class QLocalServer;
class QueueWatcher;
class ThreadPoolWatcher;

// The gateway's listening socket, and the owner of all that lives as long as it serves: what
// workers share, the request queue, the control channel and the two watcher threads. Lives on the
// main thread, as all its functions do.
class TcpServer : public QTcpServer {
    Q_OBJECT

public:
    // Readies everything but the listening, which the caller does next. Throws a fatal
    // GatewayException when the control channel cannot be opened. `application` outlives the
    // server; its event loop is ended when a quit is complete.
    TcpServer(QCoreApplication* application, const QString& documentRoot);
    ~TcpServer() override;

    // As QTcpServer's. While the process has no descriptors to spare, connections wait in the
    // system, which does not take them from their clients.
    bool listen(const QHostAddress& address, quint16 port);

public Q_SLOTS:
    // Takes one command from the control channel.
    void LocalServerNewConnection();
    // All workers have ended after a quit: ends the event loop.
    void QuitWatcherSatisfied();

protected:
    // Queues the connection, or refuses it: in legacy mode, when MaxUserSession is reached.
    void incomingConnection(qintptr socketDescriptor) override;

private:
    void logReplyScheme() const;
    void logListeningMode() const;
    void loadCertificate();
    void openControlChannel();
    void admit(platform::SocketDescriptor descriptor);
    void recoverFromAcceptError(QAbstractSocket::SocketError error);
    void holdConnections();
    void admitConnections();
    void stopWatchers();
    void cleanUp();

    WorkerSurroundings surroundings_;
    QCoreApplication* application_;
    quorin::RequestQueue requestQueue_;
    quorin::DescriptorBudget descriptorBudget_;
    QTimer admissionTimer_; // runs while connections are held
    std::unique_ptr<QLocalServer> localServer_;
    std::unique_ptr<ThreadPoolWatcher> threadPoolWatcher_;
    std::unique_ptr<QueueWatcher> queueWatcher_;
};
