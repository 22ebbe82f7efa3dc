// Sends arbitrary bytes to the control pipe. The input is what controllers write, in steps
// (steps.h): after the action 'n' the next controller connects; any other action is a pause. All
// controllers connect before the gateway handles the first one. It waits for a controller whose
// first step is empty.
//   - A controller stops the gateway if, and only if, the bytes that arrive first are the stop
//     command; a byte order mark before it and everything from the first NUL on do not matter.
//   - Each stop command, and nothing else, is logged.
//   - The gateway writes nothing to the pipe and closes each connection.

#include "application.h"
#include "log/log_capture.h"
#include "peer.h"
#include "platform/control_pipe.h"
#include "require.h"
#include "scratch_folder.h"
#include "server/tcp_server.h"
#include "steps.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QThreadPool>

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t kMaxControllers = 8;

class Gateway {
public:
    Gateway() {
        qputenv("TMPDIR", folder_.path(QString()).toUtf8()); // for the pipe
        // The pool never becomes idle, so a stop is never complete and the pipe stays open.
        QThreadPool::globalInstance()->reserveThread();
        server_.emplace(QCoreApplication::instance(), folder_.path(QString()));
    }

    // Call before the controllers of an input connect.
    void listen() {
        require(server_->isListening() || server_->listen(QHostAddress(QHostAddress::LocalHost), 0),
                "the gateway listens");
    }
    [[nodiscard]] bool isListening() const { return server_->isListening(); }

private:
    ScratchFolder folder_;
    std::optional<quorin::TcpServer> server_;
};

int connectToPipe() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path =
        (QDir::tempPath() + u'/' + quorin::platform::kControlPipeName).toLocal8Bit();
    require(path.size() < qsizetype(sizeof(address.sun_path)), "the path is short enough");
    std::copy(path.begin(), path.end(), address.sun_path);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    require(connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0,
            "a controller can connect");
    return descriptor;
}

class Controller {
public:
    explicit Controller(std::vector<std::string> pieces)
        : peer_(connectToPipe()), pieces_(std::move(pieces)) {
        sendNext();
    }

    // The bytes that the gateway reads.
    [[nodiscard]] std::string_view command() const {
        const auto first = std::find_if(pieces_.begin(), pieces_.end(),
                                        [](const std::string& piece) { return !piece.empty(); });
        return first == pieces_.end() ? std::string_view() : *first;
    }

    [[nodiscard]] bool isSilent() const { return pieces_.front().empty(); }

    // Sends the first piece that is not empty, or stops sending. The gateway may be waiting for it.
    void breakSilence() {
        while (next_ < pieces_.size() && pieces_[next_].empty()) {
            ++next_;
        }
        next_ < pieces_.size() ? sendNext() : peer_.stopSending();
    }

    // Sends the rest, which the gateway does not read.
    void finish() {
        while (next_ < pieces_.size()) {
            sendNext();
        }
    }

    // Returns true once the gateway has closed the connection.
    [[nodiscard]] bool isClosed() const {
        QByteArray received;
        const bool closed = peer_.receive(received);
        require(received.isEmpty(), "the gateway writes nothing to the pipe");
        return closed;
    }

private:
    void sendNext() { peer_.send(pieces_[next_++]); }

    Peer peer_;
    std::vector<std::string> pieces_;
    std::size_t next_ = 0;
};

std::vector<Controller> connectControllers(std::vector<Step> steps) {
    std::vector<Controller> controllers;
    std::vector<std::string> pieces;
    for (Step& step : steps) {
        pieces.push_back(std::move(step.bytes));
        if (step.action == 'n' || step.action == 0) {
            controllers.emplace_back(std::move(pieces));
            pieces.clear();
        }
        if (controllers.size() == kMaxControllers) {
            break;
        }
    }
    return controllers;
}

bool isStopCommand(std::string_view bytes) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    bytes = bytes.substr(0, bytes.find('\0'));
    if (bytes.starts_with(kByteOrderMark)) {
        bytes.remove_prefix(kByteOrderMark.size());
    }
    return bytes == "quit";
}

void waitUntilClosed(const std::vector<Controller>& controllers) {
    const QDeadlineTimer deadline(std::chrono::seconds(15));
    for (const Controller& controller : controllers) {
        while (!controller.isClosed()) {
            QCoreApplication::processEvents();
            require(!deadline.hasExpired(), "the gateway closes each connection");
        }
    }
}

void checkLog(const std::vector<quorin::LogCapture::Line>& lines, std::ptrdiff_t stopCommands) {
    require(static_cast<std::ptrdiff_t>(lines.size()) == stopCommands &&
                std::all_of(lines.begin(), lines.end(),
                            [](const auto& line) {
                                return line.level == lumetrix::Level::Info &&
                                       line.message == u"quit command recieved";
                            }),
            "each stop command, and nothing else, is logged");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    createApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Gateway gateway;
    gateway.listen();
    const quorin::LogCapture log;
    std::vector<Controller> controllers = connectControllers(stepsIn(data, size));
    const auto stopCommands =
        std::count_if(controllers.begin(), controllers.end(), [](const Controller& controller) {
            return isStopCommand(controller.command());
        });
    std::thread breakingSilence;
    if (std::any_of(controllers.begin(), controllers.end(),
                    [](const Controller& controller) { return controller.isSilent(); })) {
        breakingSilence = std::thread([&controllers] {
            for (Controller& controller : controllers) {
                if (controller.isSilent()) {
                    controller.breakSilence();
                }
            }
        });
    }
    waitUntilClosed(controllers);
    if (breakingSilence.joinable()) {
        breakingSilence.join();
    }
    for (Controller& controller : controllers) {
        controller.finish();
    }
    require(gateway.isListening() == (stopCommands == 0), "only the stop command stops");
    checkLog(log.lines(), stopCommands);
    return 0;
}
