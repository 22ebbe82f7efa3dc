#pragma once

#include <QByteArray>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

// The text files that say what a client does and what comes back; README.md beside them describes
// their form.
namespace quorin::test {

// A line: what to do, and with what. Quoted bytes are put together already.
struct Step {
    int line = 0;
    std::string verb;
    QByteArray argument; // what stands before the quoted bytes
    QByteArray bytes;
};

// All steps of a file, those of an "each" repeated. Throws std::runtime_error, which names file
// and line, when the file cannot be read or does not keep to the form.
[[nodiscard]] std::vector<Step> readCase(const std::filesystem::path& path);

// The files of the folder, in the order of their names.
[[nodiscard]] std::vector<std::filesystem::path> findCases(const std::filesystem::path& folder);

} // namespace quorin::test
