#include "config/settings_file.h"

#include "config/element_readers.h"
#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "platform/folders.h"
#include "support/deadline.h"
#include "support/print.h"
#include "support/settings_samples.h"
#include "support/system.h"

#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <future>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

class SettingsFileTest : public testing::Test {
protected:
    SettingsFileTest() {
        // loadSettings() creates the log directory below this folder.
        qputenv("QUORIN_COMMON_APPDATA", folder_.path().toUtf8());
    }
    ~SettingsFileTest() override { qunsetenv("QUORIN_COMMON_APPDATA"); }

    // Loads a file with this content. Returns the failure's message, or an empty text on success.
    QString failureOf(const QString& content, bool primary = true) {
        QFile file(path_);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content.toUtf8());
        file.close();
        return failureOfPath(path_, primary);
    }

    static QString failureOfPath(const QString& path, bool primary = true) {
        try {
            loadSettings(path, primary);
        } catch (const GatewayException& exception) {
            EXPECT_EQ(exception.kind(), GatewayException::Fatal);
            EXPECT_FALSE(exception.isSilent());
            return exception.message();
        }
        return {};
    }

    // The sample with the first `from` replaced by `to`.
    static QString changed(const char* from, const char* to) {
        QString content = QString::fromUtf8(test::kSettingsSample);
        const qsizetype place = content.indexOf(QLatin1String(from));
        EXPECT_GE(place, 0) << from;
        return content.replace(place, qsizetype(qstrlen(from)), QString::fromUtf8(to));
    }

    static const GatewaySettings& settings() { return GatewaySettings::instance(); }

    static const QString kNotXml;

    QTemporaryDir folder_;
    QString path_ = folder_.filePath(u"settings \u00fc.xml"_s);
};

const QString SettingsFileTest::kNotXml =
    u"[End] config file format error(failed to parse as xml)"_s;

TEST_F(SettingsFileTest, LoadsPrimaryGroup) {
    ASSERT_EQ(failureOf(QString::fromUtf8(test::kSettingsSample)), QString());
    EXPECT_EQ(settings().QueueSize, 8192);
    EXPECT_EQ(settings().LogLevel, u"info"_s);
    EXPECT_EQ(settings().Generation, 30);
    EXPECT_EQ(settings().Port, 8080);
    EXPECT_EQ(settings().MaxUserSession, 10);
    EXPECT_EQ(settings().MaxTCPConnection, 100);
    EXPECT_EQ(settings().ConnectionTimeout, 20);
    EXPECT_EQ(settings().HTTPRequestTimeout, 600);
    EXPECT_EQ(settings().ThreadReadBufferSize, 65536);
    EXPECT_FALSE(settings().IsMadeClientRequestWaited);
    EXPECT_EQ(settings().MaxLargeFileRequest, 9);
    EXPECT_TRUE(settings().HttpsEnabled);
    EXPECT_FALSE(settings().IsEnabledHttpInFacility);
    EXPECT_EQ(settings().GatewayAddress, u"gateway-1.example"_s);
    EXPECT_EQ(settings().OrganizationId, u"0a1b"_s);
    EXPECT_EQ(settings().RootUrl, u"https://cloud.example/QuorinCloud5"_s);
}

TEST_F(SettingsFileTest, LoadsSecondaryGroup) {
    ASSERT_EQ(failureOf(QString::fromUtf8(test::kSettingsSample), false), QString());
    EXPECT_EQ(settings().QueueSize, 1);
    EXPECT_EQ(settings().LogLevel, u"error"_s);
    EXPECT_EQ(settings().Generation, 2);
    EXPECT_EQ(settings().Port, 8081);
    EXPECT_EQ(settings().MaxUserSession, 20);
    EXPECT_TRUE(settings().IsMadeClientRequestWaited);
    EXPECT_EQ(settings().MaxLargeFileRequest, 4);
    EXPECT_FALSE(settings().HttpsEnabled);
    EXPECT_TRUE(settings().IsEnabledHttpInFacility);
    EXPECT_EQ(settings().GatewayAddress, u"gateway-2.example"_s);
    EXPECT_EQ(settings().OrganizationId, u"0a1b"_s);
}

TEST_F(SettingsFileTest, ReportsFileThatCannotBeOpened) {
    EXPECT_EQ(failureOfPath(folder_.filePath(u"missing.xml"_s)),
              u"[End] failed to open config file"_s);
    EXPECT_EQ(failureOfPath(folder_.path()), u"[End] failed to open config file"_s);
}

TEST_F(SettingsFileTest, ReportsFileThatIsNotXml) {
    EXPECT_EQ(failureOf(QString()), kNotXml);
    EXPECT_EQ(failureOf(u"Port=8080"_s), kNotXml);
    EXPECT_EQ(failureOf(u"<QuorinGatewaySetting><General></QuorinGatewaySetting>"_s), kNotXml);
}

