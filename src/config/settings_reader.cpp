#include "config/settings_reader.h"

#include "config/element_names.h"
#include "config/element_paths.h"
#include "config/element_readers.h"
#include "config/gateway_exception.h"
#include "config/gateway_settings.h"

#include <QFile>
#include <QFileInfo>

#include <tinyxml2.h>

#include <algorithm>
#include <array>
#include <concepts>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

using tinyxml2::XMLElement;
using tinyxml2::XMLNode;

constexpr std::array<QStringView, 4> kLogLevels{u"debug", u"info", u"warn", u"error"};
constexpr bool kDefaultIsMadeClientRequestWaited = true;
constexpr std::int32_t kDefaultMaxLargeFileRequest = 4;

constexpr QStringView kNotXml = u"config file format error(failed to parse as xml)";

[[noreturn]] void fail(QStringView text) {
    throw GatewayException(GatewayException::Fatal, endMessage(text.toString()), false);
}

// A named pipe, a device or a socket. To open a named pipe blocks until it has a writer.
bool isSpecialFile(const QString& path) {
    const QFileInfo info(path);
    return info.exists() && !info.isFile() && !info.isDir();
}

// Returns the limit that is used: the default for one that is out of range, even if the default is
// out of range too.
std::int32_t usableLargeFileLimit(std::int32_t configured, std::int32_t maxUserSession) {
    const bool usable = configured >= 1 && configured <= maxUserSession - 1;
    return usable ? configured : kDefaultMaxLargeFileRequest;
}

// Returns what is known about the child `name` before it is read.
SettingReading describe(const XMLNode& parent, const char* name, SettingType type) {
    SettingReading reading{.path = childPath(parent, name), .type = type};
    if (const XMLElement* const element = parent.FirstChildElement(name)) {
        reading.text = QString::fromUtf8(element->GetText());
    }
    return reading;
}

class SettingsReader {
public:
    SettingsReader(GatewaySettings& settings, SettingsObserver& observer)
        : settings_(settings), observer_(observer) {}

    void read(const QString& path, bool primary);

private:
    bool readDocument(const QString& path, tinyxml2::XMLDocument& document);
    void readGroup(const XMLElement& root, bool primary);
    void readLog(const XMLElement& http);
    void readHttp(const XMLElement& http);
    void readRequestMode(const XMLElement& http);
    void readLargeFileLimit(const XMLElement& http);
    void readGeneral(const XMLElement& root, bool primary);
    void readGatewayAddress(const XMLElement& general, bool primary);

    // Calls `read` for the child `name` and reports the outcome. `read` throws a GatewayException
    // on a fault.
    template<std::invocable Read>
    void readElement(const XMLNode& parent, const char* name, SettingType type, Read&& read);
    // Returns the child `name`, or null if it is missing, which is a fault.
    const XMLElement* require(const XMLNode& parent, const char* name);
    void readNumber(const XMLElement& parent, const char* name, std::int32_t& out);
    // A missing element is reported as a missing group is.
    void readTagText(const XMLElement& parent, const char* name, QString& out);

    GatewaySettings& settings_;
    SettingsObserver& observer_;
};

void SettingsReader::read(const QString& path, bool primary) {
    tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    if (!readDocument(path, document)) {
        return;
    }
    settings_ = GatewaySettings();
    if (const XMLElement* const root = require(document, element::kQuorinGatewaySetting)) {
        readGroup(*root, primary);
        readGeneral(*root, primary);
    }
}

// Reads the file here and not with LoadFile(): that opens file names in the system's eight-bit
// encoding, which cannot represent every name. Reads in binary mode: line ends are the parser's
// job, and a lone carriage return is one.
bool SettingsReader::readDocument(const QString& path, tinyxml2::XMLDocument& document) {
    SettingReading reading{.path = path, .type = SettingType::File};
    QFile file(path);
    // Opening or reading a special file could block. A named pipe on Windows is recognized only
    // after it has been opened.
    const bool isSpecial = isSpecialFile(path);
    if (!isSpecial && !file.open(QIODevice::ReadOnly)) {
        reading.fault = endMessage(u"failed to open config file"_s);
        reading.faultDetail = file.errorString();
    } else if (isSpecial || file.isSequential()) {
        reading.fault = endMessage(kNotXml.toString());
        reading.faultDetail = u"not a regular file"_s;
    } else {
        const QByteArray content = file.readAll();
        if (document.Parse(content.constData(), static_cast<std::size_t>(content.size())) !=
            tinyxml2::XML_SUCCESS) {
            reading.fault = endMessage(kNotXml.toString());
            reading.faultDetail = QString::fromUtf8(document.ErrorName()) + u" in line " +
                                  QString::number(document.ErrorLineNum());
        }
    }
    observer_.onReading(reading);
    if (!reading.fault.isEmpty()) {
        return false;
    }
    observer_.onDocument(document);
    return true;
}

void SettingsReader::readGroup(const XMLElement& root, bool primary) {
    const XMLElement* const group = require(root, primary ? element::kPrimaryGatewaySetting
                                                          : element::kSecondaryGatewaySetting);
    if (group == nullptr) {
        return;
    }
    if (const XMLElement* const http = require(*group, element::kHttp)) {
        readLog(*http);
        readHttp(*http);
    }
    if (const XMLElement* const proxy = require(*group, element::kProxy)) {
        readElement(*proxy, element::kIsEnabledHttpInFacility, SettingType::Boolean, [&] {
            requireElement(*proxy, element::kIsEnabledHttpInFacility);
            readBool(*proxy, element::kIsEnabledHttpInFacility, settings_.IsEnabledHttpInFacility);
        });
    }
}

