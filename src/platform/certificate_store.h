#pragma once

#include "platform/secret.h"
#include "platform/system_error.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QString>
#include <QStringView>

#include <memory>
#include <string>
#include <vector>

// Access to the system's certificate stores. The classes are interfaces so that tests can simulate
// each failure of the system. localMachineCertificates() returns the real implementation, which is
// in windows/certificate_store.cpp and, for certificates in files, unix/certificate_folders.cpp.
// Functions do not log, and throw only std::bad_alloc; callers interpret the results.
//
// The objects are not thread-safe. Each owns its system resources. A certificate may outlive its
// store; a key handle must not outlive its certificate.
namespace quorin::platform {

// The outcome of a system query in two calls: the first returns the size, the second the data.
enum class Outcome { Complete, NoSize, NoData };

template<typename Value>
struct QueryResult {
    Outcome outcome = Outcome::NoSize;
    Value value{};       // empty unless outcome is Complete
    SystemError error{}; // why the outcome is not Complete
};

// An encrypted private key and what is needed to decrypt it.
struct EncryptedKey {
    SecretBytes pkcs8;      // encrypted PKCS #8 in DER
    SecretBytes passPhrase; // in ASCII, without a terminating NUL; not used for any other key
};

// A handle to a certificate's private key.
class KeyHandle {
public:
    virtual ~KeyHandle() = default;

    // Returns the key as unencrypted PKCS #8 in DER, or no bytes if the system does not export it
    // in this form.
    [[nodiscard]] virtual SystemResult<SecretBytes> exportPkcs8() const = 0;

    // Returns the key encrypted with a new random pass phrase, or no bytes if the system does not
    // export it in this form either. There is no error if the system has no encrypted export.
    [[nodiscard]] virtual SystemResult<EncryptedKey> exportEncryptedPkcs8() const = 0;

    // Returns the Windows name of the key's algorithm group, such as "RSA", "DSA", "DH", "ECDSA" or
    // "ECDH". The text does not include a terminating NUL.
    [[nodiscard]] virtual QueryResult<QString> algorithmGroup() const = 0;

protected:
    KeyHandle() = default;
    Q_DISABLE_COPY_MOVE(KeyHandle)
};

// A certificate in a store.
class Certificate {
public:
    virtual ~Certificate() = default;

    // Returns the DNS names in the subject alternative names, in the order of the certificate, or
    // only the subject's common name if there are none. A name may be empty.
    [[nodiscard]] virtual std::vector<std::string> dnsNames() const = 0;

    // Returns the display name of the subject, normally its common name, or an empty text if the
    // subject has no name.
    [[nodiscard]] virtual std::string displayName() const = 0;

    // Return the bounds of the validity period in UTC. Null if the system cannot convert the time.
    [[nodiscard]] virtual QDateTime notBefore() const = 0;
    [[nodiscard]] virtual QDateTime notAfter() const = 0;

    // Returns the bytes of the serial number, least significant byte first.
    [[nodiscard]] virtual QByteArray serialNumber() const = 0;

    // Returns the DER encoding. The certificate owns the bytes.
    [[nodiscard]] virtual QByteArrayView der() const = 0;

    // Returns a handle to the certificate's private key, or null if there is none or access is
    // denied. The handle must not outlive the certificate.
    [[nodiscard]] virtual SystemResult<std::unique_ptr<KeyHandle>> acquirePrivateKey() const = 0;

    // Returns the certificates of the machine whose subject has signed this one. Does not examine
    // their validity period. Empty if this certificate is self-signed.
    [[nodiscard]] virtual std::vector<std::unique_ptr<Certificate>> issuers() const = 0;

    [[nodiscard]] virtual bool isSelfSigned() const = 0;

    // Returns true if the signature or the key provides less than 112 bits of security, such as
    // SHA-1 or RSA with 1024 bits. OpenSSL fails every handshake in which it would have to send
    // such a certificate.
    [[nodiscard]] virtual bool isWeak() const = 0;

protected:
    Certificate() = default;
    Q_DISABLE_COPY_MOVE(Certificate)
};

// An open store. Enumerates its certificates once.
class CertificateStore {
public:
    virtual ~CertificateStore() = default;

    // Returns the next certificate in the order of the store, or null after the last.
    [[nodiscard]] virtual std::unique_ptr<Certificate> next() = 0;

protected:
    CertificateStore() = default;
    Q_DISABLE_COPY_MOVE(CertificateStore)
};

// The certificate services of a system.
class CertificateSystem {
public:
    virtual ~CertificateSystem() = default;

    // Opens the store `name` for reading. Returns null on failure.
    [[nodiscard]] virtual SystemResult<std::unique_ptr<CertificateStore>>
    openStore(QStringView name) const = 0;

    // Returns the current time in UTC, converted in the same way as the validity bounds.
    [[nodiscard]] virtual QDateTime currentTime() const = 0;

    // Returns `bytes` in Base64 in lines of 64 characters. Each line, including the last, ends in
    // CR LF; there is no terminating NUL. Returns SecretBytes because `bytes` may be a private key.
    [[nodiscard]] virtual QueryResult<SecretBytes> toBase64(QByteArrayView bytes) const = 0;

protected:
    CertificateSystem() = default;
    Q_DISABLE_COPY_MOVE(CertificateSystem)
};

// Returns the certificate services of the local machine. The object lives as long as the process.
[[nodiscard]] const CertificateSystem& localMachineCertificates();

} // namespace quorin::platform
