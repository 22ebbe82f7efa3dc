#include "handlers/large_file_limit.h"

#include "config/gateway_settings.h"
#include "handlers/reply.h"
#include "handlers/request_context.h"
#include "handlers/request_failure.h"
#include "log/log.h"

#include <QHostAddress>
#include <QLatin1String>
#include <QThreadPool>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr std::array<QLatin1String, 2> kLargeExtensions{QLatin1String("zip"), QLatin1String("exe")};

bool isLimitReached() {
    const GatewaySettings& settings = GatewaySettings::instance();
    return settings.IsMadeClientRequestWaited &&
           QThreadPool::globalInstance()->activeThreadCount() > settings.MaxLargeFileRequest;
}

} // namespace

bool isLargeFile(std::string_view target) {
    const std::string_view name = target.substr(target.rfind('\\') + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) {
        return false;
    }
    const std::string_view extension = name.substr(dot + 1);
    const QLatin1String text(extension.data(), static_cast<qsizetype>(extension.size()));
    return std::any_of(
        kLargeExtensions.begin(), kLargeExtensions.end(),
        [text](QLatin1String large) { return text.compare(large, Qt::CaseInsensitive) == 0; });
}

void enforceLargeFileLimit(RequestContext& context, std::string_view target) {
    if (!isLimitReached() || !isLargeFile(target)) {
        return;
    }
    const QString peer = context.socket->peerAddress().toString();
    replyStatus(*context.socket, http::Status::ServiceUnavailable);
    log::debug([&]() -> QString {
        return u"Large file limitation. Requested [" +
               QString::fromUtf8(target.data(), static_cast<qsizetype>(target.size())) +
               u"] from [" + peer + u']';
    });
    failRequest(u"Large file limitation."_s, FailureLog::Suppress);
}

} // namespace quorin
