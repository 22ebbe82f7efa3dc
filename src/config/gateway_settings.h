#pragma once

#include <QString>

#include <cstdint>

namespace quorin {

// The values of the settings file, named after its elements. Only loadSettings() writes
// them, before the gateway starts its threads; afterwards any thread may read them.
struct GatewaySettings {
    std::int32_t Port = 0;                  // taken modulo 65536
    std::int32_t MaxUserSession = 0;        // maximum number of active workers
    std::int32_t MaxTCPConnection = 0;      // required; not used
    std::int32_t ConnectionTimeout = 0;     // seconds to wait for a request
    std::int32_t HTTPRequestTimeout = 0;    // 0 ends every transfer; else no effect
    std::int32_t ThreadReadBufferSize = 0;  // bytes per chunk; 0: whole file
    bool IsMadeClientRequestWaited = false; // true: queue; false: refuse
    std::int32_t MaxLargeFileRequest = 0;   // active workers above which large files are refused
    bool HttpsEnabled = false;
    bool IsEnabledHttpInFacility = false;
    QString GatewayAddress; // under which clients reach this gateway
    QString OrganizationId;
    QString RootUrl; // of the cloud service
    std::int32_t QueueSize = 0;
    QString LogLevel;
    std::int32_t Generation = 0;

    // Returns the record of this process.
    static GatewaySettings& instance();
};

} // namespace quorin
