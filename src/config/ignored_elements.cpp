#include "config/ignored_elements.h"

#include "config/element_names.h"
#include "config/element_paths.h"

#include <tinyxml2.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

namespace quorin {

namespace {

using tinyxml2::XMLElement;

struct KnownElement {
    const char* parent;
    const char* name;
    int count = 1; // elements of this name that are read
};

// Every element below the root, and its parent. The two groups have the same content.
constexpr std::array kKnownElements{
    KnownElement{element::kQuorinGatewaySetting, element::kPrimaryGatewaySetting},
    KnownElement{element::kQuorinGatewaySetting, element::kSecondaryGatewaySetting},
    KnownElement{element::kQuorinGatewaySetting, element::kGeneral},
    KnownElement{element::kPrimaryGatewaySetting, element::kHttp},
    KnownElement{element::kPrimaryGatewaySetting, element::kProxy},
    KnownElement{element::kSecondaryGatewaySetting, element::kHttp},
    KnownElement{element::kSecondaryGatewaySetting, element::kProxy},
    KnownElement{element::kHttp, element::kLog},
    KnownElement{element::kHttp, element::kPort},
    KnownElement{element::kHttp, element::kMaxUserSession},
    KnownElement{element::kHttp, element::kMaxTCPConnection},
    KnownElement{element::kHttp, element::kConnectionTimeout},
    KnownElement{element::kHttp, element::kHTTPRequestTimeout},
    KnownElement{element::kHttp, element::kThreadReadBufferSize},
    KnownElement{element::kHttp, element::kIsMadeClientRequestWaited},
    KnownElement{element::kHttp, element::kMaxLargeFileRequest},
    KnownElement{element::kHttp, element::kHttpsEnabled},
    KnownElement{element::kLog, element::kQueueSize},
    KnownElement{element::kLog, element::kApplicationLog},
    KnownElement{element::kApplicationLog, element::kLogLevel},
    KnownElement{element::kApplicationLog, element::kGeneration},
    KnownElement{element::kProxy, element::kIsEnabledHttpInFacility},
    KnownElement{element::kGeneral, element::kGatewayConnectSetting, 2},
    KnownElement{element::kGeneral, element::kOrganizationId},
    KnownElement{element::kGeneral, element::kQuorinCloud},
    KnownElement{element::kGatewayConnectSetting, element::kGatewayAddress},
    KnownElement{element::kQuorinCloud, element::kRootUrl},
};

// Names up to this length may differ by one letter only; otherwise most short names would resemble
// each other.
constexpr std::size_t kShortName = 4;

std::string toLower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return lower;
}

// Returns how many letters must be inserted, removed or replaced to turn `left` into `right`.
std::size_t editDistance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> row(right.size() + 1); // distances of the empty prefix of `left`
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t replaced = diagonal + (left[i] == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

bool resembles(std::string_view name, std::string_view known) {
    const std::size_t allowed = known.size() <= kShortName ? 1 : 2;
    // Compared first, so that a very long name costs nothing.
    const std::size_t difference =
        std::max(name.size(), known.size()) - std::min(name.size(), known.size());
    return difference <= allowed && editDistance(toLower(name), toLower(known)) <= allowed;
}

const KnownElement* find(std::string_view parent, std::string_view name) {
    const auto* const found =
        std::find_if(kKnownElements.begin(), kKnownElements.end(), [&](const KnownElement& known) {
            return parent == known.parent && name == known.name;
        });
    return found != kKnownElements.end() ? found : nullptr;
}

int numberAmongSiblings(const XMLElement& element) {
    int number = 1;
    for (const auto* sibling = element.PreviousSiblingElement(element.Name()); sibling != nullptr;
         sibling = sibling->PreviousSiblingElement(element.Name())) {
        ++number;
    }
    return number;
}

class Search {
public:
    explicit Search(bool primary)
        : otherGroup_(primary ? element::kSecondaryGatewaySetting
                              : element::kPrimaryGatewaySetting) {}

    // `parent` is an element that the gateway reads.
    void searchBelow(const XMLElement& parent) {
        for (const XMLElement* child = parent.FirstChildElement(); child != nullptr;
             child = child->NextSiblingElement()) {
            const KnownElement* const known = find(parent.Name(), child->Name());
            if (known == nullptr) {
                examineUnknown(parent, *child);
            } else if (numberAmongSiblings(*child) > known->count) {
                add(IgnoredElement::Cause::Repeated, *child, childPath(parent, child->Name()));
            } else if (otherGroup_ != child->Name()) {
                searchBelow(*child);
            }
        }
    }

    [[nodiscard]] std::vector<IgnoredElement> takeFound() { return std::move(found_); }

private:
    void examineUnknown(const XMLElement& parent, const XMLElement& child) {
        const std::string_view name = child.Name();
        for (const KnownElement& known : kKnownElements) {
            if (std::string_view(parent.Name()) == known.parent && resembles(name, known.name)) {
                add(IgnoredElement::Cause::Misspelled, child, childPath(parent, known.name));
                return;
            }
        }
        for (const KnownElement& known : kKnownElements) {
            if (name == known.name) {
                add(IgnoredElement::Cause::Misplaced, child,
                    QString::fromUtf8(known.parent) + u'/' + QString::fromUtf8(known.name));
                return;
            }
        }
    }

    void add(IgnoredElement::Cause cause, const XMLElement& element, const QString& meant) {
        found_.push_back({cause, elementPath(element), meant, element.GetLineNum()});
    }

    std::string_view otherGroup_; // not read
    std::vector<IgnoredElement> found_;
};

} // namespace

std::vector<IgnoredElement> ignoredElements(const tinyxml2::XMLDocument& document, bool primary) {
    Search search(primary);
    if (const XMLElement* const root = document.FirstChildElement(element::kQuorinGatewaySetting)) {
        search.searchBelow(*root);
    }
    return search.takeFound();
}

} // namespace quorin
