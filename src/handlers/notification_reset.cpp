#include "handlers/notification_reset.h"

#include "handlers/notification_lock.h"
#include "json/reader.h"
#include "json/value.h"
#include "json/writer.h"
#include "log/log.h"
#include "platform/input_file.h"
#include "platform/replace_file.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

namespace quorin {

namespace {

constexpr std::array<const char*, 3> kItems{"RemoteExecution", "RemoteExecutionCancel",
                                            "RemoteSetting"};
constexpr const char* kIsExist = "IsExist";
constexpr const char* kLastUpdated = "LastUpdated";

// The result of resetting one item of the document.
enum class ItemReset { Done, Newer, Malformed };

QDateTime dateFromText(const QString& text) {
    return QDateTime::fromString(text, Qt::ISODate);
}

// Marks a pending item as no longer present unless it is newer than the date. An item that is
// missing or not pending needs no change.
ItemReset resetItem(ravenjson::Value* item, const QString& resetDate) {
    if (item == nullptr || !item->isObject()) {
        return ItemReset::Done;
    }
    ravenjson::Value* const isExist = item->find(kIsExist);
    if (isExist == nullptr || !isExist->isBoolean()) {
        return ItemReset::Malformed;
    }
    if (!isExist->boolean()) {
        return ItemReset::Done;
    }
    ravenjson::Value* const lastUpdated = item->find(kLastUpdated);
    if (lastUpdated == nullptr || !lastUpdated->isString()) {
        return ItemReset::Malformed;
    }
    if (dateFromText(resetDate) < dateFromText(QString::fromUtf8(lastUpdated->string()))) {
        return ItemReset::Newer;
    }
    *isExist = false;
    *lastUpdated = resetDate.toStdString();
    return ItemReset::Done;
}

// Resets all items, and empties the document if none is newer. Returns false if an item is
// malformed.
bool resetDocument(ravenjson::Value& document, const QString& resetDate) {
    bool isNewerSeen = false;
    for (const char* const name : kItems) {
        switch (resetItem(document.find(name), resetDate)) {
        case ItemReset::Malformed:
            return false;
        case ItemReset::Newer:
            isNewerSeen = true;
            break;
        case ItemReset::Done:
            break;
        }
    }
    if (!isNewerSeen) {
        document.clear();
    }
    return true;
}

std::optional<ravenjson::Value> readDocument(const QString& path) {
    const std::unique_ptr<QIODevice> file = platform::openForReading(path);
    if (!file) {
        return std::nullopt;
    }
    const QByteArray text = file->readAll();
    ravenjson::Value document;
    std::string error;
    if (!ravenjson::parse({text.constData(), static_cast<std::size_t>(text.size())}, document,
                          error)) {
        return std::nullopt;
    }
    return document;
}

// Writes the document and flushes it to the disk, so that a power failure after the rename cannot
// leave an empty or partial notification. Returns false if any of this fails.
bool writeDocument(const ravenjson::Value& document, const QString& path) {
    std::string text;
    std::string error;
    if (!ravenjson::write(document, ravenjson::kCompact, text, error)) {
        return false;
    }
    QFile file(path);
    const auto size = static_cast<qint64>(text.size());
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(text.data(), size) == size && platform::flushToDisk(file);
}

} // namespace

bool resetNotification(const QString& filePath, const QString& resetDate) {
    log::info(u"Reset " + filePath + u" [date - " + resetDate + u"].");
    NotificationLock lock{QFileInfo(filePath)};
    if (!lock.acquire()) {
        lock.logFailure();
        return false;
    }
    std::optional<ravenjson::Value> document = readDocument(filePath);
    return document && resetDocument(*document, resetDate) &&
           writeDocument(*document, lock.stagingPath()) &&
           platform::replaceFile(lock.stagingPath(), filePath);
}

} // namespace quorin
