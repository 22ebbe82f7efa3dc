#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

// The gateway that runs on this machine. It describes itself in a file that it holds while it
// serves (platform/held_file.h).
namespace quorin::check {

// What a gateway states about itself.
struct GatewayStatus {
    qint64 processId = 0;
    QDateTime since;  // when it began to serve
    QString settings; // absolute path of the settings file
    QString group;    // "primary" or "secondary"
    int port = 0;     // 0: a free port that the system selected
    bool isHttps = false;

    [[nodiscard]] QByteArray toJson() const;
    // Returns nothing if `json` is not what toJson() returns.
    [[nodiscard]] static std::optional<GatewayStatus> fromJson(const QByteArray& json);
};

// Returns the path of the file in which the gateway describes itself.
[[nodiscard]] QString gatewayStatusPath();

struct RunningGateway {
    // Nothing if the gateway was not started by `quorin-gateway run` or is starting or stopping.
    std::optional<GatewayStatus> status;
};

// Returns the gateway that runs on this machine, if one does. Neither waits for that gateway nor
// connects to it.
[[nodiscard]] std::optional<RunningGateway> findRunningGateway();

} // namespace quorin::check
