#pragma once

#include "config/gateway_settings.h"
#include "config/ignored_elements.h"
#include "config/settings_reader.h"

#include <QString>

#include <vector>

namespace quorin::check {

// A settings file as the gateway reads it, with all its faults.
class SettingsRecord final : public SettingsObserver {
public:
    // Reads the file. Does not set up the log.
    SettingsRecord(const QString& path, bool primary);

    // Valid for the elements for which isValid() returns true; others have their initial value.
    [[nodiscard]] const GatewaySettings& settings() const noexcept { return settings_; }
    [[nodiscard]] const std::vector<SettingReading>& readings() const noexcept { return readings_; }
    [[nodiscard]] const std::vector<IgnoredElement>& ignored() const noexcept { return ignored_; }

    // Returns true if the value of the element `name` was read without a fault.
    [[nodiscard]] bool isValid(const char* name) const;
    // Returns the path of the element `name`, which isValid().
    [[nodiscard]] QString pathOf(const char* name) const;

private:
    void onDocument(const tinyxml2::XMLDocument& document) override;
    void onReading(const SettingReading& reading) override { readings_.push_back(reading); }

    [[nodiscard]] const SettingReading* find(const char* name) const;

    bool primary_;
    GatewaySettings settings_;
    std::vector<SettingReading> readings_;
    std::vector<IgnoredElement> ignored_;
};

} // namespace quorin::check
