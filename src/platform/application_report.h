#pragma once

namespace quorin::platform {

// What the gateway library reports to its host program: dynamic properties of the application
// object. The library sets them on the main thread, where the host may read them as long as the
// application object exists. That includes functions registered with std::atexit(), because a
// failed start ends the process without destroying the object.

// int: the exit code of the process. Set if the start has failed.
inline constexpr const char* kExitCodeProperty = "quorinExitCode";
// QString: why the start has failed, as logged. Not set if nothing was logged.
inline constexpr const char* kStartErrorProperty = "quorinStartError";
// QString: the name for which a certificate was searched. Set if HTTPS is enabled.
inline constexpr const char* kCertificateNameProperty = "quorinCertificateName";
// QDateTime in UTC: the end of the certificate's validity. Set if a certificate with a usable key
// was found.
inline constexpr const char* kCertificateEndProperty = "quorinCertificateEnd";

} // namespace quorin::platform
