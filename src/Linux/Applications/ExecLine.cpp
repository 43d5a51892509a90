#include "Linux/Applications/ExecLine.h"

#include "Linux/Applications/KeyFile.h"

#include <algorithm>

namespace orvanta {

namespace {

/// A word with its field codes expanded. Those of files, of addresses and those that are no more
/// stand for nothing.
QString expanded(const QString& word, const ExecFields& fields) {
    QString result;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (word[i] != u'%') {
            result += word[i];
            continue;
        }
        ++i;
        switch (i < word.size() ? word[i].unicode() : 0) {
        case u'%':
            result += u'%';
            break;
        case u'c':
            result += fields.name;
            break;
        case u'k':
            result += fields.path;
            break;
        default:
            break;
        }
    }
    return result;
}

} // namespace

QStringList execWords(const QString& exec, const ExecFields& fields) {
    const Arguments raw = shellWords(exec.toUtf8().constData());
    QStringList words;
    for (char** each = raw.get(); each != nullptr && *each != nullptr; ++each) {
        const QString word = QString::fromUtf8(*each);
        if (word == QLatin1StringView("%i")) {
            if (!fields.icon.isEmpty()) {
                words << QStringLiteral("--icon") << fields.icon;
            }
            continue;
        }
        const QString value = expanded(word, fields);
        if (!value.isEmpty() || word.isEmpty()) {
            words << value;
        }
    }
    return words;
}

QString execWord(const QString& word) {
    // Besides those of the format, the white space that a reader of key files cuts off.
    constexpr QStringView reserved = u" \t\n\r\f\v\"'\\><~|&;$*?#()`";
    constexpr QStringView escaped = u"\"`$\\";
    const bool isQuoted = word.isEmpty() || std::ranges::any_of(word, [&](QChar character) {
                              return reserved.contains(character);
                          });
    QString result;
    for (const QChar character : word) {
        if (escaped.contains(character)) {
            result += u'\\';
        }
        result += character;
        if (character == u'%') {
            result += character;
        }
    }
    return keyFileValue(isQuoted ? u'"' + result + u'"' : result);
}

QString keyFileValue(QString text) {
    text.replace(u'\\', QLatin1StringView("\\\\"));
    text.replace(u'\n', QLatin1StringView("\\n"));
    text.replace(u'\t', QLatin1StringView("\\t"));
    text.replace(u'\r', QLatin1StringView("\\r"));
    if (text.startsWith(u' ')) {
        text.replace(0, 1, QLatin1StringView("\\s"));
    }
    return text;
}

} // namespace orvanta
