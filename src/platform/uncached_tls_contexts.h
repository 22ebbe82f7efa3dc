#pragma once

namespace quorin::platform {

// Creates OpenSSL's TLS contexts without a server-side session cache. Without it, every TLS 1.2
// session of a client that takes no ticket stays in memory for as long as its context lives.
//
// Qt has no option for this and does not hand out the contexts that it creates. OpenSSL reports
// each new context to a callback, which the object registers. Construct it after Qt has loaded its
// TLS backend; does nothing if that is not OpenSSL.
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
