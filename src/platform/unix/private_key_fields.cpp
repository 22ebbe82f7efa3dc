#include "platform/unix/private_key_fields.h"

#include "platform/unix/openssl.h"

namespace quorin::platform {

bool isKeyOf(const X509& certificate, const EVP_PKEY& key) {
    const OpensslErrorScope errors;
    return X509_check_private_key(&certificate, &key) == 1;
}

SecretBytes pkcs8Of(const EVP_PKEY& key) {
    const OpensslErrorScope errors;
    const Pkcs8Pointer structure(EVP_PKEY2PKCS8(&key));
    const int size = structure ? i2d_PKCS8_PRIV_KEY_INFO(structure.get(), nullptr) : 0;
    if (size <= 0) {
        return {};
    }
    SecretBytes der(static_cast<std::size_t>(size));
    auto* end = reinterpret_cast<unsigned char*>(der.data());
    i2d_PKCS8_PRIV_KEY_INFO(structure.get(), &end);
    return der;
}

QString algorithmGroupOf(const EVP_PKEY& key) {
    switch (EVP_PKEY_get_base_id(&key)) {
    case EVP_PKEY_RSA:
        return QStringLiteral("RSA");
    case EVP_PKEY_DSA:
        return QStringLiteral("DSA");
    case EVP_PKEY_DH:
    case EVP_PKEY_DHX:
        return QStringLiteral("DH");
    case EVP_PKEY_EC:
        return QStringLiteral("ECDSA");
    default:
        return QString::fromLatin1(EVP_PKEY_get0_type_name(&key));
    }
}

} // namespace quorin::platform
