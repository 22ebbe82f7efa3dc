#include "check/settings_record.h"

#include <algorithm>

namespace quorin::check {

SettingsRecord::SettingsRecord(const QString& path, bool primary) : primary_(primary) {
    readSettings(path, primary, settings_, *this);
}

void SettingsRecord::onDocument(const tinyxml2::XMLDocument& document) {
    ignored_ = ignoredElements(document, primary_);
}

bool SettingsRecord::isValid(const char* name) const {
    const SettingReading* const reading = find(name);
    return reading != nullptr && !reading->isFatal();
}

QString SettingsRecord::pathOf(const char* name) const {
    const SettingReading* const reading = find(name);
    return reading != nullptr ? reading->path : QString::fromUtf8(name);
}

const SettingReading* SettingsRecord::find(const char* name) const {
    const QString end = u'/' + QString::fromUtf8(name);
    const auto found =
        std::find_if(readings_.begin(), readings_.end(),
                     [&end](const SettingReading& reading) { return reading.path.endsWith(end); });
    return found != readings_.end() ? &*found : nullptr;
}

} // namespace quorin::check
