#include "handlers/api_query.h"

#include "handlers/handler_fixture.h"

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class ApiQueryTest : public HandlerTest {
protected:
    QByteArray replyTo(const QString& target) {
        connectTo(QHostAddress(QHostAddress::LocalHost));
        serveApi(context_, target);
        return received();
    }

    static QByteArray json(const QByteArray& text) {
        return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(text.size()) +
               "\r\nContent-Type: application/json\r\n\r\n" + text;
    }
};

TEST_F(ApiQueryTest, RepliesSchemeOfWorker) {
    const QString target = u"/api/WebApiCommScheme"_s;
    EXPECT_EQ(replyTo(target), json("{\"CommunicationScheme\":\"\"}"));
    context_.communicationScheme = CommunicationScheme::Http;
    EXPECT_EQ(replyTo(target), json("{\"CommunicationScheme\":\"http\"}"));
    context_.communicationScheme = CommunicationScheme::Https;
    EXPECT_EQ(replyTo(target), json("{\"CommunicationScheme\":\"https\"}"));
}

TEST_F(ApiQueryTest, CountsBytesOfOrganizationId) {
    GatewaySettings::instance().OrganizationId = u"\u20ac\n%1"_s;
    EXPECT_EQ(replyTo(u"/api/webapiorganizationid"_s),
              json("{\"OrganizationId\":\"\u20ac\\n%1\"}"));
    GatewaySettings::instance().OrganizationId = QString();
    EXPECT_EQ(replyTo(u"/x/API/WEBAPIORGANIZATIONID#x"_s), json("{\"OrganizationId\":\"\"}"));
}

TEST_F(ApiQueryTest, RefusesUnknownNameOnceWithoutLog) {
    for (const QString& target : {u"/api/"_s, u"/api/x"_s, u"/api/WebApiCommSchemes"_s,
                                  u"/api/WebApiCommScheme/"_s, u"/api/?WebApiCommScheme"_s}) {
        EXPECT_EQ(replyTo(target), kPlain500) << target.toStdString();
    }
    EXPECT_EQ(log_.lines(), QStringList());
}

} // namespace
} // namespace quorin::test
