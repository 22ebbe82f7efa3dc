#include "config/settings_reader.h"

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "config/settings_file.h"
#include "support/print.h"
#include "support/settings_samples.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

class Recorder final : public SettingsObserver {
public:
    void onReading(const SettingReading& reading) override { readings.push_back(reading); }
    void onLogSettings(const GatewaySettings& settings) override {
        loggedLevels.push_back(settings.LogLevel);
    }

    QStringList faults() const {
        QStringList texts;
        for (const SettingReading& reading : readings) {
            if (reading.isFatal()) {
                texts.append(reading.path + u" - " + reading.fault);
            }
        }
        return texts;
    }

    const SettingReading& at(const QString& path) const {
        const auto found =
            std::find_if(readings.begin(), readings.end(),
                         [&](const SettingReading& reading) { return reading.path == path; });
        EXPECT_NE(found, readings.end()) << path.toStdString();
        return *found;
    }

    std::vector<SettingReading> readings;
    QStringList loggedLevels;
};

class SettingsReaderTest : public testing::Test {
protected:
    SettingsReaderTest() { qputenv("QUORIN_COMMON_APPDATA", folder_.path().toUtf8()); }
    ~SettingsReaderTest() override { qunsetenv("QUORIN_COMMON_APPDATA"); }

    const QString& write(const QByteArray& content) const {
        QFile file(path_);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path_;
    }

    Recorder read(const QByteArray& content, bool primary = true) {
        Recorder recorder;
        readSettings(write(content), primary, settings_, recorder);
        return recorder;
    }

    static QByteArray changed(QByteArray content, const char* from, const char* to) {
        const qsizetype place = content.indexOf(from);
        EXPECT_GE(place, 0) << from;
        return content.replace(place, qsizetype(qstrlen(from)), to);
    }

    QTemporaryDir folder_;
    QString path_ = folder_.filePath(u"settings.xml"_s);
    GatewaySettings settings_;
};

TEST(GatewaySettingsTest, IsZeroBeforeItIsRead) {
    const GatewaySettings settings;
    for (const std::int32_t number :
         {settings.Port, settings.MaxUserSession, settings.MaxTCPConnection,
          settings.ConnectionTimeout, settings.HTTPRequestTimeout, settings.ThreadReadBufferSize,
          settings.MaxLargeFileRequest, settings.QueueSize, settings.Generation}) {
        EXPECT_EQ(number, 0);
    }
    EXPECT_FALSE(settings.IsMadeClientRequestWaited);
    EXPECT_FALSE(settings.HttpsEnabled);
    EXPECT_FALSE(settings.IsEnabledHttpInFacility);
}

TEST_F(SettingsReaderTest, ReportsAllFaultsInOrder) {
    QByteArray content = test::kSettingsSample;
    content = changed(content, "<LogLevel>info", "<LogLevel>Info");
    content = changed(content, "<Port>8080", "<Port>8O80");
    content = changed(content, "<HttpsEnabled>TRUE</HttpsEnabled>", "");
    content = changed(content, "<OrganizationId>0a1b", "<OrganizationId>");
    const Recorder recorder = read(content);
    EXPECT_EQ(recorder.faults(),
              (QStringList{
                  u"PrimaryGatewaySetting/Http/Log/ApplicationLog/LogLevel - [End] "
                  u"application log level format error (should be setted 'info','warn' or "
                  u"'error')"_s,
                  u"PrimaryGatewaySetting/Http/Port - [End] Port is not number"_s,
                  u"PrimaryGatewaySetting/Http/HttpsEnabled - [End] HttpsEnabled is not found"_s,
                  u"General/OrganizationId - [End] OrganizationId is not defined"_s,
              }));
    EXPECT_EQ(settings_.MaxUserSession, 10) << "values after a fault are read";
    EXPECT_EQ(settings_.RootUrl, u"https://cloud.example/QuorinCloud5"_s);
    EXPECT_EQ(recorder.at(u"PrimaryGatewaySetting/Http/Port"_s).text, u"8O80"_s);
    EXPECT_EQ(recorder.at(u"PrimaryGatewaySetting/Http/HttpsEnabled"_s).text, std::nullopt);
}

