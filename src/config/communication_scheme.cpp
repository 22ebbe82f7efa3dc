#include "config/communication_scheme.h"

namespace quorin {

namespace {

constexpr QStringView kHttp = u"http";
constexpr QStringView kHttps = u"https";

// Qt's case-insensitive comparison also folds letters outside ASCII, such as U+017F to "s".
QString asciiLower(QStringView text) {
    QString lower = text.toString();
    for (QChar& letter : lower) {
        if (letter >= u'A' && letter <= u'Z') {
            letter = QChar(letter.unicode() + (u'a' - u'A'));
        }
    }
    return lower;
}

} // namespace

QStringView schemeText(CommunicationScheme scheme) {
    switch (scheme) {
    case CommunicationScheme::Http:
        return kHttp;
    case CommunicationScheme::Https:
        return kHttps;
    case CommunicationScheme::None:
        break;
    }
    return {};
}

CommunicationScheme communicationSchemeOf(const QString& rootUrl, bool isHttpEnabledInFacility) {
    const qsizetype colon = rootUrl.indexOf(u':');
    const QString scheme = asciiLower(QStringView(rootUrl).left(colon < 0 ? 0 : colon));
    if (scheme == kHttp) {
        return CommunicationScheme::Http;
    }
    if (scheme == kHttps) {
        return isHttpEnabledInFacility ? CommunicationScheme::Http : CommunicationScheme::Https;
    }
    return CommunicationScheme::None;
}

} // namespace quorin
