#include "handlers/routing.h"

#include "handlers/handler_fixture.h"
#include "http/request.h"

#include <gmock/gmock.h>

#include <string>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

TEST(PathBelowRootTest, EncodesAllButSlashes) {
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

TEST(PathBelowRootTest, KeepsRootUnchanged) {
    EXPECT_EQ(pathBelowRoot(u"C:/Program Data/%1"_s, u"/a"_s), u"C:/Program Data/%1/a"_s);
}

// What route() records of a request, and which handler it calls.
class RoutingTest : public HandlerTest {
protected:
    void request(http::Method method, std::string target, http::HeaderMap headers = {}) {
        http::Request parsed;
        parsed.line.method = method;
        parsed.line.target = std::move(target);
        parsed.headers = std::move(headers);
        route(context_, parsed);
    }

    // Expects `target` to be refused with 404 and the usual message.
    void expectNotFound(const std::string& target) {
        connectTo(QHostAddress(QHostAddress::LocalHost));
        const QString path = pathBelowRoot(context_.documentRoot, QString::fromStdString(target));
        EXPECT_TRUE(failureOf([&] { request(http::Method::Get, target); }) ==
                    u"[End] " + path + u" does not exist or directory");
        EXPECT_EQ(received(), "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n");
    }

    // The reply to a GET of `target`, which must not throw.
    QByteArray replyTo(const std::string& target) {
        connectTo(QHostAddress(QHostAddress::LocalHost));
        EXPECT_EQ(failureOf([&] { request(http::Method::Get, target); }), kNoFailure);
        return received();
    }

    static const QString kNoFailure;
};

const QString RoutingTest::kNoFailure = u"(no failure)"_s;

constexpr const char* kSchemeQuery = "/api/WebApiCommScheme";

// Returns a target of `size` characters that ends in `ending`.
std::string targetOfSize(std::size_t size, std::string_view ending) {
    std::string target = "/";
    target.append(size - ending.size() - 1, 'a');
    target.append(ending);
    return target;
}

// Returns a target whose path is too long, as each byte of its folder is nine characters there.
std::string shortTargetOfOverlongPath(std::string_view ending) {
    std::string target = "//";
    target.append(3'650, '\xff');
    target.append(ending);
    return target;
}

// Returns a target that is too long by itself and ends in `ending`.
std::string overlongTarget(std::string_view ending) {
    return targetOfSize(32'771 + ending.size(), ending);
}

TEST_F(RoutingTest, RecordsMethodAndTargetOfRefusedRequest) {
    EXPECT_EQ(failureOf([this] { request(http::Method::Put, "/fwfiles/a%20b?c"); }),
              u"[End] unsupported http method was requested: PUT"_s);
    EXPECT_EQ(context_.methodText, u"PUT"_s);
    EXPECT_EQ(context_.requestUrl.toString(QUrl::FullyEncoded), u"/fwfiles/a%20b?c"_s);
    EXPECT_FALSE(context_.responseStarted);
    EXPECT_EQ(received(), "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n");
}

TEST_F(RoutingTest, SendsFileForGet) {
    data_.write(u"root/fwfiles/a"_s, "content");
    request(http::Method::Get, "/fwfiles/a");
    EXPECT_TRUE(context_.responseStarted);
    EXPECT_EQ(received(), "HTTP/1.1 200\r\nContent-Length: 7\r\n"
                          "Content-Type: inode/directory\r\n\r\ncontent");
    EXPECT_EQ(log_.lines(), (QStringList{u"2 Target file : a"_s, u"2 GET fwfiles/a - -  200 0"_s}));
}

TEST_F(RoutingTest, SendsNotificationForGet) {
    data_.write(u"root/notifications/n.json"_s, "{}");
    EXPECT_EQ(replyTo("/notifications/n.json"),
              "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Type: application/json\r\n\r\n{}");
}

TEST_F(RoutingTest, PassesDeleteToItsHandler) {
    data_.write(u"root/fwfiles/a"_s, "content");
    EXPECT_EQ(failureOf([this] { request(http::Method::Delete, "/fwfiles/a"); }),
              u"[End] invalid delete request."_s);
    EXPECT_EQ(received(), kPlain500);
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(RoutingTest, RefusesInvalidUtf8) {
    EXPECT_EQ(failureOf([this] { request(http::Method::Get, "/fwfiles/\xff"); }),
              u"[End] " + context_.documentRoot +
                  u"/fwfiles/%EF%BF%BD does not exist or directory");
    EXPECT_EQ(received(), "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n");
}

TEST_F(RoutingTest, SuppressesLogOfMissingUpgradeSetting) {
    try {
        request(http::Method::Get, "/any/QuorinUpgradeSetting.json");
        FAIL() << "no failure";
    } catch (const GatewayException& exception) {
        EXPECT_TRUE(exception.isSilent());
        EXPECT_EQ(exception.kind(), GatewayException::Request);
        EXPECT_EQ(exception.message(), u"[End] " + context_.documentRoot +
                                           u"/any/QuorinUpgradeSetting.json does not exist or "
                                           u"directory");
    }
    EXPECT_FALSE(failureOf([this] {
                     request(http::Method::Get, "/any/quorinupgradesetting.json");
                 }).isEmpty());
}

TEST_F(RoutingTest, RefusesOverlongApiTarget) {
    expectNotFound(overlongTarget(kSchemeQuery));
    expectNotFound(targetOfSize(32'001, kSchemeQuery));
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(RoutingTest, ServesApiTargetOfGreatestLength) {
    EXPECT_THAT(replyTo(targetOfSize(32'000, kSchemeQuery)).toStdString(),
                testing::EndsWith("\r\n\r\n{\"CommunicationScheme\":\"\"}"));
}

TEST_F(RoutingTest, RefusesOverlongPath) {
    expectNotFound(shortTargetOfOverlongPath("/a"));
    expectNotFound(shortTargetOfOverlongPath("/notifications/a"));
    expectNotFound(overlongTarget("/x"));
    for (const std::size_t over : {0U, 1U}) {
        const auto root = static_cast<std::size_t>(context_.documentRoot.size());
        expectNotFound(targetOfSize(32'000 - root + over, "/a"));
    }
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(RoutingTest, RefusesOverlongManifestPath) {
    expectNotFound(shortTargetOfOverlongPath("/update.json"));
    expectNotFound(overlongTarget("/update.json"));
    EXPECT_EQ(log_.lines(), QStringList());
    // Only the path of the variant is too long.
    const auto root = static_cast<std::size_t>(context_.documentRoot.size());
    expectNotFound(targetOfSize(32'000 - root, "/update.json"));
    EXPECT_EQ(log_.lines(), (QStringList{u"2 Received requesting update.json from "_s,
                                         u"2 Response update.json : update.json"_s}));
}

TEST_F(RoutingTest, SuppressesLogOfOverlongUpgradeSetting) {
    try {
        request(http::Method::Get, overlongTarget("/QuorinUpgradeSetting.json"));
        FAIL() << "no exception";
    } catch (const GatewayException& exception) {
        EXPECT_TRUE(exception.isSilent());
    }
}

TEST_F(RoutingTest, Sends400BeforeLengthIsChecked) {
    const std::string target = overlongTarget("/../x");
    EXPECT_TRUE(failureOf([&] { request(http::Method::Get, target); }) ==
                u"[End] " + QString::fromStdString(target) + u" is invalid url");
    EXPECT_EQ(received(), "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n");
}

TEST_F(RoutingTest, TreatsNulInApiTargetAsUnknownQuery) {
    using namespace std::string_literals;
    testing::internal::CaptureStderr();
    for (const std::string& target : {"/api/WebApi\0x"s, "/api/\0"s, "/api/\0WebApiCommScheme"s,
                                      "/api/WebApiCommScheme\0"s, "/API/a\0"s, "/a\0b/api/x"s}) {
        EXPECT_EQ(replyTo(target), kPlain500) << QByteArray::fromStdString(target).toHex().data();
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(RoutingTest, RefusesNulOutsideApiFolder) {
    using namespace std::string_literals;
    testing::internal::CaptureStderr();
    for (const std::string& target : {"/fwfiles/a\0"s, "/api\0/x"s, "/\0api/x"s, "/api/\0/x"s}) {
        expectNotFound(target);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace quorin::test
