#pragma once

#include <QString>

#include <exception>

namespace orvanta {

/// Why the store could not be opened, read or written.
class ModelError : public std::exception {
public:
    /// Domain of errors that SQLite reports; their code is SQLite's result code.
    static constexpr QLatin1StringView storageDomain{"Orvanta.Storage"};
    /// Domain of errors that the operating system reports; their code is the `errno`.
    static constexpr QLatin1StringView systemDomain{"POSIX"};
    /// Domain of the error for what should be a property list and is not; its code is 0.
    static constexpr QLatin1StringView propertyListDomain{"PropertyList"};

    ModelError(QLatin1StringView domain, int code, const QString& localizedDescription);

    QLatin1StringView domain() const { return domain_; }
    int code() const { return code_; }

    /// One sentence for the person: SQLite's and the operating system's errors in their own words.
    const QString& localizedDescription() const { return localizedDescription_; }

    const char* what() const noexcept override { return what_.constData(); }

private:
    QLatin1StringView domain_;
    int code_;
    QString localizedDescription_;
    QByteArray what_;
};

} // namespace orvanta
