#pragma once

#include "Model/Date.h"
#include "Model/PropertyList.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace orvanta {

/// The preferences: one property list a domain, `<folder>/<domain>.plist`.
///
/// The application's own domain is read once and then answered from memory; each change is written
/// through at once. Values are never lost silently: a file that cannot be read (broken, not a
/// dictionary, no permission, not a file, too large) counts as absent, and the first write moves it
/// aside to `<file>.broken`, `<file>.broken-2`, and so on. A change that could not be written stays
/// in effect in memory and is written with the next one.
///
/// Files are replaced atomically and are the person's alone (mode 0600). A symbolic link is written
/// through. There are no registered defaults. For the main thread only.
class UserDefaults {
public:
    /// `folder` need not exist yet. `domain`, like every domain name, holds no slash.
    UserDefaults(const QString& folder, const QString& domain);

    bool contains(const QString& key) const;
    /// A boolean; a number is true unless it is zero; a text is true when, after white space, a
    /// sign and zeros, it goes on with Y, y, T, t or a digit from 1 to 9. All else is false.
    bool boolValue(const QString& key) const;
    std::optional<Date> date(const QString& key) const;
    /// An array whose elements are all texts.
    std::optional<QStringList> stringArray(const QString& key) const;

    // Each returns whether the domain could be written. The value is in effect either way.
    bool setBool(const QString& key, bool value);
    bool setDate(const QString& key, Date value);
    bool setStringArray(const QString& key, const QStringList& value);

    /// All values of a domain; nothing when it has no file that can be read. Of the own domain,
    /// also what could not be written yet.
    std::optional<PropertyList> persistentDomain(const QString& name) const;
    /// Replaces all values of a domain; returns whether it could be written. Only the own domain
    /// keeps what could not.
    bool setPersistentDomain(const PropertyList& values, const QString& name);

private:
    QString path(const QString& domain) const;
    PropertyList& own();
    bool save();

    QString folder_;
    QString domain_;
    std::optional<PropertyList> values_;
    // Whether the file of the own domain is one that we read or wrote: only such is replaced.
    bool isFileOurs_;
};

} // namespace orvanta
