// The gateway library, with its own libraries in its folder, in a host program in another folder.

#include "support/client.h"
#include "support/gateway.h"
#include "support/messages.h"
#include "support/site.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class LoadingTest : public testing::Test {
protected:
    LoadingTest() {
        gateway_.setEnvironment(u"PATH"_s, {});
        site_.writeFile(u"fwfiles/a"_s, "content");
    }

    void start(const Settings& settings = {}, const QStringList& loadedFirst = {}) {
        site_.writeSettings(settings);
        gateway_.startProcess(QStringLiteral(QUORIN_DISTANT_HOST),
                              loadedFirst + QStringList{QStringLiteral(QUORIN_GATEWAY_LIBRARY),
                                                        site_.settingsPath(), u"primary"_s});
    }

    Site site_;
    Gateway gateway_{site_, LogLibrary::None};
};

TEST_F(LoadingTest, FindsLoggingLibraryInOwnFolder) {
    start();
    EXPECT_EQ(exchange(site_.port(), get("/fwfiles/a")), streamedReply("content"));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(QDir(site_.logFolder()).entryList(QDir::Files).size(), 1);
}

// Without a TLS backend, the start would fail.
TEST_F(LoadingTest, FindsTlsBackendInOwnFolder) {
    Settings settings;
    settings.HttpsEnabled = "true";
    start(settings);
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(LoadingTest, IgnoresOtherLibrariesOfSameName) {
    Settings settings;
    settings.HttpsEnabled = "true";
    start(settings, QStringLiteral(QUORIN_OTHER_LIBRARIES).split(u'|'));
    EXPECT_EQ(gateway_.stop(), 0);
}

} // namespace
} // namespace quorin::test
