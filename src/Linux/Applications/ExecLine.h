#pragma once

#include <QString>
#include <QStringList>

namespace orvanta {

/// What the field codes of a command line stand for.
struct ExecFields {
    QString icon; ///< value of the entry's Icon; empty for none
    QString name; ///< as the person reads it
    QString path; ///< of the desktop entry
};

/// The words of an Exec value (freedesktop.org, Desktop Entry Specification 1.5, "The Exec key"),
/// with no file and no address to open; empty for one that is malformed. The value is unescaped,
/// as a key file gives it.
QStringList execWords(const QString& exec, const ExecFields& fields);

/// A word as it stands in the Exec value of a file, quoted and escaped as far as needed.
QString execWord(const QString& word);

/// A text as it stands as a value in a key file.
QString keyFileValue(QString text);

} // namespace orvanta
