#include "platform/unix/x509_chain.h"

namespace quorin::platform {

namespace {

constexpr int kMinSecurityBits = 112;

} // namespace

bool hasIssued(X509& issuer, X509& certificate) {
    const OpensslErrorScope errors;
    return X509_check_issued(&issuer, &certificate) == X509_V_OK &&
           X509_verify(&certificate, X509_get0_pubkey(&issuer)) == 1;
}

bool isSelfSigned(X509& certificate) {
    const OpensslErrorScope errors;
    return X509_self_signed(&certificate, 0) == 1;
}

bool isWeak(X509& certificate) {
    const OpensslErrorScope errors;
    const EVP_PKEY* const key = X509_get0_pubkey(&certificate);
    int signatureBits = 0;
    return key == nullptr || EVP_PKEY_get_security_bits(key) < kMinSecurityBits ||
           X509_get_signature_info(&certificate, nullptr, nullptr, &signatureBits, nullptr) != 1 ||
           signatureBits < kMinSecurityBits;
}

std::vector<X509Pointer> systemAuthorities(const X509_NAME& name) {
    const OpensslErrorScope errors;
    const X509StorePointer store(X509_STORE_new());
    const X509StoreContextPointer context(X509_STORE_CTX_new());
    if (!store || !context || X509_STORE_set_default_paths(store.get()) != 1 ||
        X509_STORE_CTX_init(context.get(), store.get(), nullptr, nullptr) != 1) {
        return {};
    }
    const X509StackPointer found(X509_STORE_CTX_get1_certs(context.get(), &name));
    std::vector<X509Pointer> authorities;
    while (sk_X509_num(found.get()) > 0) {
        authorities.emplace_back(sk_X509_shift(found.get()));
    }
    return authorities;
}

} // namespace quorin::platform
