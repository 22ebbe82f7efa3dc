#pragma once

#include <QString>

#include <cstdint>

namespace tinyxml2 {
class XMLElement;
class XMLNode;
} // namespace tinyxml2

// Readers of single values below an element of the settings file. All throw a fatal
// GatewayException that names the element when its value is missing or not of the kind asked for.
namespace quorin {

// The text of the child `name`, as it stands; an empty one is an error.
void readText(const tinyxml2::XMLElement& parent, const char* name, QString& out);

// The text of the child `name` as a decimal number of 32 bits that is not negative. What could be
// read of the number is stored before it is judged: 0 when it is none.
void readNonNegativeInt(const tinyxml2::XMLElement& parent, const char* name, std::int32_t& out);

// The text of the child `name` as "true" or "false", in any letter case.
void readBool(const tinyxml2::XMLElement& parent, const char* name, bool& out);

// As the readers above, with `fallback` for a value that is missing or at fault in any way.
void readIntOr(const tinyxml2::XMLElement& parent, const char* name, std::int32_t& out,
               std::int32_t fallback);
void readBoolOr(const tinyxml2::XMLElement& parent, const char* name, bool& out, bool fallback);

// The first child element `name`, which must be there.
const tinyxml2::XMLElement& requireElement(const tinyxml2::XMLNode& parent, const char* name);

// Throws a fatal GatewayException with the text `name` + `phrase` behind the usual prefix.
[[noreturn]] void failSetting(const char* name, const char* phrase);

} // namespace quorin
