#pragma once

#include <QString>

namespace tinyxml2 {
class XMLElement;
class XMLNode;
} // namespace tinyxml2

// Paths that identify elements of the settings file in messages to administrators.
namespace quorin {

// Returns the names of `element` and its parents without the root: "General/QuorinCloud". An
// element that is not the first of its name has its number: "General/GatewayConnectSetting[2]".
// Empty for the root.
[[nodiscard]] QString elementPath(const tinyxml2::XMLElement& element);

// Returns the path that the first child `name` of `parent` has or would have.
[[nodiscard]] QString childPath(const tinyxml2::XMLNode& parent, const char* name);

} // namespace quorin
