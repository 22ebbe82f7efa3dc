// `quorin-gateway check` as a process, and its agreement with the start of the gateway.

#include "platform/folders.h"
#include "platform/held_file.h"
#include "platform/shared_library.h"
#include "support/certificate_store.h"
#include "support/deadline.h"
#include "support/free_port.h"
#include "support/lifecycle_fixture.h"
#include "support/permissions.h"
#include "support/settings_samples.h"
#include "support/system.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

// Settings with which the check finds nothing in a complete site.
Settings goodSettings() {
    Settings settings;
    settings.ThreadReadBufferSize = "1048576";
    return settings;
}

class CheckCommandTest : public LifecycleTest {
protected:
    CheckCommandTest() {
        site_.writeSettings(goodSettings());
        for (const QString& name : {u"notifications"_s, u"patterns"_s, u"plugins"_s}) {
            EXPECT_TRUE(QDir().mkpath(site_.rootPath(name)));
        }
    }

    // Runs the check to its end and returns its exit code. `prefix` is a command that runs it.
    std::optional<int> check(const QStringList& options = {}, const QStringList& prefix = {},
                             LogLibrary log = LogLibrary::Stub) {
        Gateway program(site_, log);
        const QStringList command =
            prefix + QStringList{gatewayProgram(), u"check"_s, site_.settingsPath(), group_} +
            options;
        program.startProcess(command.first(), command.mid(1));
        const std::optional<int> code = program.waitForExit();
        output_ = program.output();
        EXPECT_EQ(program.errorOutput(), "");
        return code;
    }

    [[nodiscard]] QStringList lines() const {
        return QString::fromUtf8(output_).split(u'\n', Qt::SkipEmptyParts);
    }

    void changeSettings(const QByteArray& from, const QByteArray& to) const {
        QFile file(site_.settingsPath());
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        QByteArray content = file.readAll();
        ASSERT_TRUE(content.contains(from)) << from.constData();
        content.replace(from, to);
        file.resize(0);
        file.seek(0);
        file.write(content);
    }

    // Everything below the site's folders: paths, sizes and times of change.
    [[nodiscard]] QStringList content() const {
        QStringList entries;
        for (const QString& folder : {site_.appDataFolder(), site_.temporaryPath()}) {
            QDirIterator iterator(
                folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                QDirIterator::Subdirectories);
            while (iterator.hasNext()) {
                iterator.next();
                const QFileInfo info = iterator.fileInfo();
                entries.append(info.filePath() + u' ' + QString::number(info.size()) + u' ' +
                               info.lastModified().toString(Qt::ISODateWithMs));
            }
        }
        entries.sort();
        return entries;
    }

    QString group_ = u"primary"_s;
    QByteArray output_; // of check()
};

TEST_F(CheckCommandTest, FindsNothingInCompleteSite) {
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(output_, "quorin-gateway: 0 errors, 0 warnings\n");
}

TEST_F(CheckCommandTest, ChangesNothing) {
    const QStringList before = content();
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(site_.record(), QStringList()) << "the check used the logging library";
}

TEST_F(CheckCommandTest, ReportsEverythingAtOnce) {
    changeSettings("<LogLevel>debug", "<LogLevel>Debug");
    changeSettings("<MaxUserSession>10", "<MaxUserSession>ten");
    changeSettings("<RootUrl>https://cloud.example/QuorinCloud5</RootUrl>", "");
    changeSettings("<HTTPRequestTimeout>600", "<HTTPRequestTimeout>0");
    changeSettings("<HttpsEnabled>", "<HttpEnabled/><HttpsEnabled>");
    ASSERT_TRUE(QDir().rmdir(site_.rootPath(u"plugins"_s)));
    EXPECT_EQ(check(), 1);
    const QString root = QDir::toNativeSeparators(site_.rootPath(QString()));
    EXPECT_THAT(
        lines(),
        ElementsAre(
            u"error setting-invalid: "
            u"PrimaryGatewaySetting/Http/Log/ApplicationLog/LogLevel = \"Debug\": "
            u"[End] application log level format error (should be setted 'info','warn'"
            u" or 'error'). Set debug, info, warn or error, in lower case."_s,
            u"error setting-invalid: PrimaryGatewaySetting/Http/MaxUserSession = "
            u"\"ten\": [End] MaxUserSession is not number. Set an integer from 0 to "
            u"2147483647."_s,
            u"error setting-missing: General/QuorinCloud/RootUrl: [End] RootUrl tag is"
            u" not found. Add the element."_s,
            u"warning element-ignored: PrimaryGatewaySetting/Http/HttpEnabled: the "
            u"gateway has no such element (line 14). If "
            u"PrimaryGatewaySetting/Http/HttpsEnabled is meant, correct the name."_s,
            u"warning setting-questionable: "
            u"PrimaryGatewaySetting/Http/HTTPRequestTimeout = \"0\": every transfer of"
            u" a file ends before its content. Set any other number, for example 600."_s,
            u"warning folder-missing: "_s + root +
                u"plugins: its files cannot be served. Create the folder, or check the account and "
                u"the environment of this check.",
            u"quorin-gateway: 3 errors, 3 warnings; the start would fail"_s));
}

