#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

// For tests: an empty directory that is removed at the end, and the log lines in it.
class LogDirectory {
public:
    LogDirectory();
    explicit LogDirectory(std::filesystem::path path);
    ~LogDirectory();

    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    // In the encoding of the C functions.
    std::string utf8() const;

    std::vector<std::string> fileNames() const;
    void write(const std::string& name, const std::string& content) const;
    std::string content(const std::string& name) const;

    // The lines of all files, in the order of the files' names.
    std::vector<std::string> lines() const { return linesIn(path_); }
    static std::vector<std::string> linesIn(const std::filesystem::path& directory);

    // What stands after "msg:" in each line; a line of another form as it is.
    std::vector<std::string> messages() const { return messagesOf(lines()); }
    static std::vector<std::string> messagesOf(const std::vector<std::string>& lines);

    static std::vector<std::string> split(const std::string& text);

private:
    std::filesystem::path path_;
};

// Noon of the day `days` after today: never near a change of the date.
std::chrono::system_clock::time_point noonIn(int days);

// BASE_YYYY-MM-DD.log for that day.
std::string dayFile(const std::string& base, int days);
