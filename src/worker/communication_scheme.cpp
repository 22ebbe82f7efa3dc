#include "worker/communication_scheme.h"

namespace quorin {

namespace {

constexpr QStringView kHttp = u"http";
constexpr QStringView kHttps = u"https";

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
    const QStringView scheme = QStringView(rootUrl).left(colon < 0 ? 0 : colon);
    if (scheme.compare(kHttp, Qt::CaseInsensitive) == 0) {
        return CommunicationScheme::Http;
    }
    if (scheme.compare(kHttps, Qt::CaseInsensitive) == 0) {
        return isHttpEnabledInFacility ? CommunicationScheme::Http : CommunicationScheme::Https;
    }
    return CommunicationScheme::None;
}

} // namespace quorin
