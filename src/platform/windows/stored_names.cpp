#include "platform/windows/stored_names.h"

#include <QStringList>

#include <algorithm>

namespace quorin::platform {

namespace {

constexpr QChar kSlash = u'/';

bool endsInRemovedCharacter(const QString& name) {
    return name.endsWith(u'.') || name.endsWith(u' ');
}

} // namespace

bool hasStoredNames(const QString& folder, const QString& path,
                    const StoredNameLookup& storedName) {
    if (path.endsWith(kSlash)) {
        return false;
    }
    const QStringList names = path.split(kSlash, Qt::SkipEmptyParts);
    QString parent = folder;
    return std::all_of(names.begin(), names.end(), [&](const QString& name) {
        if (endsInRemovedCharacter(name)) {
            return false;
        }
        parent += kSlash + name;
        const std::optional<QString> stored = storedName(parent);
        return stored && stored->compare(name, Qt::CaseInsensitive) == 0;
    });
}

} // namespace quorin::platform
