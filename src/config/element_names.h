#pragma once

// The names of the elements of the settings file.
namespace quorin::element {

inline constexpr const char* kQuorinGatewaySetting = "QuorinGatewaySetting";
inline constexpr const char* kPrimaryGatewaySetting = "PrimaryGatewaySetting";
inline constexpr const char* kSecondaryGatewaySetting = "SecondaryGatewaySetting";
inline constexpr const char* kHttp = "Http";
inline constexpr const char* kLog = "Log";
inline constexpr const char* kQueueSize = "QueueSize";
inline constexpr const char* kApplicationLog = "ApplicationLog";
inline constexpr const char* kLogLevel = "LogLevel";
inline constexpr const char* kGeneration = "Generation";
inline constexpr const char* kPort = "Port";
inline constexpr const char* kMaxUserSession = "MaxUserSession";
inline constexpr const char* kMaxTCPConnection = "MaxTCPConnection";
inline constexpr const char* kConnectionTimeout = "ConnectionTimeout";
inline constexpr const char* kHTTPRequestTimeout = "HTTPRequestTimeout";
inline constexpr const char* kThreadReadBufferSize = "ThreadReadBufferSize";
inline constexpr const char* kIsMadeClientRequestWaited = "IsMadeClientRequestWaited";
inline constexpr const char* kMaxLargeFileRequest = "MaxLargeFileRequest";
inline constexpr const char* kHttpsEnabled = "HttpsEnabled";
inline constexpr const char* kProxy = "Proxy";
inline constexpr const char* kIsEnabledHttpInFacility = "IsEnabledHttpInFacility";
inline constexpr const char* kGeneral = "General";
inline constexpr const char* kGatewayConnectSetting = "GatewayConnectSetting";
inline constexpr const char* kGatewayAddress = "GatewayAddress";
inline constexpr const char* kOrganizationId = "OrganizationId";
inline constexpr const char* kQuorinCloud = "QuorinCloud";
inline constexpr const char* kRootUrl = "RootUrl";

} // namespace quorin::element
