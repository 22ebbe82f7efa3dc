#pragma once

#include "check/finding.h"
#include "platform/certificate_store.h"

namespace quorin::check {

class SettingsRecord;

// If HTTPS is enabled, adds a finding for the TLS library and one for the certificate that the
// gateway would use, found by the same search as at its start. Tests pass `system`.
void checkCertificate(
    const SettingsRecord& record, Findings& findings,
    const platform::CertificateSystem& system = platform::localMachineCertificates());

} // namespace quorin::check
