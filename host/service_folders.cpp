#include "service_folders.h"

#include "handlers/file_names.h"
#include "platform/folders.h"

#include <QDir>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace quorin {

// The service replaces notifications, and writes its log and the lock files and new versions of
// notifications in the staging folder.
std::vector<platform::ProtectedFolder> serviceFolders() {
    using platform::FolderAccess;
    const QString base = platform::commonApplicationDataFolder() + u'/' + platform::kProductFolder;
    const QString root = base + u"/QuorinGatewayHttp/wwwroot";
    const QString application = base + u'/' + kGatewayAppFolder;
    std::vector<platform::ProtectedFolder> folders{
        {base.left(base.lastIndexOf(u'/')), FolderAccess::Read},
        {base, FolderAccess::Read},
        {base + u"/QuorinGatewayHttp", FolderAccess::Read},
        {root, FolderAccess::Read},
        {root + u"/fwfiles", FolderAccess::Read},
        {root + u"/patterns", FolderAccess::Read},
        {root + u"/plugins", FolderAccess::Read},
        {root + u'/' + kNotificationsFolder, FolderAccess::Modify},
        {application, FolderAccess::Read},
        {application + u'/' + kNotificationStagingFolder, FolderAccess::Modify},
        {base + u'/' + platform::kLogFolder, FolderAccess::Modify},
    };
    for (platform::ProtectedFolder& folder : folders) {
        folder.path = QDir::toNativeSeparators(folder.path);
    }
    return folders;
}

} // namespace quorin
