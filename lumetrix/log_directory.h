#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

// For tests: an empty directory that is removed at the end, and the log lines in it.
class LogDirectory {
public:
    LogDirectory()
        : path_(std::filesystem::temp_directory_path() /
                ("lumetrix_" + std::to_string(std::random_device{}()))) {
        std::filesystem::create_directories(path_);
    }

    ~LogDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // In the encoding of the C functions.
    std::string utf8() const {
        const auto text = path_.u8string();
        return {text.begin(), text.end()};
    }

    std::vector<std::string> fileNames() const { return fileNamesIn(path_); }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
    }

    std::string content(const std::string& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // The lines of all files, in the order of the files' names.
    std::vector<std::string> lines() const { return linesIn(path_); }

    // What stands after "msg:" in each line; a line of another form as it is.
    std::vector<std::string> messages() const { return messagesOf(lines()); }

    static std::vector<std::string> linesIn(const std::filesystem::path& directory) {
        std::vector<std::string> all;
        for (const auto& name : fileNamesIn(directory)) {
            std::ifstream file(directory / name);
            for (std::string line; std::getline(file, line);) {
                all.push_back(line);
            }
        }
        return all;
    }

    static std::vector<std::string> messagesOf(const std::vector<std::string>& lines) {
        static const std::regex head(R"(_dt:\d{8}T\d{6}\.\d{3}[+-]\d\d:\d\d)"
                                     "\t_l:[a-z]+\t_th:\\d+\t_m:Quorin5\tmsg:");
        std::vector<std::string> messages;
        for (const auto& line : lines) {
            std::smatch match;
            const bool isLine =
                std::regex_search(line, match, head, std::regex_constants::match_continuous);
            messages.push_back(isLine ? match.suffix().str() : line);
            if (messages.back().ends_with('\r')) {
                messages.back().pop_back();
            }
        }
        return messages;
    }

    static std::vector<std::string> split(const std::string& text) {
        std::istringstream stream(text);
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

private:
    static std::vector<std::string> fileNamesIn(const std::filesystem::path& directory) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::filesystem::path path_;
};

// Noon of the day `days` after today: never near a change of the date.
inline std::chrono::system_clock::time_point noonIn(int days) {
    const std::time_t now = std::time(nullptr);
    std::tm date = *std::localtime(&now);
    date.tm_mday += days;
    date.tm_hour = 12;
    date.tm_min = 0;
    date.tm_sec = 0;
    date.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&date));
}

// BASE_YYYY-MM-DD.log for that day.
inline std::string dayFile(const std::string& base, int days) {
    const std::time_t noon = std::chrono::system_clock::to_time_t(noonIn(days));
    std::string date(sizeof "YYYY-MM-DD", '\0');
    date.resize(std::strftime(date.data(), date.size(), "%Y-%m-%d", std::localtime(&noon)));
    return base + "_" + date + ".log";
}
