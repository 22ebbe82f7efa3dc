#include "line_format.h"

#include <spdlog/details/log_msg.h>
#include <spdlog/details/os.h>

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace lumetrix {
namespace {

std::string escaped(std::string_view text) {
    spdlog::memory_buf_t line;
    appendEscaped(text, line);
    return fmt::to_string(line);
}

std::string formatted(std::string_view pattern, spdlog::level::level_enum level,
                      std::string_view text) {
    std::tm date{};
    date.tm_year = 2024 - 1900;
    date.tm_mon = 1;
    date.tm_mday = 29;
    date.tm_hour = 23;
    date.tm_min = 59;
    date.tm_sec = 58;
    date.tm_isdst = -1;
    spdlog::details::log_msg message({}, level, {text.data(), text.size()});
    message.time =
        spdlog::log_clock::from_time_t(std::mktime(&date)) + std::chrono::milliseconds(7);
    message.thread_id = 4711;
    spdlog::memory_buf_t line;
    makeLineFormatter(pattern)->format(message, line);
    return fmt::to_string(line);
}

std::string offsetFromUtc() {
    const std::time_t time = 1709251198; // 29 February 2024
    const int minutes = spdlog::details::os::utc_minutes_offset(*std::localtime(&time));
    return fmt::format("{}{:02}:{:02}", minutes < 0 ? '-' : '+', std::abs(minutes) / 60,
                       std::abs(minutes) % 60);
}

TEST(LineFormatTest, SeparatesKeyedFieldsWithTabs) {
    EXPECT_EQ(formatted(kLinePattern, spdlog::level::info, "server started"),
              "_dt:20240229T235958.007" + offsetFromUtc() +
                  "\t_l:info\t_th:4711\t_m:Quorin5\tmsg:server started" +
                  spdlog::details::os::default_eol);
}

TEST(LineFormatTest, WritesLevelNames) {
    EXPECT_NE(formatted(kLinePattern, spdlog::level::debug, "").find("\t_l:debug\t"),
              std::string::npos);
    EXPECT_NE(formatted(kLinePattern, spdlog::level::warn, "").find("\t_l:warning\t"),
              std::string::npos);
    EXPECT_NE(formatted(kLinePattern, spdlog::level::err, "").find("\t_l:error\t"),
              std::string::npos);
}

TEST(LineFormatTest, ConsoleLineHasSameText) {
    EXPECT_EQ(formatted(kConsolePattern, spdlog::level::warn, "a\tb"),
              formatted(kLinePattern, spdlog::level::warn, "a\tb"));
}

TEST(LineFormatTest, MessageCannotForgeLineOrField) {
    const auto line = formatted(kLinePattern, spdlog::level::info, "a\n_dt:x\t_l:error\r\nb");
    EXPECT_NE(line.find("\tmsg:a\\n_dt:x\\t_l:error\\r\\nb"), std::string::npos) << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST(LineFormatTest, KeepsPlainTextUnchanged) {
    EXPECT_EQ(escaped(""), "");
    EXPECT_EQ(escaped("GET fwfiles/a%20b.zip - -  200 0 %v {}"),
              "GET fwfiles/a%20b.zip - -  200 0 %v {}");
    EXPECT_EQ(escaped("gr\xc3\xbc\xc3\x9f \xe6\x97\xa5 \xff"),
              "gr\xc3\xbc\xc3\x9f \xe6\x97\xa5 \xff");
}

TEST(LineFormatTest, EscapesControlCharactersAndBackslash) {
    EXPECT_EQ(escaped("\n\r\t\\"), "\\n\\r\\t\\\\");
    EXPECT_EQ(escaped("\\n"), "\\\\n"); // must differ from an escaped line feed
    EXPECT_EQ(escaped("\x1b[31mred\x7f"), "\\x1b[31mred\\x7f");
    EXPECT_EQ(escaped(std::string_view("\0\x01\x1f", 3)), "\\x00\\x01\\x1f");
    EXPECT_EQ(escaped("C:\\log\ttwo\nlines"), "C:\\\\log\\ttwo\\nlines");
}

} // namespace
} // namespace lumetrix
