#pragma once

#include "require.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// Temporary in-memory folder for the files of a fuzzer; also set as the common application data
// folder. Removed by the destructor, so it remains if the fuzzer crashes.
class ScratchFolder {
public:
    ScratchFolder() {
        require(folder_.isValid(), "the temporary folder can be created");
        qputenv("QUORIN_COMMON_APPDATA", folder_.path().toUtf8());
    }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

    // Writes the file and creates its parent folders.
    void write(const QString& name, QByteArrayView content) const {
        const QString fullPath = path(name);
        require(QDir().mkpath(QFileInfo(fullPath).path()), "the parent folder can be created");
        QFile file(fullPath);
        require(file.open(QIODevice::WriteOnly) &&
                    file.write(content.data(), content.size()) == content.size(),
                "the file can be written");
    }

    [[nodiscard]] QByteArray read(const QString& name) const {
        QFile file(path(name));
        require(file.open(QIODevice::ReadOnly), "the file can be opened");
        return file.readAll();
    }

private:
    QTemporaryDir folder_{QStringLiteral("/dev/shm/gateway-fuzz-XXXXXX")};
};
