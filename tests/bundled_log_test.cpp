// The gateway with the bundled logging library.

#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway.h"
#include "support/site.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class BundledLogTest : public testing::Test {
protected:
    // Returns the lines of the only file in the log folder. Empty if there is not exactly one file
    // or its last line is incomplete.
    QStringList fileLines() const {
        const QFileInfoList files = QDir(site_.logFolder()).entryInfoList(QDir::Files);
        if (files.size() != 1) {
            return {};
        }
        fileName_ = files.first().fileName();
        QFile file(files.first().filePath());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
        const bool isComplete = lines.takeLast().isEmpty();
        return isComplete ? lines : QStringList();
    }

    // Returns the messages as Site::logged() does for the stub: level number, space, message.
    QStringList logged() const {
        static const QRegularExpression format(
            uR"(^_dt:\d{8}T\d{6}\.\d{3}[+-]\d\d:\d\d	_l:(\w+)	_th:\d+	_m:Quorin5	msg:(.*)$)"_s);
        static const QStringList levels{u"debug"_s, u"info"_s, u"warning"_s, u"error"_s};
        QStringList lines;
        for (const QString& line : fileLines()) {
            const auto match = format.match(line);
            EXPECT_TRUE(match.hasMatch()) << line.toStdString();
            const auto level = levels.indexOf(match.captured(1));
            EXPECT_GE(level, 0) << line.toStdString();
            lines.append(QString::number(level + 2) + u' ' +
                         match.captured(2).replace(uR"(\\)"_s, uR"(\)"_s));
        }
        return lines;
    }

    // Runs a gateway with `library`, sends a download and a request for a missing file, and returns
    // the log. `readLog` returns what has been logged so far.
    template<typename ReadLog>
    QStringList logOfTwoRequests(LogLibrary library, ReadLog readLog) {
        Gateway gateway(site_, library);
        gateway.start();
        EXPECT_TRUE(exchange(site_.port(), get("/fwfiles/a")).endsWith("content"));
        const auto workersEnded = [&readLog](int workers) {
            // The last two lines of a worker come in either order.
            return readLog().count(u"2 [End] void __cdecl Worker::run(void)"_s) == workers &&
                   readLog().count(u"2 [End] void __cdecl Worker::SslSocketDisconnected(void)"_s) ==
                       workers;
        };
        EXPECT_TRUE(waitUntil([&] { return workersEnded(1); }));
        EXPECT_TRUE(exchange(site_.port(), get("/none")).startsWith("HTTP/1.1 404"));
        EXPECT_TRUE(waitUntil([&] { return workersEnded(2); }));
        EXPECT_EQ(gateway.stop(), 0);
        EXPECT_EQ(gateway.errorOutput(), "");
        return readLog();
    }

    Site site_;
    mutable QString fileName_;
};

TEST_F(BundledLogTest, WritesSameLinesAsStubToDailyFile) {
    site_.writeSettings();
    site_.writeFile(u"fwfiles/a"_s, "content");
    const QStringList expected =
        logOfTwoRequests(LogLibrary::Stub, [this] { return site_.logged(); });
    const QDate before = QDate::currentDate();
    const QStringList written = logOfTwoRequests(LogLibrary::Bundled, [this] { return logged(); });
    const QDate after = QDate::currentDate();
    EXPECT_GT(written.size(), 20);
    EXPECT_EQ(written, expected);
    const auto nameOf = [](QDate date) -> QString {
        return u"QuorinGatewayHttp_"_s + date.toString(Qt::ISODate) + u".log"_s;
    };
    EXPECT_TRUE(fileName_ == nameOf(before) || fileName_ == nameOf(after))
        << fileName_.toStdString();
}

TEST_F(BundledLogTest, DropsLinesBelowLevel) {
    Settings settings;
    settings.LogLevel = "error";
    site_.writeSettings(settings);
    Gateway gateway(site_, LogLibrary::Bundled);
    gateway.start();
    EXPECT_TRUE(exchange(site_.port(), get("/none")).startsWith("HTTP/1.1 404"));
    EXPECT_EQ(gateway.stop(), 0);
    const QString path = site_.appDataFolder() + u"/Vemo/Quorin5/QuorinGatewayHttp/wwwroot/none";
    EXPECT_EQ(logged(), QStringList{u"5 [End] "_s + path + u" does not exist or directory"});
}

TEST_F(BundledLogTest, ReportsEarlyStartFailureToStandardError) {
    Gateway gateway(site_, LogLibrary::Bundled);
    gateway.startWith({site_.settingsPath(), u"third"_s});
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_THAT(gateway.errorOutput().toStdString(),
                testing::ContainsRegex("\t_l:error\t_th:.+\t_m:Quorin5\tmsg:.End. the second "
                                       "argument .third. is not parsable\\.\n"));
    EXPECT_EQ(fileLines(), QStringList());
}

} // namespace
} // namespace quorin::test
