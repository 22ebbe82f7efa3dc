#pragma once

#include "platform/certificate_store.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Test doubles of the certificate interfaces. Each failure of a system can be simulated.
namespace quorin::test {

struct KeySpec {
    QByteArray pkcs8 = "key"; // empty if the key cannot be exported
    platform::QueryResult<QString> group{platform::Outcome::Complete, QStringLiteral("RSA")};
    platform::SystemError exportError{};
    QByteArray encryptedPkcs8{}; // empty if the key cannot be exported encrypted
    QByteArray passPhrase{};
    platform::SystemError encryptedExportError{};
};

struct CertificateSpec {
    std::vector<std::string> dnsNames;
    std::string displayName;
    QDateTime notBefore;
    QDateTime notAfter;
    QByteArray serialNumber = "\1";
    QByteArray der = "certificate";
    std::optional<KeySpec> key = KeySpec(); // none if no key handle can be acquired
    platform::SystemError keyError;
    std::vector<CertificateSpec> issuers;
    bool isSelfSigned = false;
    bool isWeak = false;
};

// The number of living objects of each kind.
struct LiveCounts {
    int stores = 0;
    int certificates = 0;
    int keys = 0;
};

// Increments a count for the lifetime of the object.
class LiveCount {
public:
    explicit LiveCount(int& count) : count_(count) { ++count_; }
    ~LiveCount() { --count_; }
    Q_DISABLE_COPY_MOVE(LiveCount)

private:
    int& count_;
};

class KeyDouble final : public platform::KeyHandle {
public:
    KeyDouble(KeySpec spec, LiveCounts& liveCounts)
        : spec_(std::move(spec)), liveCount_(liveCounts.keys) {}

    platform::SystemResult<platform::SecretBytes> exportPkcs8() const override {
        return {platform::SecretBytes::joined({spec_.pkcs8}), spec_.exportError};
    }
    platform::SystemResult<platform::EncryptedKey> exportEncryptedPkcs8() const override {
        return {{platform::SecretBytes::joined({spec_.encryptedPkcs8}),
                 platform::SecretBytes::joined({spec_.passPhrase})},
                spec_.encryptedExportError};
    }
    platform::QueryResult<QString> algorithmGroup() const override { return spec_.group; }

private:
    KeySpec spec_;
    LiveCount liveCount_;
};

class CertificateDouble final : public platform::Certificate {
public:
    CertificateDouble(CertificateSpec spec, LiveCounts& liveCounts)
        : spec_(std::move(spec)), liveCounts_(liveCounts), liveCount_(liveCounts.certificates) {}

    std::vector<std::string> dnsNames() const override { return spec_.dnsNames; }
    std::string displayName() const override { return spec_.displayName; }
    QDateTime notBefore() const override { return spec_.notBefore; }
    QDateTime notAfter() const override { return spec_.notAfter; }
    QByteArray serialNumber() const override { return spec_.serialNumber; }
    QByteArrayView der() const override { return spec_.der; }
    platform::SystemResult<std::unique_ptr<platform::KeyHandle>>
    acquirePrivateKey() const override {
        if (!spec_.key) {
            return {nullptr, spec_.keyError};
        }
        return {std::make_unique<KeyDouble>(*spec_.key, liveCounts_), {}};
    }
    std::vector<std::unique_ptr<platform::Certificate>> issuers() const override {
        std::vector<std::unique_ptr<platform::Certificate>> found;
        for (const CertificateSpec& issuer : spec_.issuers) {
            found.push_back(std::make_unique<CertificateDouble>(issuer, liveCounts_));
        }
        return found;
    }
    bool isSelfSigned() const override { return spec_.isSelfSigned; }
    bool isWeak() const override { return spec_.isWeak; }

private:
    CertificateSpec spec_;
    LiveCounts& liveCounts_;
    LiveCount liveCount_;
};

class StoreDouble final : public platform::CertificateStore {
public:
    StoreDouble(std::vector<CertificateSpec> specs, LiveCounts& liveCounts)
        : specs_(std::move(specs)), liveCounts_(liveCounts), liveCount_(liveCounts.stores) {}

    std::unique_ptr<platform::Certificate> next() override {
        return position_ < specs_.size()
                   ? std::make_unique<CertificateDouble>(specs_[position_++], liveCounts_)
                   : nullptr;
    }

private:
    std::vector<CertificateSpec> specs_;
    std::size_t position_ = 0;
    LiveCounts& liveCounts_;
    LiveCount liveCount_;
};

class SystemDouble final : public platform::CertificateSystem {
public:
    platform::SystemResult<std::unique_ptr<platform::CertificateStore>>
    openStore(QStringView name) const override {
        const auto found = stores.find(name.toString());
        if (found == stores.end()) {
            return {nullptr, storeError};
        }
        return {std::make_unique<StoreDouble>(found->second, liveCounts), {}};
    }
    QDateTime currentTime() const override { return now; }
    platform::QueryResult<platform::SecretBytes> toBase64(QByteArrayView bytes) const override {
        const platform::Outcome outcome = base64Outcome(bytes);
        if (outcome != platform::Outcome::Complete) {
            return {outcome, {}};
        }
        return {outcome, platform::SecretBytes::joined({bytes.toByteArray().toBase64(), "\r\n"})};
    }

    std::map<QString, std::vector<CertificateSpec>> stores; // a store not listed cannot be opened
    platform::SystemError storeError;
    QDateTime now;
    std::function<platform::Outcome(QByteArrayView)> base64Outcome = [](QByteArrayView) {
        return platform::Outcome::Complete;
    };
    mutable LiveCounts liveCounts;
};

} // namespace quorin::test
