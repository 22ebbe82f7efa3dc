#pragma once

#include "platform/certificate_store.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// A machine's certificates as a test describes them, with every refusal that a system knows.
namespace quorin::test {

struct KeyPlan {
    QByteArray pkcs8 = "key"; // empty: the export is refused
    platform::TwoStepAnswer<QString> group{platform::Outcome::Complete, QStringLiteral("RSA")};
};

struct CertificatePlan {
    std::vector<std::string> dnsNames;
    std::string displayName;
    QDateTime notBefore;
    QDateTime notAfter;
    QByteArray serialNumber = "\1";
    QByteArray der = "certificate";
    std::optional<KeyPlan> key = KeyPlan(); // none: the system gives no handle
};

// How many objects of each kind a test has not given back.
struct Borrowed {
    int stores = 0;
    int certificates = 0;
    int keys = 0;
};

// Counts its owner for as long as it lives.
class Loan {
public:
    explicit Loan(int& count) : count_(count) { ++count_; }
    ~Loan() { --count_; }
    Q_DISABLE_COPY_MOVE(Loan)

private:
    int& count_;
};

class KeyDouble final : public platform::KeyHandle {
public:
    KeyDouble(KeyPlan plan, Borrowed& borrowed) : plan_(std::move(plan)), loan_(borrowed.keys) {}

    platform::SecretBytes exportPkcs8() const override {
        return platform::SecretBytes::joined({plan_.pkcs8});
    }
    platform::TwoStepAnswer<QString> algorithmGroup() const override { return plan_.group; }

private:
    KeyPlan plan_;
    Loan loan_;
};

class CertificateDouble final : public platform::Certificate {
public:
    CertificateDouble(CertificatePlan plan, Borrowed& borrowed)
        : plan_(std::move(plan)), borrowed_(borrowed), loan_(borrowed.certificates) {}

    std::vector<std::string> dnsNames() const override { return plan_.dnsNames; }
    std::string displayName() const override { return plan_.displayName; }
    QDateTime notBefore() const override { return plan_.notBefore; }
    QDateTime notAfter() const override { return plan_.notAfter; }
    QByteArray serialNumber() const override { return plan_.serialNumber; }
    QByteArrayView der() const override { return plan_.der; }
    std::unique_ptr<platform::KeyHandle> acquirePrivateKey() const override {
        return plan_.key ? std::make_unique<KeyDouble>(*plan_.key, borrowed_) : nullptr;
    }

private:
    CertificatePlan plan_;
    Borrowed& borrowed_;
    Loan loan_;
};

class StoreDouble final : public platform::CertificateStore {
public:
    StoreDouble(std::vector<CertificatePlan> plans, Borrowed& borrowed)
        : plans_(std::move(plans)), borrowed_(borrowed), loan_(borrowed.stores) {}

    std::unique_ptr<platform::Certificate> next() override {
        return position_ < plans_.size()
                   ? std::make_unique<CertificateDouble>(plans_[position_++], borrowed_)
                   : nullptr;
    }

private:
    std::vector<CertificatePlan> plans_;
    std::size_t position_ = 0;
    Borrowed& borrowed_;
    Loan loan_;
};

class SystemDouble final : public platform::CertificateSystem {
public:
    std::unique_ptr<platform::CertificateStore> openStore(QStringView name) const override {
        const auto found = stores.find(name.toString());
        return found != stores.end() ? std::make_unique<StoreDouble>(found->second, borrowed)
                                     : nullptr;
    }
    QDateTime currentTime() const override { return now; }
    platform::TwoStepAnswer<platform::SecretBytes> toBase64(QByteArrayView bytes) const override {
        const platform::Outcome outcome = base64Outcome(bytes);
        if (outcome != platform::Outcome::Complete) {
            return {outcome, {}};
        }
        return {outcome, platform::SecretBytes::joined({bytes.toByteArray().toBase64(), "\r\n"})};
    }

    std::map<QString, std::vector<CertificatePlan>> stores; // what is missing cannot be opened
    QDateTime now;
    std::function<platform::Outcome(QByteArrayView)> base64Outcome = [](QByteArrayView) {
        return platform::Outcome::Complete;
    };
    mutable Borrowed borrowed;
};

} // namespace quorin::test
