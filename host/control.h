#pragma once

namespace quorin {

// Whom a command to stop is meant for.
enum class Gateway { Any, OfThisProcess };

// Tells the gateway that listens on this machine's control pipe to stop, and returns when it has
// taken the command. False when none listens, when the one that does is not the one meant, to which
// nothing is said then, or when it does not take the command within 35 seconds. Needs no event
// loop; the thread must be one of Qt's.
[[nodiscard]] bool tellToStop(Gateway gateway);

} // namespace quorin
