#pragma once

#include <QByteArray>

#include <ostream>
#include <string>
#include <vector>

// Settings files for tests of what reads them.
namespace quorin::test {

// A complete settings file.
inline constexpr const char* kSettingsSample = R"(<?xml version="1.0" encoding="utf-8"?>
<QuorinGatewaySetting>
  <PrimaryGatewaySetting>
    <Http>
      <Log>
        <QueueSize>8192</QueueSize>
        <ApplicationLog>
          <LogLevel>info</LogLevel>
          <Generation>30</Generation>
        </ApplicationLog>
      </Log>
      <Port>8080</Port>
      <MaxUserSession>10</MaxUserSession>
      <MaxTCPConnection>100</MaxTCPConnection>
      <ConnectionTimeout>20</ConnectionTimeout>
      <HTTPRequestTimeout>600</HTTPRequestTimeout>
      <ThreadReadBufferSize>65536</ThreadReadBufferSize>
      <IsMadeClientRequestWaited>false</IsMadeClientRequestWaited>
      <MaxLargeFileRequest>9</MaxLargeFileRequest>
      <HttpsEnabled>TRUE</HttpsEnabled>
    </Http>
    <Proxy>
      <IsEnabledHttpInFacility>False</IsEnabledHttpInFacility>
    </Proxy>
  </PrimaryGatewaySetting>
  <SecondaryGatewaySetting>
    <Http>
      <Log>
        <QueueSize>1</QueueSize>
        <ApplicationLog><LogLevel>error</LogLevel><Generation>2</Generation></ApplicationLog>
      </Log>
      <Port>8081</Port>
      <MaxUserSession>20</MaxUserSession>
      <MaxTCPConnection>3</MaxTCPConnection>
      <ConnectionTimeout>4</ConnectionTimeout>
      <HTTPRequestTimeout>5</HTTPRequestTimeout>
      <ThreadReadBufferSize>6</ThreadReadBufferSize>
      <HttpsEnabled>false</HttpsEnabled>
    </Http>
    <Proxy><IsEnabledHttpInFacility>true</IsEnabledHttpInFacility></Proxy>
  </SecondaryGatewaySetting>
  <General>
    <GatewayConnectSetting><GatewayAddress>gateway-1.example</GatewayAddress></GatewayConnectSetting>
    <GatewayConnectSetting><GatewayAddress>gateway-2.example</GatewayAddress></GatewayConnectSetting>
    <OrganizationId>0a1b</OrganizationId>
    <QuorinCloud><RootUrl>https://cloud.example/QuorinCloud5</RootUrl></QuorinCloud>
  </General>
</QuorinGatewaySetting>
)";

// A change to the sample and the message of the failure to load it; empty on success.
struct SettingsFault {
    const char* name;
    const char* from;
    const char* to;
    const char* message;
};

