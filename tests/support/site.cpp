#include "support/site.h"

#include "platform/folders.h"
#include "server/control_channel.h"
#include "support/deadline.h"
#include "support/system.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTcpServer>

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

// Sites that share the machine's own folder.
int sharers = 0;

// The first sharer claims the folder with a file of this name.
constexpr QStringView kClaim = u"/claimed-by-tests";

// Ends the tests rather than touch what a gateway in use keeps on this machine.
void claimMachine(const QString& productFolder) {
    const bool claimed = QFile::exists(productFolder + kClaim);
    if (!claimed &&
        QDirIterator(productFolder, QDir::Files, QDirIterator::Subdirectories).hasNext()) {
        qFatal("%s holds data of a gateway; these tests need a machine of their own",
               qUtf8Printable(productFolder));
    }
    QDir(productFolder).removeRecursively(); // left by tests that were killed
    store(productFolder + kClaim, "");
}

} // namespace

quint16 freePort() {
    // Below the range that systems hand out by themselves, so that nobody comes in between.
    for (;;) {
        const auto port = quint16(QRandomGenerator::global()->bounded(15000, 32000));
        QTcpServer probe;
        if (probe.listen(QHostAddress::AnyIPv4, port)) {
            return port;
        }
    }
}

Site::Site() {
    if (kOnWindows && sharers++ == 0) {
        claimMachine(appDataPath(platform::kProductFolder.toString()));
    }
    QDir().mkpath(temporaryPath());
    QDir().mkpath(stagingPath(QString()));
    QDir().mkpath(rootPath(u"fwfiles"_s));
}

Site::~Site() {
    if (kOnWindows && --sharers == 0) {
        QDir(appDataPath(platform::kProductFolder.toString())).removeRecursively();
    }
}

void Site::writeSettings(Settings settings) {
    if (settings.Port == "0") {
        port_ = freePort();
        settings.Port = QByteArray::number(port_);
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
    return temporaryPath() + u'/' + kControlPipeName;
}

bool Site::waitUntilLogged(const QString& line, int times) const {
    return waitUntil([&] { return logged().count(line) >= times; });
}

} // namespace quorin::test
