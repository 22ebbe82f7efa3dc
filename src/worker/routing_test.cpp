#include "worker/routing.h"

#include "http/request.h"
#include "worker/handler_fixture.h"

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

TEST(PathBelowRootTest, isTheRootAndTheTargetEncodedButForItsSlashes) {
    struct Case {
        QString target;
        QString path;
    };
    const Case cases[] = {
        {u"/fwfiles/a.zip"_s, u"/www/fwfiles/a.zip"_s},
        {u""_s, u"/www"_s},
        {u"/"_s, u"/www/"_s},
        {u"file"_s, u"/wwwfile"_s},
        {u"//a//b/"_s, u"/www//a//b/"_s},
        {u"/a b"_s, u"/www/a%20b"_s},
        {u"/a%20b"_s, u"/www/a%2520b"_s},
        {u"/%"_s, u"/www/%25"_s},
        {u"/%1%2"_s, u"/www/%251%252"_s},
        {u"/-._~aZ09"_s, u"/www/-._~aZ09"_s},
        {u"/!\"#$&'()*+,:;<=>?@[\\]^`{|}"_s,
         u"/www/%21%22%23%24%26%27%28%29%2A%2B%2C%3A%3B%3C%3D%3E%3F%40%5B%5C%5D%5E%60%7B%7C%7D"_s},
        {u"/\u00fc\u20ac\U0001f600"_s, u"/www/%C3%BC%E2%82%AC%F0%9F%98%80"_s},
        {u"/\t\x7f"_s, u"/www/%09%7F"_s},
        {u"/a\0b"_s, u"/www/a%00b"_s},
        {u"/../x"_s, u"/www/../x"_s},
        {u"/..\\x"_s, u"/www/..%5Cx"_s},
    };
    for (const Case& testCase : cases) {
        EXPECT_EQ(pathBelowRoot(u"/www"_s, testCase.target), testCase.path)
            << testCase.target.toStdString();
    }
}

TEST(PathBelowRootTest, theRootIsTakenAsItIs) {
    EXPECT_EQ(pathBelowRoot(u"C:/Program Data/%1"_s, u"/a"_s), u"C:/Program Data/%1/a"_s);
}

// Routing itself: what is noted of the request, and who serves it.
class RoutingTest : public HandlerTest {
protected:
    void ask(http::Method method, std::string target, http::HeaderMap headers = {}) {
        http::Request request;
        request.line.method = method;
        request.line.target = std::move(target);
        request.headers = std::move(headers);
        route(context_, request);
    }
};

TEST_F(RoutingTest, methodAndTargetAreNotedBeforeAnythingIsRefused) {
    EXPECT_EQ(failureOf([this] { ask(http::Method::Put, "/fwfiles/a%20b?c"); }),
              u"[End] unsupported http method was requested: PUT"_s);
    EXPECT_EQ(context_.methodText, u"PUT"_s);
    EXPECT_EQ(context_.requestUrl.toString(QUrl::FullyEncoded), u"/fwfiles/a%20b?c"_s);
    EXPECT_FALSE(context_.responseStarted);
    EXPECT_EQ(received(), "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n");
}

TEST_F(RoutingTest, aGetOfAFileIsSentAndADeleteOfItRefused) {
    data_.write(u"root/fwfiles/a"_s, "content");
    ask(http::Method::Get, "/fwfiles/a");
    EXPECT_TRUE(context_.responseStarted);
    EXPECT_EQ(received(), "HTTP/1.1 200\r\nContent-Length: 7\r\n"
                          "Content-Type: inode/directory\r\n\r\ncontent");
    EXPECT_EQ(log_.lines(), (QStringList{u"2 Target file : a"_s, u"2 GET fwfiles/a - -  200 0"_s}));
}

TEST_F(RoutingTest, aDeleteReachesItsHandlerWithoutTheLineOfADownload) {
    data_.write(u"root/fwfiles/a"_s, "content");
    EXPECT_EQ(failureOf([this] { ask(http::Method::Delete, "/fwfiles/a"); }),
              u"[End] invalid delete request."_s);
    EXPECT_EQ(received(), kPlain500);
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(RoutingTest, bytesThatAreNoUtf8NameNothing) {
    EXPECT_EQ(failureOf([this] { ask(http::Method::Get, "/fwfiles/\xff"); }),
              u"[End] " + context_.documentRoot +
                  u"/fwfiles/%EF%BF%BD does not exist or directory");
    EXPECT_EQ(received(), "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n");
}

TEST_F(RoutingTest, theMissingUpgradeSettingFailsInSilence) {
    try {
        ask(http::Method::Get, "/any/QuorinUpgradeSetting.json");
        FAIL() << "no failure";
    } catch (const GatewayException& exception) {
        EXPECT_TRUE(exception.isSilent());
        EXPECT_EQ(exception.kind(), GatewayException::Request);
        EXPECT_EQ(exception.message(), u"[End] " + context_.documentRoot +
                                           u"/any/QuorinUpgradeSetting.json does not exist or "
                                           u"directory");
    }
    EXPECT_FALSE(
        failureOf([this] { ask(http::Method::Get, "/any/quorinupgradesetting.json"); }).isEmpty());
}

} // namespace
} // namespace quorin::test
