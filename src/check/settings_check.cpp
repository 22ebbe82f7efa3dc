#include "check/settings_check.h"

#include "check/finding_codes.h"
#include "check/settings_record.h"

using namespace Qt::StringLiterals;

namespace quorin::check {

namespace {

QString actionFor(const SettingReading& reading) {
    if (reading.type == SettingType::File) {
        return u"Check the path, that the gateway's account may read the file, and that it is "
               u"well-formed XML."_s;
    }
    if (!reading.text) {
        return u"Add the element."_s;
    }
    switch (reading.type) {
    case SettingType::Number:
        return u"Set an integer from 0 to 2147483647."_s;
    case SettingType::Boolean:
        return u"Set true or false."_s;
    case SettingType::LogLevel:
        return u"Set debug, info, warn or error, in lower case."_s;
    case SettingType::File:
    case SettingType::Group:
    case SettingType::Text:
        break;
    }
    return u"Set a value."_s;
}

Finding fatalFinding(const SettingReading& reading) {
    Finding finding;
    finding.code = code::kSettingsUnreadable;
    if (reading.type != SettingType::File) {
        finding.code = reading.text ? code::kSettingInvalid : code::kSettingMissing;
    }
    finding.subject = reading.path;
    finding.value = reading.text.value_or(QString());
    finding.reason = reading.fault;
    if (!reading.faultDetail.isEmpty()) {
        finding.reason += u" (" + reading.faultDetail + u')';
    }
    finding.action = actionFor(reading);
    finding.failsStart = true;
    return finding;
}

// Returns the finding for an optional element whose value is not used as written.
Finding replacementFinding(const SettingReading& reading) {
    Finding finding;
    finding.severity = Severity::Warning;
    finding.code = code::kSettingAdjusted;
    finding.subject = reading.path;
    finding.value = reading.text.value_or(QString());
    finding.reason = u"the value is not valid; the gateway uses " + *reading.replacement;
    finding.action =
        reading.type == SettingType::Number
            ? u"Set an integer from 1 to MaxUserSession - 1, or remove the element for 4."_s
            : u"Set true or false, or remove the element for true."_s;
    return finding;
}

// A secondary gateway without an address.
Finding missingAddressFinding(const SettingReading& reading) {
    Finding finding;
    finding.severity = Severity::Warning;
    finding.code = code::kSettingMissing;
    finding.subject = reading.path;
    finding.reason = u"the secondary gateway has no address; with HTTPS, no certificate is found"_s;
    finding.action = u"Add a second GatewayConnectSetting with the address of the secondary "
                     u"gateway."_s;
    return finding;
}

Finding ignoredFinding(const IgnoredElement& element) {
    Finding finding;
    finding.severity = Severity::Warning;
    finding.code = code::kElementIgnored;
    finding.subject = element.path;
    const QString line = u" (line " + QString::number(element.line) + u')';
    switch (element.cause) {
    case IgnoredElement::Cause::Misspelled:
        finding.reason = u"the gateway has no such element"_s + line;
        finding.action = u"If " + element.meant + u" is meant, correct the name.";
        break;
    case IgnoredElement::Cause::Misplaced:
        finding.reason = u"the gateway does not read this element here"_s + line;
        finding.action = u"If " + element.meant + u" is meant, move the element.";
        break;
    case IgnoredElement::Cause::Repeated:
        finding.reason = u"the gateway reads only the first "_s + element.meant + line;
        finding.action = u"Remove one of the elements."_s;
        break;
    }
    return finding;
}

} // namespace

void checkSettings(const SettingsRecord& record, Findings& findings) {
    for (const SettingReading& reading : record.readings()) {
        if (reading.isFatal()) {
            findings.push_back(fatalFinding(reading));
        } else if (reading.replacement && reading.text) {
            findings.push_back(replacementFinding(reading));
        } else if (reading.replacement && reading.type == SettingType::Text) {
            findings.push_back(missingAddressFinding(reading));
        }
    }
    for (const IgnoredElement& element : record.ignored()) {
        findings.push_back(ignoredFinding(element));
    }
}

} // namespace quorin::check
