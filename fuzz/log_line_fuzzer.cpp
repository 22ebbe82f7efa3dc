// Writes arbitrary messages with the bundled logging library. The first byte selects the level and
// whether the messages are only formatted or also written to log files; two more bytes then select
// the rotation by size. The messages are separated by the byte 0xFF.
//   - Each message becomes one line of five fields without other control characters, from which it
//     can be read back.
//   - The log files contain the last messages, complete and in order; there are not more files than
//     configured, and a file of several lines is not larger than configured.

#include "line_format.h"
#include "output.h"
#include "require.h"

#include <spdlog/details/log_msg.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace {

using namespace std::string_view_literals;

// The times of all lines are equal, so that a failure can be repeated.
constexpr spdlog::log_clock::time_point kTime{std::chrono::milliseconds(1'700'000'000'123)};

struct Options {
    spdlog::level::level_enum level = spdlog::level::info;
    bool writesFiles = false;
    int filesKept = 1;
    std::size_t maxBytes = 1;
    std::size_t heldMessages = 0; // messages that are logged before the file is set
};

spdlog::details::log_msg messageOf(std::string_view text, const Options& options) {
    return {kTime, spdlog::source_loc{}, {}, options.level, {text.data(), text.size()}};
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

std::string unescaped(std::string_view text) {
    constexpr std::string_view kLetters = "nrt\\";
    constexpr std::string_view kCharacters = "\n\r\t\\";
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            plain.push_back(text[i]);
            continue;
        }
        ++i;
        require(i < text.size(), "a backslash starts an escape");
        const std::size_t letter = kLetters.find(text[i]);
        if (letter != std::string_view::npos) {
            plain.push_back(kCharacters[letter]);
        } else {
            require(text[i] == 'x' && i + 2 < text.size(), "an escape is known and complete");
            plain.push_back(
                static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16)));
            i += 2;
        }
    }
    return plain;
}

// Checks the line, which has no line end, and returns its message.
std::string messageIn(std::string_view line) {
    const std::vector<std::string_view> fields = split(line, '\t');
    constexpr std::array kNames{"_dt:"sv, "_l:"sv, "_th:"sv, "_m:Quorin5"sv, "msg:"sv};
    require(fields.size() == kNames.size(), "a line has five fields");
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        require(fields[i].starts_with(kNames[i]), "each field has its name");
        require(std::none_of(fields[i].begin(), fields[i].end(),
                             [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; }),
                "a field has no control character");
    }
    return unescaped(fields.back().substr(kNames.back().size()));
}

void checkFormat(std::string_view text, const Options& options) {
    static const auto formatter = lumetrix::makeLineFormatter(lumetrix::kLinePattern);
    static const auto consoleFormatter = lumetrix::makeLineFormatter(lumetrix::kConsolePattern);
    const auto message = messageOf(text, options);
    spdlog::memory_buf_t line;
    formatter->format(message, line);
    require(line.size() > 0 && line[line.size() - 1] == '\n', "a line has a line end");
    require(messageIn({line.data(), line.size() - 1}) == text, "the message can be read back");

    spdlog::memory_buf_t consoleLine;
    consoleFormatter->format(message, consoleLine);
    require(std::equal(line.begin(), line.end(), consoleLine.begin(), consoleLine.end()),
            "the line for the console has the same text");
}

// A folder in memory that is empty for each input. Removed by the destructor.
class Folder {
public:
    Folder() : path_("/dev/shm/gateway-fuzz-log-" + std::to_string(getpid())) {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directory(path_);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Returns the messages in the files, oldest first.
std::vector<std::string> writtenMessages(const std::filesystem::path& folder,
                                         const Options& options) {
    std::vector<std::string> names{"Gateway.log"};
    for (int index = 1; index < options.filesKept; ++index) {
        names.push_back("Gateway." + std::to_string(index) + ".log");
    }
    std::vector<std::string> messages;
    std::ptrdiff_t files = 0;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (!std::filesystem::exists(folder / *name)) {
            continue;
        }
        ++files;
        const std::string content = contentOf(folder / *name);
        if (content.empty()) {
            continue;
        }
        std::vector<std::string_view> lines = split(content, '\n');
        require(lines.back().empty(), "a file ends with a line end");
        lines.pop_back();
        require(lines.size() == 1 || content.size() <= options.maxBytes,
                "a file of several lines is not too large");
        std::transform(lines.begin(), lines.end(), std::back_inserter(messages), messageIn);
    }
    require(std::distance(std::filesystem::directory_iterator(folder),
                          std::filesystem::directory_iterator()) == files,
            "there are no other files");
    return messages;
}

void checkFiles(const std::vector<std::string_view>& texts, const Options& options) {
    const Folder folder;
    lumetrix::Output output;
    output.setRotation({options.filesKept, options.maxBytes});
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i == options.heldMessages) {
            output.setFile(folder.path(), "Gateway");
        }
        output.log(messageOf(texts[i], options));
    }
    if (options.heldMessages >= texts.size()) {
        output.setFile(folder.path(), "Gateway");
    }
    output.close();

    const std::vector<std::string> written = writtenMessages(folder.path(), options);
    require(!written.empty() && written.size() <= texts.size(), "the last message is written");
    require(std::equal(written.rbegin(), written.rend(), texts.rbegin()),
            "the files contain the last messages");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kOptionBytes = 3;
    constexpr std::size_t kMaxMessages = 64;
    if (size < kOptionBytes) {
        return 0;
    }
    Options options;
    options.level = static_cast<spdlog::level::level_enum>(data[0] % spdlog::level::off);
    options.writesFiles = data[0] >= 0x80;
    options.filesKept = 1 + data[1] % 8;
    options.heldMessages = data[1] / 16;
    options.maxBytes = 1 + std::size_t{data[2]} * 16;
    const std::string_view input(reinterpret_cast<const char*>(data + kOptionBytes),
                                 size - kOptionBytes);
    std::vector<std::string_view> texts = split(input, '\xff');
    texts.resize(std::min(texts.size(), kMaxMessages));
    for (const std::string_view text : texts) {
        checkFormat(text, options);
    }
    if (options.writesFiles) {
        checkFiles(texts, options);
    }
    return 0;
}
