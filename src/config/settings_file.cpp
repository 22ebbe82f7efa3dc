#include "config/settings_file.h"

#include "config/element_names.h"
#include "config/element_readers.h"
#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "log/application_logger.h"

#include <QFile>
#include <QFileInfo>

#include <tinyxml2.h>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

using tinyxml2::XMLElement;

constexpr std::array<QStringView, 4> kLogLevels{u"debug", u"info", u"warn", u"error"};
constexpr bool kDefaultIsMadeClientRequestWaited = true;
constexpr std::int32_t kDefaultMaxLargeFileRequest = 4;

[[noreturn]] void fail(const QString& text) {
    throw GatewayException(GatewayException::Fatal, endMessage(text), false);
}

[[noreturn]] void failAsNotXml() {
    fail(u"config file format error(failed to parse as xml)"_s);
}

// A named pipe, a device or a socket. To open a named pipe blocks until it has a writer.
bool isSpecialFile(const QString& path) {
    const QFileInfo info(path);
    return info.exists() && !info.isFile() && !info.isDir();
}

// Reads the file here and not with LoadFile(): that opens file names in the system's eight-bit
// encoding, which cannot represent every name. Reads in binary mode: line ends are the parser's
// job, and a lone carriage return is one.
void loadDocument(const QString& path, tinyxml2::XMLDocument& document) {
    if (isSpecialFile(path)) {
        failAsNotXml();
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(u"failed to open config file"_s);
    }
    if (file.isSequential()) { // a named pipe on Windows: to read it blocks
        failAsNotXml();
    }
    const QByteArray content = file.readAll();
    if (document.Parse(content.constData(), static_cast<std::size_t>(content.size())) !=
        tinyxml2::XML_SUCCESS) {
        failAsNotXml();
    }
}

void readLog(const XMLElement& http, GatewaySettings& settings) {
    const XMLElement& log = requireElement(http, element::kLog);
    readNonNegativeInt(log, element::kQueueSize, settings.QueueSize);
    const XMLElement& applicationLog = requireElement(log, element::kApplicationLog);
    readText(applicationLog, element::kLogLevel, settings.LogLevel);
    if (std::find(kLogLevels.begin(), kLogLevels.end(), settings.LogLevel) == kLogLevels.end()) {
        fail(u"application log level format error (should be setted 'info','warn' or 'error')"_s);
    }
    readNonNegativeInt(applicationLog, element::kGeneration, settings.Generation);
}

// Returns the default for a limit that is out of range, even if the default is out of range too.
std::int32_t usableLargeFileLimit(std::int32_t configured, std::int32_t maxUserSession) {
    const bool usable = configured >= 1 && configured <= maxUserSession - 1;
    return usable ? configured : kDefaultMaxLargeFileRequest;
}

void readHttp(const XMLElement& http, GatewaySettings& settings) {
    readNonNegativeInt(http, element::kPort, settings.Port);
    readNonNegativeInt(http, element::kMaxUserSession, settings.MaxUserSession);
    readNonNegativeInt(http, element::kMaxTCPConnection, settings.MaxTCPConnection);
    readNonNegativeInt(http, element::kConnectionTimeout, settings.ConnectionTimeout);
    readNonNegativeInt(http, element::kHTTPRequestTimeout, settings.HTTPRequestTimeout);
    readNonNegativeInt(http, element::kThreadReadBufferSize, settings.ThreadReadBufferSize);
    readBoolOr(http, element::kIsMadeClientRequestWaited, settings.IsMadeClientRequestWaited,
               kDefaultIsMadeClientRequestWaited);
    readIntOr(http, element::kMaxLargeFileRequest, settings.MaxLargeFileRequest,
              kDefaultMaxLargeFileRequest);
    settings.MaxLargeFileRequest =
        usableLargeFileLimit(settings.MaxLargeFileRequest, settings.MaxUserSession);
    readBool(http, element::kHttpsEnabled, settings.HttpsEnabled);
}

void readProxy(const XMLElement& group, GatewaySettings& settings) {
    const XMLElement& proxy = requireElement(group, element::kProxy);
    requireElement(proxy, element::kIsEnabledHttpInFacility);
    readBool(proxy, element::kIsEnabledHttpInFacility, settings.IsEnabledHttpInFacility);
}

// The first GatewayConnectSetting belongs to the primary gateway, the second to the secondary. A
// secondary gateway may have none; its address is then empty.
void readGatewayAddress(const XMLElement& general, bool primary, GatewaySettings& settings) {
    const XMLElement* connect = &requireElement(general, element::kGatewayConnectSetting);
    if (!primary) {
        connect = connect->NextSiblingElement(element::kGatewayConnectSetting);
    }
    if (connect == nullptr) {
        return;
    }
    if (connect->FirstChildElement(element::kGatewayAddress) == nullptr) {
        failSetting(element::kGatewayAddress, " is not defined");
    }
    readText(*connect, element::kGatewayAddress, settings.GatewayAddress);
}

void readGeneral(const XMLElement& root, bool primary, GatewaySettings& settings) {
    const XMLElement& general = requireElement(root, element::kGeneral);
    readGatewayAddress(general, primary, settings);
    requireElement(general, element::kOrganizationId);
    readText(general, element::kOrganizationId, settings.OrganizationId);
    const XMLElement& cloud = requireElement(general, element::kQuorinCloud);
    requireElement(cloud, element::kRootUrl);
    readText(cloud, element::kRootUrl, settings.RootUrl);
}

} // namespace

void loadSettings(const QString& path, bool primary) {
    tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    loadDocument(path, document);

    GatewaySettings& settings = GatewaySettings::instance();
    settings = GatewaySettings();
    const XMLElement& root = requireElement(document, element::kQuorinGatewaySetting);
    const XMLElement& group = requireElement(root, primary ? element::kPrimaryGatewaySetting
                                                           : element::kSecondaryGatewaySetting);
    const XMLElement& http = requireElement(group, element::kHttp);
    readLog(http, settings);
    QuorinGatewayApplicationLogger::setUpApplicationLog(
        {settings.Generation, settings.QueueSize, settings.LogLevel});
    readHttp(http, settings);
    readProxy(group, settings);
    readGeneral(root, primary, settings);
}

} // namespace quorin
