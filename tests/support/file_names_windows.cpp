#include "platform/windows/system.h"
#include "support/file_names.h"

#include <QDir>
#include <QFileInfo>

#include <array>

namespace quorin::test {

QString shortName(const QString& path) {
    std::array<wchar_t, MAX_PATH> result{};
    const QString native = QDir::toNativeSeparators(path);
    if (GetShortPathNameW(platform::wide(native), result.data(), MAX_PATH) == 0) {
        return {};
    }
    const QString name =
        QFileInfo(QDir::fromNativeSeparators(QString::fromWCharArray(result.data()))).fileName();
    return name.compare(QFileInfo(path).fileName(), Qt::CaseInsensitive) == 0 ? QString() : name;
}

bool publish(const QString& from, const QString& to) {
    const QString target = QDir::toNativeSeparators(to);
    const QString source = QDir::toNativeSeparators(from);
    return ReplaceFileW(platform::wide(target), platform::wide(source), nullptr, 0, nullptr,
                        nullptr) != FALSE;
}

} // namespace quorin::test
