#pragma once

#include "gateway_call.h"
#include "platform/event_log.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace quorin {

struct CertificateEvent {
    platform::EventKind kind = platform::EventKind::CertificateMissing;
    QString text;
};

// Returns the event about the certificate for `name` that is valid until `end`, or nothing if it is
// valid for more than 30 days from `now`. `end` is null if there is no usable certificate.
[[nodiscard]] std::optional<CertificateEvent>
certificateEvent(const QString& name, const QDateTime& end, const QDateTime& now);

// Reports what happens to a gateway as events. Checks the certificate after the start and then once
// a day.
class GatewayEvents final : public GatewayObserver {
public:
    // `arguments` are for the texts.
    GatewayEvents(platform::EventLog log, const GatewayArguments& arguments);

    void onStarted() override;
    void onStopped() override;
    void onStartFailed(int exitCode, const QString& reason) override;

private:
    void checkCertificate() const;

    const platform::EventLog log_;
    const QString settings_; // the settings file and the group
};

} // namespace quorin
