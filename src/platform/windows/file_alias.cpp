#include "platform/file_alias.h"

#include "platform/windows/extended_path.h"
#include "platform/windows/stored_names.h"
#include "platform/windows/system.h"

namespace quorin::platform {

namespace {

// Returns the long name that is stored for the last name of `path`, which may be a short name.
std::optional<QString> storedName(const QString& path) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileExW(wide(extendedPath(path)), FindExInfoBasic, &found,
                                           FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) {
        return std::nullopt;
    }
    FindClose(search);
    return QString::fromWCharArray(found.cFileName);
}

} // namespace

bool isFileAlias(const QString& folder, const QString& path) {
    return !hasStoredNames(folder, path, storedName);
}

} // namespace quorin::platform
