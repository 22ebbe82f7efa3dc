#include "config/element_readers.h"

#include "config/gateway_exception.h"

#include <tinyxml2.h>

namespace quorin {

void failSetting(const char* name, const char* phrase) {
    throw GatewayException(GatewayException::Fatal,
                           endMessage(QString::fromUtf8(name) + QString::fromUtf8(phrase)), false);
}

const tinyxml2::XMLElement& requireElement(const tinyxml2::XMLNode& parent, const char* name) {
    const tinyxml2::XMLElement* const element = parent.FirstChildElement(name);
    if (element == nullptr) {
        failSetting(name, " tag is not found");
    }
    return *element;
}

void readText(const tinyxml2::XMLElement& parent, const char* name, QString& out) {
    const tinyxml2::XMLElement* const element = parent.FirstChildElement(name);
    if (element == nullptr) {
        failSetting(name, " is not found");
    }
    out = QString::fromUtf8(element->GetText());
    if (out.isEmpty()) {
        failSetting(name, " is not defined");
    }
}

void readNonNegativeInt(const tinyxml2::XMLElement& parent, const char* name, std::int32_t& out) {
    QString text;
    readText(parent, name, text);
    bool isNumber = false;
    out = text.toInt(&isNumber, 10);
    if (!isNumber) {
        failSetting(name, " is not number");
    }
    if (out < 0) {
        failSetting(name, " must be grater equal than 0");
    }
}

void readBool(const tinyxml2::XMLElement& parent, const char* name, bool& out) {
    QString text;
    readText(parent, name, text);
    text = std::move(text).toLower();
    const bool isTrue = text == QLatin1String("true");
    if (!isTrue && text != QLatin1String("false")) {
        failSetting(name, " is not boolean value");
    }
    out = isTrue;
}

QString readIntOr(const tinyxml2::XMLElement& parent, const char* name, std::int32_t& out,
                  std::int32_t fallback) {
    try {
        readNonNegativeInt(parent, name, out);
    } catch (const GatewayException& exception) {
        out = fallback;
        return exception.message();
    }
    return {};
}

QString readBoolOr(const tinyxml2::XMLElement& parent, const char* name, bool& out, bool fallback) {
    try {
        readBool(parent, name, out);
    } catch (const GatewayException& exception) {
        out = fallback;
        return exception.message();
    }
    return {};
}

} // namespace quorin
