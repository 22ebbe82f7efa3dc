// The settings file with arbitrary bytes in it, for the primary gateway or, by the first byte, the
// secondary one. Whatever they are, either
//   - a fatal error tells what is wrong, or
//   - all is known that must be, and every value is within its bounds.

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "config/settings_file.h"
#include "require.h"
#include "scratch_folder.h"

#include <array>
#include <cstdint>

using namespace Qt::StringLiterals;

namespace {

void checkBounds(const GatewaySettings& settings) {
    for (const std::int32_t number :
         {settings.Port, settings.MaxUserSession, settings.MaxTCPConnection,
          settings.ConnectionTimeout, settings.HTTPRequestTimeout, settings.ThreadReadBufferSize,
          settings.QueueSize, settings.Generation}) {
        require(number >= 0, "a number is not negative");
    }
    require(settings.MaxLargeFileRequest == 4 ||
                (settings.MaxLargeFileRequest >= 1 &&
                 settings.MaxLargeFileRequest < settings.MaxUserSession),
            "the limit for large files can be reached, or is the default");
    require(settings.LogLevel == u"debug" || settings.LogLevel == u"info" ||
                settings.LogLevel == u"warn" || settings.LogLevel == u"error",
            "the level is one of four");
    require(!settings.OrganizationId.isEmpty() && !settings.RootUrl.isEmpty(),
            "the texts that must be there are");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    if (size == 0) {
        return 0;
    }
    const QString name = u"settings.xml"_s;
    folder.write(name, {data + 1, static_cast<qsizetype>(size - 1)});
    const bool isPrimary = data[0] % 2 == 0;
    try {
        quorin::loadSettings(folder.path(name), isPrimary);
        checkBounds(GatewaySettings::instance());
        require(!isPrimary || !GatewaySettings::instance().GatewayAddress.isEmpty(),
                "a primary gateway has an address");
    } catch (const GatewayException& exception) {
        require(exception.message().startsWith(u"[End] "), "the error says what is wrong");
    }
    return 0;
}
