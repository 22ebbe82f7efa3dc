#pragma once

#include <QString>

#include <optional>

namespace tinyxml2 {
class XMLDocument;
} // namespace tinyxml2

namespace quorin {

struct GatewaySettings;

// What the settings file must contain at some place.
enum class SettingType { File, Group, Text, Number, Boolean, LogLevel };

// How one part of the settings file was read: the file, an element with children, or a value.
struct SettingReading {
    QString path; // of the element, without the root: "General/QuorinCloud/RootUrl"; or of the file
    SettingType type = SettingType::Group;
    bool isRequired = true;
    std::optional<QString> text{};        // as in the file; nothing if the element is missing
    QString fault{};                      // complete log message; empty if the text is valid
    QString faultDetail{};                // the system's or the parser's reason; only for the file
    std::optional<QString> replacement{}; // the value used instead of the text, if any

    // Returns true if the gateway must not start.
    [[nodiscard]] bool isFatal() const { return isRequired && !fault.isEmpty(); }
};

// Receives what readSettings() reads, in the order of reading.
class SettingsObserver {
public:
    virtual ~SettingsObserver() = default;

    // The file is well-formed XML. `document` is valid during the call.
    virtual void onDocument(const tinyxml2::XMLDocument& /*document*/) {}
    virtual void onReading(const SettingReading& reading) = 0;
    // The settings of the log have been read; one of them may have a fault.
    virtual void onLogSettings(const GatewaySettings& /*settings*/) {}

protected:
    SettingsObserver() = default;
    SettingsObserver(const SettingsObserver&) = default;
    SettingsObserver& operator=(const SettingsObserver&) = default;
};

// Reads the settings file at `path` into `settings`, from the group of the primary or the secondary
// gateway, and reports each part to `observer`. After a fault, continues with what can still be
// read, unless the observer throws; values read before stay stored. A path that is neither a
// regular file nor a folder is not opened and counts as malformed XML.
void readSettings(const QString& path, bool primary, GatewaySettings& settings,
                  SettingsObserver& observer);

} // namespace quorin
