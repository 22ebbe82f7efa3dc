#include "handlers/large_file_limit.h"

#include "handlers/handler_fixture.h"
#include "server/server_fixture.h"

#include <QThreadPool>

#include <gtest/gtest.h>

#include <list>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

TEST(LargeFileLimitTest, AppliesToZipAndExeInAnyCase) {
    for (const char* const target : {"/fwfiles/a.zip", "/fwfiles/a.exe", "/fwfiles/a.ZIP", "/a.ExE",
                                     ".zip", "a.b.zip", "/fwfiles\\a.zip", "a.txt\\b.exe"}) {
        EXPECT_TRUE(isLargeFile(target)) << target;
    }
}

TEST(LargeFileLimitTest, IgnoresOtherExtensions) {
    for (const char* const target :
         {"", "/", "zip", "/fwfiles/zip", "a.zip.bak", "a.zipx", "a.zi", "a.", ".", "a.zip ",
          "a.zip?x", "a.zip\\", "a.zip\\b", "a.exe\\b.txt", "/fwfiles/a.json"}) {
        EXPECT_FALSE(isLargeFile(target)) << target;
    }
}

TEST(LargeFileLimitTest, DoesNotSplitAtSlashes) {
    EXPECT_FALSE(isLargeFile("/a.zip/b")); // the extension is "zip/b"
    EXPECT_FALSE(isLargeFile("/a.b/zip"));
}

TEST(LargeFileLimitTest, StaysWithinView) {
    const std::string_view text = "a.zip.bak";
    EXPECT_TRUE(isLargeFile(text.substr(0, 5)));
    EXPECT_FALSE(isLargeFile(std::string_view("a.zip\0", 6)));
}

class EnforceLargeFileLimitTest : public test::HandlerTest {
protected:
    EnforceLargeFileLimitTest() {
        GatewaySettings::instance().IsMadeClientRequestWaited = true;
        GatewaySettings::instance().MaxLargeFileRequest = 2;
        pool_.setMaxThreadCount(4);
    }
    ~EnforceLargeFileLimitTest() override {
        occupants_.clear();
        pool_.waitForDone();
        pool_.setMaxThreadCount(maxThreadCount_);
    }

    // Keeps `count` threads of the pool busy.
    void occupy(int count) {
        while (pool_.activeThreadCount() < count) {
            occupants_.emplace_back(pool_);
        }
    }

    bool isRefused(std::string_view target) {
        try {
            enforceLargeFileLimit(context_, target);
        } catch (const GatewayException& exception) {
            EXPECT_EQ(exception.kind(), GatewayException::Request);
            EXPECT_TRUE(exception.isSilent());
            return true;
        }
        return false;
    }

private:
    QThreadPool& pool_ = *QThreadPool::globalInstance();
    const int maxThreadCount_ = pool_.maxThreadCount();
    std::list<test::Occupant> occupants_;
};

TEST_F(EnforceLargeFileLimitTest, AllowsUpToLimit) {
    occupy(2);
    EXPECT_FALSE(isRefused("/a.zip"));
    EXPECT_EQ(received(), "");
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(EnforceLargeFileLimitTest, RefusesBeyondLimit) {
    occupy(3);
    EXPECT_FALSE(isRefused("/a.txt"));
    EXPECT_TRUE(isRefused("/a.zip"));
    EXPECT_EQ(received(), "HTTP/1.1 503 Service Unavailable\r\n\r\n");
    EXPECT_EQ(log_.lines(),
              QStringList(u"2 Large file limitation. Requested [/a.zip] from [127.0.0.1]"_s));
}

TEST_F(EnforceLargeFileLimitTest, AllowsAllWithoutQueue) {
    GatewaySettings::instance().IsMadeClientRequestWaited = false;
    occupy(3);
    EXPECT_FALSE(isRefused("/a.zip"));
}

} // namespace
} // namespace quorin
