#pragma once

#include <QString>
#include <QStringView>

namespace platform {

// The product's folder below the common application data folder; every path of the gateway
// starts with these two.
inline constexpr QStringView kProductFolder = u"Vemo/Quorin5";

// True when the system library that knows the shell folders can be loaded. Without it nothing
// below is known and the gateway must not start. Systems without such a library answer true.
bool shellFoldersAvailable();

// The machine-wide folder for application data, without a trailing separator; empty when the
// system names none.
QString commonApplicationDataFolder();

// The same folder as the log set-up asks for it: through the system's eight-bit interface where
// there is one, so that it is empty when the name is too long for that interface.
QString commonApplicationDataFolderForLog();

// `left` and `right` joined with the system's separator, which is put behind `left` always and
// taken off the front of `right` once.
QString joinPath(const QString& left, const QString& right);

// True when `path` names an existing directory.
bool isDirectory(const QString& path);

// Makes the directory `path` with all its parents. False when it does not exist afterwards.
bool makeDirectoryPath(const QString& path);

} // namespace platform
