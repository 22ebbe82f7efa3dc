#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>

// How GoogleTest shows Qt's texts when a comparison fails; found by argument-dependent look-up, so
// in Qt's own, the global namespace.

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
