#include "start_notice.h"

#include "check/finding_codes.h"
#include "check/running_gateway.h"
#include "support/print.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

TEST(StartNoticeTest, HasThreeLinesIfServing) {
    check::GatewayStatus status;
    status.port = 8443;
    status.isHttps = true;
    const QString root = QDir::toNativeSeparators(u"/data/wwwroot"_s);
    const QString log = QDir::toNativeSeparators(u"/data/log"_s);
    EXPECT_EQ(servingText(status, root, log),
              u"quorin-gateway: serves HTTPS on port 8443 of all IPv4 addresses, from " + root +
                  u"\nquorin-gateway: log files are in " + log +
                  u"\nquorin-gateway: stop it with Ctrl-C or 'quorin-gateway stop'\n");
    status.port = 0;
    status.isHttps = false;
    EXPECT_TRUE(servingText(status, root, log)
                    .startsWith(u"quorin-gateway: serves HTTP on a free port of all"_s));
}

TEST(StartNoticeTest, GivesReasonsOfFailedStart) {
    check::Finding fatal;
    fatal.code = check::code::kSettingInvalid;
    fatal.subject = u"Port"_s;
    fatal.reason = u"[End] Port is not number"_s;
    fatal.failsStart = true;
    check::Finding running;
    running.severity = check::Severity::Warning;
    running.code = check::code::kGatewayRunning;
    running.subject = u"process 1"_s;
    running.reason = u"a gateway runs"_s;
    check::Finding other = running;
    other.code = check::code::kFolderMissing;
    EXPECT_EQ(failedStartText({fatal, other, running}, u"/log"_s),
              u"quorin-gateway: the start failed: Port: [End] Port is not number\n"
              u"quorin-gateway: the start failed: process 1: a gateway runs\n"_s);
}

TEST(StartNoticeTest, NamesLogIfReasonIsUnknown) {
    const QString log = QDir::toNativeSeparators(u"/data/log"_s);
    EXPECT_EQ(failedStartText({}, log),
              u"quorin-gateway: the start failed; the reason is in the log in " + log + u'\n');
}

} // namespace
} // namespace quorin
