#pragma once

#include <QString>

#include <ostream>

/// Lets a failed comparison show the text.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
