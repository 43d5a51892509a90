// A desktop entry, from its file to the words of the command that it starts.

#include "Fuzz.h"
#include "Linux/Applications/DesktopEntries.h"
#include "Linux/Applications/ExecLine.h"
#include "Linux/Applications/KeyFile.h"

#include <QFile>
#include <QTemporaryDir>

using namespace orvanta;

int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    static const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("one.desktop")));
    require(file.open(QIODevice::WriteOnly) && file.write(data, qint64(size)) == qint64(size));
    file.close();

    const QString id = QStringLiteral("one");
    DesktopEntries entries({folder.path()});
    for (const DesktopEntry& entry : entries.all()) {
        require(entry.id == id && entry.path == file.fileName());
        require(entries.at(entry.path).has_value());
    }
    if (const auto keys = KeyFile::parse(QByteArrayView(data, qsizetype(size)))) {
        constexpr auto group = "Desktop Entry";
        const auto exec = keys->text(group, "Exec");
        execWords(QString::fromUtf8(exec.get()), {QStringLiteral("icon"), id, file.fileName()});
        keys->translation(group, "Name", "pt_BR");
        keys->list(group, "MimeType");
        keys->isSet(group, "Hidden");
    }
    return 0;
}
