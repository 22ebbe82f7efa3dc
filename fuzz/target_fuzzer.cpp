// Requests an arbitrary target with GET or DELETE, selected by the first byte. Around the document
// root are files that must not be served.
//   - Every request gets a reply. A failed request does not get a 2xx status.
//   - Only files below the root are sent.
//   - No file changes except a notification document that is reset.

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "handlers/request_context.h"
#include "handlers/routing.h"
#include "http/request.h"
#include "require.h"
#include "scratch_folder.h"

#include <QCoreApplication>
#include <QStringList>

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

constexpr const char* kSecret = "outside the document root";
constexpr const char* kPublic = "inside the document root";
constexpr const char* kNotification =
    R"({"RemoteSetting":{"IsExist":true,"LastUpdated":"2024-05-15T00:00:00Z"}})";

// Document root with a file in each kind of folder, and secret files around it.
class Files {
public:
    Files() {
        for (const char* const name : {"root/update.json", "root/update_.json", "root/fwfiles/a",
                                       "root/fwfiles/b c", "root/fwfiles/a.zip", "root/fwfiles/..a",
                                       "root/patterns/deep/p", "root/api/x", "root/%2e%2e/a"}) {
            folder_.write(QString::fromLatin1(name), QByteArrayView(kPublic));
        }
        for (const QString& name : secrets_) {
            folder_.write(name, QByteArrayView(kSecret));
        }
        QDir().mkpath(folder_.path(u"Vemo/Quorin5/QuorinGatewayApp/NotificationTmp"_s));
    }

    [[nodiscard]] QString root() const { return folder_.path(u"root"_s); }
    void writeNotification() const { folder_.write(notification_, QByteArrayView(kNotification)); }

    void check() const {
        for (const QString& name : secrets_) {
            require(folder_.read(name) == kSecret, "a file outside the root is unchanged");
        }
        const QByteArray notification = folder_.read(notification_);
        require(notification == kNotification || notification == "{}",
                "a notification is unchanged or reset");
        require(folder_.read(u"root/fwfiles/a"_s) == kPublic, "a file in the root is unchanged");
    }

private:
    ScratchFolder folder_;
    QStringList secrets_{u"secret"_s,    u"a"_s,         u"update.json"_s,         u"roota"_s,
                         u"root.json"_s, u"fwfiles/a"_s, u"notifications/n.json"_s};
    QString notification_ = u"root/notifications/n.json"_s;
};

// Socket pair: the gateway's end and the client's end.
class Connection {
public:
    Connection() {
        std::array<int, 2> ends{};
        require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0,
                "the socket pair can be created");
        gateway_ = std::make_unique<QSslSocket>();
        require(gateway_->setSocketDescriptor(ends[0]), "QSslSocket accepts the descriptor");
        client_ = ends[1];
    }
    ~Connection() { close(client_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] std::unique_ptr<QSslSocket> takeGateway() { return std::move(gateway_); }

    [[nodiscard]] QByteArray received() const {
        QByteArray all;
        std::array<char, 4096> part{};
        for (;;) {
            const auto count = recv(client_, part.data(), part.size(), MSG_DONTWAIT);
            if (count <= 0) {
                return all;
            }
            all.append(part.data(), count);
        }
    }

private:
    std::unique_ptr<QSslSocket> gateway_;
    int client_ = -1;
};

void checkReply(const QByteArray& reply, bool isServed) {
    require(reply.startsWith("HTTP/1.1 "), "every request gets a reply");
    require(!reply.contains(kSecret), "no secret is sent");
    const bool isSuccess = reply.startsWith("HTTP/1.1 2");
    require(isServed || !isSuccess, "a failed request gets no 2xx status");
    if (isSuccess) {
        require(reply.endsWith(kPublic) || reply.endsWith(kNotification) || reply.endsWith("\"}") ||
                    reply.startsWith("HTTP/1.1 204 "),
                "the body is a file below the root or an api reply");
    }
}

int initialize() {
    static int argumentCount = 1;
    static char name[] = "fuzzer";
    static char* arguments[] = {name, nullptr};
    static const QCoreApplication application(argumentCount, arguments);
    quorin::GatewaySettings::instance().ThreadReadBufferSize = 4096;
    quorin::GatewaySettings::instance().HTTPRequestTimeout = 600;
    return 0;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return initialize();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Files files;
    if (size == 0) {
        return 0;
    }
    quorin::http::Request request;
    request.line.method =
        data[0] % 2 == 0 ? quorin::http::Method::Get : quorin::http::Method::Delete;
    request.line.target.assign(reinterpret_cast<const char*>(data + 1), size - 1);
    request.headers.set("X-Quorin-Notification-Reset-Date", "2024-06-01T00:00:00Z");

    files.writeNotification();
    Connection connection;
    quorin::RequestContext context;
    context.documentRoot = files.root();
    context.socket = connection.takeGateway();
    bool isServed = true;
    try {
        quorin::route(context, request);
    } catch (const quorin::GatewayException&) {
        isServed = false;
    }
    checkReply(connection.received(), isServed);
    files.check();
    return 0;
}
