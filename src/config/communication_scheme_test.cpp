#include "config/communication_scheme.h"

#include "support/print.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

TEST(CommunicationSchemeTest, HasText) {
    EXPECT_EQ(schemeText(CommunicationScheme::None).toString(), QString());
    EXPECT_EQ(schemeText(CommunicationScheme::Http).toString(), u"http"_s);
    EXPECT_EQ(schemeText(CommunicationScheme::Https).toString(), u"https"_s);
    EXPECT_EQ(schemeText(CommunicationScheme{3}).toString(), QString());
}

TEST(CommunicationSchemeTest, IgnoresLetterCaseOfRootUrl) {
    EXPECT_EQ(communicationSchemeOf(u"https://cloud"_s, false), CommunicationScheme::Https);
    EXPECT_EQ(communicationSchemeOf(u"HTTPS://cloud"_s, false), CommunicationScheme::Https);
    EXPECT_EQ(communicationSchemeOf(u"http://cloud"_s, false), CommunicationScheme::Http);
    EXPECT_EQ(communicationSchemeOf(u"Http:"_s, false), CommunicationScheme::Http);
}

TEST(CommunicationSchemeTest, IsHttpIfFacilityAllowsHttp) {
    EXPECT_EQ(communicationSchemeOf(u"https://cloud"_s, true), CommunicationScheme::Http);
    EXPECT_EQ(communicationSchemeOf(u"hTTpS://cloud"_s, true), CommunicationScheme::Http);
    EXPECT_EQ(communicationSchemeOf(u"http://cloud"_s, true), CommunicationScheme::Http);
}

TEST(CommunicationSchemeTest, IsNoneForOtherRootUrls) {
    for (const QString& url :
         {QString(), u"https"_s, u"http"_s, u":"_s, u"://cloud"_s, u"ftp://cloud"_s,
          u" https://cloud"_s, u"https ://cloud"_s, u"httpss://cloud"_s, u"htt://cloud"_s,
          u"cloud/https:"_s, u"HTTP\u017f:"_s, u"http\u017f://cloud"_s, u"HTTP\u212a:"_s,
          u"\uff48ttp:"_s, u"HTTP\0:"_s, u"http\u0130:"_s}) {
        EXPECT_EQ(communicationSchemeOf(url, false), CommunicationScheme::None)
            << url.toStdString();
        EXPECT_EQ(communicationSchemeOf(url, true), CommunicationScheme::None) << url.toStdString();
    }
}

} // namespace
} // namespace quorin
