#include "Model/UserDefaults.h"

#include "Model/ModelError.h"
#include "Platform/PrivateFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <unistd.h>

#include <utility>

namespace orvanta {

namespace {

bool isTrueText(const QString& text) {
    auto at = text.cbegin();
    const auto end = text.cend();
    while (at != end && at->isSpace()) {
        ++at;
    }
    if (at != end && (*at == u'+' || *at == u'-')) {
        ++at;
    }
    while (at != end && *at == u'0') {
        ++at;
    }
    return at != end && QStringView(u"YyTt123456789").contains(*at);
}

std::optional<PropertyList> read(const QString& path) {
    // To open a pipe would wait for somebody to write into it.
    if (!QFileInfo(path).isFile()) {
        return std::nullopt;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > PropertyList::maximumSize) {
        return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return std::nullopt;
    }
    try {
        return PropertyList::parse(bytes);
    } catch (const ModelError&) {
        return std::nullopt;
    }
}

bool isOccupied(const QString& path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

/// The file behind a chain of links, whether it exists or not; the path itself when the chain has
/// no end.
QString followLinks(const QString& path) {
    constexpr int longestChain = 40;
    QFileInfo info(path);
    for (int i = 0; i < longestChain; ++i) {
        if (!info.isSymLink()) {
            return info.filePath();
        }
        info.setFile(info.symLinkTarget());
    }
    return path;
}

/// Where the file went; nothing when it could not be moved.
std::optional<QString> moveAside(const QString& path) {
    QString aside = path + QStringLiteral(".broken");
    for (int number = 2; isOccupied(aside); ++number) {
        aside = path + QStringLiteral(".broken-%1").arg(number);
    }
    return QDir().rename(path, aside) ? std::optional(aside) : std::nullopt;
}

bool replace(const QString& path, const PropertyList& values) {
    QSaveFile file(path);
    const QByteArray bytes = values.toBinary();
    // The mode comes first: the file that is replaced may have been open to everybody. Qt 6.4's
    // commit() overlooks that the last of the buffer did not fit on the disk; flush() does not.
    return file.open(QIODevice::WriteOnly) &&
           file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
           file.write(bytes) == bytes.size() && file.flush() && file.commit();
}

/// `isOurs`: the file there was read or written by us, and may be replaced.
bool write(const QString& path, const PropertyList& values, bool isOurs) {
    const QFileInfo folder(QFileInfo(path).path());
    if (!folder.exists()) {
        makePrivateFolder(folder.filePath());
    }

    const QString target = followLinks(path);
    std::optional<QString> aside;
    if (!isOurs && isOccupied(target)) {
        // A link may lead to anything, a device too; only a plain file of this person's is moved.
        const QFileInfo there(target);
        if (target != path && (!there.isFile() || there.ownerId() != ::geteuid())) {
            return false;
        }
        aside = moveAside(target);
        if (!aside) {
            return false;
        }
    }
    const bool isWritten = replace(target, values);
    if (!isWritten && aside) {
        // Nothing has taken its place, and whatever kept us from reading it may pass.
        QDir().rename(*aside, target);
    }
    return isWritten;
}

} // namespace

UserDefaults::UserDefaults(const QString& folder, const QString& domain)
    : folder_(folder)
    , domain_(domain)
    , values_(read(path(domain)))
    , isFileOurs_(values_.has_value()) {}

bool UserDefaults::contains(const QString& key) const {
    return values_ && values_->contains(key);
}

bool UserDefaults::boolValue(const QString& key) const {
    if (!values_) {
        return false;
    }
    if (const auto value = values_->boolean(key)) {
        return *value;
    }
    if (const auto value = values_->integer(key)) {
        return *value != 0;
    }
    if (const auto value = values_->real(key)) {
        return *value != 0;
    }
    const auto text = values_->text(key);
    return text && isTrueText(*text);
}

std::optional<Date> UserDefaults::date(const QString& key) const {
    return values_ ? values_->date(key) : std::nullopt;
}

std::optional<QStringList> UserDefaults::stringArray(const QString& key) const {
    return values_ ? values_->texts(key) : std::nullopt;
}

bool UserDefaults::setBool(const QString& key, bool value) {
    own().setBoolean(key, value);
    return save();
}

bool UserDefaults::setDate(const QString& key, Date value) {
    own().setDate(key, value);
    return save();
}

bool UserDefaults::setStringArray(const QString& key, const QStringList& value) {
    own().setTexts(key, value);
    return save();
}

std::optional<PropertyList> UserDefaults::persistentDomain(const QString& name) const {
    return name == domain_ ? values_ : read(path(name));
}

bool UserDefaults::setPersistentDomain(const PropertyList& values, const QString& name) {
    if (name != domain_) {
        return write(path(name), values, read(path(name)).has_value());
    }
    values_ = values;
    return save();
}

QString UserDefaults::path(const QString& domain) const {
    return folder_ + u'/' + domain + QStringLiteral(".plist");
}

PropertyList& UserDefaults::own() {
    return values_ ? *values_ : values_.emplace();
}

bool UserDefaults::save() {
    const bool isWritten = write(path(domain_), own(), isFileOurs_);
    isFileOurs_ = isFileOurs_ || isWritten;
    return isWritten;
}

} // namespace orvanta
