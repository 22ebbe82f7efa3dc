#include "check/folder_check.h"

#include "check/finding_codes.h"
#include "log/application_logger.h"
#include "platform/folders.h"
#include "support/print.h"
#include "support/site.h"
#include "support/system.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace quorin::check {
namespace {

using testing::Contains;
using testing::Not;

class FolderCheckTest : public testing::Test {
protected:
    FolderCheckTest() {
        qputenv("QUORIN_COMMON_APPDATA", site_.appDataFolder().toUtf8());
        site_.writeSettings();
        for (const QString& name : {u"notifications"_s, u"patterns"_s, u"plugins"_s}) {
            EXPECT_TRUE(QDir().mkpath(site_.rootPath(name)));
        }
    }
    ~FolderCheckTest() override { qunsetenv("QUORIN_COMMON_APPDATA"); }

    // Returns the severity, code and subject of each finding about the site.
    QStringList check() const {
        Findings findings;
        checkFolders(site_.settingsPath(), findings);
        QStringList texts;
        for (const Finding& finding : findings) {
            EXPECT_FALSE(finding.failsStart);
            EXPECT_FALSE(finding.action.isEmpty());
            const QString severity = finding.severity == Severity::Error ? u"error "_s : u""_s;
            const QString subject = QDir::fromNativeSeparators(finding.subject);
            if (subject.startsWith(QDir::fromNativeSeparators(site_.appDataFolder())) ||
                subject == site_.settingsPath()) {
                texts.append(severity + finding.code + u' ' + subject);
            }
        }
        return texts;
    }

    test::Site site_;
};

TEST_F(FolderCheckTest, FindsNothingInCompleteSite) {
    EXPECT_EQ(check(), QStringList());
    EXPECT_FALSE(QFile::exists(logFolder())) << "the check created the log folder";
}

TEST_F(FolderCheckTest, ReportsMissingFolders) {
    ASSERT_TRUE(QDir().rmdir(site_.rootPath(u"patterns"_s)));
    ASSERT_TRUE(QDir().rmdir(site_.stagingPath(QString())));
    QString staging = QDir::fromNativeSeparators(site_.stagingPath(QString()));
    staging.chop(1);
    EXPECT_EQ(check(), (QStringList{u"folder-missing " + site_.rootPath(u"patterns"_s),
                                    u"folder-missing " + staging}));
}

TEST_F(FolderCheckTest, MissingDocumentRootIsError) {
    QString root = site_.rootPath(QString());
    root.chop(1);
    ASSERT_TRUE(QDir(root).removeRecursively());
    EXPECT_EQ(check(), QStringList(u"error folder-missing " + root));
}

TEST_F(FolderCheckTest, ReportsNewestLogFileWithoutPermission) {
    ASSERT_TRUE(platform::makeDirectoryPath(logFolder()));
    for (const QString& day : {u"2026-01-01"_s, u"2026-01-02"_s}) {
        QFile file(logFolder() + u"/QuorinGatewayHttp_" + day + u".log");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner));
        if (QFileInfo(file).isWritable()) {
            GTEST_SKIP() << "permissions do not apply to this account";
        }
    }
    const QString newest =
        QDir::fromNativeSeparators(logFolder()) + u"/QuorinGatewayHttp_2026-01-02.log";
    EXPECT_EQ(check(), QStringList(u"folder-not-writable " + newest));
}

TEST_F(FolderCheckTest, ReportsWorldWritablePaths) {
    if (test::kOnWindows) {
        GTEST_SKIP() << "this system has no permission bits";
    }
    const auto open = [](const QString& path) {
        ASSERT_TRUE(QFile::setPermissions(path, QFile::permissions(path) | QFile::WriteOther));
    };
    const QString fwfiles = site_.rootPath(u"fwfiles"_s);
    ASSERT_TRUE(platform::makeDirectoryPath(logFolder()));
    open(site_.settingsPath());
    open(fwfiles);
    open(logFolder());
    EXPECT_EQ(
        check(),
        (QStringList{u"rights-too-wide " + site_.settingsPath(), u"rights-too-wide " + fwfiles,
                     u"rights-too-wide " + QDir::fromNativeSeparators(logFolder())}));
}

} // namespace
} // namespace quorin::check
