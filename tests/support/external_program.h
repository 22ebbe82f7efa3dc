#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Programs of the system that the tests use as clients, such as openssl and curl. Under Wine, these
// are the programs of the system that Wine runs on.
namespace quorin::test {

// Runs the program `name` with `input` on its standard input until it ends. Returns its standard
// output and error. Adds a test failure if the program cannot be started or does not end within
// kTestTimeout.
[[nodiscard]] QByteArray runProgram(const QString& name, const QStringList& arguments,
                                    const QByteArray& input = {});

// Does the same without regard to Wine: the program is a child process.
[[nodiscard]] QByteArray runChildProgram(const QString& name, const QStringList& arguments,
                                         const QByteArray& input);

// Returns the path in the form that these programs expect.
[[nodiscard]] QString pathForProgram(const QString& path);

} // namespace quorin::test
