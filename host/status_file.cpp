#include "status_file.h"

#include "check/settings_record.h"
#include "config/settings_file.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <utility>

namespace quorin {

StatusFile::StatusFile(check::GatewayStatus status) : status_(std::move(status)) {}

void StatusFile::onStarted() {
    status_.since = QDateTime::currentDateTimeUtc();
    file_ = platform::HeldFile::create(check::gatewayStatusPath(), status_.toJson());
}

void StatusFile::onStopping() {
    file_.reset();
}

check::GatewayStatus currentStatus(const GatewayArguments& arguments) {
    const QString path = settingsPath(arguments.settings.c_str());
    const check::SettingsRecord record(path, arguments.group == "primary");
    return {.processId = QCoreApplication::applicationPid(),
            .since = QDateTime::currentDateTimeUtc(),
            .settings = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()),
            .group = QString::fromStdString(arguments.group),
            .port = static_cast<quint16>(record.settings().Port),
            .isHttps = record.settings().HttpsEnabled};
}

} // namespace quorin
