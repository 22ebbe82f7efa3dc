#pragma once

namespace quorin::platform {

// Disables the server-side session cache of OpenSSL's TLS contexts. Without this class, each
// TLS 1.2 session of a client that does not use session tickets remains in memory until its context
// is destroyed.
//
// Qt has no option for this and no access to the contexts that it creates. OpenSSL reports each new
// context to a callback, which the constructor registers and the destructor removes. Construct the
// object after Qt has loaded its TLS backend. Does nothing if that is not OpenSSL.
class UncachedTlsContexts {
public:
    UncachedTlsContexts();
    ~UncachedTlsContexts();

    UncachedTlsContexts(const UncachedTlsContexts&) = delete;
    UncachedTlsContexts& operator=(const UncachedTlsContexts&) = delete;

    // Contexts created on this thread while both an UncachedTlsContexts and a Scope exist have no
    // cache; the host program's other contexts keep theirs. Scopes do not nest.
    class Scope {
    public:
        Scope();
        ~Scope();

        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
    };

private:
    int index_; // of the callback; negative if none is registered
};

} // namespace quorin::platform
