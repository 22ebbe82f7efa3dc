#include "worker/large_file.h"

#include <QByteArrayView>
#include <QLatin1String>

#include <algorithm>
#include <array>

namespace quorin {

namespace {

constexpr std::array<QLatin1String, 2> kLargeEndings{QLatin1String("zip"), QLatin1String("exe")};

} // namespace

bool isLargeFile(std::string_view target) {
    const std::string_view name = target.substr(target.rfind('\\') + 1);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) {
        return false;
    }
    const std::string_view ending = name.substr(dot + 1);
    const QLatin1String text(ending.data(), static_cast<qsizetype>(ending.size()));
    return std::any_of(kLargeEndings.begin(), kLargeEndings.end(), [text](QLatin1String large) {
        return text.compare(large, Qt::CaseInsensitive) == 0;
    });
}

} // namespace quorin
