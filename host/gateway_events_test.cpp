#include "gateway_events.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

using platform::EventKind;

const QDateTime kNow(QDate(2024, 2, 29), QTime(12, 0), Qt::UTC);

TEST(CertificateEventTest, ReportsMissingCertificate) {
    const auto event = certificateEvent(u"gateway.example"_s, QDateTime(), kNow);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, EventKind::CertificateMissing);
    EXPECT_EQ(event->text.toStdString(),
              "HTTPS is enabled, but there is no valid certificate for gateway.example with an "
              "exportable private key. Clients cannot connect.");
}

TEST(CertificateEventTest, ReportsEndWithin30Days) {
    const QDateTime end = kNow.addDays(30).addSecs(-1);
    const auto event = certificateEvent(u"gateway.example"_s, end, kNow);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, EventKind::CertificateExpires);
    EXPECT_EQ(event->text.toStdString(),
              "The certificate for gateway.example expires at 2024-03-30T11:59:59Z. Install a new "
              "one and restart the gateway before then.");
}

TEST(CertificateEventTest, ReportsExpiredCertificate) {
    const auto event = certificateEvent(u"gateway.example"_s, kNow.addSecs(-1), kNow);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, EventKind::CertificateExpires);
    EXPECT_EQ(event->text.toStdString(),
              "The certificate for gateway.example expired at 2024-02-29T11:59:59Z. Install a new "
              "one and restart the gateway.");
}

TEST(CertificateEventTest, AcceptsCertificateFor30Days) {
    EXPECT_FALSE(certificateEvent(u"gateway.example"_s, kNow.addDays(30), kNow));
}

} // namespace
} // namespace quorin
