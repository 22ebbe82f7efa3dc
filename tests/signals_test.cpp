// The signals that quorin-gateway handles.

#include "support/lifecycle_fixture.h"

#include <QProcess>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;

class SignalTest : public LifecycleTest {
protected:
    // Sends the gateway the signal with this name, without "SIG".
    bool sendSignal(const QString& name) const {
        const QString command = u"kill -s %1 %2"_s.arg(name).arg(gateway_.processId());
        return QProcess::execute(u"sh"_s, {u"-c"_s, command}) == 0;
    }
};

TEST_F(SignalTest, StopsOnSigtermAfterSigusr2) {
    gateway_.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    ASSERT_TRUE(isListening());
    ASSERT_TRUE(sendSignal(u"USR2"_s));
    ASSERT_TRUE(sendSignal(u"TERM"_s));
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_THAT(site_.logged(), Contains(kQuitLine));
}

TEST_F(SignalTest, StopsOnSigint) {
    gateway_.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    ASSERT_TRUE(isListening());
    ASSERT_TRUE(sendSignal(u"INT"_s));
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_THAT(site_.logged(), Contains(kQuitLine));
}

} // namespace
} // namespace quorin::test
