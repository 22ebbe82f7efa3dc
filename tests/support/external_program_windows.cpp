#include "support/external_program.h"

#include "platform/windows/system.h"
#include "support/deadline.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

// Wine's function that returns the path of a file on the system that Wine runs on, in memory of the
// process heap. Null on Windows.
using UnixPathFunction = char*(CDECL*)(const wchar_t*);

UnixPathFunction unixPathFunction() {
    return reinterpret_cast<UnixPathFunction>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
}

// Wine starts programs of its system, but returns no handle to wait for, so a shell creates a file
// when the program has ended.
QByteArray runOutsideWine(const QString& name, const QStringList& arguments,
                          const QByteArray& input) {
    const QTemporaryDir folder;
    QFile inputFile(folder.filePath(u"input"_s));
    EXPECT_TRUE(inputFile.open(QIODevice::WriteOnly));
    inputFile.write(input);
    inputFile.close();
    const QStringList shell{u"-c"_s,
                            u"cd \"$0\" && \"$@\" <input >output 2>&1; touch \"$0/ended\""_s,
                            pathForProgram(folder.path()), name};
    EXPECT_TRUE(QProcess::startDetached(u"Z:/bin/sh"_s, shell + arguments)) << name.toStdString();
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(folder.filePath(u"ended"_s)); }))
        << name.toStdString();
    QFile output(folder.filePath(u"output"_s));
    EXPECT_TRUE(output.open(QIODevice::ReadOnly));
    return output.readAll();
}

} // namespace

QByteArray runProgram(const QString& name, const QStringList& arguments, const QByteArray& input) {
    return unixPathFunction() != nullptr ? runOutsideWine(name, arguments, input)
                                         : runChildProgram(name, arguments, input);
}

QString pathForProgram(const QString& path) {
    const UnixPathFunction unixPath = unixPathFunction();
    if (unixPath == nullptr) {
        return QDir::toNativeSeparators(path);
    }
    const QString native = QDir::toNativeSeparators(path);
    char* const converted = unixPath(platform::wide(native));
    const QString result = QString::fromUtf8(converted);
    HeapFree(GetProcessHeap(), 0, converted);
    return result;
}

} // namespace quorin::test
