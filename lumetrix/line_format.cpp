#include "line_format.h"

#include <spdlog/pattern_formatter.h>

#include <algorithm>
#include <string>

namespace lumetrix {
namespace {

constexpr bool needsEscape(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f || c == '\\';
}

void append(std::string_view text, spdlog::memory_buf_t& line) {
    line.append(text.data(), text.data() + text.size());
}

void appendEscaped(char c, spdlog::memory_buf_t& line) {
    switch (c) {
    case '\n':
        return append("\\n", line);
    case '\r':
        return append("\\r", line);
    case '\t':
        return append("\\t", line);
    case '\\':
        return append("\\\\", line);
    default: {
        constexpr std::string_view kDigits = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        append("\\x", line);
        line.push_back(kDigits[byte >> 4U]);
        line.push_back(kDigits[byte & 0xfU]);
    }
    }
}

class EscapedMessage final : public spdlog::custom_flag_formatter {
public:
    void format(const spdlog::details::log_msg& message, const std::tm&,
                spdlog::memory_buf_t& line) override {
        lumetrix::appendEscaped({message.payload.data(), message.payload.size()}, line);
    }

    std::unique_ptr<custom_flag_formatter> clone() const override {
        return std::make_unique<EscapedMessage>();
    }
};

} // namespace

void appendEscaped(std::string_view text, spdlog::memory_buf_t& line) {
    auto plain = text.begin();
    while (plain != text.end()) {
        const auto special = std::find_if(plain, text.end(), needsEscape);
        append({plain, special}, line);
        if (special == text.end()) {
            return;
        }
        appendEscaped(*special, line);
        plain = special + 1;
    }
}

std::unique_ptr<spdlog::formatter> makeLineFormatter(std::string_view pattern) {
    auto formatter = std::make_unique<spdlog::pattern_formatter>();
    formatter->add_flag<EscapedMessage>('v').set_pattern(std::string(pattern));
    return formatter;
}

} // namespace lumetrix
