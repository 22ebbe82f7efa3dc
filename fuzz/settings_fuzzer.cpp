// Loads a settings file with arbitrary content. The first byte selects the primary or the secondary
// gateway. Either
//   - loading fails with an error that describes the problem, or
//   - all mandatory settings are set and every number is in its range.
// A reader that collects all faults agrees: its first fault is the one with which loading fails.

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "config/ignored_elements.h"
#include "config/settings_file.h"
#include "config/settings_reader.h"
#include "require.h"
#include "scratch_folder.h"

#include <array>
#include <cstdint>

using namespace Qt::StringLiterals;

namespace {

void checkBounds(const quorin::GatewaySettings& settings) {
    for (const std::int32_t number :
         {settings.Port, settings.MaxUserSession, settings.MaxTCPConnection,
          settings.ConnectionTimeout, settings.HTTPRequestTimeout, settings.ThreadReadBufferSize,
          settings.QueueSize, settings.Generation}) {
        require(number >= 0, "a number is not negative");
    }
    require(settings.MaxLargeFileRequest == 4 ||
                (settings.MaxLargeFileRequest >= 1 &&
                 settings.MaxLargeFileRequest < settings.MaxUserSession),
            "MaxLargeFileRequest is in its range or the default");
    require(settings.LogLevel == u"debug" || settings.LogLevel == u"info" ||
                settings.LogLevel == u"warn" || settings.LogLevel == u"error",
            "the log level is one of the four known");
    require(!settings.OrganizationId.isEmpty() && !settings.RootUrl.isEmpty(),
            "OrganizationId and RootUrl are not empty");
}

// Collects like `quorin-gateway check`.
class FirstFault final : public quorin::SettingsObserver {
public:
    explicit FirstFault(bool isPrimary) : isPrimary_(isPrimary) {}

    void onDocument(const tinyxml2::XMLDocument& document) override {
        for (const quorin::IgnoredElement& element :
             quorin::ignoredElements(document, isPrimary_)) {
            require(!element.path.isEmpty() && element.line > 0, "an ignored element has a place");
        }
    }

    void onReading(const quorin::SettingReading& reading) override {
        if (reading.isFatal() && message.isEmpty()) {
            message = reading.fault;
        }
    }

    QString message;

private:
    bool isPrimary_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    if (size == 0) {
        return 0;
    }
    const QString name = u"settings.xml"_s;
    folder.write(name, {data + 1, static_cast<qsizetype>(size - 1)});
    const bool isPrimary = data[0] % 2 == 0;
    quorin::GatewaySettings collected;
    FirstFault collector(isPrimary);
    quorin::readSettings(folder.path(name), isPrimary, collected, collector);
    try {
        quorin::loadSettings(folder.path(name), isPrimary);
        require(collector.message.isEmpty(), "settings that load have no fault");
        checkBounds(quorin::GatewaySettings::instance());
        require(!isPrimary || !quorin::GatewaySettings::instance().GatewayAddress.isEmpty(),
                "a primary gateway has an address");
    } catch (const quorin::GatewayException& exception) {
        require(exception.message().startsWith(u"[End] "), "the error has a description");
        require(exception.message() == collector.message, "the first fault ends the loading");
    }
    return 0;
}
