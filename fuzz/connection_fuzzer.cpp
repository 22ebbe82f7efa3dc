// Serves an arbitrary connection with a Worker. The first byte selects settings; the rest is what
// the client does, in steps (steps.h). The actions after the bytes of a step are
//   - 'p': pause, until the worker has read the bytes; other letters mean the same;
//   - 'w': send nothing more;
//   - 'c': disconnect;
//   - 't': pause for longer than ConnectionTimeout;
//   - 'q': another process stops the gateway.
// After the last step the client sends nothing more. The worker's event loop and the client take
// turns on one thread. A request is what the worker reads first.
//   - A request that cannot be parsed gets the two replies of a malformed request. Any other gets
//     a complete success, a failure followed by a second one, or the failure of an unknown query.
//     Only a download may be cut, if the client sends nothing more directly after the request.
//   - Without a request, after a stop or after the time-out, there is no reply.
//   - Only files below the root are sent, and none changes but the notification.
//   - The worker logs its start and its end once, and no error if the request succeeds.

#include "application.h"
#include "config/gateway_settings.h"
#include "document_root.h"
#include "http/request.h"
#include "http/request_parser.h"
#include "log/log_capture.h"
#include "peer.h"
#include "require.h"
#include "steps.h"
#include "worker/worker.h"

#include <QThreadPool>
#include <QTimer>

#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QByteArray kFailure = "HTTP/1.1 500 Internal Server Error\r\n\r\n";

// The settings that the first byte selects.
struct Options {
    bool isLargeFileLimited = false;
    bool expiresTransfers = false;
    bool hasSmallChunks = false;

    explicit Options(std::uint8_t bits)
        : isLargeFileLimited((bits & 1U) != 0),
          expiresTransfers((bits & 2U) != 0),
          hasSmallChunks((bits & 4U) != 0) {}

    void apply() const {
        quorin::GatewaySettings& settings = quorin::GatewaySettings::instance();
        settings = {};
        settings.OrganizationId = u"organization"_s;
        settings.ConnectionTimeout = 3600; // only a step makes it expire
        settings.HTTPRequestTimeout = expiresTransfers ? 0 : 600;
        settings.ThreadReadBufferSize = hasSmallChunks ? 5 : 0;
        settings.IsMadeClientRequestWaited = isLargeFileLimited;
        settings.MaxLargeFileRequest = 0; // below the load: one thread of the pool is reserved
    }
};

bool isPause(char action) {
    return action != 'w' && action != 'c' && action != 't' && action != 'q';
}

class Client {
public:
    Client(Peer peer, qintptr gatewayEnd, std::vector<Step> steps)
        : peer_(std::move(peer)),
          gatewayEnd_(static_cast<int>(gatewayEnd)),
          steps_(std::move(steps)) {}

    // Does one step while the worker waits. With a request, the worker ends its loop.
    void takeTurn(quorin::Worker& worker, std::atomic<bool>& quitRequested) {
        if (request_ || hasUnreadBytes()) {
            return;
        }
        if (next_ == steps_.size()) {
            peer_.stopSending();
            return;
        }
        const Step& step = steps_[next_++];
        peer_.send(step.bytes);
        if (acceptsRequest_ && !step.bytes.empty() && step.action != 't' && step.action != 'q') {
            request_ = step.bytes;
            isHalfClosed_ = step.action == 'w';
        }
        if (step.action == 't') {
            worker.ConnectionTimeout();
        } else if (step.action == 'q') {
            quitRequested = true;
        } else {
            act(step);
        }
        acceptsRequest_ = acceptsRequest_ && step.bytes.empty() && isPause(step.action);
    }

    // Does the remaining steps after the worker has ended its loop.
    void finish() {
        for (; next_ < steps_.size(); ++next_) {
            peer_.send(steps_[next_].bytes);
            act(steps_[next_]);
        }
    }

    // The bytes that the worker has read, or nothing if it has read none that it serves.
    [[nodiscard]] const std::optional<std::string>& request() const { return request_; }

    // Returns true if the client sent nothing more directly after the request.
    [[nodiscard]] bool isHalfClosed() const { return isHalfClosed_; }

    // All that the gateway has sent, or nothing if the client has disconnected. The gateway must
    // have closed the connection.
    [[nodiscard]] std::optional<QByteArray> reply() const {
        if (!peer_.isConnected()) {
            return std::nullopt;
        }
        QByteArray received;
        require(peer_.receive(received), "the worker closes the connection");
        return received;
    }

private:
    void act(const Step& step) {
        if (step.action == 'c') {
            peer_.disconnect();
        } else if (step.action == 'w') {
            peer_.stopSending();
        }
    }

