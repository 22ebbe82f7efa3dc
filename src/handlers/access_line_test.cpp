#include "handlers/access_line.h"

#include "handlers/request_context.h"
#include "support/print.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

QString lineOf(const QString& target, const QString& method = u"GET"_s,
               const QString& status = u"200"_s) {
    RequestContext context;
    context.methodText = method;
    context.requestUrl = QUrl(target);
    context.requestEnd = QDateTime::currentDateTime();
    return accessLine(context, status);
}

TEST(AccessLineTest, ContainsMethodTargetAndStatus) {
    EXPECT_EQ(lineOf(u"/fwfiles/a.zip"_s), u"GET fwfiles/a.zip - -  200 0"_s);
    EXPECT_EQ(lineOf(u"/notifications/n.json"_s, u"DELETE"_s, u"204"_s),
              u"DELETE notifications/n.json - -  204 0"_s);
}

TEST(AccessLineTest, RemovesFirstCharacterOfTarget) {
    EXPECT_EQ(lineOf(u"//host/a"_s), u"GET /host/a - -  200 0"_s);
    EXPECT_EQ(lineOf(u"fwfiles/a"_s), u"GET wfiles/a - -  200 0"_s);
    EXPECT_EQ(lineOf(u"/"_s), u"GET  - -  200 0"_s);
    EXPECT_EQ(lineOf(QString()), u"GET  - -  200 0"_s);
}

TEST(AccessLineTest, KeepsQueryAndDropsScheme) {
    EXPECT_EQ(lineOf(u"/a?b=%1%2#c"_s), u"GET a?b=%251%252#c - -  200 0"_s);
    EXPECT_EQ(lineOf(u"http://host/a"_s), u"GET /host/a - -  200 0"_s);
}

TEST(AccessLineTest, DecodesReadableCharactersOfTarget) {
    EXPECT_EQ(lineOf(u"/a%20b"_s), u"GET a b - -  200 0"_s);
    EXPECT_EQ(lineOf(u"/%C3%BC"_s), u"GET \u00fc - -  200 0"_s);
    EXPECT_EQ(lineOf(u"/a%2Fb%25"_s), u"GET a%2Fb%25 - -  200 0"_s);
}

TEST(AccessLineTest, ContainsRemoteAddressIfKnown) {
    RequestContext context;
    context.methodText = u"GET"_s;
    context.requestUrl = QUrl(u"/a"_s);
    context.remoteAddressText = u"10.0.0.1"_s;
    EXPECT_EQ(accessLine(context, u"200"), u"GET a - - 10.0.0.1 200 0"_s);
}

} // namespace
} // namespace quorin
