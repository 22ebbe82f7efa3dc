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

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kPlaceholder = "{}";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos
               ? std::string_view()
               : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Takes the first word off `text`.
std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

std::string withWord(std::string_view line, std::string_view word) {
    std::string result(line);
    for (std::size_t place = 0; (place = result.find(kPlaceholder, place)) != std::string::npos;
         place += word.size()) {
        result.replace(place, kPlaceholder.size(), word);
    }
    return result;
}

// The bytes of the quoted text that `text` begins with; takes it off.
QByteArray takeQuoted(std::string_view& text) {
    if (!text.starts_with('"')) {
        throw std::invalid_argument("a quotation is missing");
    }
    QByteArray bytes;
    for (std::size_t place = 1; place < text.size(); ++place) {
        if (text[place] == '"') {
            text = trimmed(text.substr(place + 1));
            return bytes;
        }
        if (text[place] != '\\') {
            bytes += text[place];
            continue;
        }
        const char escape = ++place < text.size() ? text[place] : '\0';
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
            bytes +=
                static_cast<char>(std::stoi(std::string(text.substr(place + 1, 2)), nullptr, 16));
            place += 2;
            break;
        default:
            throw std::invalid_argument("an escape that is none");
        }
    }
    throw std::invalid_argument("a quotation that does not end");
}

// The replies without a body, by their status.
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

// What stands up to the end of the line, put together.
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

// An "each" and the indented lines behind it.
struct Each {
    std::vector<std::string> words;
    std::vector<std::pair<int, std::string>> lines;
};

void closeEach(Each& each, std::vector<Step>& steps) {
    for (const std::string& word : each.words) {
        for (const auto& [line, text] : each.lines) {
            steps.push_back(readStep(line, withWord(text, word)));
        }
    }
    each = {};
}

void readLine(int line, std::string_view text, Each& each, std::vector<Step>& steps) {
    const bool isIndented = text.find_first_not_of(kBlanks) > 0;
    std::string_view rest = trimmed(text);
    if (rest.empty() || rest.front() == '#') {
        return;
    }
    if (isIndented) {
        if (each.words.empty()) {
            throw std::invalid_argument("an indented line that belongs to no \"each\"");
        }
        each.lines.emplace_back(line, rest);
        return;
    }
    closeEach(each, steps);
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
    const bool isQuotation = std::getline(file, text) && trimmed(text).starts_with('"');
    file.clear();
    file.seekg(begin);
    return isQuotation;
}

} // namespace

std::vector<Step> readCase(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path.string() + " cannot be read");
    }
    std::vector<Step> steps;
    Each each;
    std::string text;
    for (int number = 1; std::getline(file, text);) {
        const int line = number++;
        // A line that begins with a quotation belongs to the one before.
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
    closeEach(each, steps);
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