TEST_F(CheckCommandTest, PrintsJsonDocument) {
    changeSettings("<Port>" + QByteArray::number(site_.port()), "<Port>8O80");
    EXPECT_EQ(check({u"--json"_s}), 1);
    const QJsonObject document = QJsonDocument::fromJson(output_).object();
    EXPECT_EQ(document[u"settings"].toString(), site_.settingsPath());
    EXPECT_EQ(document[u"group"].toString(), u"primary"_s);
    EXPECT_EQ(document[u"errors"].toInt(), 1);
    EXPECT_EQ(document[u"warnings"].toInt(), 0);
    EXPECT_TRUE(document[u"failsStart"].toBool());
    const QJsonArray findings = document[u"findings"].toArray();
    ASSERT_EQ(findings.size(), 1);
    const QJsonObject finding = findings[0].toObject();
    EXPECT_EQ(finding[u"code"].toString(), u"setting-invalid"_s);
    EXPECT_EQ(finding[u"value"].toString(), u"8O80"_s);
}

TEST_F(CheckCommandTest, ReportsPortInUse) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, site_.port()));
    EXPECT_EQ(check(), 1);
    EXPECT_THAT(
        lines(),
        ElementsAre(u"error port-unavailable: PrimaryGatewaySetting/Http/Port = \""_s +
                        QString::number(site_.port()) +
                        u"\": [End] failed to tcp server listening:The bound address is already in "
                        u"use. Set another port, or stop the program that uses this one.",
                    u"quorin-gateway: 1 error, 0 warnings; the start would fail"_s));
}

TEST_F(CheckCommandTest, WarnsOfRunningGateway) {
    gateway_.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    ASSERT_TRUE(isListening());
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds)) << "the connection of isListening()";
    const QStringList logged = site_.logged();
    EXPECT_EQ(check(), 0);
    EXPECT_THAT(lines(),
                ElementsAre(u"warning gateway-running: process "_s +
                                QString::number(gateway_.processId()) + u" = \"" +
                                QDir::toNativeSeparators(site_.settingsPath()) +
                                u" primary\": a gateway runs on this machine; another one would "
                                u"end with exit code 2. Stop it before you start another one.",
                            u"quorin-gateway: 0 errors, 1 warning"_s));
    EXPECT_EQ(site_.logged(), logged) << "the gateway noticed the check";
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(CheckCommandTest, ReportsMissingLoggingLibrary) {
    EXPECT_EQ(check({}, {}, LogLibrary::None), 0);
    ASSERT_EQ(lines().size(), 2);
    EXPECT_TRUE(lines()[0].startsWith(u"warning logging-library-missing: "_s +
                                      QString::fromUtf8(platform::loggingLibraryName()) +
                                      u": nothing is logged: "))
        << output_.constData();
}