void SettingsReader::readLog(const XMLElement& http) {
    const XMLElement* const log = require(http, element::kLog);
    if (log == nullptr) {
        return;
    }
    readNumber(*log, element::kQueueSize, settings_.QueueSize);
    const XMLElement* const applicationLog = require(*log, element::kApplicationLog);
    if (applicationLog == nullptr) {
        return;
    }
    readElement(*applicationLog, element::kLogLevel, SettingType::LogLevel, [&] {
        readText(*applicationLog, element::kLogLevel, settings_.LogLevel);
        if (std::find(kLogLevels.begin(), kLogLevels.end(), settings_.LogLevel) ==
            kLogLevels.end()) {
            fail(u"application log level format error (should be setted 'info','warn' or 'error')");
        }
    });
    readNumber(*applicationLog, element::kGeneration, settings_.Generation);
    observer_.onLogSettings(settings_);
}

void SettingsReader::readHttp(const XMLElement& http) {
    readNumber(http, element::kPort, settings_.Port);
    readNumber(http, element::kMaxUserSession, settings_.MaxUserSession);
    readNumber(http, element::kMaxTCPConnection, settings_.MaxTCPConnection);
    readNumber(http, element::kConnectionTimeout, settings_.ConnectionTimeout);
    readNumber(http, element::kHTTPRequestTimeout, settings_.HTTPRequestTimeout);
    readNumber(http, element::kThreadReadBufferSize, settings_.ThreadReadBufferSize);
    readRequestMode(http);
    readLargeFileLimit(http);
    readElement(http, element::kHttpsEnabled, SettingType::Boolean,
                [&] { readBool(http, element::kHttpsEnabled, settings_.HttpsEnabled); });
}

void SettingsReader::readRequestMode(const XMLElement& http) {
    SettingReading reading =
        describe(http, element::kIsMadeClientRequestWaited, SettingType::Boolean);
    reading.isRequired = false;
    reading.fault =
        readBoolOr(http, element::kIsMadeClientRequestWaited, settings_.IsMadeClientRequestWaited,
                   kDefaultIsMadeClientRequestWaited);
    if (!reading.fault.isEmpty()) {
        reading.replacement = u"true"_s;
    }
    observer_.onReading(reading);
}

void SettingsReader::readLargeFileLimit(const XMLElement& http) {
    SettingReading reading = describe(http, element::kMaxLargeFileRequest, SettingType::Number);
    reading.isRequired = false;
    std::int32_t configured = 0;
    reading.fault =
        readIntOr(http, element::kMaxLargeFileRequest, configured, kDefaultMaxLargeFileRequest);
    settings_.MaxLargeFileRequest = usableLargeFileLimit(configured, settings_.MaxUserSession);
    if (!reading.fault.isEmpty() || settings_.MaxLargeFileRequest != configured) {
        reading.replacement = QString::number(settings_.MaxLargeFileRequest);
    }
    observer_.onReading(reading);
}

void SettingsReader::readGeneral(const XMLElement& root, bool primary) {
    const XMLElement* const general = require(root, element::kGeneral);
    if (general == nullptr) {
        return;
    }
    readGatewayAddress(*general, primary);
    readTagText(*general, element::kOrganizationId, settings_.OrganizationId);
    if (const XMLElement* const cloud = require(*general, element::kQuorinCloud)) {
        readTagText(*cloud, element::kRootUrl, settings_.RootUrl);
    }
}

// The first GatewayConnectSetting belongs to the primary gateway, the second to the secondary. A
// secondary gateway may have none; its address is then empty.
void SettingsReader::readGatewayAddress(const XMLElement& general, bool primary) {
    const XMLElement* connect = require(general, element::kGatewayConnectSetting);
    if (connect == nullptr) {
        return;
    }
    if (!primary) {
        connect = connect->NextSiblingElement(element::kGatewayConnectSetting);
    }
    if (connect == nullptr) {
        observer_.onReading({.path = childPath(general, element::kGatewayConnectSetting) + u"[2]/" +
                                     QString::fromUtf8(element::kGatewayAddress),
                             .type = SettingType::Text,
                             .isRequired = false,
                             .replacement = QString(u""_s)});
        return;
    }
    readElement(*connect, element::kGatewayAddress, SettingType::Text, [&] {
        if (connect->FirstChildElement(element::kGatewayAddress) == nullptr) {
            failSetting(element::kGatewayAddress, " is not defined");
        }
        readText(*connect, element::kGatewayAddress, settings_.GatewayAddress);
    });
}

template<std::invocable Read>
void SettingsReader::readElement(const XMLNode& parent, const char* name, SettingType type,
                                 Read&& read) {
    SettingReading reading = describe(parent, name, type);
    try {
        read();
    } catch (const GatewayException& exception) {
        reading.fault = exception.message();
    }
    observer_.onReading(reading);
}

const XMLElement* SettingsReader::require(const XMLNode& parent, const char* name) {
    const XMLElement* element = nullptr;
    readElement(parent, name, SettingType::Group, [&] { element = &requireElement(parent, name); });
    return element;
}

void SettingsReader::readNumber(const XMLElement& parent, const char* name, std::int32_t& out) {
    readElement(parent, name, SettingType::Number, [&] { readNonNegativeInt(parent, name, out); });
}

void SettingsReader::readTagText(const XMLElement& parent, const char* name, QString& out) {
    readElement(parent, name, SettingType::Text, [&] {
        requireElement(parent, name);
        readText(parent, name, out);
    });
}

} // namespace

void readSettings(const QString& path, bool primary, GatewaySettings& settings,
                  SettingsObserver& observer) {
    SettingsReader(settings, observer).read(path, primary);
}

} // namespace quorin
