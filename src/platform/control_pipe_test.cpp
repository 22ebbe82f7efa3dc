#include "platform/control_pipe.h"

#include <QCoreApplication>
#include <QLocalSocket>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

TEST(ControlPipeTest, RecognizesServerOfThisProcess) {
    const QString name =
        u"\\\\.\\pipe\\QUORIN_PIPE_TEST_%1"_s.arg(QCoreApplication::applicationPid());
    ControlPipe pipe(name);
    ASSERT_EQ(pipe.open(), std::nullopt);
    QLocalSocket client;
    client.connectToServer(name);
    ASSERT_TRUE(client.waitForConnected(5000)) << client.errorString().toStdString();
    EXPECT_TRUE(isServedByThisProcess(client));
}

TEST(ControlPipeTest, UnconnectedPipeHasNoServer) {
    const QLocalSocket client;
    EXPECT_FALSE(isServedByThisProcess(client));
}

} // namespace
} // namespace quorin::platform
