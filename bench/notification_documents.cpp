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

// Does not use any of the libraries compared, so that none of them determines the text.
class DocumentBuilder {
public:
    std::string build(std::size_t bytes) {
        std::string text = "{";
        for (const std::string_view item : kItems) {
            text += pendingItem(item) + ',';
        }
        text += R"("Unit":{"SerialNumber":"SN-00418277","Site":"Ward 3 / North","Port":8080},)";
        text += R"("History":[)" + historyEntry();
        constexpr std::string_view kRemark = R"(],"Remark":")";
        constexpr std::string_view kEnd = R"("})";
        for (;;) {
            const std::string entry = ',' + historyEntry();
            if (text.size() + entry.size() + kRemark.size() + kEnd.size() > bytes) {
                break;
            }
            text += entry;
        }
        text += kRemark;
        while (text.size() + kEnd.size() < bytes) {
            text += '.'; // pads to the size requested
        }
        text += kEnd;
        return text;
    }

private:
    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    std::string date() {
        return "2024-" + twoDigits(1 + below(12)) + '-' + twoDigits(1 + below(28)) + 'T' +
               twoDigits(below(24)) + ':' + twoDigits(below(60)) + ':' + twoDigits(below(60));
    }

    std::string pendingItem(std::string_view name) {
        std::string text = "\"";
        text += name;
        text += R"(":{"IsExist":)";
        text += below(2) == 0 ? "true" : "false";
        text += R"(,"LastUpdated":")" + date() + R"("})";
        return text;
    }

    std::string historyEntry() {
        std::string text = R"({"Sequence":)" + std::to_string(++sequence_);
        text += R"(,"Item":")";
        text += kItems[below(kItems.size())];
        text += R"(","LastUpdated":")" + date();
        text += R"(","Acknowledged":)";
        text += below(4) == 0 ? "null" : "true";
        text += R"(,"Message":")";
        text += kMessages[below(kMessages.size())];
        text += R"(","Seconds":)" + std::to_string(below(600)) + '.' + std::to_string(below(1000));
        text += R"(,"Counts":[)" + std::to_string(below(10)) + ',' + std::to_string(below(5000)) +
                ',' + std::to_string(below(2'000'000)) + "]}";
        return text;
    }

    std::mt19937 random_{20240517};
    unsigned sequence_ = 0;
};

} // namespace

std::string notificationDocument(std::size_t bytes) {
    return DocumentBuilder().build(bytes);
}
