#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>

// Print Qt's strings in GoogleTest failure messages. Found by argument-dependent lookup, hence in
// the global namespace, as Qt's types are.

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    constexpr qsizetype shown = 2000;
    *out << '"' << bytes.left(shown).toStdString() << '"';
    if (bytes.size() > shown) {
        *out << "... (" << bytes.size() << " bytes)";
    }
}

inline void PrintTo(const QStringList& lines, std::ostream* out) {
    *out << '\n' << lines.join(QLatin1Char('\n')).toStdString() << '\n';
}
