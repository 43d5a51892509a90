#include "Linux/Applications/LaunchScript.h"

#include "Linux/Applications/KeyFile.h"

#include <QHash>

#include <algorithm>

namespace orvanta {

namespace {

constexpr qsizetype longestExpansion = 4096; ///< as paths; stops variables that double each other

using Variables = QHash<QByteArray, QByteArray>;

bool isNameCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

/// Puts values for $NAME and ${NAME}; for "${NAME:-other}", too, the value.
QByteArray expanded(QByteArrayView text, const Variables& variables) {
    QByteArray result;
    while (!text.isEmpty() && result.size() <= longestExpansion) {
        const bool isBraced = text.startsWith("${");
        const auto begin = text.begin() + (isBraced ? 2 : 1);
        if (text.front() != '$' || text.size() < 2 || begin == text.end() ||
            !isNameCharacter(*begin)) {
            result += text.front();
            text = text.sliced(1);
            continue;
        }
        auto end = std::find_if_not(begin, text.end(), isNameCharacter);
        result += variables.value(QByteArray(begin, end - begin));
        if (isBraced) {
            end = std::find(end, text.end(), '}');
            end += end == text.end() ? 0 : 1;
        }
        text = text.last(text.end() - end);
    }
    return result;
}

/// The length of the name in "NAME=value"; 0 for any other word.
qsizetype assignedName(QByteArrayView word) {
    const auto end = std::find_if_not(word.begin(), word.end(), isNameCharacter);
    return end != word.end() && *end == '=' ? end - word.begin() : 0;
}

} // namespace

std::vector<QByteArray> programsStartedBy(const QByteArray& script) {
    Variables variables;
    std::vector<QByteArray> programs;
    for (const QByteArray& line : script.split('\n')) {
        const Arguments words = shellWords(line.constData());
        bool isFirst = true;
        bool followsExec = false;
        bool isAfterExec = false;
        for (char** next = words.get(); next != nullptr && *next != nullptr; ++next) {
            const QByteArrayView word(*next);
            const qsizetype name = isFirst ? assignedName(word) : 0;
            if (name > 0) {
                variables[word.first(name).toByteArray()] =
                    expanded(word.sliced(name + 1), variables);
                continue;
            }
            if (word == "export" || word == "exec") {
                followsExec = isAfterExec = word == "exec";
                continue;
            }
            QByteArray program = expanded(word, variables);
            if (program.endsWith(';')) {
                program.chop(1);
            }
            if (program.isEmpty()) {
                continue; // As for a shell, a variable that is not set is no word.
            }
            if (followsExec || ((isFirst || isAfterExec) && program.startsWith('/'))) {
                programs.push_back(program);
            }
            isFirst = followsExec = false;
        }
    }
    return programs;
}

} // namespace orvanta
