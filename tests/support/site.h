#pragma once

#include "support/print.h"
#include "support/settings.h"
#include "support/stub_record.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace quorin::test {

// A facility's machine for one test: a folder of its own with document root, staging folder,
// settings file, place for the instance guard and the control pipe, and the record of the logging
// stub. Gone with the object. Where the common application data folder is the machine's own, sites
// share it, and the last one to go clears it.
class Site {
public:
    Site();
    ~Site();

    Site(const Site&) = delete;
    Site& operator=(const Site&) = delete;

    // Writes the settings file; a port of "0" is replaced by a free one.
    void writeSettings(Settings settings = {});

    [[nodiscard]] QString settingsPath() const { return path(QStringLiteral("settings.xml")); }
    [[nodiscard]] quint16 port() const noexcept { return port_; }

    // The common application data folder of the gateways on this site, and what lies below it.
    [[nodiscard]] QString appDataFolder() const;
    [[nodiscard]] QString appDataPath(const QString& relative) const;
    // Below the document root, as the handlers of a request name it.
    [[nodiscard]] QString rootPath(const QString& relative) const;
    // As the gateway writes these two, with the system's separator between the names.
    [[nodiscard]] QString stagingPath(const QString& fileName) const;
    [[nodiscard]] QString logFolder() const;

    // Makes a file below the document root, with the folders on the way.
    void writeFile(const QString& relative, const QByteArray& content) const;
    [[nodiscard]] QByteArray readFile(const QString& relative) const;

    // Where the gateway keeps its guard and its pipe, and the pipe's file where it is one.
    [[nodiscard]] QString temporaryPath() const { return path(QStringLiteral("tmp")); }
    [[nodiscard]] QString pipePath() const;

    // What the logging stub writes: a line a call.
    [[nodiscard]] QString recordPath() const { return path(QStringLiteral("record")); }
    [[nodiscard]] QStringList record() const { return recordedCalls(recordPath()); }
    // Of the record, the lines logged: the level's number, a blank, the message.
    [[nodiscard]] QStringList logged() const { return loggedLines(recordPath()); }
    // Waits until `line` was logged `times` times.
    [[nodiscard]] bool waitUntilLogged(const QString& line, int times = 1) const;

private:
    [[nodiscard]] QString productPath(const QStringList& names) const;
    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

    QTemporaryDir folder_;
    quint16 port_ = 0;
};

// A port of the loopback interface that nobody listens on.
[[nodiscard]] quint16 freePort();

} // namespace quorin::test
