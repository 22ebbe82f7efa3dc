#pragma once

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "handlers/request_context.h"
#include "support/loopback.h"
#include "support/print.h"
#include "support/site.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

// For tests of handlers without a worker and without a thread pool.
namespace quorin::test {

inline const QByteArray kPlain500 = "HTTP/1.1 500 Internal Server Error\r\n\r\n";

// A temporary folder for a test's files, and a site whose common application data folder, with the
// staging folder, this process uses during the object's lifetime.
class DataFolder {
public:
    DataFolder() { qputenv(kDataVariable, site_.appDataFolder().toUtf8()); }
    ~DataFolder() { qunsetenv(kDataVariable); }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    [[nodiscard]] QString stagingPath(const QString& name) const { return site_.stagingPath(name); }

    // Writes a file, with the folders of its path, and returns its path.
    QString write(const QString& name, const QByteArray& content) const {
        const QFileInfo info(path(name));
        EXPECT_TRUE(QDir().mkpath(info.path()));
        QFile file(info.filePath());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content), content.size());
        return info.filePath();
    }
    [[nodiscard]] QByteArray read(const QString& name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

private:
    static constexpr const char* kDataVariable = "QUORIN_COMMON_APPDATA";

    Site site_;
    QTemporaryDir folder_;
};

// Provides a handler with the context of a request, whose socket is connected to a client.
class HandlerTest : public testing::Test {
protected:
    HandlerTest() {
        GatewaySettings& settings = GatewaySettings::instance();
        settings = {};
        settings.HTTPRequestTimeout = 600;
        settings.ThreadReadBufferSize = 65536;
        context_.documentRoot = data_.path(QStringLiteral("root"));
        context_.methodText = QStringLiteral("GET");
        connectTo(QHostAddress(QHostAddress::LocalHost));
    }
    ~HandlerTest() override { GatewaySettings::instance() = {}; }

    // Replaces the connection by a new one whose local address is `address`.
    void connectTo(const QHostAddress& address) {
        connection_ = std::make_unique<Loopback>(address);
        context_.socket = std::make_unique<QSslSocket>();
        context_.disconnected = false;
        QSslSocket& socket = *context_.socket;
        ASSERT_TRUE(socket.setSocketDescriptor(connection_->takeDescriptor().release(),
                                               QAbstractSocket::ConnectedState,
                                               QIODevice::ReadWrite));
        QObject::connect(&socket, &QSslSocket::disconnected,
                         [this] { context_.disconnected = true; });
    }

    // Closes the connection and returns all bytes that the client received.
    QByteArray received() {
        context_.socket->close();
        return connection_->client().readToEnd();
    }

    // Returns the message of the exception that `call` throws, which must be of kind Request and
    // not silent.
    template<typename Call>
    static QString failureOf(Call&& call) {
        try {
            call();
        } catch (const GatewayException& exception) {
            EXPECT_EQ(exception.kind(), GatewayException::Request);
            EXPECT_FALSE(exception.isSilent());
            return exception.message();
        }
        return QStringLiteral("(no failure)");
    }

    LogRecord log_;
    DataFolder data_;
    std::unique_ptr<Loopback> connection_;
    RequestContext context_;
};

} // namespace quorin::test