inline constexpr SettingsFault kSettingsFaults[] = {
    {"OtherElements", "<Log>", "<Unknown>1</Unknown><Log>", ""},
    {"QueueSizeMissing", "<QueueSize>8192</QueueSize>", "", "[End] QueueSize is not found"},
    {"QueueSizeNegative", "<QueueSize>8192", "<QueueSize>-1",
     "[End] QueueSize must be grater equal than 0"},
    {"LogLevelMissing", "<LogLevel>info</LogLevel>", "", "[End] LogLevel is not found"},
    {"LogLevelEmpty", "<LogLevel>info</LogLevel>", "<LogLevel/>", "[End] LogLevel is not defined"},
    {"LogLevelInCapitals", "<LogLevel>info", "<LogLevel>Info",
     "[End] application log level format error (should be setted 'info','warn' or 'error')"},
    {"LogLevelWithSpace", "<LogLevel>info", "<LogLevel>info ",
     "[End] application log level format error (should be setted 'info','warn' or 'error')"},
    {"LogLevelDebug", "<LogLevel>info", "<LogLevel>debug", ""},
    {"LogLevelWarn", "<LogLevel>info", "<LogLevel>warn", ""},
    {"GenerationMissing", "<Generation>30</Generation>", "", "[End] Generation is not found"},
    {"PortWithLetter", "<Port>8080", "<Port>8O80", "[End] Port is not number"},
    {"PortNegative", "<Port>8080", "<Port>-1", "[End] Port must be grater equal than 0"},
    {"PortEmpty", "<Port>8080</Port>", "<Port></Port>", "[End] Port is not defined"},
    {"PortClosed", "<Port>8080</Port>", "<Port/>", "[End] Port is not defined"},
    {"PortMissing", "<Port>8080</Port>", "", "[End] Port is not found"},
    {"PortTooLarge", "<Port>8080", "<Port>2147483648", "[End] Port is not number"},
    {"PortLargest", "<Port>8080", "<Port>2147483647", ""},
    {"PortWithSpaces", "<Port>8080<", "<Port> 8080 <", ""},
    {"PortHexadecimal", "<Port>8080", "<Port>0x50", "[End] Port is not number"},
    {"MaxUserSessionMissing", "<MaxUserSession>10</MaxUserSession>", "",
     "[End] MaxUserSession is not found"},
    {"MaxTCPConnectionMissing", "<MaxTCPConnection>100</MaxTCPConnection>", "",
     "[End] MaxTCPConnection is not found"},
    {"ConnectionTimeoutMissing", "<ConnectionTimeout>20</ConnectionTimeout>", "",
     "[End] ConnectionTimeout is not found"},
    {"HTTPRequestTimeoutMissing", "<HTTPRequestTimeout>600</HTTPRequestTimeout>", "",
     "[End] HTTPRequestTimeout is not found"},
    {"ThreadReadBufferSizeMissing", "<ThreadReadBufferSize>65536</ThreadReadBufferSize>", "",
     "[End] ThreadReadBufferSize is not found"},
    {"HttpsEnabledMissing", "<HttpsEnabled>TRUE</HttpsEnabled>", "",
     "[End] HttpsEnabled is not found"},
    {"HttpsEnabledNotBoolean", "<HttpsEnabled>TRUE", "<HttpsEnabled>yes",
     "[End] HttpsEnabled is not boolean value"},
    {"HttpsEnabledEmpty", "<HttpsEnabled>TRUE", "<HttpsEnabled>",
     "[End] HttpsEnabled is not defined"},
    {"IsEnabledHttpInFacilityMissing", "<IsEnabledHttpInFacility>False</IsEnabledHttpInFacility>",
     "", "[End] IsEnabledHttpInFacility tag is not found"},
    {"IsEnabledHttpInFacilityNotBoolean", "<IsEnabledHttpInFacility>False",
     "<IsEnabledHttpInFacility>0", "[End] IsEnabledHttpInFacility is not boolean value"},
    {"GatewayAddressEmpty", "<GatewayAddress>gateway-1.example</GatewayAddress>",
     "<GatewayAddress/>", "[End] GatewayAddress is not defined"},
    {"GatewayAddressMissing", "<GatewayAddress>gateway-1.example</GatewayAddress>", "",
     "[End] GatewayAddress is not defined"},
    {"OrganizationIdMissing", "<OrganizationId>0a1b</OrganizationId>", "",
     "[End] OrganizationId tag is not found"},
    {"OrganizationIdEmpty", "<OrganizationId>0a1b", "<OrganizationId>",
     "[End] OrganizationId is not defined"},
    {"OrganizationIdAfterElement", "<OrganizationId>0a1b", "<OrganizationId><x/>abc",
     "[End] OrganizationId is not defined"},
    {"RootUrlMissing", "<RootUrl>https://cloud.example/QuorinCloud5</RootUrl>", "",
     "[End] RootUrl tag is not found"},
    {"RootUrlEmpty", "<RootUrl>https://cloud.example/QuorinCloud5", "<RootUrl>",
     "[End] RootUrl is not defined"},
};

inline std::ostream& operator<<(std::ostream& out, const SettingsFault& fault) {
    return out << fault.name;
}

// The elements of the sample that contain others.
inline constexpr const char* kSettingsGroups[] = {"QuorinGatewaySetting",
                                                  "PrimaryGatewaySetting",
                                                  "Http",
                                                  "Log",
                                                  "ApplicationLog",
                                                  "Proxy",
                                                  "General",
                                                  "GatewayConnectSetting",
                                                  "QuorinCloud"};

// Changes to the limits of the sample, and the MaxLargeFileRequest in effect.
struct LargeFileLimit {
    const char* name;
    const char* maxUserSession;
    const char* configured;
    int expected;
};

inline constexpr LargeFileLimit kLargeFileLimits[] = {
    LargeFileLimit{"OneBelowPool", "10", "<MaxLargeFileRequest>9</MaxLargeFileRequest>", 9},
    LargeFileLimit{"EqualToPool", "10", "<MaxLargeFileRequest>10</MaxLargeFileRequest>", 4},
    LargeFileLimit{"One", "10", "<MaxLargeFileRequest>1</MaxLargeFileRequest>", 1},
    LargeFileLimit{"None", "10", "<MaxLargeFileRequest>0</MaxLargeFileRequest>", 4},
    LargeFileLimit{"Negative", "10", "<MaxLargeFileRequest>-5</MaxLargeFileRequest>", 4},
    LargeFileLimit{"NotANumber", "10", "<MaxLargeFileRequest>abc</MaxLargeFileRequest>", 4},
    LargeFileLimit{"Missing", "10", "", 4},
    LargeFileLimit{"SmallPoolBelow", "4", "<MaxLargeFileRequest>3</MaxLargeFileRequest>", 3},
    LargeFileLimit{"SmallPoolEqual", "4", "<MaxLargeFileRequest>4</MaxLargeFileRequest>", 4},
    LargeFileLimit{"NoPool", "0", "<MaxLargeFileRequest>1</MaxLargeFileRequest>", 4},
    LargeFileLimit{"PoolBelowFour", "2", "<MaxLargeFileRequest>2</MaxLargeFileRequest>", 4}};

inline std::ostream& operator<<(std::ostream& out, const LargeFileLimit& limit) {
    return out << limit.name;
}

// A settings file with a name.
struct SettingsSample {
    std::string name;
    QByteArray content;
};

// Returns the sample with each of the changes above, and files that are not XML.
[[nodiscard]] std::vector<SettingsSample> settingsSamples();

} // namespace quorin::test
