#pragma once

#include <QByteArrayView>
#include <QStringView>

#include <chrono>

// The pipe on which a controlling process tells the gateway to stop: it connects, writes "quit"
// and disconnects. Nothing is ever written back.
namespace quorin {

inline constexpr QStringView kControlPipeName = u"\\\\.\\pipe\\TO_GATEWAY_HTTP_SERVER";
inline constexpr QByteArrayView kQuitCommand = "quit";

// How long the gateway waits for a connected controller to write.
inline constexpr std::chrono::seconds kCommandTimeout{30};

} // namespace quorin
