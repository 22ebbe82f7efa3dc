#include "check/start_check.h"

#include "check/certificate_check.h"
#include "check/folder_check.h"
#include "check/library_check.h"
#include "check/network_check.h"
#include "check/settings_check.h"
#include "check/settings_record.h"
#include "check/value_check.h"

namespace quorin::check {

Findings checkStart(const QString& settingsFile, bool primary) {
    Findings findings;
    const SettingsRecord record(settingsFile, primary);
    checkSettings(record, findings);
    checkValues(record, findings);
    const std::optional<RunningGateway> running = findRunningGateway();
    checkRunningGateway(running, findings);
    checkPort(record, running, findings);
    checkControlPipe(findings);
    checkLibraries(findings);
    checkFolders(settingsFile, findings);
    checkCertificate(record, findings);
    return findings;
}

} // namespace quorin::check
