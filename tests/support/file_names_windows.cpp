#include "platform/windows/system.h"
#include "support/file_names.h"

#include <QDir>

namespace quorin::test {

bool publish(const QString& from, const QString& to) {
    const QString target = QDir::toNativeSeparators(to);
    const QString source = QDir::toNativeSeparators(from);
    return ReplaceFileW(platform::wide(target), platform::wide(source), nullptr, 0, nullptr,
                        nullptr) != FALSE;
}

} // namespace quorin::test
