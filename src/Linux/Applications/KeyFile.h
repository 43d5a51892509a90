#pragma once

#include <QByteArray>
#include <QStringList>

#include <glib.h>

#include <memory>
#include <optional>

namespace orvanta {

template <auto Release>
struct Releasing {
    template <typename T>
    void operator()(T* object) const {
        Release(object);
    }
};
using Characters = std::unique_ptr<char, Releasing<g_free>>;
using Arguments = std::unique_ptr<char*, Releasing<g_strfreev>>;

/// Keys in groups, as desktop entries and other files of freedesktop.org have them.
class KeyFile {
public:
    static constexpr qsizetype largest = qsizetype{1} << 20; ///< in bytes, of what read() takes

    /// Absent when it has no such form.
    static std::optional<KeyFile> parse(QByteArrayView content);
    /// Absent, too, when there is no such regular file, or a larger one.
    static std::optional<KeyFile> read(const QByteArray& path);

    /// Null for a key that is missing, empty or not UTF-8.
    Characters text(const char* group, const char* key) const;
    Characters translation(const char* group, const char* key, const char* locale) const;
    QStringList list(const char* group, const char* key) const;
    bool isSet(const char* group, const char* key) const;

private:
    KeyFile();

    std::unique_ptr<GKeyFile, Releasing<g_key_file_unref>> file_;
};

/// The words of a command line, ended by a null; null for one that no shell would take.
Arguments shellWords(const char* commandLine);

} // namespace orvanta
