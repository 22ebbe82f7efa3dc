#pragma once

#include "platform/windows/handle.h"

#include <QString>

#include <optional>

namespace quorin::platform {

// The Windows functions that PipeReservation calls. Tests replace them to examine the arguments.
struct PipeFunctions {
    decltype(&CreateNamedPipeW) create = &CreateNamedPipeW;
    decltype(&CreateFileW) open = &CreateFileW;
};

// The first instance of a named pipe. It determines who may open the pipe and create further
// instances of it: administrators, the local system and the account of this process, except from
// the network. It serves no client but one that connects before this object can occupy it.
class PipeReservation {
public:
    explicit PipeReservation(const PipeFunctions& system = {}) : system_(system) {}

    // Creates the first instance of the pipe `name` (with "\\.\pipe\"). Returns the reason if that
    // fails, for example because a process already has a pipe of that name. Does nothing if this
    // object holds the instance already.
    [[nodiscard]] std::optional<QString> reserve(const QString& name);

    // Transfers the first instance to the caller if a client connected to it before reserve() could
    // occupy it; otherwise returns null. Another instance must exist.
    [[nodiscard]] Handle takeEarlyController();

private:
    PipeFunctions system_;
    Handle server_;
    Handle client_; // occupies the instance; null if an early client does
};

} // namespace quorin::platform
