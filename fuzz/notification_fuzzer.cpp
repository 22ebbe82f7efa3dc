// Resets an arbitrary notification document. Input: the reset date, a line feed, the document.
//   - A reset that fails leaves the document unchanged.
//   - A reset that succeeds leaves valid JSON: an empty value, or a document with a pending item.
//   - A second reset with the same date succeeds and changes nothing.
//   - The lock is released.

#include "handlers/notification_lock.h"
#include "handlers/notification_reset.h"
#include "json/reader.h"
#include "json/value.h"
#include "require.h"
#include "scratch_folder.h"

#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

const QString kName = u"root/notifications/n.json"_s;

void checkResult(const QByteArray& result) {
    ravenjson::Value document;
    std::string error;
    require(ravenjson::parse({result.constData(), static_cast<std::size_t>(result.size())},
                             document, error),
            "the written document is valid JSON");
    static constexpr std::array<const char*, 7> kEmptyValues{"{}", "[]",  "\"\"", "false",
                                                             "0",  "0.0", "null"};
    if (std::any_of(kEmptyValues.begin(), kEmptyValues.end(),
                    [&result](const char* empty) { return result == empty; })) {
        return;
    }
    bool isPending = false;
    for (const char* const name : {"RemoteExecution", "RemoteExecutionCancel", "RemoteSetting"}) {
        const ravenjson::Value* const item = document.find(name);
        const ravenjson::Value* const isExist =
            item != nullptr && item->isObject() ? item->find("IsExist") : nullptr;
        isPending = isPending || (isExist != nullptr && isExist->boolean());
    }
    require(isPending, "a document that is kept has a pending item");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t dateEnd = input.find('\n');
    if (dateEnd == std::string_view::npos) {
        return 0;
    }
    const std::string_view date = input.substr(0, dateEnd);
    const std::string_view text = input.substr(dateEnd + 1);
    const QByteArrayView before(text.data(), static_cast<qsizetype>(text.size()));
    const QString resetDate = QString::fromUtf8(date.data(), static_cast<qsizetype>(date.size()));
    folder.write(kName, before);
    const QString staging = quorin::stagingPath(QFileInfo(folder.path(kName)));
    require(QDir().mkpath(QFileInfo(staging).path()), "the staging folder can be created");

    const bool isReset = quorin::resetNotification(folder.path(kName), resetDate);
    const QByteArray after = folder.read(kName);
    if (isReset) {
        checkResult(after);
        require(quorin::resetNotification(folder.path(kName), resetDate),
                "a second reset succeeds");
        require(folder.read(kName) == after, "a second reset changes nothing");
    } else {
        require(after == before, "a failed reset leaves the document unchanged");
    }
    require(!QFileInfo::exists(staging + u".lock"_s), "the lock is released");
    return 0;
}
