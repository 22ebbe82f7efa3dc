#pragma once

#include <QByteArrayView>
#include <QStringView>

#include <chrono>

// The pipe through which a controlling process stops the gateway: it connects, writes "quit" and
// disconnects. The gateway writes nothing back.
namespace quorin {

inline constexpr QStringView kControlPipeName = u"\\\\.\\pipe\\TO_GATEWAY_HTTP_SERVER";
// As UTF-8; a byte order mark may precede it, and everything from the first NUL on is ignored.
inline constexpr QByteArrayView kQuitCommand = "quit";

// How long the gateway waits for a connected controller to write.
inline constexpr std::chrono::seconds kCommandTimeout{30};

} // namespace quorin
