#pragma once

#include <QByteArray>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

// Reads the case files of hostile_test. README.md in the folder of the cases describes their
// format.
namespace quorin::test {

// One step of a case, with its bytes already evaluated.
struct Step {
    int line = 0;
    std::string verb;    // the first word, such as "send"
    QByteArray argument; // the word before the bytes; empty for most verbs
    QByteArray bytes;
};

// Reads the steps of a case file and expands "each". Throws std::runtime_error, with file and line,
// if the file cannot be read or is malformed.
[[nodiscard]] std::vector<Step> readCase(const std::filesystem::path& path);

// Returns the case files in `folder`, sorted by name.
[[nodiscard]] std::vector<std::filesystem::path> findCases(const std::filesystem::path& folder);

} // namespace quorin::test
