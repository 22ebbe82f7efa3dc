// The example host program of the documentation.

#include "support/client.h"
#include "support/gateway.h"
#include "support/messages.h"
#include "support/site.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class EmbeddingTest : public testing::Test {
protected:
    EmbeddingTest() { site_.writeSettings(); }

    const QString host_ = QStringLiteral(QUORIN_EXAMPLE_HOST);
    Site site_;
    Gateway gateway_{site_};
};

TEST_F(EmbeddingTest, ServesUntilStopped) {
    site_.writeFile(u"fwfiles/a"_s, "content");
    gateway_.startProcess(host_, {site_.settingsPath(), u"primary"_s});
    EXPECT_EQ(exchange(site_.port(), get("/fwfiles/a")), streamedReply("content"));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.logged().last().toStdString(), testing::EndsWith("[Status] Success"));
}

TEST_F(EmbeddingTest, ExitsWithFailureIfStartFails) {
    gateway_.startProcess(host_, {site_.settingsPath(), u"third"_s});
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_THAT(site_.logged(),
                testing::Contains(u"5 [End] the second argument (third) is not parsable."_s));
}

} // namespace
} // namespace quorin::test
