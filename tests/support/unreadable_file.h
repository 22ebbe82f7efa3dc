#pragma once

#include <QString>

#include <memory>

namespace quorin::test {

// A file that exists and is not a folder, but that no process can open: on Linux the file of a
// local socket, on Windows a file that is open for exclusive use. The destructor removes it.
class UnreadableFile {
public:
    // Adds a test failure if the file cannot be created.
    explicit UnreadableFile(const QString& path);
    ~UnreadableFile();

    UnreadableFile(const UnreadableFile&) = delete;
    UnreadableFile& operator=(const UnreadableFile&) = delete;

private:
    class Holder;

    std::unique_ptr<Holder> holder_;
};

} // namespace quorin::test
