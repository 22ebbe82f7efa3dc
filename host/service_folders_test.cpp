#include "service_folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>

namespace quorin {
namespace {

using platform::FolderAccess;

TEST(ServiceFoldersTest, StartsWithTheFolderOfAllOthers) {
    const auto folders = serviceFolders();
    const QString top = folders.front().path + QDir::separator();
    EXPECT_TRUE(folders.front().path.endsWith(QStringLiteral("Vemo")));
    for (std::size_t i = 1; i < folders.size(); ++i) {
        EXPECT_TRUE(folders[i].path.startsWith(top)) << folders[i].path.toStdString();
    }
}

// Each is created without its parents.
TEST(ServiceFoldersTest, ListsParentsFirst) {
    QStringList seen;
    for (const platform::ProtectedFolder& folder : serviceFolders()) {
        const QString parent = folder.path.left(folder.path.lastIndexOf(QDir::separator()));
        EXPECT_TRUE(seen.isEmpty() || seen.contains(parent)) << folder.path.toStdString();
        seen.append(folder.path);
    }
}

TEST(ServiceFoldersTest, ServiceChangesOnlyThreeFolders) {
    std::vector<std::string> names;
    for (const platform::ProtectedFolder& folder : serviceFolders()) {
        if (folder.serviceAccess == FolderAccess::Modify) {
            names.push_back(folder.path.section(QDir::separator(), -1).toStdString());
        }
    }
    EXPECT_THAT(names, testing::ElementsAre("notifications", "NotificationTmp", "log"));
}

} // namespace
} // namespace quorin
