#include "Linux/Applications/KeyFile.h"

#include "Linux/Applications/BoundedFile.h"

namespace orvanta {

KeyFile::KeyFile()
    : file_(g_key_file_new()) {}

std::optional<KeyFile> KeyFile::parse(QByteArrayView content) {
    KeyFile file;
    if (g_key_file_load_from_data(file.file_.get(), content.data(),
                                  static_cast<gsize>(content.size()), G_KEY_FILE_KEEP_TRANSLATIONS,
                                  nullptr) == FALSE) {
        return std::nullopt;
    }
    return file;
}

std::optional<KeyFile> KeyFile::read(const QByteArray& path) {
    const auto content = readBounded(path, largest, true);
    return content ? parse(*content) : std::nullopt;
}

Characters KeyFile::text(const char* group, const char* key) const {
    Characters value(g_key_file_get_string(file_.get(), group, key, nullptr));
    return value && *value != '\0' ? std::move(value) : nullptr;
}

Characters KeyFile::translation(const char* group, const char* key, const char* locale) const {
    return Characters(g_key_file_get_locale_string(file_.get(), group, key, locale, nullptr));
}

QStringList KeyFile::list(const char* group, const char* key) const {
    gsize size = 0;
    const Arguments values(g_key_file_get_string_list(file_.get(), group, key, &size, nullptr));
    QStringList list;
    for (gsize i = 0; i < size; ++i) {
        list += QString::fromUtf8(values.get()[i]);
    }
    return list;
}

bool KeyFile::isSet(const char* group, const char* key) const {
    return g_key_file_get_boolean(file_.get(), group, key, nullptr) != FALSE;
}

Arguments shellWords(const char* commandLine) {
    char** words = nullptr;
    return g_shell_parse_argv(commandLine, nullptr, &words, nullptr) == FALSE ? nullptr
                                                                              : Arguments(words);
}

} // namespace orvanta
