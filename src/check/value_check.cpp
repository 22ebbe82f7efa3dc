#include "check/value_check.h"

#include "check/finding_codes.h"
#include "check/settings_record.h"
#include "config/communication_scheme.h"
#include "config/element_names.h"
#include "platform/descriptors.h"
#include "server/descriptor_budget.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace quorin::check {

namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kFastBufferSize = 512 * 1024; // data is sent in pieces of at most this size
// Of the bundled logging library.
constexpr std::int32_t kMaxQueueSize = 65536;

// A range of values of an element, and what is to be said about them.
struct ValueRule {
    const char* element;
    std::int32_t GatewaySettings::*value;
    std::int32_t lowest;
    std::int32_t highest;
    QStringView code;
    QStringView reason;
    QStringView action;
};

constexpr std::array kRules{
    ValueRule{element::kPort, &GatewaySettings::Port, 0, 0, code::kSettingQuestionable,
              u"the system selects any free port, which nothing reports",
              u"Set the port that clients use."},
    ValueRule{element::kPort, &GatewaySettings::Port, 65536, kMax, code::kSettingAdjusted,
              u"the value is taken modulo 65536", u"Set a port from 1 to 65535."},
    ValueRule{element::kMaxUserSession, &GatewaySettings::MaxUserSession, 0, 0,
              code::kSettingQuestionable, u"no connection is served",
              u"Set the number of connections to serve at the same time."},
    ValueRule{element::kConnectionTimeout, &GatewaySettings::ConnectionTimeout, 0, 0,
              code::kSettingQuestionable, u"connections are closed at once",
              u"Set the seconds to wait for a request, for example 60."},
    ValueRule{element::kConnectionTimeout, &GatewaySettings::ConnectionTimeout, 2147484, kMax,
              code::kSettingAdjusted, u"the gateway uses 2147483",
              u"Set a number of seconds up to 2147483."},
    ValueRule{element::kHTTPRequestTimeout, &GatewaySettings::HTTPRequestTimeout, 0, 0,
              code::kSettingQuestionable, u"every transfer of a file ends before its content",
              u"Set any other number, for example 600."},
    ValueRule{element::kThreadReadBufferSize, &GatewaySettings::ThreadReadBufferSize, 0, 0,
              code::kSettingQuestionable, u"a file of any size has 30 seconds to be sent",
              u"Set a chunk size in bytes, for example 1048576."},
    ValueRule{element::kThreadReadBufferSize, &GatewaySettings::ThreadReadBufferSize, 1,
              kFastBufferSize - 1, code::kSettingQuestionable,
              u"transfers are slow with chunks below 524288 bytes",
              u"Set 524288 or more, for example 1048576, unless clients are very slow."},
    ValueRule{element::kQueueSize, &GatewaySettings::QueueSize, 0, 0, code::kSettingAdjusted,
              u"the bundled logging library uses 1024",
              u"Set the capacity of the log queue in lines, for example 8192."},
    ValueRule{element::kQueueSize, &GatewaySettings::QueueSize, kMaxQueueSize + 1, kMax,
              code::kSettingAdjusted, u"the bundled logging library uses 65536",
              u"Set a number up to 65536."},
};

void warn(const SettingsRecord& record, const char* element, const QString& value,
          QStringView findingCode, const QString& reason, const QString& action,
          Findings& findings) {
    Finding finding;
    finding.severity = Severity::Warning;
    finding.code = findingCode;
    finding.subject = record.pathOf(element);
    finding.value = value;
    finding.reason = reason;
    finding.action = action;
    findings.push_back(finding);
}

// Returns how many connections this process can serve at the same time, or nothing if the system
// sets no limit.
std::optional<qintptr> servableConnections() {
    const std::optional<qintptr> limit = platform::descriptorLimit();
    if (!limit) {
        return std::nullopt;
    }
    const qintptr others = platform::openDescriptors().value_or(0) + kSpareDescriptors;
    return std::max<qintptr>(0, (*limit - others) / kDescriptorsPerConnection);
}

void checkDescriptors(const SettingsRecord& record, Findings& findings) {
    const std::int32_t sessions = record.settings().MaxUserSession;
    const std::optional<qintptr> servable = servableConnections();
    if (!servable || sessions <= *servable) {
        return;
    }
    warn(record, element::kMaxUserSession, QString::number(sessions), code::kDescriptorsTooFew,
         u"a connection needs up to " + QString::number(kDescriptorsPerConnection) +
             u" open files; the limit of this process allows about " + QString::number(*servable) +
             u" connections",
         u"Raise the limit (LimitNOFILE= of the service, ulimit -Hn of a shell) or lower the "
         u"value."_s,
         findings);
}

void checkScheme(const SettingsRecord& record, Findings& findings) {
    const GatewaySettings& settings = record.settings();
    if (communicationSchemeOf(settings.RootUrl, settings.IsEnabledHttpInFacility) ==
        CommunicationScheme::None) {
        warn(record, element::kRootUrl, settings.RootUrl, code::kSettingQuestionable,
             u"workstations are told no scheme for the cloud"_s,
             u"Set a URL that begins with https:// or http://."_s, findings);
    }
}

} // namespace

void checkValues(const SettingsRecord& record, Findings& findings) {
    for (const ValueRule& rule : kRules) {
        const std::int32_t value = record.settings().*rule.value;
        if (record.isValid(rule.element) && value >= rule.lowest && value <= rule.highest) {
            warn(record, rule.element, QString::number(value), rule.code, rule.reason.toString(),
                 rule.action.toString(), findings);
        }
    }
    if (record.isValid(element::kMaxUserSession)) {
        checkDescriptors(record, findings);
    }
    if (record.isValid(element::kRootUrl)) {
        checkScheme(record, findings);
    }
}

} // namespace quorin::check
