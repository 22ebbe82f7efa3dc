#include "check/value_check.h"

#include "check/finding_codes.h"
#include "check/settings_record.h"
#include "platform/descriptors.h"
#include "support/descriptor_limit.h"
#include "support/print.h"
#include "support/settings.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <ostream>

using namespace Qt::StringLiterals;

namespace quorin::check {
namespace {

// Returns the findings about a settings file: code, subject, value and reason.
QStringList findingsOf(const QByteArray& content) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"settings.xml"_s));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    Findings findings;
    checkValues(SettingsRecord(file.fileName(), true), findings);
    QStringList texts;
    for (const Finding& finding : findings) {
        EXPECT_EQ(finding.severity, Severity::Warning);
        EXPECT_FALSE(finding.failsStart);
        EXPECT_FALSE(finding.action.isEmpty());
        texts.append(finding.code + u' ' + finding.subject.section(u'/', -1) + u' ' +
                     finding.value + u": " + finding.reason);
    }
    return texts;
}

test::Settings goodSettings() {
    test::Settings settings;
    settings.Port = "8080";
    settings.ThreadReadBufferSize = "1048576";
    return settings;
}

TEST(ValueCheckTest, FindsNothingInGoodValues) {
    EXPECT_EQ(findingsOf(goodSettings().toXml()), QStringList());
}

TEST(ValueCheckTest, IgnoresValuesThatCannotBeRead) {
    test::Settings settings = goodSettings();
    settings.MaxUserSession = "0x";
    settings.HTTPRequestTimeout = "zero";
    EXPECT_EQ(findingsOf(settings.toXml()), QStringList());
    EXPECT_EQ(findingsOf("not XML"), QStringList());
}

TEST(ValueCheckTest, WarnsOfTooFewDescriptors) {
    if (!platform::descriptorLimit()) {
        GTEST_SKIP() << "this system has no descriptor limit";
    }
    const test::DescriptorLimit limit(256);
    test::Settings settings = goodSettings();
    settings.MaxUserSession = "256";
    const QStringList findings = findingsOf(settings.toXml());
    ASSERT_EQ(findings.size(), 1);
    EXPECT_TRUE(findings.constFirst().startsWith(
        u"descriptors-too-few MaxUserSession 256: a connection needs up to "_s))
        << findings.constFirst().toStdString();
}

struct ValueCase {
    const char* name;
    QByteArray test::Settings::*element;
    const char* value;
    const char* finding; // empty if there is none
};

std::ostream& operator<<(std::ostream& out, const ValueCase& value) {
    return out << value.name;
}

class ValueCaseTest : public testing::TestWithParam<ValueCase> {};

TEST_P(ValueCaseTest, IsReportedExactly) {
    test::Settings settings = goodSettings();
    settings.*GetParam().element = GetParam().value;
    const QString expected = QString::fromUtf8(GetParam().finding);
    EXPECT_EQ(findingsOf(settings.toXml()),
              expected.isEmpty() ? QStringList() : QStringList(expected));
}

using test::Settings;

INSTANTIATE_TEST_SUITE_P(
    Values, ValueCaseTest,
    testing::Values(
        ValueCase{"PortZero", &Settings::Port, "0",
                  "setting-questionable Port 0: the system selects any free port, which nothing "
                  "reports"},
        ValueCase{"PortLargest", &Settings::Port, "65535", ""},
        ValueCase{"PortTooLarge", &Settings::Port, "65536",
                  "setting-adjusted Port 65536: the value is taken modulo 65536"},
        ValueCase{"NoSession", &Settings::MaxUserSession, "0",
                  "setting-questionable MaxUserSession 0: no connection is served"},
        ValueCase{"NoConnectionTimeout", &Settings::ConnectionTimeout, "0",
                  "setting-questionable ConnectionTimeout 0: connections are closed at once"},
        ValueCase{"LongConnectionTimeout", &Settings::ConnectionTimeout, "2147484",
                  "setting-adjusted ConnectionTimeout 2147484: the gateway uses 2147483"},
        ValueCase{"LongestConnectionTimeout", &Settings::ConnectionTimeout, "2147483", ""},
        ValueCase{"NoRequestTimeout", &Settings::HTTPRequestTimeout, "0",
                  "setting-questionable HTTPRequestTimeout 0: every transfer of a file ends before "
                  "its content"},
        ValueCase{"RequestTimeoutOne", &Settings::HTTPRequestTimeout, "1", ""},
        ValueCase{"BufferZero", &Settings::ThreadReadBufferSize, "0",
                  "setting-questionable ThreadReadBufferSize 0: a file of any size has 30 seconds "
                  "to be sent"},
        ValueCase{"BufferSmall", &Settings::ThreadReadBufferSize, "524287",
                  "setting-questionable ThreadReadBufferSize 524287: transfers are slow with "
                  "chunks below 524288 bytes"},
        ValueCase{"BufferOf512KiB", &Settings::ThreadReadBufferSize, "524288", ""},
        ValueCase{"QueueZero", &Settings::QueueSize, "0",
                  "setting-adjusted QueueSize 0: the bundled logging library uses 1024"},
        ValueCase{"QueueTooLarge", &Settings::QueueSize, "65537",
                  "setting-adjusted QueueSize 65537: the bundled logging library uses 65536"},
        ValueCase{"UnknownScheme", &Settings::RootUrl, "ftp://cloud.example",
                  "setting-questionable RootUrl ftp://cloud.example: workstations are told no "
                  "scheme for the cloud"},
        ValueCase{"NoScheme", &Settings::RootUrl, "cloud.example",
                  "setting-questionable RootUrl cloud.example: workstations are told no scheme for "
                  "the cloud"}),
    [](const auto& value) { return value.param.name; });

} // namespace
} // namespace quorin::check
