#include "config/element_paths.h"

#include <tinyxml2.h>

namespace quorin {

QString elementPath(const tinyxml2::XMLElement& element) {
    const tinyxml2::XMLNode* const parent = element.Parent();
    if (parent == nullptr || parent->ToElement() == nullptr) {
        return {};
    }
    const QString path = childPath(*parent, element.Name());
    int number = 1;
    for (const auto* sibling = element.PreviousSiblingElement(element.Name()); sibling != nullptr;
         sibling = sibling->PreviousSiblingElement(element.Name())) {
        ++number;
    }
    return number == 1 ? path : QString(path + u'[' + QString::number(number) + u']');
}

QString childPath(const tinyxml2::XMLNode& parent, const char* name) {
    const tinyxml2::XMLElement* const element = parent.ToElement();
    const QString path = element != nullptr ? elementPath(*element) : QString();
    return path.isEmpty() ? QString::fromUtf8(name)
                          : QString(path + u'/' + QString::fromUtf8(name));
}

} // namespace quorin
