#pragma once

#include <QStringView>

// The codes of findings. They are an interface: scripts compare them. docs/check.md explains each.
namespace quorin::check::code {

inline constexpr QStringView kCertificateChainIncomplete = u"certificate-chain-incomplete";
inline constexpr QStringView kCertificateExpiring = u"certificate-expiring";
inline constexpr QStringView kCertificateFound = u"certificate-found";
inline constexpr QStringView kCertificateKeyUnusable = u"certificate-key-unusable";
inline constexpr QStringView kCertificateMissing = u"certificate-missing";
inline constexpr QStringView kDescriptorsTooFew = u"descriptors-too-few";
inline constexpr QStringView kDiskSpaceLow = u"disk-space-low";
inline constexpr QStringView kElementIgnored = u"element-ignored";
inline constexpr QStringView kFolderMissing = u"folder-missing";
inline constexpr QStringView kFolderNotReadable = u"folder-not-readable";
inline constexpr QStringView kFolderNotWritable = u"folder-not-writable";
inline constexpr QStringView kGatewayLibraryMissing = u"gateway-library-missing";
inline constexpr QStringView kGatewayRunning = u"gateway-running";
inline constexpr QStringView kLoggingLibraryMissing = u"logging-library-missing";
inline constexpr QStringView kPipeUnavailable = u"pipe-unavailable";
inline constexpr QStringView kPortUnavailable = u"port-unavailable";
inline constexpr QStringView kRightsTooWide = u"rights-too-wide";
inline constexpr QStringView kSettingAdjusted = u"setting-adjusted";
inline constexpr QStringView kSettingInvalid = u"setting-invalid";
inline constexpr QStringView kSettingMissing = u"setting-missing";
inline constexpr QStringView kSettingQuestionable = u"setting-questionable";
inline constexpr QStringView kSettingsUnreadable = u"settings-unreadable";
inline constexpr QStringView kSystemLibraryMissing = u"system-library-missing";
inline constexpr QStringView kTlsBackendMissing = u"tls-backend-missing";

} // namespace quorin::check::code
