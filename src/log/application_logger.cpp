#include "log/application_logger.h"

#include "log/log_capture.h"
#include "platform/folders.h"

#include <QByteArray>

#include <algorithm>
#include <array>

namespace quorin {
namespace {

constexpr const char* kLoggerName = "GW";
constexpr const char* kLogFileBaseName = "QuorinGatewayHttp";

struct LevelName {
    QStringView name;
    lumetrix::Level level;
};

constexpr std::array<LevelName, 4> kLevelNames{{
    {u"debug", lumetrix::Level::Debug},
    {u"info", lumetrix::Level::Info},
    {u"warn", lumetrix::Level::Warn},
    {u"error", lumetrix::Level::Error},
}};

lumetrix::Level levelFromName(const QString& name) {
    const QString lowered = name.toLower();
    const auto found =
        std::find_if(kLevelNames.begin(), kLevelNames.end(),
                     [&lowered](const LevelName& candidate) { return candidate.name == lowered; });
    return found != kLevelNames.end() ? found->level : lumetrix::Level::Info;
}

// The library counts the current file too: one more than `generation`, saturated at INT32_MAX.
std::int32_t filesToKeep(std::int32_t generation) {
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(std::int64_t{generation} + 1, INT32_MAX));
}

} // namespace

QString logFolder() {
    const QString base = platform::commonApplicationDataFolderForLog();
    return platform::joinPath(platform::joinPath(base, platform::kProductFolder.toString()),
                              platform::kLogFolder.toString());
}

QuorinGatewayApplicationLogger::QuorinGatewayApplicationLogger()
    : Logger(kLoggerName, platform::loggingLibraryName()) {}

QuorinGatewayApplicationLogger& QuorinGatewayApplicationLogger::instance() {
    static QuorinGatewayApplicationLogger logger;
    return logger;
}

bool QuorinGatewayApplicationLogger::isWriting() {
    return LogCapture::active() != nullptr || instance().isLogging();
}

void QuorinGatewayApplicationLogger::write(lumetrix::Level level, const QString& message) {
    if (LogCapture* const capture = LogCapture::active()) {
        capture->add(level, message);
        return;
    }
    const QuorinGatewayApplicationLogger& logger = instance();
    if (logger.isLogging()) {
        logger.log(level, message.toUtf8().constData());
    }
}

void QuorinGatewayApplicationLogger::setUpApplicationLog(const ApplicationLogSettings& settings) {
    const QString directory = logFolder();
    if (!platform::isDirectory(directory)) {
        platform::makeDirectoryPath(directory);
    }
    const QuorinGatewayApplicationLogger& logger = instance();
    logger.setRotationWithDate(filesToKeep(settings.generation));
    logger.setPoolSize(settings.queueSize);
    logger.setOutputLevel(levelFromName(settings.level));
    logger.setOutputDir(directory.toUtf8().constData(), kLogFileBaseName);
}

void QuorinGatewayApplicationLogger::shutDownLog() {
    instance().release();
}

} // namespace quorin