TEST_F(SettingsFileTest, TreatsLoneCarriageReturnAsLineEnd) {
    EXPECT_EQ(failureOf(changed("<Port>8080", "<Port>80\r80")), u"[End] Port is not number"_s);
    EXPECT_EQ(failureOf(changed("<QuorinGatewaySetting>", "<QuorinGatewaySetting\ra=\"1\">")),
              QString());
    ASSERT_EQ(failureOf(changed("<OrganizationId>0a1b", "<OrganizationId>a\rb\r\nc")), QString());
    EXPECT_EQ(settings().OrganizationId, u"a\nb\nc"_s);
}

TEST_F(SettingsFileTest, AcceptsCrLf) {
    const QString content = QString::fromUtf8(test::kSettingsSample).replace(u"\n"_s, u"\r\n"_s);
    ASSERT_EQ(failureOf(content), QString());
    EXPECT_EQ(settings().Port, 8080);
    EXPECT_EQ(settings().LogLevel, u"info"_s);
    EXPECT_EQ(settings().RootUrl, u"https://cloud.example/QuorinCloud5"_s);
}

// To open a named pipe of Linux, or to read one of Windows, blocks until another process writes.
TEST_F(SettingsFileTest, DoesNotReadNamedPipe) {
    QLocalServer server; // a named pipe on Windows
    QString path = folder_.filePath(u"pipe"_s);
    if (test::kOnWindows) {
        ASSERT_TRUE(server.listen(path));
        path = server.fullServerName();
    } else {
        ASSERT_EQ(QProcess::execute(u"mkfifo"_s, {path}), 0);
    }
    std::future<QString> failure =
        std::async(std::launch::async, [&path] { return failureOfPath(path); });
    const bool hasReturned = failure.wait_for(test::kTestTimeout) == std::future_status::ready;
    if (!hasReturned) { // ends the wait
        server.close();
        QFile(path).open(QIODevice::WriteOnly);
    }
    EXPECT_TRUE(hasReturned);
    EXPECT_EQ(failure.get(), kNotXml);
}

TEST_F(SettingsFileTest, ReportsSocketAsNotXml) {
    const QString path = folder_.filePath(u"socket"_s);
    QLocalServer server;
    ASSERT_TRUE(server.listen(path));
    EXPECT_EQ(failureOfPath(server.fullServerName()), kNotXml);
}

TEST_F(SettingsFileTest, CreatesLogDirectoryAfterLogSettings) {
    const QString directory =
        platform::commonApplicationDataFolder() + u'/' + platform::kProductFolder + u"/log"_s;
    QDir().rmdir(directory); // may exist on Windows; fails if it contains logs
    if (QFile::exists(directory)) {
        GTEST_SKIP() << "the log directory of this machine is not empty";
    }
    failureOf(changed("<Generation>30", "<Generation>x"));
    EXPECT_FALSE(QFile::exists(directory));
    failureOf(changed("<Port>8080", "<Port>x"));
    EXPECT_TRUE(QFile::exists(directory));
}

TEST_F(SettingsFileTest, KeepsValuesReadBeforeFailure) {
    EXPECT_EQ(failureOf(changed("<MaxUserSession>10<", "<MaxUserSession>-3<")),
              u"[End] MaxUserSession must be grater equal than 0"_s);
    EXPECT_EQ(settings().Port, 8080);
    EXPECT_EQ(settings().MaxUserSession, -3);
    EXPECT_EQ(settings().ConnectionTimeout, 0);
}

class SettingsFaultTest : public SettingsFileTest,
                          public testing::WithParamInterface<test::SettingsFault> {};

TEST_P(SettingsFaultTest, IsReportedExactly) {
    const test::SettingsFault& fault = GetParam();
    EXPECT_EQ(failureOf(changed(fault.from, fault.to)), QString::fromUtf8(fault.message));
}

INSTANTIATE_TEST_SUITE_P(Values, SettingsFaultTest, testing::ValuesIn(test::kSettingsFaults),
                         [](const auto& fault) { return fault.param.name; });

// Renames a structural element, so that it is missing.
class SettingsStructureTest : public SettingsFileTest,
                              public testing::WithParamInterface<const char*> {};

TEST_P(SettingsStructureTest, IsRequired) {
    const QString name = QString::fromUtf8(GetParam());
    QString content = QString::fromUtf8(test::kSettingsSample);
    content.replace(u'<' + name + u'>', u"<Other>"_s);
    content.replace(u"</" + name + u'>', u"</Other>"_s);
    EXPECT_EQ(failureOf(content), u"[End] " + name + u" tag is not found");
}

INSTANTIATE_TEST_SUITE_P(Elements, SettingsStructureTest, testing::ValuesIn(test::kSettingsGroups),
                         [](const auto& fault) { return fault.param; });

TEST_F(SettingsFileTest, RequiresSelectedGroup) {
    QString content = QString::fromUtf8(test::kSettingsSample);
    content.replace(u"SecondaryGatewaySetting>"_s, u"ThirdGatewaySetting>"_s);
    EXPECT_EQ(failureOf(content, false), u"[End] SecondaryGatewaySetting tag is not found"_s);
    EXPECT_EQ(failureOf(content, true), QString());
}

