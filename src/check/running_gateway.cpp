#include "check/running_gateway.h"

#include "json/reader.h"
#include "json/value.h"
#include "json/writer.h"
#include "platform/folders.h"
#include "platform/held_file.h"
#include "platform/instance_guard.h"

#include <string>
#include <string_view>

namespace quorin::check {

namespace {

constexpr QStringView kFileName = u"quorin-gateway.status";

constexpr std::string_view kProcessId = "processId";
constexpr std::string_view kSince = "since";
constexpr std::string_view kSettings = "settings";
constexpr std::string_view kGroup = "group";
constexpr std::string_view kPort = "port";
constexpr std::string_view kIsHttps = "https";

QString textOf(const ravenjson::Value& value) {
    const ravenjson::Value::String& text = value.string();
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

QByteArray GatewayStatus::toJson() const {
    ravenjson::Value document(ravenjson::Kind::Object);
    document[kProcessId] = processId;
    document[kSince] = since.toUTC().toString(Qt::ISODate).toStdString();
    document[kSettings] = settings.toStdString();
    document[kGroup] = group.toStdString();
    document[kPort] = port;
    document[kIsHttps] = isHttps;
    return QByteArray::fromStdString(ravenjson::toString(document));
}

std::optional<GatewayStatus> GatewayStatus::fromJson(const QByteArray& json) {
    ravenjson::Value document;
    std::string error;
    if (!ravenjson::parse({json.constData(), static_cast<std::size_t>(json.size())}, document,
                          error)) {
        return std::nullopt;
    }
    const auto has = [&document](std::string_view key, ravenjson::Kind kind) {
        const ravenjson::Value* const member = document.find(key);
        return member != nullptr && member->kind() == kind;
    };
    using enum ravenjson::Kind;
    if (!has(kProcessId, Integer) || !has(kSince, String) || !has(kSettings, String) ||
        !has(kGroup, String) || !has(kPort, Integer) || !has(kIsHttps, Boolean)) {
        return std::nullopt;
    }
    return GatewayStatus{.processId = document[kProcessId].integer(),
                         .since = QDateTime::fromString(textOf(document[kSince]), Qt::ISODate),
                         .settings = textOf(document[kSettings]),
                         .group = textOf(document[kGroup]),
                         .port = static_cast<int>(document[kPort].integer()),
                         .isHttps = document[kIsHttps].boolean()};
}

QString gatewayStatusPath() {
    return platform::joinPath(platform::runtimeFolder(), kFileName.toString());
}

std::optional<RunningGateway> findRunningGateway() {
    if (const std::optional<QByteArray> content = platform::HeldFile::read(gatewayStatusPath())) {
        return RunningGateway{GatewayStatus::fromJson(*content)};
    }
    if (platform::isInstanceGuardHeld(platform::kInstanceGuardKey.toString())) {
        return RunningGateway{};
    }
    return std::nullopt;
}

} // namespace quorin::check
