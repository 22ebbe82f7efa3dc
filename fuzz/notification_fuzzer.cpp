// The reset of an arbitrary notification document, behind the line feed that ends the date.
// Whatever both are,
//   - a reset that fails leaves the document as it was, byte for byte;
//   - one that succeeds leaves JSON, empty or with an item that is newer than the date;
//   - another reset with the same date changes nothing more;
//   - no lock stays.

#include "require.h"
#include "scratch_folder.h"
#include "worker/notification_lock.h"
#include "worker/notification_reset.h"
#include "json/reader.h"
#include "json/value.h"

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
            "what was written is JSON");
    static constexpr std::array<const char*, 7> kEmptied{"{}", "[]",  "\"\"", "false",
                                                         "0",  "0.0", "null"};
    if (std::any_of(kEmptied.begin(), kEmptied.end(),
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
    require(isPending, "a document is kept for what is pending in it");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t line = input.find('\n');
    if (line == std::string_view::npos) {
        return 0;
    }
    const std::string_view date = input.substr(0, line);
    const std::string_view text = input.substr(line + 1);
    const QByteArrayView before(text.data(), static_cast<qsizetype>(text.size()));
    const QString resetDate = QString::fromUtf8(date.data(), static_cast<qsizetype>(date.size()));
    folder.write(kName, before);
    const QString staging = quorin::stagingPath(QFileInfo(folder.path(kName)));
    require(QDir().mkpath(QFileInfo(staging).path()), "there is a staging folder");

    const bool isReset = quorin::resetNotification(folder.path(kName), resetDate);
    const QByteArray after = folder.read(kName);
    if (isReset) {
        checkResult(after);
        require(quorin::resetNotification(folder.path(kName), resetDate), "it can be reset again");
        require(folder.read(kName) == after, "to the same document");
    } else {
        require(after == before, "a failure leaves the document alone");
    }
    require(!QFileInfo::exists(staging + u".lock"_s), "the lock is released");
    return 0;
}
