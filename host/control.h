#pragma once

namespace quorin {

// Whom a command to stop is meant for.
enum class Gateway { Any, OfThisProcess };

// Tells the gateway that listens on this machine's control pipe to stop. False, with nothing said
// to anybody, when none listens or the one that does is not the one meant. Needs no event loop;
// the thread must be one of Qt's.
[[nodiscard]] bool tellToStop(Gateway gateway);

} // namespace quorin
