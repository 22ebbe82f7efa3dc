#include "platform/unix/base64_lines.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace quorin::platform {

namespace {

constexpr qsizetype kBytesPerLine = 48;
constexpr QByteArrayView kLineEnd = "\r\n";

constexpr std::size_t encodedSize(qsizetype bytes) {
    const qsizetype lines = (bytes + kBytesPerLine - 1) / kBytesPerLine;
    return static_cast<std::size_t>((bytes + 2) / 3 * 4 + lines * kLineEnd.size());
}

} // namespace

SecretBytes base64LinesOf(QByteArrayView bytes) {
    SecretBytes text(encodedSize(bytes.size()) + 1); // EVP_EncodeBlock() appends a NUL
    char* end = text.data();
    while (!bytes.isEmpty()) {
        const QByteArrayView line = bytes.first(std::min(bytes.size(), kBytesPerLine));
        bytes = bytes.sliced(line.size());
        end += EVP_EncodeBlock(reinterpret_cast<unsigned char*>(end),
                               reinterpret_cast<const unsigned char*>(line.data()),
                               static_cast<int>(line.size()));
        end = std::copy(kLineEnd.begin(), kLineEnd.end(), end);
    }
    text.truncate(text.size() - 1);
    return text;
}

} // namespace quorin::platform
