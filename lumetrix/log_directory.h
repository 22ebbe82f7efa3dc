#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

// Creates a log directory, reads the log lines in it, and removes it in the destructor. For tests.
class LogDirectory {
public:
    LogDirectory();
    explicit LogDirectory(std::filesystem::path path);
    ~LogDirectory();

    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // The path in UTF-8, as the C functions expect it.
    std::string utf8() const;

    std::vector<std::string> fileNames() const;
    void write(const std::string& name, const std::string& content) const;
    std::string content(const std::string& name) const;

    // The lines of all files, sorted by file name.
    std::vector<std::string> lines() const { return linesIn(path_); }
    static std::vector<std::string> linesIn(const std::filesystem::path& directory);

    // The text after "msg:" of each line. A line that does not match the format is returned
    // unchanged.
    std::vector<std::string> messages() const { return messagesOf(lines()); }
    static std::vector<std::string> messagesOf(const std::vector<std::string>& lines);

    // Splits `text` into lines; accepts LF and CRLF.
    static std::vector<std::string> splitLines(const std::string& text);

private:
    std::filesystem::path path_;
};

// Noon, local time, of the day `days` days from today: a time that is not close to midnight.
std::chrono::system_clock::time_point noonOfDay(int days);

// BASE_YYYY-MM-DD.log for the day `days` days from today.
std::string dailyFileName(const std::string& base, int days);
