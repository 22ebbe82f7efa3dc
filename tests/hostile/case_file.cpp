#include "hostile/case_file.h"

#include <QStringBuilder>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace quorin::test {

namespace {

constexpr std::string_view kWhitespace = " \t";
constexpr std::string_view kPlaceholder = "{}";

std::string_view trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kWhitespace);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(kWhitespace) - first + 1);
}

// Removes the first word from `text` and returns it.
std::string_view takeWord(std::string_view& text) {
    text = trim(text);
    const std::size_t end = std::min(text.find_first_of(kWhitespace), text.size());
    const std::string_view word = text.substr(0, end);
    text = trim(text.substr(end));
    return word;
}

std::string replacePlaceholder(std::string_view line, std::string_view word) {
    std::string result(line);
    for (std::size_t position = 0;
         (position = result.find(kPlaceholder, position)) != std::string::npos;
         position += word.size()) {
        result.replace(position, kPlaceholder.size(), word);
    }
    return result;
}

// Removes the quoted text at the start of `text` and returns its bytes.
QByteArray takeQuoted(std::string_view& text) {
    if (!text.starts_with('"')) {
        throw std::invalid_argument("missing quoted text");
    }
    QByteArray bytes;
    for (std::size_t position = 1; position < text.size(); ++position) {
        if (text[position] == '"') {
            text = trim(text.substr(position + 1));
            return bytes;
        }
        if (text[position] != '\\') {
            bytes += text[position];
            continue;
        }
        const char escape = ++position < text.size() ? text[position] : '\0';
        switch (escape) {
        case 'r':
            bytes += '\r';
            break;
        case 'n':
            bytes += '\n';
            break;
        case '\\':
        case '"':
            bytes += escape;
            break;
        case 'x':
            bytes += static_cast<char>(
                std::stoi(std::string(text.substr(position + 1, 2)), nullptr, 16));
            position += 2;
            break;
        default:
            throw std::invalid_argument("unknown escape sequence");
        }
    }
    throw std::invalid_argument("unterminated quoted text");
}

// Returns the reply without a body for a status.
QByteArray plainReply(std::string_view status) {
    static const std::map<std::string_view, const char*> replies{
        {"400", "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n"},
        {"404", "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n"},
        {"405", "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n"},
        {"500", "HTTP/1.1 500 Internal Server Error\r\n\r\n"},
    };
    return replies.at(status);
}

QByteArray downloadReply(const QByteArray& content) {
    return "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(content.size()) +
           "\r\nContent-Type: inode/directory\r\n\r\n" + content;
}

// Evaluates the bytes up to the end of the line.
QByteArray takeBytes(std::string_view& text) {
    QByteArray bytes;
    while (!text.empty()) {
        if (text.front() == '"') {
            bytes += takeQuoted(text);
            continue;
        }
        const std::string_view word = takeWord(text);
        if (word == "download") {
            bytes += downloadReply(takeBytes(text));
        } else if (text.starts_with("x ")) {
            takeWord(text);
            bytes += takeQuoted(text).repeated(std::stoi(std::string(word)));
        } else {
            bytes += plainReply(word);
        }
    }
    return bytes;
}

Step readStep(int line, std::string_view text) {
    Step step{.line = line, .verb = std::string(takeWord(text)), .argument = {}, .bytes = {}};
    const bool hasArgument = step.verb == "settings" || step.verb == "file" ||
                             step.verb == "expect-file" || step.verb == "hold" ||
                             step.verb == "system";
    if (hasArgument) {
        const std::string_view word = takeWord(text);
        step.argument = QByteArray(word.data(), static_cast<qsizetype>(word.size()));
    }
    step.bytes = takeBytes(text);
    return step;
}

// An "each" and the indented lines after it.
struct Each {
    std::vector<std::string> words;
    std::vector<std::pair<int, std::string>> lines;
};

void expandEach(Each& each, std::vector<Step>& steps) {
    for (const std::string& word : each.words) {
        for (const auto& [line, text] : each.lines) {
            steps.push_back(readStep(line, replacePlaceholder(text, word)));
        }
    }
    each = {};
}

void readLine(int line, std::string_view text, Each& each, std::vector<Step>& steps) {
    const bool isIndented = text.find_first_not_of(kWhitespace) > 0;
    std::string_view rest = trim(text);
    if (rest.empty() || rest.front() == '#') {
        return;
    }
    if (isIndented) {
        if (each.words.empty()) {
            throw std::invalid_argument("indented line without \"each\"");
        }
        each.lines.emplace_back(line, rest);
        return;
    }
    expandEach(each, steps);
    if (rest.starts_with("each ")) {
        takeWord(rest);
        while (!rest.empty()) {
            each.words.emplace_back(takeWord(rest));
        }
    } else {
        steps.push_back(readStep(line, rest));
    }
}

bool isContinuation(std::istream& file) {
    const std::streampos begin = file.tellg();
    std::string text;
    const bool startsWithQuote = std::getline(file, text) && trim(text).starts_with('"');
    file.clear();
    file.seekg(begin);
    return startsWithQuote;
}

} // namespace

std::vector<Step> readCase(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path.string() + ": cannot read the file");
    }
    std::vector<Step> steps;
    Each each;
    std::string text;
    for (int number = 1; std::getline(file, text);) {
        const int line = number++;
        // A line that starts with a quote continues the previous line.
        while (file && isContinuation(file)) {
            std::string more;
            std::getline(file, more);
            text.append(" ").append(more);
            ++number;
        }
        try {
            readLine(line, text, each, steps);
        } catch (const std::exception& exception) {
            throw std::runtime_error(path.string() + ":" + std::to_string(line) + ": " +
                                     exception.what());
        }
    }
    expandEach(each, steps);
    return steps;
}

std::vector<std::filesystem::path> findCases(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".case") {
            found.push_back(entry.path());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace quorin::test
