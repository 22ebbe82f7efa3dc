#include "log/application_logger.h"

#include "log/log.h"
#include "stub_lumetrix/recorded_log.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

class ApplicationLoggerTest : public testing::Test {
protected:
    ApplicationLoggerTest() {
        qputenv(kDataVariable, data_.path().toUtf8()); // ignored by Windows
        // The first call that the stub records on a new file may be preceded by get_logger.
        log::info(u"first"_s);
    }
    ~ApplicationLoggerTest() override { qunsetenv(kDataVariable); }

    // Returns the calls of the logging library after the first message.
    QByteArrayList calls() const {
        QFile file(recorded_.path());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        const QByteArray first = "first\n";
        return text.mid(text.indexOf(first) + first.size()).chopped(1).split('\n');
    }

private:
    static constexpr const char* kDataVariable = "QUORIN_COMMON_APPDATA";

    QTemporaryDir data_;
    const test::RecordedLog recorded_;
};

TEST_F(ApplicationLoggerTest, ConfiguresLibraryAndReleasesIt) {
    QuorinGatewayApplicationLogger::setUpApplicationLog(
        {.generation = 4, .queueSize = 64, .level = u"WARN"_s});
    QuorinGatewayApplicationLogger::shutDownLog();
    const QByteArray folder = logFolder().replace(u'\\', u"\\\\"_s).toUtf8(); // as in the record
    EXPECT_EQ(calls(), (QByteArrayList{"set_rotation_with_date\thandle\t5",
                                       "set_pool_size\thandle\t64", "set_output_level\thandle\t4",
                                       "set_output_dir\thandle\t" + folder + "\tQuorinGatewayHttp",
                                       "release\thandle"}));
    EXPECT_TRUE(QDir(logFolder()).exists());
}

TEST_F(ApplicationLoggerTest, LimitsNumberOfFilesToInt) {
    QuorinGatewayApplicationLogger::setUpApplicationLog(
        {.generation = 2'147'483'647, .queueSize = 1, .level = u"info"_s});
    EXPECT_EQ(calls().constFirst(), "set_rotation_with_date\thandle\t2147483647");
}

TEST_F(ApplicationLoggerTest, UsesInfoForUnknownLevel) {
    for (const QString& level : {u""_s, u"warning"_s, u"3"_s}) {
        QuorinGatewayApplicationLogger::setUpApplicationLog(
            {.generation = 0, .queueSize = 1, .level = level});
    }
    EXPECT_EQ(calls().count("set_output_level\thandle\t3"), 3);
}

} // namespace
} // namespace quorin
