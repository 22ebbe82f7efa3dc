#pragma once

#include <QString>
#include <QStringView>

namespace quorin::platform {

// The product folder, relative to the common application data folder. All files of the gateway are
// below it.
inline constexpr QStringView kProductFolder = u"Vemo/Quorin5";

// The folder of the log files, in the product folder.
inline constexpr QStringView kLogFolder = u"log";

// Returns false if the system library that provides the shell folders cannot be loaded; the gateway
// must not start then. Always returns true on systems that do not need such a library.
[[nodiscard]] bool shellFoldersAvailable();

// Returns the machine-wide folder for application data without a trailing separator, or an empty
// text if the system has none.
[[nodiscard]] QString commonApplicationDataFolder();

// Returns the same folder for the log configuration. On Windows the ANSI function is used: the
// result is empty if the path is too long for it.
[[nodiscard]] QString commonApplicationDataFolderForLog();

// Returns the folder for files that describe the running gateway: on Linux the temporary folder, on
// Windows the folder of the log files, to which the account of a gateway can always write.
[[nodiscard]] QString runtimeFolder();

// Joins two paths: always appends the system's separator to `left`, and removes one leading
// separator from `right`.
[[nodiscard]] QString joinPath(const QString& left, const QString& right);

// Returns true if `path` is an existing directory.
[[nodiscard]] bool isDirectory(const QString& path);

// Returns true if this process may create files in the directory `path`.
[[nodiscard]] bool canCreateFilesIn(const QString& path);

// Creates the directory `path` and its parents. Returns false if it does not exist afterwards.
bool makeDirectoryPath(const QString& path);

} // namespace quorin::platform
