#include "log_directory.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

std::vector<std::string> fileNamesIn(const std::filesystem::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> readLines(std::istream& text) {
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        if (line.ends_with('\r')) { // log lines end in CRLF on Windows
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

bool isTimestamp(std::string_view field) {
    constexpr std::string_view kPattern = "_dt:00000000T000000.000+00:00";
    return std::equal(field.begin(), field.end(), kPattern.begin(), kPattern.end(),
                      [](char c, char expected) {
                          const bool isDigit = '0' <= c && c <= '9';
                          return expected == '0'   ? isDigit
                                 : expected == '+' ? c == '+' || c == '-'
                                                   : c == expected;
                      });
}

} // namespace

LogDirectory::LogDirectory()
    : LogDirectory(std::filesystem::temp_directory_path() /
                   ("lumetrix_" + std::to_string(std::random_device{}()))) {}

LogDirectory::LogDirectory(std::filesystem::path path) : path_(std::move(path)) {
    std::filesystem::create_directories(path_);
}

LogDirectory::~LogDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string LogDirectory::utf8() const {
    const auto text = path_.u8string();
    return {text.begin(), text.end()};
}

std::vector<std::string> LogDirectory::fileNames() const {
    return fileNamesIn(path_);
}

void LogDirectory::write(const std::string& name, const std::string& content) const {
    std::ofstream(path_ / name, std::ios::binary) << content;
}

std::string LogDirectory::content(const std::string& name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> LogDirectory::linesIn(const std::filesystem::path& directory) {
    std::vector<std::string> all;
    for (const auto& name : fileNamesIn(directory)) {
        std::ifstream file(directory / name, std::ios::binary);
        std::ranges::move(readLines(file), std::back_inserter(all));
    }
    return all;
}

std::vector<std::string> LogDirectory::messagesOf(const std::vector<std::string>& lines) {
    std::vector<std::string> messages;
    for (const auto& line : lines) {
        std::vector<std::string> fields;
        std::istringstream text(line);
        for (std::string field; std::getline(text, field, '\t');) {
            fields.push_back(field);
        }
        const bool matches = fields.size() == 5 && isTimestamp(fields[0]) &&
                             fields[1].starts_with("_l:") && fields[2].starts_with("_th:") &&
                             fields[3] == "_m:Quorin5" && fields[4].starts_with("msg:");
        messages.push_back(matches ? fields[4].substr(4) : line);
    }
    return messages;
}

std::vector<std::string> LogDirectory::splitLines(const std::string& text) {
    std::istringstream stream(text);
    return readLines(stream);
}

std::chrono::system_clock::time_point noonOfDay(int days) {
    const std::time_t now = std::time(nullptr);
    std::tm date = *std::localtime(&now);
    date.tm_mday += days;
    date.tm_hour = 12;
    date.tm_min = 0;
    date.tm_sec = 0;
    date.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&date));
}

std::string dailyFileName(const std::string& base, int days) {
    const std::time_t noon = std::chrono::system_clock::to_time_t(noonOfDay(days));
    std::string date(sizeof "YYYY-MM-DD", '\0');
    date.resize(std::strftime(date.data(), date.size(), "%Y-%m-%d", std::localtime(&noon)));
    return base + "_" + date + ".log";
}
