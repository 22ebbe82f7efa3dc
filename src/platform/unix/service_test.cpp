#include "platform/service.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

TEST(ServiceTest, ReportsThatThereAreNoServices) {
    EXPECT_FALSE(servicesAvailable());
    int stops = 0;
    ServiceProcess process([&stops] { return ++stops > 0; });
    const ServiceDefinition definition{u"Gateway"_s, u"Gateway"_s, {}, {}};
    for (const std::optional<ServiceError>& error :
         {checkInstallPermission(), installService(definition), updateService(definition),
          stopService(u"Gateway"_s), uninstallService(u"Gateway"_s),
          process.connect(u"Gateway"_s)}) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->kind, ServiceError::Kind::Other);
        EXPECT_EQ(error->text, u"this system has no such services"_s);
    }
    process.reportRunning();
    process.reportStopped(0);
    EXPECT_EQ(stops, 0);
}

} // namespace
} // namespace quorin::platform
