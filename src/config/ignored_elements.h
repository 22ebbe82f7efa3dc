#pragma once

#include <QString>

#include <vector>

namespace tinyxml2 {
class XMLDocument;
} // namespace tinyxml2

namespace quorin {

// An element of the settings file that the gateway does not read although it looks as if it was
// meant to be read.
struct IgnoredElement {
    enum class Cause {
        Misspelled, // its name resembles that of an element that belongs at this place
        Misplaced,  // an element of this name belongs at another place
        Repeated,   // the gateway reads only the first element of this name
    };

    Cause cause = Cause::Misspelled;
    QString path;  // as in SettingReading; of a repeated element, with its number
    QString meant; // the path of the element that the gateway reads instead
    int line = 0;  // in the settings file, from 1
};

// Returns the elements of `document` that a primary or a secondary gateway ignores, in the order of
// the document. Elements with other names, such as additions of other programs, and everything
// below an ignored element are not listed.
[[nodiscard]] std::vector<IgnoredElement> ignoredElements(const tinyxml2::XMLDocument& document,
                                                          bool primary);

} // namespace quorin
