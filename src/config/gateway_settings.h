#pragma once

#include <QString>

#include <cstdint>

// What the settings file says, under the names of its elements. Written by
// quorin::loadSettings() alone, before the gateway starts its threads; read by everybody after.
struct GatewaySettings {
    std::int32_t Port = 0;                  // taken modulo 65536
    std::int32_t MaxUserSession = 0;        // workers at work at once
    std::int32_t MaxTCPConnection = 0;      // must be there; nothing reads it
    std::int32_t ConnectionTimeout = 0;     // seconds to wait for a request
    std::int32_t HTTPRequestTimeout = 0;    // seconds a transfer may take
    std::int32_t ThreadReadBufferSize = 0;  // bytes of a chunk; 0: the file in one
    bool IsMadeClientRequestWaited = false; // wait in the queue, or be refused
    std::int32_t MaxLargeFileRequest = 0;   // active workers from which on large files wait
    bool HttpsEnabled = false;
    bool IsEnabledHttpInFacility = false;
    QString GatewayAddress; // where clients reach this gateway
    QString OrganizationId;
    QString RootUrl; // of the cloud service
    std::int32_t QueueSize = 0;
    QString LogLevel;
    std::int32_t Generation = 0;

    // The record of this process.
    static GatewaySettings& instance();
};