TEST_F(SettingsReaderTest, ContinuesAfterMissingGroup) {
    QByteArray content = test::kSettingsSample;
    content.replace("<PrimaryGatewaySetting>", "<Other>");
    content.replace("</PrimaryGatewaySetting>", "</Other>");
    content = changed(content, "<RootUrl>https://cloud.example/QuorinCloud5</RootUrl>", "");
    EXPECT_EQ(read(content).faults(),
              (QStringList{
                  u"PrimaryGatewaySetting - [End] PrimaryGatewaySetting tag is not found"_s,
                  u"General/QuorinCloud/RootUrl - [End] RootUrl tag is not found"_s,
              }));
}

TEST_F(SettingsReaderTest, NumbersSecondAddress) {
    EXPECT_EQ(read(test::kSettingsSample, false)
                  .at(u"General/GatewayConnectSetting[2]/GatewayAddress"_s)
                  .text,
              u"gateway-2.example"_s);
}

TEST_F(SettingsReaderTest, ReportsReplacedValues) {
    QByteArray content = test::kSettingsSample;
    content = changed(content, "<IsMadeClientRequestWaited>false", "<IsMadeClientRequestWaited>no");
    content = changed(content, "<MaxLargeFileRequest>9", "<MaxLargeFileRequest>10");
    const Recorder recorder = read(content);
    EXPECT_EQ(recorder.faults(), QStringList());
    EXPECT_EQ(recorder.at(u"PrimaryGatewaySetting/Http/IsMadeClientRequestWaited"_s).replacement,
              u"true"_s);
    EXPECT_EQ(recorder.at(u"PrimaryGatewaySetting/Http/MaxLargeFileRequest"_s).replacement, u"4"_s);
    EXPECT_EQ(recorder.at(u"PrimaryGatewaySetting/Http/Port"_s).replacement, std::nullopt);
}

TEST_F(SettingsReaderTest, ExplainsUnreadableFile) {
    Recorder missing;
    readSettings(folder_.filePath(u"missing"_s), true, settings_, missing);
    ASSERT_EQ(missing.readings.size(), 1u);
    EXPECT_EQ(missing.readings[0].fault, u"[End] failed to open config file"_s);
    EXPECT_FALSE(missing.readings[0].faultDetail.isEmpty()) << "the system's text";
    const Recorder malformed = read("<a>\n<b></a>");
    ASSERT_EQ(malformed.readings.size(), 1u);
    EXPECT_EQ(malformed.readings[0].faultDetail, u"XML_ERROR_MISMATCHED_ELEMENT in line 2"_s);
}

TEST_F(SettingsReaderTest, ReportsLogSettingsBeforePort) {
    EXPECT_EQ(read(test::kSettingsSample).loggedLevels, QStringList(u"info"_s));
    EXPECT_EQ(read("<QuorinGatewaySetting/>").loggedLevels, QStringList());
}

// The first fatal fault is the one with which the start fails.
TEST_F(SettingsReaderTest, AgreesWithStart) {
    int failures = 0;
    for (const test::SettingsSample& sample : test::settingsSamples()) {
        for (const bool primary : {true, false}) {
            const Recorder recorder = read(sample.content, primary);
            QString message;
            try {
                loadSettings(path_, primary);
            } catch (const GatewayException& exception) {
                message = exception.message();
                ++failures;
            }
            const auto first =
                std::find_if(recorder.readings.begin(), recorder.readings.end(),
                             [](const SettingReading& reading) { return reading.isFatal(); });
            EXPECT_EQ(first == recorder.readings.end() ? QString() : first->fault, message)
                << sample.name << (primary ? " primary" : " secondary");
        }
    }
    EXPECT_GT(failures, 50);
}

} // namespace
} // namespace quorin
