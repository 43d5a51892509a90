// Command lines: those of desktop entries, of launch scripts and of processes.

#include "Fuzz.h"
#include "Linux/Applications/ExecLine.h"
#include "Linux/Applications/KeyFile.h"
#include "Linux/Applications/LaunchScript.h"

using namespace orvanta;

int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    const QByteArray bytes(data, qsizetype(size));
    programsStartedBy(bytes);
    shellWords(bytes.constData());
    const QString text = QString::fromUtf8(bytes);
    execWords(text, {});
    // What is written as one word of a desktop entry is read as that word.
    if (!text.isEmpty() && !text.contains(QChar::Null)) {
        const auto entry = KeyFile::parse("[Desktop Entry]\nExec=" + execWord(text).toUtf8());
        const auto exec = entry ? entry->text("Desktop Entry", "Exec") : nullptr;
        require(execWords(QString::fromUtf8(exec.get()), {}) == QStringList{text});
    }
    return 0;
}
