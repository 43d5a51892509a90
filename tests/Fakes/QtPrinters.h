#pragma once

#include <QByteArray>
#include <QString>

#include <ostream>

// Let a failed comparison show the text.

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << '"' << bytes.left(500).toStdString() << '"';
}
