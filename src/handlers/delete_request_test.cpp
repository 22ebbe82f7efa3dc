#include "handlers/delete_request.h"

#include "handlers/handler_fixture.h"
#include "http/header_map.h"

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class DeleteRequestTest : public HandlerTest {
protected:
    DeleteRequestTest() {
        context_.methodText = u"DELETE"_s;
        context_.requestUrl = QUrl(u"/notifications/n.json"_s);
    }

    static http::HeaderMap header(std::string_view name, std::string_view value) {
        http::HeaderMap headers;
        headers.set(name, value);
        return headers;
    }
};

constexpr std::string_view kHeader = "X-Quorin-Notification-Reset-Date";

TEST_F(DeleteRequestTest, Sends204AndLogsAtInfo) {
    const QString path = data_.write(u"root/notifications/n.json"_s, "{\"a\":1}");
    deleteRequest(context_, QFileInfo(path), header(kHeader, "2024-01-01T00:00:00"));
    EXPECT_TRUE(context_.responseStarted);
    EXPECT_FALSE(context_.requestEnd.isNull());
    EXPECT_EQ(received(), "HTTP/1.1 204 No Content\r\n\r\n");
    EXPECT_EQ(data_.read(u"root/notifications/n.json"_s), "{}");
    EXPECT_EQ(log_.lines(), (QStringList{u"3 Reset " + path + u" [date - 2024-01-01T00:00:00].",
                                         u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_F(DeleteRequestTest, RequiresHeaderInExactSpelling) {
    const QString path = data_.write(u"root/n.json"_s, "{\"a\":1}");
    for (const std::string_view name :
         {"x-quorin-notification-reset-date", "X-QUORIN-NOTIFICATION-RESET-DATE",
          "X-Quorin-Notification-Reset-Date:", "X-Quorin-Notification-Reset", ""}) {
        connectTo(QHostAddress(QHostAddress::LocalHost));
        EXPECT_EQ(failureOf([&] {
                      deleteRequest(context_, QFileInfo(path), header(name, "2024-01-01"));
                  }),
                  u"[End] invalid delete request."_s);
        EXPECT_FALSE(context_.responseStarted);
        EXPECT_EQ(received(), kPlain500);
    }
    EXPECT_EQ(data_.read(u"root/n.json"_s), "{\"a\":1}");
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(DeleteRequestTest, NamesFileOfFailedReset) {
    const QString path = data_.write(u"root/%1 n.json"_s, "no json");
    EXPECT_EQ(failureOf([&] { deleteRequest(context_, QFileInfo(path), header(kHeader, "")); }),
              u"[End] failed to initialize file (%1 n.json)."_s);
    EXPECT_FALSE(context_.responseStarted);
    EXPECT_EQ(received(), kPlain500);
    EXPECT_EQ(data_.read(u"root/%1 n.json"_s), "no json");
    EXPECT_EQ(log_.lines(), QStringList(u"3 Reset " + path + u" [date - ]."));
}

} // namespace
} // namespace quorin::test
