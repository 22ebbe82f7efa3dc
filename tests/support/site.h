#pragma once

#include "support/free_port.h"
#include "support/print.h"
#include "support/settings.h"
#include "support/stub_record.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quorin::test {

// The data of a gateway for one test, in a temporary folder: document root, staging folder,
// settings file, temporary folder for the instance guard and the control pipe, and the record of
// the logging stub. The destructor removes all of it. On Windows the common application data folder
// belongs to the machine: sites share it, and the destructor of the last one clears it.
class Site {
public:
    Site();
    // Also removes the shared memory and the semaphores of gateways that were killed.
    ~Site();

    Site(const Site&) = delete;
    Site& operator=(const Site&) = delete;

    // Writes the settings file. Replaces port "0" with a free port.
    void writeSettings(Settings settings = {});

    [[nodiscard]] QString settingsPath() const { return path(QStringLiteral("settings.xml")); }
    // Returns the port that writeSettings() chose, or 0.
    [[nodiscard]] quint16 port() const noexcept { return port_ ? port_->number() : quint16{0}; }

    // The common application data folder of this site's gateways, and a path below it.
    [[nodiscard]] QString appDataFolder() const;
    [[nodiscard]] QString appDataPath(const QString& relative) const;
    // A path below the document root, as the handlers write it.
    [[nodiscard]] QString rootPath(const QString& relative) const;
    // Paths with the system's separator, as the gateway logs them.
    [[nodiscard]] QString stagingPath(const QString& fileName) const;
    [[nodiscard]] QString logFolder() const;

    // Writes a file below the document root, with the folders of its path.
    void writeFile(const QString& relative, const QByteArray& content) const;
    [[nodiscard]] QByteArray readFile(const QString& relative) const;

    // The file with the private key of the gateway's certificate on Windows, in PKCS #8.
    [[nodiscard]] QString privateKeyPath() const { return path(QStringLiteral("private-key")); }

    // Keeps `resource` until the site is destroyed.
    void keep(std::shared_ptr<void> resource) { resources_.push_back(std::move(resource)); }

    // The gateway's temporary folder, and the file of its control pipe if the pipe is a file.
    [[nodiscard]] QString temporaryPath() const { return path(QStringLiteral("tmp")); }
    [[nodiscard]] QString pipePath() const;

    // The logging stub's record: one line per call.
    [[nodiscard]] QString recordPath() const { return path(QStringLiteral("record")); }
    [[nodiscard]] QStringList record() const { return recordedCalls(recordPath()); }
    // The logged lines of the record: the level's number, a space, the message.
    [[nodiscard]] QStringList logged() const { return loggedLines(recordPath()); }
    // Waits until `line` has been logged at least `times` times.
    [[nodiscard]] bool waitUntilLogged(const QString& line, int times = 1) const;

private:
    [[nodiscard]] QString productPath(const QStringList& names) const;
    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

    QTemporaryDir folder_;
    std::vector<std::shared_ptr<void>> resources_;
    std::optional<FreePort> port_;
};

// The name of a file in the machine's product folder that marks the folder as used by tests: tests
// may remove it.
inline constexpr QStringView kClaim = u"/claimed-by-tests";

} // namespace quorin::test
