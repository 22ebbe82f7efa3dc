#pragma once

#include <QString>

#include <cstdint>

namespace tinyxml2 {
class XMLElement;
class XMLNode;
} // namespace tinyxml2

// Readers of single values below an element of the settings file. Except for the readers with a
// fallback, they throw a fatal GatewayException that names the element if it is missing or its
// value is invalid.
namespace quorin {

// Reads the text of the child `name` unchanged. An empty text is an error.
void readText(const tinyxml2::XMLElement& parent, const char* name, QString& out);

// Reads the text of the child `name` as a decimal number from 0 to 2^31 - 1. Stores the converted
// value before checking it: a negative number, or 0 if the text is not a number.
void readNonNegativeInt(const tinyxml2::XMLElement& parent, const char* name, std::int32_t& out);

// Reads the text of the child `name` as "true" or "false", ignoring letter case. Leaves `out`
// unchanged if the text is neither.
void readBool(const tinyxml2::XMLElement& parent, const char* name, bool& out);

// As the readers above, but store `fallback` if the value is missing or invalid. Return the message
// of the exception that the reader threw, or an empty text.
QString readIntOr(const tinyxml2::XMLElement& parent, const char* name, std::int32_t& out,
                  std::int32_t fallback);
QString readBoolOr(const tinyxml2::XMLElement& parent, const char* name, bool& out, bool fallback);

// Returns the first child element `name`. Throws if there is none.
const tinyxml2::XMLElement& requireElement(const tinyxml2::XMLNode& parent, const char* name);

// Throws a fatal GatewayException with the message kEndPrefix + `name` + `phrase`.
[[noreturn]] void failSetting(const char* name, const char* phrase);

} // namespace quorin
