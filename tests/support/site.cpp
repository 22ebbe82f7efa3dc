#include "support/site.h"

#include "platform/control_pipe.h"
#include "platform/folders.h"
#include "support/deadline.h"
#include "support/ipc_cleanup.h"
#include "support/system.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void store(const QString& path, const QByteArray& content) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

// The number of sites that exist, which share the machine's folder.
int siteCount = 0;

// Aborts the tests if the folder holds the data of a gateway that is in use.
void claimMachine(const QString& productFolder) {
    const bool isClaimed = QFile::exists(productFolder + kClaim);
    if (!isClaimed &&
        QDirIterator(productFolder, QDir::Files, QDirIterator::Subdirectories).hasNext()) {
        qFatal("%s holds data of a gateway; these tests need a machine of their own",
               qUtf8Printable(productFolder));
    }
    QDir(productFolder).removeRecursively(); // left by killed tests
    store(productFolder + kClaim, "");
}

} // namespace

Site::Site() {
    if (kOnWindows && siteCount++ == 0) {
        claimMachine(appDataPath(platform::kProductFolder.toString()));
    }
    QDir().mkpath(temporaryPath());
    QDir().mkpath(stagingPath(QString()));
    QDir().mkpath(rootPath(u"fwfiles"_s));
}

Site::~Site() {
    removeIpcObjects(temporaryPath());
    if (kOnWindows && --siteCount == 0) {
        QDir(appDataPath(platform::kProductFolder.toString())).removeRecursively();
    }
}

void Site::writeSettings(Settings settings) {
    if (settings.Port == "0") {
        port_.emplace();
        settings.Port = port_->text();
    }
    store(settingsPath(), settings.toXml());
}

QString Site::appDataFolder() const {
    return kOnWindows ? platform::commonApplicationDataFolder() : path(u"appdata"_s);
}

QString Site::appDataPath(const QString& relative) const {
    return appDataFolder() + u'/' + relative;
}

QString Site::rootPath(const QString& relative) const {
    return QDir::fromNativeSeparators(
        appDataPath(u"Vemo/Quorin5/QuorinGatewayHttp/wwwroot/"_s + relative));
}

QString Site::productPath(const QStringList& names) const {
    QString path = platform::joinPath(appDataFolder(), platform::kProductFolder.toString());
    for (const QString& name : names) {
        path = platform::joinPath(path, name);
    }
    return path;
}

QString Site::stagingPath(const QString& fileName) const {
    return productPath({u"QuorinGatewayApp"_s, u"NotificationTmp"_s, fileName});
}

QString Site::logFolder() const {
    return productPath({u"log"_s});
}

void Site::writeFile(const QString& relative, const QByteArray& content) const {
    store(rootPath(relative), content);
}

QByteArray Site::readFile(const QString& relative) const {
    return contentOf(rootPath(relative));
}

QString Site::pipePath() const {
    return temporaryPath() + u'/' + platform::kControlPipeName;
}

bool Site::waitUntilLogged(const QString& line, int times) const {
    return waitUntil([&] { return logged().count(line) >= times; });
}

} // namespace quorin::test
