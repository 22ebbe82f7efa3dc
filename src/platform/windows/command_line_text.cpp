#include "platform/windows/command_line_text.h"

#include "platform/windows/system.h"

#include <shellapi.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace quorin::platform {

namespace {

// Backslashes are literal unless they precede a quotation mark; then each must be doubled. The
// closing quotation mark counts.
QString quoted(const QString& argument) {
    QString text = u"\""_s;
    qsizetype backslashes = 0;
    for (const QChar character : argument) {
        if (character == u'"') {
            text += QString(backslashes + 1, u'\\');
        }
        backslashes = character == u'\\' ? backslashes + 1 : 0;
        text += character;
    }
    return text + QString(backslashes, u'\\') + u'"';
}

} // namespace

QString commandLineText(const QStringList& arguments) {
    // Backslashes in the program's path are always literal.
    QString text = u'"' + arguments.value(0) + u'"';
    for (const QString& argument : arguments.mid(1)) {
        text += u' ' + quoted(argument);
    }
    return text;
}

QStringList commandLineArguments(const QString& commandLine) {
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> arguments(
        CommandLineToArgvW(wide(commandLine), &count), &LocalFree);
    QStringList texts;
    for (int i = 0; arguments && i < count; ++i) {
        texts += QString::fromWCharArray(arguments.get()[i]);
    }
    return texts;
}

} // namespace quorin::platform
