#include "platform/unix/x509_fields.h"

#include "platform/unix/openssl.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace quorin::platform {

namespace {

// The display name is the first of these attributes that the subject has.
constexpr std::array<int, 4> kDisplayNameAttributes{NID_commonName, NID_organizationalUnitName,
                                                    NID_organizationName, NID_pkcs9_emailAddress};

std::string toText(const ASN1_STRING* string) {
    const unsigned char* const bytes = ASN1_STRING_get0_data(string);
    return {bytes, bytes + ASN1_STRING_length(string)};
}

std::string toUtf8(const ASN1_STRING* string) {
    unsigned char* bytes = nullptr;
    const int size = ASN1_STRING_to_UTF8(&bytes, string);
    if (size < 0) {
        return {};
    }
    const OpensslBytes owner(bytes);
    return {bytes, bytes + size};
}

std::string attributeAt(const X509_NAME* name, int index) {
    const X509_NAME_ENTRY* const entry = X509_NAME_get_entry(name, index);
    return entry != nullptr ? toUtf8(X509_NAME_ENTRY_get_data(entry)) : std::string();
}

// Returns the first attribute `nid` of the subject, or an empty text if there is none.
std::string subjectAttribute(const X509& certificate, int nid) {
    const X509_NAME* const subject = X509_get_subject_name(&certificate);
    return attributeAt(subject, X509_NAME_get_index_by_NID(subject, nid, -1));
}

// Returns the subject alternative names of type `type`, which must be stored as IA5String.
std::vector<std::string> alternativeNames(const X509& certificate, int type) {
    std::vector<std::string> texts;
    const GeneralNamesPointer names(static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(&certificate, NID_subject_alt_name, nullptr, nullptr)));
    for (int index = 0; index < sk_GENERAL_NAME_num(names.get()); ++index) {
        int actualType = -1;
        const void* const value =
            GENERAL_NAME_get0_value(sk_GENERAL_NAME_value(names.get(), index), &actualType);
        if (actualType == type) {
            texts.push_back(toText(static_cast<const ASN1_STRING*>(value)));
        }
    }
    return texts;
}

QDateTime toDateTime(const ASN1_TIME* time) {
    std::tm parts{};
    if (ASN1_TIME_to_tm(time, &parts) != 1) {
        return {};
    }
    return {QDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday),
            QTime(parts.tm_hour, parts.tm_min, parts.tm_sec), Qt::UTC};
}

} // namespace

std::vector<std::string> dnsNamesOf(const X509& certificate) {
    const OpensslErrorScope errors;
    std::vector<std::string> names = alternativeNames(certificate, GEN_DNS);
    if (names.empty()) {
        names.push_back(subjectAttribute(certificate, NID_commonName));
    }
    return names;
}

std::string displayNameOf(const X509& certificate) {
    const OpensslErrorScope errors;
    for (const int nid : kDisplayNameAttributes) {
        std::string text = subjectAttribute(certificate, nid);
        if (!text.empty()) {
            return text;
        }
    }
    const std::vector<std::string> addresses = alternativeNames(certificate, GEN_EMAIL);
    return !addresses.empty() ? addresses.front()
                              : attributeAt(X509_get_subject_name(&certificate), 0);
}

QDateTime notBeforeOf(const X509& certificate) {
    const OpensslErrorScope errors;
    return toDateTime(X509_get0_notBefore(&certificate));
}

QDateTime notAfterOf(const X509& certificate) {
    const OpensslErrorScope errors;
    return toDateTime(X509_get0_notAfter(&certificate));
}

QByteArray serialNumberOf(const X509& certificate) {
    const OpensslErrorScope errors;
    const ASN1_INTEGER* const number = X509_get0_serialNumber(&certificate);
    unsigned char* encoding = nullptr;
    const int size = i2d_ASN1_INTEGER(number, &encoding);
    const OpensslBytes owner(encoding);
    // The header is followed by the number in two's complement, most significant byte first.
    const unsigned char* content = encoding;
    long length = 0;
    int tag = 0;
    int tagClass = 0;
    if (size < 0 || (ASN1_get_object(&content, &length, &tag, &tagClass, size) & 0x80) != 0) {
        return {};
    }
    const bool hasSignByte = length > 1 && content[0] == 0;
    QByteArray bytes(reinterpret_cast<const char*>(content), length);
    if (hasSignByte) {
        bytes.remove(0, 1);
    }
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

QByteArray derOf(const X509& certificate) {
    const OpensslErrorScope errors;
    unsigned char* encoding = nullptr;
    const int size = i2d_X509(&certificate, &encoding);
    const OpensslBytes owner(encoding);
    return size < 0 ? QByteArray() : QByteArray(reinterpret_cast<const char*>(encoding), size);
}

} // namespace quorin::platform
