#pragma once

#include "platform/secret.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QString>
#include <QStringView>

#include <memory>
#include <string>
#include <vector>

// What the gateway asks of the system about certificates. The classes are interfaces so that each
// refusal of the system can be played by a double; the system's own set is
// localMachineCertificates(). Nothing here logs or throws (but for memory): an answer says what
// went wrong, and the caller what that means.
//
// The objects are used by one thread. Each owns what the system gave for it and gives it back when
// it goes; a certificate may outlive the store it was found in, a key handle not its certificate.
namespace platform {

// How far a question got that the system answers in two steps: how large it is, then what it is.
enum class Outcome { Complete, NoSize, NoData };

template<typename Value>
struct TwoStepAnswer {
    Outcome outcome = Outcome::NoSize;
    Value value{}; // empty unless the outcome is Complete
};

// A certificate's private key in the system's keeping.
class KeyHandle {
public:
    virtual ~KeyHandle() = default;

    // The key as a PKCS #8 structure in DER, unencrypted; empty when the system does not let it
    // out.
    [[nodiscard]] virtual SecretBytes exportPkcs8() const = 0;

    // The group of algorithms the key belongs to, by the name that Windows gives it: "RSA", "DSA",
    // "DH", "ECDSA", "ECDH", or any other. Without a terminating NUL.
    [[nodiscard]] virtual TwoStepAnswer<QString> algorithmGroup() const = 0;

protected:
    KeyHandle() = default;
    Q_DISABLE_COPY_MOVE(KeyHandle)
};

// A certificate in a store.
class Certificate {
public:
    virtual ~Certificate() = default;

    // The DNS names among the subject's alternative names, all of them in the certificate's order;
    // the subject's common name alone when there are none. A name may be empty.
    [[nodiscard]] virtual std::vector<std::string> dnsNames() const = 0;

    // The name to show for the subject, normally its common name; empty when it has none.
    [[nodiscard]] virtual std::string displayName() const = 0;

    // The bounds of the validity in UTC; null when the system cannot express one.
    [[nodiscard]] virtual QDateTime notBefore() const = 0;
    [[nodiscard]] virtual QDateTime notAfter() const = 0;

    // The serial number's bytes, the least significant first.
    [[nodiscard]] virtual QByteArray serialNumber() const = 0;

    // The encoding in DER. The bytes are the certificate's own and go with it.
    [[nodiscard]] virtual QByteArrayView der() const = 0;

    // The private key that belongs to the certificate; null when there is none or the system does
    // not give access to it. The handle must go before the certificate.
    [[nodiscard]] virtual std::unique_ptr<KeyHandle> acquirePrivateKey() const = 0;

protected:
    Certificate() = default;
    Q_DISABLE_COPY_MOVE(Certificate)
};

// An open store, read from its first certificate to its last.
class CertificateStore {
public:
    virtual ~CertificateStore() = default;

    // The certificate after the one returned last, in the store's order; null behind the last.
    [[nodiscard]] virtual std::unique_ptr<Certificate> next() = 0;

protected:
    CertificateStore() = default;
    Q_DISABLE_COPY_MOVE(CertificateStore)
};

// The certificates of a machine and what comes with them.
class CertificateSystem {
public:
    virtual ~CertificateSystem() = default;

    // Opens the machine's store called `name` for reading; null when that fails.
    [[nodiscard]] virtual std::unique_ptr<CertificateStore> openStore(QStringView name) const = 0;

    // Now, in UTC, made in the same way as the bounds of a certificate's validity.
    [[nodiscard]] virtual QDateTime currentTime() const = 0;

    // `bytes` in Base64: lines of 64 characters, each of them, the last included, ended by CR LF.
    // Without a terminating NUL. The text may be that of a key.
    [[nodiscard]] virtual TwoStepAnswer<SecretBytes> toBase64(QByteArrayView bytes) const = 0;

protected:
    CertificateSystem() = default;
    Q_DISABLE_COPY_MOVE(CertificateSystem)
};

// The certificates of the machine this runs on. Lives as long as the process.
[[nodiscard]] const CertificateSystem& localMachineCertificates();

} // namespace platform
