#include "cert/certificate_chain.h"

#include "cert/certificate_fields.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace quorin {

namespace {

// Returns the first issuer of `certificate` that can be sent, or null if there is none.
std::unique_ptr<platform::Certificate> issuerOf(const platform::Certificate& certificate,
                                                const QDateTime& now) {
    auto candidates = certificate.issuers();
    const auto found =
        std::find_if(candidates.begin(), candidates.end(), [&now](const auto& candidate) {
            return isValidAt(now, *candidate) && !candidate->isWeak();
        });
    return found != candidates.end() ? std::move(*found) : nullptr;
}

} // namespace

std::vector<QByteArray> intermediatesOf(const platform::Certificate& certificate,
                                        const QDateTime& now) {
    std::vector<QByteArray> chain;
    // Authorities can have issued certificates for each other.
    const auto isInChain = [&certificate, &chain](QByteArrayView der) {
        return der == certificate.der() ||
               std::find(chain.begin(), chain.end(), der) != chain.end();
    };
    auto issuer = issuerOf(certificate, now);
    while (issuer && !issuer->isSelfSigned() && !isInChain(issuer->der()) &&
           chain.size() < kMaxIntermediates) {
        chain.push_back(issuer->der().toByteArray());
        issuer = issuerOf(*issuer, now);
    }
    return chain;
}

} // namespace quorin
