#include "standard_error.h"

#include "line_format.h"

#include <cstdio>

namespace lumetrix {

void reportToStandardError(std::string_view text) {
    constexpr std::string_view kPrefix = "lumetrix: ";
    spdlog::memory_buf_t line;
    line.append(kPrefix.data(), kPrefix.data() + kPrefix.size());
    appendEscaped(text, line);
    line.push_back('\n');
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
    static_cast<void>(std::fflush(stderr));
}

} // namespace lumetrix