TEST_F(SettingsFileTest, DoesNotFindProxyBelowHttp) {
    QString content = QString::fromUtf8(test::kSettingsSample);
    const qsizetype begin = content.indexOf(u"<Proxy>"_s);
    const qsizetype end = content.indexOf(u"</Proxy>"_s) + 8;
    const QString proxy = content.mid(begin, end - begin);
    content.remove(begin, end - begin);
    content.insert(content.indexOf(u"</Http>"_s), proxy);
    EXPECT_EQ(failureOf(content), u"[End] Proxy tag is not found"_s);
}

TEST_F(SettingsFileTest, AllowsSecondaryWithoutAddress) {
    ASSERT_EQ(failureOf(changed("<GatewayConnectSetting><GatewayAddress>gateway-2.example"
                                "</GatewayAddress></GatewayConnectSetting>",
                                ""),
                        false),
              QString());
    EXPECT_EQ(settings().GatewayAddress, QString());
}

TEST_F(SettingsFileTest, ReadsTextAfterCommentUnchanged) {
    ASSERT_EQ(failureOf(changed("<OrganizationId>0a1b",
                                "<OrganizationId><!-- facility -->abc &amp; d\u00e9 ")),
              QString());
    EXPECT_EQ(settings().OrganizationId, u"abc & d\u00e9 "_s);
}

TEST_F(SettingsFileTest, ReadsFirstOfRepeatedElements) {
    ASSERT_EQ(failureOf(changed("<Port>8080", "<Port unit=\"none\">81</Port><Port>8080")),
              QString());
    EXPECT_EQ(settings().Port, 81);
}

TEST_F(SettingsFileTest, DefaultsToWaitingRequests) {
    const char* const element = "<IsMadeClientRequestWaited>false</IsMadeClientRequestWaited>";
    for (const char* const replacement :
         {"", "<IsMadeClientRequestWaited/>",
          "<IsMadeClientRequestWaited>yes</IsMadeClientRequestWaited>"}) {
        ASSERT_EQ(failureOf(changed(element, replacement)), QString());
        EXPECT_TRUE(settings().IsMadeClientRequestWaited) << replacement;
    }
    ASSERT_EQ(failureOf(changed(element, element)), QString());
    EXPECT_FALSE(settings().IsMadeClientRequestWaited);
}

class LargeFileLimitTest : public SettingsFileTest,
                           public testing::WithParamInterface<test::LargeFileLimit> {};

TEST_P(LargeFileLimitTest, FallsBackToFour) {
    const test::LargeFileLimit& limit = GetParam();
    QString content = QString::fromUtf8(test::kSettingsSample);
    content.replace(u"<MaxUserSession>10"_s,
                    u"<MaxUserSession>" + QString::fromUtf8(limit.maxUserSession));
    content.replace(u"<MaxLargeFileRequest>9</MaxLargeFileRequest>"_s,
                    QString::fromUtf8(limit.configured));
    ASSERT_EQ(failureOf(content), QString());
    EXPECT_EQ(settings().MaxLargeFileRequest, limit.expected);
}

INSTANTIATE_TEST_SUITE_P(Limits, LargeFileLimitTest, testing::ValuesIn(test::kLargeFileLimits),
                         [](const auto& limit) { return limit.param.name; });

class ElementReadersTest : public testing::Test {
protected:
    const tinyxml2::XMLElement& parse(const char* xml) {
        EXPECT_EQ(document_.Parse(xml), tinyxml2::XML_SUCCESS);
        return *document_.RootElement();
    }

private:
    tinyxml2::XMLDocument document_{true, tinyxml2::PRESERVE_WHITESPACE};
};

TEST_F(ElementReadersTest, StoreNumberBeforeCheckingIt) {
    const tinyxml2::XMLElement& parent = parse("<a><n>-7</n><w>seven</w></a>");
    std::int32_t number = 5;
    EXPECT_THROW(readNonNegativeInt(parent, "n", number), GatewayException);
    EXPECT_EQ(number, -7);
    EXPECT_THROW(readNonNegativeInt(parent, "w", number), GatewayException);
    EXPECT_EQ(number, 0);
}

TEST_F(ElementReadersTest, KeepOldValueOfInvalidBoolean) {
    const tinyxml2::XMLElement& parent = parse("<a><b>maybe</b><t>tRuE</t><f>FALSE</f></a>");
    bool value = true;
    EXPECT_THROW(readBool(parent, "b", value), GatewayException);
    EXPECT_TRUE(value);
    readBool(parent, "f", value);
    EXPECT_FALSE(value);
    readBool(parent, "t", value);
    EXPECT_TRUE(value);
}

TEST_F(ElementReadersTest, IgnoreTextOfSpacesOnly) {
    const tinyxml2::XMLElement& parent = parse("<a><b>  </b><t> x </t></a>");
    QString text;
    EXPECT_THROW(readText(parent, "b", text), GatewayException);
    readText(parent, "t", text);
    EXPECT_EQ(text, u" x "_s);
}

} // namespace
} // namespace quorin
