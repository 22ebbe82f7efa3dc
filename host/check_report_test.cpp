#include "check_report.h"

#include "check/finding_codes.h"
#include "support/print.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

check::Finding sampleError() {
    check::Finding finding;
    finding.code = check::code::kSettingInvalid;
    finding.subject = u"PrimaryGatewaySetting/Http/Port"_s;
    finding.value = u"8O80"_s;
    finding.reason = u"[End] Port is not number"_s;
    finding.action = u"Set an integer from 0 to 2147483647."_s;
    finding.failsStart = true;
    return finding;
}

check::Finding sampleWarning() {
    check::Finding finding;
    finding.severity = check::Severity::Warning;
    finding.code = check::code::kFolderMissing;
    finding.subject = u"/srv"_s;
    finding.reason = u"no file."_s;
    return finding;
}

TEST(CheckReportTest, HasOneLinePerFindingAndSummary) {
    EXPECT_EQ(textReport({u"s.xml"_s, u"primary"_s, {sampleError(), sampleWarning()}}),
              u"error setting-invalid: PrimaryGatewaySetting/Http/Port = \"8O80\": [End] Port is "
              u"not number. Set an integer from 0 to 2147483647.\n"
              u"warning folder-missing: /srv: no file.\n"
              u"quorin-gateway: 1 error, 1 warning; the start would fail\n"_s);
}

TEST(CheckReportTest, CountsNoFindings) {
    EXPECT_EQ(textReport({u"s.xml"_s, u"primary"_s, {}}),
              u"quorin-gateway: 0 errors, 0 warnings\n"_s);
}

TEST(CheckReportTest, KeepsValuesInOneLine) {
    check::Finding finding = sampleError();
    finding.value = u"80\n\t\u001b[31m\u00fc"_s + QString(1000, u'x');
    const QString line = describe(finding);
    EXPECT_TRUE(line.startsWith(u"PrimaryGatewaySetting/Http/Port = \"80   [31m\u00fcxxx"_s))
        << line.toStdString();
    EXPECT_TRUE(line.contains(u"xxx...\": [End]"_s));
    EXPECT_LT(line.size(), 600);
}

TEST(CheckReportTest, IsJsonDocument) {
    check::Finding finding = sampleError();
    finding.value = u"8\"\n\u00fc"_s;
    EXPECT_EQ(jsonReport({u"s.xml"_s, u"primary"_s, {finding}}), QByteArray(R"({
  "errors": 1,
  "failsStart": true,
  "findings": [
    {
      "action": "Set an integer from 0 to 2147483647.",
      "code": "setting-invalid",
      "failsStart": true,
      "reason": "[End] Port is not number",
      "severity": "error",
      "subject": "PrimaryGatewaySetting/Http/Port",
      "value": "8\"\n)") + "\u00fc" + R"("
    }
  ],
  "group": "primary",
  "settings": "s.xml",
  "warnings": 0
}
)");
}

} // namespace
} // namespace quorin
