#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

namespace quorin::platform {

// A small file that describes a running process. Other processes can see whether the process that
// wrote it still holds it: the system ends that with the process, even if the process is killed.
// The destructor removes the file.
class HeldFile {
public:
    virtual ~HeldFile() = default;

    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    // Writes `content` to the file `path` and holds it. Returns null if another process holds the
    // file or it cannot be written. Child processes do not inherit it.
    [[nodiscard]] static std::unique_ptr<HeldFile> create(const QString& path,
                                                          const QByteArray& content);

    // Returns the content of the file `path`, or nothing if no process holds it. May return an
    // incomplete content while its process writes it. Does not disturb that process.
    [[nodiscard]] static std::optional<QByteArray> read(const QString& path);

protected:
    HeldFile() = default;
};

} // namespace quorin::platform
