#include "gateway_events.h"

#include "platform/application_report.h"

#include <QCoreApplication>
#include <QTimer>
#include <QVariant>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr int kWarningDays = 30;
constexpr QStringView kEndPrefix = u"[End] "; // of the messages in the gateway's log

} // namespace

std::optional<CertificateEvent> certificateEvent(const QString& name, const QDateTime& end,
                                                 const QDateTime& now) {
    using platform::EventKind;
    if (end.isNull()) {
        return CertificateEvent{EventKind::CertificateMissing,
                                u"HTTPS is enabled, but there is no valid certificate for "_s +
                                    name +
                                    u" with an exportable private key. Clients cannot connect."};
    }
    const QString date = end.toUTC().toString(Qt::ISODate);
    if (end < now) {
        return CertificateEvent{EventKind::CertificateExpires,
                                u"The certificate for "_s + name + u" expired at " + date +
                                    u". Install a new one and restart the gateway."};
    }
    if (end < now.addDays(kWarningDays)) {
        return CertificateEvent{EventKind::CertificateExpires,
                                u"The certificate for "_s + name + u" expires at " + date +
                                    u". Install a new one and restart the gateway before then."};
    }
    return std::nullopt;
}

GatewayEvents::GatewayEvents(platform::EventLog log, const GatewayArguments& arguments)
    : log_(std::move(log)),
      settings_(u"Settings: "_s + QString::fromStdString(arguments.settings) + u" (" +
                QString::fromStdString(arguments.group) + u").") {}

void GatewayEvents::onStarted() {
    log_.report(platform::EventKind::Started, u"The gateway has started. "_s + settings_);
    auto* const timer = new QTimer(QCoreApplication::instance()); // which owns it
    QObject::connect(timer, &QTimer::timeout, timer, [this] { checkCertificate(); });
    timer->start(std::chrono::hours(24));
    checkCertificate();
}

void GatewayEvents::onStopped() {
    log_.report(platform::EventKind::Stopped, u"The gateway has stopped."_s);
}

void GatewayEvents::onStartFailed(int exitCode, const QString& reason) {
    QString cause = reason.isEmpty() ? u"see the gateway's log"_s : reason.simplified();
    if (cause.startsWith(kEndPrefix)) {
        cause.remove(0, kEndPrefix.size());
    }
    log_.report(platform::EventKind::StartFailed, u"The gateway did not start (exit code "_s +
                                                      QString::number(exitCode) + u"): " + cause +
                                                      u". " + settings_);
}

void GatewayEvents::checkCertificate() const {
    const QCoreApplication& application = *QCoreApplication::instance();
    const QVariant name = application.property(platform::kCertificateNameProperty);
    if (!name.isValid()) {
        return; // HTTPS is not enabled
    }
    const QDateTime end = application.property(platform::kCertificateEndProperty).toDateTime();
    if (const auto event =
            certificateEvent(name.toString(), end, QDateTime::currentDateTimeUtc())) {
        log_.report(event->kind, event->text);
    }
}

} // namespace quorin
