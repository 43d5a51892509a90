#pragma once

#include <QHash>
#include <QString>

#include <cstdint>
#include <deque>
#include <optional>

namespace orvanta {

/// Stands for one activity key within a process: its number in the order of first sight.
enum class KeyId : std::uint32_t {};

/// Every activity key seen, held once: ten years of day records name a few thousand keys.
class KeyTable {
public:
    KeyId intern(const QString& key);

    std::optional<KeyId> find(const QString& key) const;

    /// Valid as long as the table.
    const QString& text(KeyId id) const { return texts_[static_cast<std::size_t>(id)]; }

private:
    QHash<QString, KeyId> ids_;
    std::deque<QString> texts_;
};

} // namespace orvanta