    [[nodiscard]] bool hasUnreadBytes() const {
        int count = 0;
        return ioctl(gatewayEnd_, FIONREAD, &count) == 0 && count > 0;
    }

    Peer peer_;
    int gatewayEnd_; // owned by the worker
    std::vector<Step> steps_;
    std::size_t next_ = 0;
    bool acceptsRequest_ = true;
    std::optional<std::string> request_;
    bool isHalfClosed_ = false;
};

// Returns true if `reply` consists of this header with the length of the rest, and the rest.
bool isComplete(const QByteArray& reply, const QByteArray& statusLine) {
    const QByteArray begin = statusLine + "Content-Length: ";
    const qsizetype bodyStart = reply.indexOf("\r\n\r\n") + 4;
    const qsizetype lengthEnd = reply.indexOf("\r\n", begin.size());
    return reply.startsWith(begin) && bodyStart > lengthEnd &&
           reply.mid(lengthEnd).startsWith("\r\nContent-Type: ") &&
           reply.mid(begin.size(), lengthEnd - begin.size()) ==
               QByteArray::number(reply.size() - bodyStart);
}

const QByteArray kStreamed = "HTTP/1.1 200\r\n";

bool isSuccess(const QByteArray& reply, const Options& options) {
    if (options.expiresTransfers && reply.startsWith(kStreamed)) {
        return isComplete(reply + DocumentRoot::kPublic, kStreamed);
    }
    return reply == "HTTP/1.1 204 No Content\r\n\r\n" || isComplete(reply, kStreamed) ||
           isComplete(reply, "HTTP/1.1 200 OK\r\n");
}

// Qt treats the end of what the client sends as a disconnect when it sends a file.
bool isCutDownload(const QByteArray& reply) {
    return reply.isEmpty() || reply.startsWith(kStreamed);
}

bool isFailure(const QByteArray& reply) {
    static const std::array<QByteArray, 5> kFirst{
        "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n",
        "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n",
        "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n", kFailure,
        "HTTP/1.1 503 Service Unavailable\r\n\r\n"};
    return reply == kFailure ||
           std::any_of(kFirst.begin(), kFirst.end(),
                       [&](const QByteArray& first) { return reply == first + kFailure; });
}

void checkReply(const Client& client, const Options& options, bool hasLoggedError) {
    const std::optional<QByteArray> reply = client.reply();
    if (!reply) {
        return;
    }
    require(!reply->contains(DocumentRoot::kSecret), "no secret is sent");
    if (!client.request()) {
        require(reply->isEmpty(), "without a request there is no reply");
        return;
    }
    quorin::http::Request request;
    if (!quorin::http::parser::parse(request, *client.request())) {
        require(*reply == kFailure + kFailure, "a malformed request gets two failures");
    } else if (isSuccess(*reply, options)) {
        require(!hasLoggedError || options.expiresTransfers, "a success logs no error");
    } else {
        require(isFailure(*reply) || (client.isHalfClosed() && isCutDownload(*reply)),
                "the reply is a success or a failure");
    }
}

void checkLog(const std::vector<quorin::LogCapture::Line>& lines) {
    const auto count = [&lines](QStringView text) {
        return std::count_if(lines.begin(), lines.end(),
                             [text](const auto& line) { return line.message == text; });
    };
    require(count(u"[Start] void __cdecl Worker::run(void)") == 1, "the start is logged once");
    require(count(u"[End] void __cdecl Worker::run(void)") == 1, "the end is logged once");
}

bool containsError(const std::vector<quorin::LogCapture::Line>& lines) {
    return std::any_of(lines.begin(), lines.end(),
                       [](const auto& line) { return line.level == lumetrix::Level::Error; });
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    createApplication();
    QThreadPool::globalInstance()->reserveThread();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const DocumentRoot files;
    if (size == 0) {
        return 0;
    }
    const Options options(data[0]);
    options.apply();
    files.writeNotification();
    const auto server = std::make_shared<quorin::ServerContext>();
    server->documentRoot = files.path();
    server->communicationScheme = quorin::CommunicationScheme::Http;

    const quorin::LogCapture log;
    auto [gatewayEnd, peer] = connectedPair();
    Client client(std::move(peer), gatewayEnd, stepsIn(data + 1, size - 1));
    {
        quorin::Worker worker(quorin::platform::SocketDescriptor(gatewayEnd), server);
        QTimer turn; // without an interval: expires when nothing else happens
        QObject::connect(&turn, &QTimer::timeout,
                         [&] { client.takeTurn(worker, server->quitRequested); });
        turn.start();
        worker.run();
        turn.stop();
        client.finish();
    }
    checkReply(client, options, containsError(log.lines()));
    checkLog(log.lines());
    files.check();
    return 0;
}
