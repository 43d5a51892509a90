#pragma once

#include "Model/Date.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace orvanta {

/// A property list with a dictionary at its root: a value, copied deeply.
///
/// What the reader does not ask for is carried along unchanged, so that a list written by somebody
/// else survives our rewriting it. A getter answers nothing when the key is absent or its value is
/// of another type. Keys and texts hold no NUL.
///
/// Formats: Apple's binary "bplist00" and its XML (PropertyList-1.0.dtd), as libplist reads them.
class PropertyList {
public:
    /// The largest list that is parsed, in bytes; of XML only 1 MiB. Ours have a few hundred bytes.
    static constexpr qsizetype maximumSize = qsizetype{16} * 1024 * 1024;

    PropertyList();
    PropertyList(const PropertyList& other);
    /// The list moved from may only be assigned to or destroyed.
    PropertyList(PropertyList&& other) noexcept = default;
    PropertyList& operator=(PropertyList other) noexcept;
    ~PropertyList() = default;

    /// Reads a binary or an XML list; nothing when something else than a dictionary is at its root.
    /// Throws `ModelError` for whatever is not a sound list, and for one that is too large, nested
    /// too deeply or grows too much when expanded.
    static std::optional<PropertyList> parse(const QByteArray& bytes);

    /// The list in the binary format: XML has no fractions of a second.
    QByteArray toBinary() const;

    QStringList keys() const;
    bool contains(const QString& key) const;

    std::optional<bool> boolean(const QString& key) const;
    /// An integer of up to 64 bits; one of 2^63 or more comes out negative.
    std::optional<qint64> integer(const QString& key) const;
    std::optional<double> real(const QString& key) const;
    std::optional<QString> text(const QString& key) const;
    std::optional<QByteArray> data(const QString& key) const;
    /// Exactly the stored double; nothing when it is not finite.
    std::optional<Date> date(const QString& key) const;
    /// An array whose elements are all texts.
    std::optional<QStringList> texts(const QString& key) const;
    /// A copy of the dictionary under the key.
    std::optional<PropertyList> dictionary(const QString& key) const;

    // Each replaces the value under the key, of whatever type that is.
    void setBoolean(const QString& key, bool value);
    void setInteger(const QString& key, qint64 value);
    void setText(const QString& key, const QString& value);
    void setData(const QString& key, const QByteArray& value);
    void setDate(const QString& key, Date value);
    void setTexts(const QString& key, const QStringList& value);
    void setDictionary(const QString& key, const PropertyList& value);
    /// Copies the value of any type; returns whether `from` has one.
    bool copyValue(const QString& key, const PropertyList& from);

private:
    struct Free {
        void operator()(void* node) const;
    };
    using Node = std::unique_ptr<void, Free>;

    explicit PropertyList(Node root);
    void* find(const QString& key) const;
    void put(const QString& key, void* node);

    Node root_;
};

} // namespace orvanta
