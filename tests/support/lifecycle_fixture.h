#pragma once

#include "support/gateway.h"
#include "support/serving_test.h"
#include "support/site.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace quorin::test {

// Returns the last line that a run logs.
[[nodiscard]] inline QString endLine(const QString& arguments, const QString& status) {
    return u"3 Quorin Gateway Http Server End [Argument] " + arguments + u" : [Status] " + status;
}

// For tests of how a run of the gateway starts and ends. The site has a settings file from the
// start; startGateway() writes it again.
class LifecycleTest : public testing::Test {
protected:
    LifecycleTest() { site_.writeSettings(); }

    void startGateway(const Settings& settings = {}) {
        test::startGateway(gateway_, site_, Transport::Plain, settings);
    }

    // Returns the gateway's arguments as the log shows them.
    [[nodiscard]] QString arguments(const QString& group = QStringLiteral("primary")) const {
        return site_.settingsPath() + u' ' + group;
    }

    // Copies quorin-gateway to the folder of the settings file, which contains no libraries.
    // Returns the path of the copy. For Linux.
    [[nodiscard]] QString copyProgram() const {
        const QString copy =
            QFileInfo(site_.settingsPath()).path() + QStringLiteral("/quorin-gateway");
        EXPECT_TRUE(QFile::copy(gatewayProgram(), copy));
        return copy;
    }

    [[nodiscard]] bool isListening() const { return Client(site_.port()).isConnected(); }

    Site site_;
    Gateway gateway_{site_};
};

} // namespace quorin::test
