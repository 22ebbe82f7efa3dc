#pragma once

#include "platform/windows/system.h"

#include <QString>

#include <memory>

namespace quorin::platform {

// Security attributes for a new object of the system, with a handle that child processes do not
// inherit.
class SecurityAttributes {
public:
    // `descriptor` is in the security descriptor definition language (SDDL).
    explicit SecurityAttributes(const QString& descriptor);

    // Returns null if the descriptor is malformed or memory is exhausted: do not create the object
    // then, since null attributes mean default access rights. GetLastError() returns the reason
    // directly after the constructor. Valid as long as this object.
    [[nodiscard]] SECURITY_ATTRIBUTES* get() {
        return attributes_.lpSecurityDescriptor != nullptr ? &attributes_ : nullptr;
    }

private:
    struct Deleter {
        void operator()(void* memory) const noexcept { LocalFree(memory); }
    };
    std::unique_ptr<void, Deleter> descriptor_;
    SECURITY_ATTRIBUTES attributes_{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

// Returns the security identifier of the account of this process as text for SDDL. Empty on
// failure; GetLastError() returns the reason.
[[nodiscard]] QString ownAccount();

} // namespace quorin::platform
