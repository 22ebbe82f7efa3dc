#include "check/settings_check.h"

#include "check/finding_codes.h"
#include "check/settings_record.h"
#include "config/gateway_exception.h"
#include "config/settings_file.h"
#include "support/print.h"
#include "support/settings_samples.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace quorin::check {
namespace {

class SettingsCheckTest : public testing::Test {
protected:
    SettingsCheckTest() { qputenv("QUORIN_COMMON_APPDATA", folder_.path().toUtf8()); }
    ~SettingsCheckTest() override { qunsetenv("QUORIN_COMMON_APPDATA"); }

    Findings check(const QByteArray& content, bool primary = true) const {
        QFile file(path_);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        Findings findings;
        checkSettings(SettingsRecord(path_, primary), findings);
        return findings;
    }

    Findings checkAfter(const char* from, const char* to, bool primary = true) const {
        QByteArray content(test::kSettingsSample);
        EXPECT_TRUE(content.contains(from)) << from;
        return check(content.replace(content.indexOf(from), qsizetype(qstrlen(from)), to), primary);
    }

    // Returns whether the start would fail to read the file that was checked last.
    bool failsToLoad(bool primary) const {
        try {
            loadSettings(path_, primary);
            return false;
        } catch (const GatewayException&) {
            return true;
        }
    }

    QTemporaryDir folder_;
    QString path_ = folder_.filePath(u"settings.xml"_s);
};

TEST_F(SettingsCheckTest, FindsNothingInCompleteFile) {
    EXPECT_TRUE(check(test::kSettingsSample).empty());
    EXPECT_TRUE(check(test::kSettingsSample, false).empty());
}

TEST_F(SettingsCheckTest, GivesElementValueReasonAndAction) {
    const Findings findings = checkAfter("<Port>8080", "<Port>8O80");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::Error);
    EXPECT_EQ(findings[0].code, code::kSettingInvalid);
    EXPECT_EQ(findings[0].subject, u"PrimaryGatewaySetting/Http/Port"_s);
    EXPECT_EQ(findings[0].value, u"8O80"_s);
    EXPECT_EQ(findings[0].reason, u"[End] Port is not number"_s);
    EXPECT_EQ(findings[0].action, u"Set an integer from 0 to 2147483647."_s);
    EXPECT_TRUE(findings[0].failsStart);
}

TEST_F(SettingsCheckTest, NamesMissingElement) {
    const Findings findings =
        checkAfter("<RootUrl>https://cloud.example/QuorinCloud5</RootUrl>", "");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].code, code::kSettingMissing);
    EXPECT_EQ(findings[0].subject, u"General/QuorinCloud/RootUrl"_s);
    EXPECT_EQ(findings[0].action, u"Add the element."_s);
}

TEST_F(SettingsCheckTest, ExplainsFileThatCannotBeOpened) {
    Findings findings;
    const QString missing = folder_.filePath(u"missing.xml"_s);
    checkSettings(SettingsRecord(missing, true), findings);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].code, code::kSettingsUnreadable);
    EXPECT_EQ(findings[0].subject, missing);
    EXPECT_TRUE(findings[0].reason.startsWith(u"[End] failed to open config file ("_s))
        << findings[0].reason.toStdString();
    EXPECT_TRUE(findings[0].failsStart);
}

TEST_F(SettingsCheckTest, WarnsOfReplacedValue) {
    const Findings findings = checkAfter("<MaxLargeFileRequest>9", "<MaxLargeFileRequest>10");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::Warning);
    EXPECT_EQ(findings[0].code, code::kSettingAdjusted);
    EXPECT_EQ(findings[0].value, u"10"_s);
    EXPECT_EQ(findings[0].reason, u"the value is not valid; the gateway uses 4"_s);
}

TEST_F(SettingsCheckTest, AcceptsMissingOptionalElements) {
    EXPECT_TRUE(checkAfter("<MaxLargeFileRequest>9</MaxLargeFileRequest>", "").empty());
    EXPECT_TRUE(
        checkAfter("<IsMadeClientRequestWaited>false</IsMadeClientRequestWaited>", "").empty());
}

TEST_F(SettingsCheckTest, WarnsOfSecondaryWithoutAddress) {
    const char* const address = "<GatewayConnectSetting><GatewayAddress>gateway-2.example"
                                "</GatewayAddress></GatewayConnectSetting>";
    EXPECT_TRUE(checkAfter(address, "").empty());
    const Findings findings = checkAfter(address, "", false);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::Warning);
    EXPECT_EQ(findings[0].subject, u"General/GatewayConnectSetting[2]/GatewayAddress"_s);
}

TEST_F(SettingsCheckTest, ExplainsMisspelledElement) {
    const Findings findings = checkAfter("<Port>8080</Port>", "<Prt>8080</Prt>");
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0].code, code::kSettingMissing);
    EXPECT_EQ(findings[1].code, code::kElementIgnored);
    EXPECT_EQ(findings[1].reason, u"the gateway has no such element (line 12)"_s);
    EXPECT_EQ(findings[1].action,
              u"If PrimaryGatewaySetting/Http/Port is meant, correct the name."_s);
}

TEST_F(SettingsCheckTest, ExplainsMisplacedElement) {
    const Findings findings = checkAfter("<Port>8080</Port>", "<Port>8080</Port><Proxy/>");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::Warning);
    EXPECT_EQ(findings[0].code, code::kElementIgnored);
    EXPECT_EQ(findings[0].subject, u"PrimaryGatewaySetting/Http/Proxy"_s);
    EXPECT_EQ(findings[0].reason, u"the gateway does not read this element here (line 12)"_s);
    EXPECT_EQ(findings[0].action, u"If PrimaryGatewaySetting/Proxy is meant, move the element."_s);
}

TEST_F(SettingsCheckTest, ExplainsRepeatedElement) {
    const Findings findings = checkAfter("<Port>8080</Port>", "<Port>8080</Port><Port>8081</Port>");
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].code, code::kElementIgnored);
    EXPECT_EQ(findings[0].reason,
              u"the gateway reads only the first PrimaryGatewaySetting/Http/Port (line 12)"_s);
    EXPECT_EQ(findings[0].action, u"Remove one of the elements."_s);
}

TEST_F(SettingsCheckTest, HasErrorIfAndOnlyIfStartFails) {
    int failures = 0;
    int successes = 0;
    for (const test::SettingsSample& sample : test::settingsSamples()) {
        for (const bool primary : {true, false}) {
            const Findings findings = check(sample.content, primary);
            const bool hasError =
                std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
                    EXPECT_EQ(finding.severity == Severity::Error, finding.failsStart);
                    return finding.severity == Severity::Error;
                });
            const bool fails = failsToLoad(primary);
            EXPECT_EQ(hasError, fails) << sample.name << (primary ? " primary" : " secondary");
            ++(fails ? failures : successes);
        }
    }
    EXPECT_GT(failures, 50);
    EXPECT_GT(successes, 50);
}

} // namespace
} // namespace quorin::check
