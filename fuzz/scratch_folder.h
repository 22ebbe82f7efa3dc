#pragma once

#include "require.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// A folder in memory for the files of one fuzzer, which stands for the common application data
// folder, too. Gone when the fuzzer ends by itself.
class ScratchFolder {
public:
    ScratchFolder() {
        require(folder_.isValid(), "there is a folder for files");
        qputenv("QUORIN_COMMON_APPDATA", folder_.path().toUtf8());
    }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }

    // Writes the file, with the folders on the way.
    void write(const QString& name, QByteArrayView content) const {
        const QString whole = path(name);
        require(QDir().mkpath(QFileInfo(whole).path()), "there is a folder for the file");
        QFile file(whole);
        require(file.open(QIODevice::WriteOnly) &&
                    file.write(content.data(), content.size()) == content.size(),
                "the file was written");
    }

    [[nodiscard]] QByteArray read(const QString& name) const {
        QFile file(path(name));
        require(file.open(QIODevice::ReadOnly), "the file is there");
        return file.readAll();
    }

private:
    QTemporaryDir folder_{QStringLiteral("/dev/shm/gateway-fuzz-XXXXXX")};
};
