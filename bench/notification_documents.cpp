#include "notification_documents.h"

#include <array>
#include <random>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 3> kItems = {"RemoteExecution", "RemoteExecutionCancel",
                                                    "RemoteSetting"};
constexpr std::array<std::string_view, 4> kMessages = {
    "Self-test requested by the service desk; the unit is in use.",
    "Firmware 4.12.1 is staged and waits for the next restart.",
    "Einstellungen übernommen, Neustart um Mitternacht geplant.",
    R"(Operator's remark:\n\"keep the pattern loaded\" \u2014 see C:\\logs\\unit.txt)",
};

std::string twoDigits(unsigned number) {
    std::string text = std::to_string(number % 100);
    return text.size() < 2 ? '0' + text : text;
}

/// Writes the documents by hand, so that none of the libraries compared has a say in the text.
class DocumentBuilder {
public:
    std::string build(std::size_t bytes) {
        text_ = '{';
        for (const std::string_view item : kItems) {
            appendPendingItem(item);
            text_ += ',';
        }
        text_ += R"("Unit":{"SerialNumber":"SN-00418277","Site":"Ward 3 / North","Port":8080},)";
        text_ += R"("History":[)";
        appendHistoryEntry();
        while (text_.size() + 2 < bytes) {
            text_ += ',';
            appendHistoryEntry();
        }
        text_ += "]}";
        return std::move(text_);
    }

private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    std::string date() {
        return "2024-" + twoDigits(1 + below(12)) + '-' + twoDigits(1 + below(28)) + 'T' +
               twoDigits(below(24)) + ':' + twoDigits(below(60)) + ':' + twoDigits(below(60));
    }

    void appendPendingItem(std::string_view name) {
        text_ += '"';
        text_ += name;
        text_ += R"(":{"IsExist":)";
        text_ += below(2) == 0 ? "true" : "false";
        text_ += R"(,"LastUpdated":")" + date() + R"("})";
    }

    void appendHistoryEntry() {
        text_ += R"({"Sequence":)" + std::to_string(++sequence_);
        text_ += R"(,"Item":")";
        text_ += kItems[below(kItems.size())];
        text_ += R"(","LastUpdated":")" + date();
        text_ += R"(","Acknowledged":)";
        text_ += below(4) == 0 ? "null" : "true";
        text_ += R"(,"Message":")";
        text_ += kMessages[below(kMessages.size())];
        text_ += R"(","Seconds":)" + std::to_string(below(600)) + '.' + std::to_string(below(1000));
        text_ += R"(,"Counts":[)" + std::to_string(below(10)) + ',' + std::to_string(below(5000)) +
                 ',' + std::to_string(below(2'000'000)) + "]}";
    }

    std::string text_;
    std::mt19937 random_{20240517};
    unsigned sequence_ = 0;
};

} // namespace

std::string notificationDocument(std::size_t bytes) {
    return DocumentBuilder().build(bytes);
}