TEST_F(CheckCommandTest, ReportsFoldersWithoutPermission) {
    if (kOnWindows) {
        GTEST_SKIP() << "this system has no permission bits";
    }
    const std::optional<QStringList> prefix = prefixBoundByPermissions();
    if (!prefix) {
        GTEST_SKIP() << "permissions do not apply to this account";
    }
    QString staging = site_.stagingPath(QString());
    staging.chop(1);
    const QString patterns = site_.rootPath(u"patterns"_s);
    forbidWriting(staging);
    ASSERT_TRUE(QFile::setPermissions(patterns, {}));
    EXPECT_EQ(check({}, *prefix), 0);
    allowWriting(staging);
    QFile::setPermissions(patterns, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_THAT(lines(), ElementsAre(u"warning folder-not-readable: "_s + patterns +
                                         u": its files cannot be served (Permission denied). Allow "
                                         u"the gateway's account to read the folder.",
                                     u"warning folder-not-writable: "_s + staging +
                                         u": notifications can be neither read nor acknowledged. "
                                         u"Allow the gateway's account to write to the folder.",
                                     u"quorin-gateway: 0 errors, 2 warnings"_s));
}

TEST_F(CheckCommandTest, FindsCertificate) {
    if (kOnWindows) {
        GTEST_SKIP() << "Wine does not export the key of a stored certificate";
    }
    changeSettings("<HttpsEnabled>false", "<HttpsEnabled>true");
    changeSettings("<GatewayAddress>localhost", "<GatewayAddress>gateway.example");
    EXPECT_EQ(check(), 1);
    EXPECT_TRUE(output_.startsWith("error certificate-missing: gateway.example: no usable "
                                   "certificate has this name, so that every TLS handshake fails: "
                                   "Failed to open store (WebHosting).; Failed to open store "
                                   "(My).; Failed to find valid certificate.; store WebHosting: "))
        << output_.constData();
    EXPECT_THAT(output_.toStdString(), testing::HasSubstr("No such file or directory (0x2)"));
    EXPECT_TRUE(output_.endsWith("quorin-gateway: 1 error, 0 warnings\n")) << output_.constData();
    installCertificate(site_, "gateway.example");
    EXPECT_EQ(check(), 0);
    EXPECT_TRUE(output_.startsWith("info certificate-found: gateway.example = \"01\": "))
        << output_.constData();
}

// The outcome of a start: it fails with exit code 1, or the gateway serves.
enum class StartOutcome { Fails, Serves };

class AgreementTest : public CheckCommandTest {
protected:
    // Hundreds of processes take too long under Wine: one of so many samples is compared there.
    static constexpr int kStride = kOnWindows ? 12 : 1;

    // Returns whether the check states that the start would fail.
    std::optional<StartOutcome> checkedOutcome() {
        const std::optional<int> code = check({u"--json"_s});
        const QJsonObject document = QJsonDocument::fromJson(output_).object();
        EXPECT_TRUE(document.contains(u"findings")) << output_.constData();
        EXPECT_EQ(code, document[u"errors"].toInt() == 0 ? 0 : 1);
        return document[u"failsStart"].toBool() ? StartOutcome::Fails : StartOutcome::Serves;
    }

    // Starts the gateway until it serves or ends.
    std::optional<StartOutcome> startOutcome() {
        Gateway gateway(site_);
        gateway.startProgram({u"run"_s, site_.settingsPath(), group_});
        const QString statusPath =
            platform::joinPath(kOnWindows ? platform::runtimeFolder() : site_.temporaryPath(),
                               u"quorin-gateway.status"_s);
        const auto isServing = [&] { return platform::HeldFile::read(statusPath).has_value(); };
        const bool isDecided = waitUntil([&] {
            QCoreApplication::processEvents();
            return !gateway.isRunning() || isServing();
        });
        EXPECT_TRUE(isDecided);
        EXPECT_EQ(gateway.output() + gateway.errorOutput(), "");
        if (gateway.isRunning()) {
            gateway.kill();
            return StartOutcome::Serves;
        }
        EXPECT_EQ(gateway.waitForExit(), 1);
        return StartOutcome::Fails;
    }

    // Compares the check with the start, for both groups.
    void compare(const SettingsSample& sample) {
        const FreePort port;
        QByteArray content = sample.content;
        const QByteArray replacement = '>' + port.text() + '<';
        content.replace(">8080<", replacement).replace(">8081<", replacement);
        QFile file(site_.settingsPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        for (const QString& group : {u"primary"_s, u"secondary"_s}) {
            group_ = group;
            const std::optional<StartOutcome> checked = checkedOutcome();
            const std::optional<StartOutcome> started = startOutcome();
            EXPECT_EQ(checked, started) << sample.name << ' ' << group.toStdString() << '\n'
                                        << output_.constData();
            ++(started == StartOutcome::Fails ? failures_ : successes_);
        }
    }

    static QByteArray contentOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    int failures_ = 0;
    int successes_ = 0;
};

TEST_F(AgreementTest, ChecksSamplesAsTheyStart) {
    const std::vector<SettingsSample> samples = settingsSamples();
    for (std::size_t i = 0; i < samples.size(); i += kStride) {
        compare(samples[i]);
    }
    RecordProperty("failures", failures_);
    RecordProperty("successes", successes_);
    EXPECT_GT(failures_, 50 / kStride - 1);
    EXPECT_GT(successes_, 30 / kStride - 1);
}

TEST_F(AgreementTest, ChecksFuzzerSeedsAsTheyStart) {
    // The first byte of a seed selects the group.
    const QDir seeds(QStringLiteral(QUORIN_SETTINGS_SEEDS));
    for (const QString& name : seeds.entryList(QDir::Files)) {
        compare({name.toStdString(), contentOf(seeds.filePath(name)).mid(1)});
    }
    compare({"the sample of the packages", contentOf(QStringLiteral(QUORIN_SAMPLE_SETTINGS))});
    RecordProperty("failures", failures_);
    RecordProperty("successes", successes_);
    EXPECT_GT(failures_, 5);
    EXPECT_GT(successes_, 5);
}

} // namespace
} // namespace quorin::test
